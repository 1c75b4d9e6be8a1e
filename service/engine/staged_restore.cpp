#include "service/engine/staged_restore.h"

#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QFileInfo>
#include <QTimer>
#include <QUuid>

#include <cerrno>
#include <cstdio>
#include <cstring>

namespace TWB::Service {

namespace {
// Entries placed before the event loop gets its turn again.
constexpr int sliceSize = 256;
} // namespace

StagedRestore::StagedRestore(const QString& staging, Placement placement, Rule rule, QObject* parent)
    : QObject(parent)
    , m_staging(staging)
    , m_placement(std::move(placement))
    , m_rule(rule)
{ }

void StagedRestore::start()
{
    // Listed whole before anything moves: a folder that changes under its reader may skip entries.
    QDirIterator it(
        m_staging, QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot, QDirIterator::Subdirectories);
    while (it.hasNext())
        m_entries << it.next();
    QTimer::singleShot(0, this, &StagedRestore::slice);
}

void StagedRestore::stop()
{
    m_stopped = true;
}

void StagedRestore::slice()
{
    for (int done = 0; done < sliceSize && m_next < m_entries.size() && !m_stopped; ++done)
        place(m_entries.at(m_next++));
    if (m_stopped || m_next >= m_entries.size()) {
        Q_EMIT finished();
        return;
    }
    QTimer::singleShot(0, this, &StagedRestore::slice);
}

void StagedRestore::place(const QString& source)
{
    for (const QString& moved : qAsConst(m_moved)) {
        if (source.startsWith(moved))
            return;
    }
    const QFileInfo staged(source);
    const QString target = m_placement(source.mid(m_staging.size()));
    if (staged.isDir() && !staged.isSymLink()) {
        const QFileInfo existing(target);
        if (!existing.exists() && !existing.isSymLink()) {
            // Nothing stands where the folder goes, so no rule has anything to decide below it:
            // the whole folder moves with one rename.
            const QByteArray from = QFile::encodeName(source);
            const QByteArray to = QFile::encodeName(target);
            if (QDir().mkpath(existing.absolutePath()) && std::rename(from.constData(), to.constData()) == 0) {
                m_moved << source + QLatin1Char('/');
                QDirIterator it(target, QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot,
                    QDirIterator::Subdirectories);
                while (it.hasNext()) {
                    const QString path = it.next();
                    const QFileInfo info = it.fileInfo();
                    if (info.isDir() && !info.isSymLink())
                        continue;
                    Q_EMIT restored(path, info.isSymLink() ? 0 : info.size(), info.lastModified().toUTC());
                }
                return;
            }
        }
        // Folders come before what they hold; an empty one is made too.
        if (!existing.isDir() && !QDir().mkpath(target))
            Q_EMIT failed(target, QStringLiteral("cannot create the folder"));
        return;
    }
    const QFileInfo existing(target);
    if (existing.exists() || existing.isSymLink()) {
        if (existing.isDir() && !existing.isSymLink()) {
            Q_EMIT failed(target, QStringLiteral("a folder of that name stands there"));
            return;
        }
        if (m_rule == Rule::SkipExisting
            || (m_rule == Rule::OverwriteOlder && staged.lastModified() <= existing.lastModified())) {
            Q_EMIT skipped(target);
            return;
        }
    }
    const qint64 size = staged.isSymLink() ? 0 : staged.size();
    const QDateTime modified = staged.lastModified().toUTC();
    QString why;
    if (moveInto(source, target, &why))
        Q_EMIT restored(target, size, modified);
    else
        Q_EMIT failed(target, why);
}

bool StagedRestore::moveInto(const QString& source, const QString& target, QString* why)
{
    const QString folder = QFileInfo(target).absolutePath();
    if (!QDir().mkpath(folder)) {
        *why = QStringLiteral("cannot create the folder %1").arg(folder);
        return false;
    }
    const QByteArray from = QFile::encodeName(source);
    const QByteArray to = QFile::encodeName(target);
    if (std::rename(from.constData(), to.constData()) == 0)
        return true;
    if (errno != EXDEV) {
        *why = QString::fromLocal8Bit(std::strerror(errno));
        return false;
    }
    // Another file system: a whole copy beside the place, then one rename over it.
    const QString part = folder + QStringLiteral("/.") + QFileInfo(target).fileName() + QStringLiteral(".tidewrack-")
        + QUuid::createUuid().toString(QUuid::Id128).left(8);
    const QFileInfo staged(source);
    bool copied = false;
    if (staged.isSymLink()) {
        copied = QFile::link(staged.symLinkTarget(), part);
    } else {
        copied = QFile::copy(source, part);
        if (copied) {
            QFile file(part);
            if (file.open(QIODevice::ReadWrite)) {
                file.setFileTime(staged.lastModified(), QFileDevice::FileModificationTime);
                file.close();
            }
        }
    }
    if (!copied || std::rename(QFile::encodeName(part).constData(), to.constData()) != 0) {
        *why = copied ? QString::fromLocal8Bit(std::strerror(errno)) : QStringLiteral("cannot copy it into place");
        QFile::remove(part);
        return false;
    }
    QFile::remove(source);
    return true;
}

} // namespace TWB::Service
