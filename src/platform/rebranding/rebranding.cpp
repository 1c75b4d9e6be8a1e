#include "platform/rebranding/rebranding.h"

#include "platform/defines/app_path.h"
#include "platform/logging/twl_debug.h"

#include <QFileInfo>
#include <QSettings>

namespace TWB::Defines {

namespace {

struct Entry
{
    const char* key;
    QVariant value;
};

// The declared order matters to whoever lists the keys (the service, installers).
const QVector<Entry>& defaults()
{
    static const QVector<Entry> table = {
        {"RebrandingZipUrl", QString()},
        {"AllowPrePostActions", true},
        {"AllowRAToBootable", false},
        {"AllowRestoreToEC2", false},
        {"AllowRestoreToAzure", false},
        {"AllowFilenameEncryption", false},
        {"DefaultUseBlockLevel", false},
        {"AllowBlockLevel", false},
        {"showS3Accelerate", true},
        {"S3Accelerate", true},
        {"S3StorageClass", true},
        {"showSIA", true},
        {"AllowRemoteConnection", false},
        {"AllowFileSystemAccount", true},
        {"SSE", true},
        {"showSSE", true},
        {"AllowEncryption", true},
        {"DefaultUseCompression", true},
        {"AllowCompression", true},
        {"DenyStorageMenuItemDelete", false},
        {"DenyRestoreWizardOpening", false},
        {"DenyBackupPlanEdit", false},
        {"SignUpEnabled", false},
        {"AllowConsole", true},
        {"HashUpdate", QString()},
        {"Hash", QString()},
        {"ResourcesUpdate", QString()},
        {"CopyrightText", QStringLiteral("Copyright \u00a9 2026 Tidewrack")},
        {"DefaultLanguage", QStringLiteral("en")},
        {"WebSite", QStringLiteral("https://tidewrack.example")},
        {"ContactEmail", QString()},
        {"ProductName", QStringLiteral("Tidewrack Backup")},
        {"CompanyName", QStringLiteral("Tidewrack")},
    };
    return table;
}

QVariant fromFile(const QVariant& stored, const QVariant& fallback)
{
    // QSettings splits a value with commas into a list; a rebranding value is always one text.
    const QString text
        = stored.type() == QVariant::StringList ? stored.toStringList().join(QStringLiteral(", ")) : stored.toString();
    if (fallback.type() != QVariant::Bool)
        return text;
    const QString lower = text.trimmed().toLower();
    if (lower == QLatin1String("true") || lower == QLatin1String("1") || lower == QLatin1String("yes"))
        return true;
    if (lower == QLatin1String("false") || lower == QLatin1String("0") || lower == QLatin1String("no"))
        return false;
    return fallback;
}

} // namespace

Rebranding::Rebranding()
{
    update();
}

QVariant Rebranding::value(const QString& key) const
{
    return m_values.value(key);
}

void Rebranding::update()
{
    m_values.clear();
    for (const Entry& e : defaults())
        m_values.insert(QString::fromLatin1(e.key), e.value);

    const QString path = rebrandingFile();
    if (!QFileInfo::exists(path))
        return;
    QSettings file(path, QSettings::IniFormat);
    if (file.status() != QSettings::NoError) {
        TWL::TwlDebug("TWB").warning() << "Rebranding file is unreadable:" << path;
        return;
    }
    const QStringList stored = file.allKeys();
    for (const QString& raw : stored) {
        // Keys may stand at top level or in any section.
        const QString key = raw.section(QLatin1Char('/'), -1);
        const auto it = m_values.find(key);
        if (it == m_values.end()) {
            TWL::TwlDebug("TWB").debug() << "Rebranding file names an unknown key:" << key;
            continue;
        }
        *it = fromFile(file.value(raw), *it);
    }
}

const QStringList& Rebranding::keys()
{
    static const QStringList list = [] {
        QStringList l;
        for (const Entry& e : defaults())
            l << QString::fromLatin1(e.key);
        return l;
    }();
    return list;
}

QString Rebranding::rebrandingFile()
{
    const QString own = QString::fromLocal8Bit(qgetenv("TWB_REBRANDING_FILE"));
    return own.isEmpty() ? AppPath::to().share() + QStringLiteral("/rebranding.ini") : own;
}

} // namespace TWB::Defines
