#include "service/engine/backup_selection.h"

#include "platform/plan/backup_file.h"
#include "service/catalog/plan_paths.h"

#include <QDirIterator>
#include <QFileInfo>
#include <QRegularExpression>

namespace TWB::Service {

using TWB::Info::Plan::BackupFile;

QString BackupSelection::escaped(const QString& path)
{
    QString result;
    result.reserve(path.size() + 8);
    for (int i = 0; i < path.size(); ++i) {
        const QChar c = path.at(i);
        // restic's exclude files expand "$NAME", take a line that starts with "#" for a comment and
        // trim blanks at both ends; a class of one character says each of them as it is.
        const bool atEnd = i == 0 || i == path.size() - 1;
        if (c == QLatin1Char('$') || c == QLatin1Char('#') || (atEnd && c.isSpace())) {
            result += QLatin1Char('[') + c + QLatin1Char(']');
            continue;
        }
        if (c == QLatin1Char('*') || c == QLatin1Char('?') || c == QLatin1Char('[') || c == QLatin1Char('\\'))
            result += QLatin1Char('\\');
        result += c;
    }
    return result;
}

BackupSelection BackupSelection::of(const BackupFile& plan, const PlanPaths& paths)
{
    BackupSelection selection;
    const QStringList items = plan.items();
    for (const QString& item : items) {
        QString why;
        const QString real = paths.toReal(item, &why);
        if (real.isEmpty()) {
            selection.missing << why;
            continue;
        }
        // lstat, so that a dangling symbolic link still counts as something to back up.
        if (!QFileInfo(real).exists() && !QFileInfo(real).isSymLink()) {
            selection.missing << QStringLiteral("\"%1\" does not exist").arg(real);
            continue;
        }
        if (!selection.items.contains(real))
            selection.items << real;
    }
    const QStringList excluded = plan.excludeItems();
    for (const QString& item : excluded) {
        const QString real = paths.toReal(item);
        if (real.isEmpty())
            continue;
        selection.excludedPaths << real;
        selection.excludes << escaped(real);
    }
    const QStringList folders = plan.excludeFolderList();
    for (const QString& name : folders) {
        if (name.trimmed().isEmpty() || name.contains(QLatin1Char('/')))
            continue;
        selection.excludedFolders << name;
        // A pattern without a slash matches a path part of that name at any depth.
        selection.excludes << escaped(name);
    }
    QStringList masks;
    for (const QString& mask : plan.filter()) {
        if (!mask.trimmed().isEmpty())
            masks << mask.trimmed();
    }
    selection.ignoreCase = plan.filterCaseInsensitive();
    if (plan.filterType() == BackupFile::ExcludeMasks)
        selection.excludeMasks = masks;
    else if (plan.filterType() == BackupFile::IncludeMasks)
        selection.masks = masks;
    selection.largerThan = plan.excludeLargerThan();
    selection.modifiedBefore = plan.excludeModifiedBefore();
    selection.listFiles = !selection.masks.isEmpty() || selection.modifiedBefore.isValid();
    selection.skipHidden = plan.excludeSystemAndHidden();
    if (selection.skipHidden) {
        // Hidden files and folders below the items, never an item the user picked by name.
        for (const QString& item : qAsConst(selection.items)) {
            const QString base = item == QLatin1String("/") ? QString() : escaped(item);
            selection.excludes << base + QStringLiteral("/**/.*");
        }
    }
    return selection;
}

QStringList BackupSelection::options() const
{
    QStringList result;
    for (const QString& mask : excludeMasks)
        result << (ignoreCase ? QStringLiteral("--iexclude=") : QStringLiteral("--exclude=")) + mask;
    if (largerThan > 0)
        result << QStringLiteral("--exclude-larger-than") << QString::number(largerThan);
    return result;
}

QStringList BackupSelection::walk() const
{
    QList<QRegularExpression> patterns;
    for (const QString& mask : masks) {
        patterns << QRegularExpression(QRegularExpression::wildcardToRegularExpression(mask),
            ignoreCase ? QRegularExpression::CaseInsensitiveOption : QRegularExpression::NoPatternOption);
    }
    const qint64 oldestMs = modifiedBefore.isValid() ? modifiedBefore.toMSecsSinceEpoch() : 0;
    auto matches = [&patterns, oldestMs](const QFileInfo& file) {
        // A link is kept whatever its target's age: restic backs up the link, whose own time Qt
        // does not tell.
        if (oldestMs && !file.isSymLink() && file.lastModified().toMSecsSinceEpoch() < oldestMs)
            return false;
        if (patterns.isEmpty())
            return true;
        for (const QRegularExpression& pattern : qAsConst(patterns)) {
            if (pattern.match(file.fileName()).hasMatch())
                return true;
        }
        return false;
    };
    auto excluded = [this](const QString& path) {
        for (const QString& folder : excludedPaths) {
            if (path == folder || path.startsWith(folder + QLatin1Char('/')))
                return true;
        }
        return false;
    };
    QStringList files;
    for (const QString& item : items) {
        const QFileInfo info(item);
        if (!info.isDir() || info.isSymLink()) {
            if (matches(info) && !excluded(item))
                files << item;
            continue;
        }
        // Breadth by folder, so that excluded and hidden folders are never entered.
        QStringList folders = {item};
        while (!folders.isEmpty()) {
            const QString folder = folders.takeLast();
            QDir::Filters filter = QDir::Files | QDir::Dirs | QDir::NoDotAndDotDot | QDir::System;
            if (!skipHidden)
                filter |= QDir::Hidden;
            QDirIterator it(folder, filter);
            while (it.hasNext()) {
                const QString path = it.next();
                const QFileInfo entry = it.fileInfo();
                if (excluded(path) || (skipHidden && entry.fileName().startsWith(QLatin1Char('.'))))
                    continue;
                if (entry.isDir() && !entry.isSymLink()) {
                    if (!excludedFolders.contains(entry.fileName()))
                        folders << path;
                } else if (matches(entry)) {
                    files << path;
                }
            }
        }
    }
    return files;
}

} // namespace TWB::Service
