#include "platform/settings/default_settings.h"

#include <QCoreApplication>
#include <QDir>
#include <QSettings>
#include <QStandardPaths>

namespace TWB {

namespace {

QString settingsFile()
{
    QString dir = qEnvironmentVariable("TWB_CONSOLE_SETTINGS_DIR");
    if (dir.isEmpty())
        dir = QStandardPaths::writableLocation(QStandardPaths::AppConfigLocation);
    QDir().mkpath(dir);
    return dir + QStringLiteral("/default_settings.ini");
}

} // namespace

QPointer<DefaultSettings> DefaultSettings::instance()
{
    static QPointer<DefaultSettings> settings;
    if (!settings) {
        settings = new DefaultSettings;
        if (auto app = QCoreApplication::instance())
            connect(app, &QCoreApplication::aboutToQuit, settings, &QObject::deleteLater);
    }
    return settings;
}

DefaultSettings::DefaultSettings()
    : settings(new QSettings(settingsFile(), QSettings::IniFormat))
{ }

DefaultSettings::~DefaultSettings()
{
    delete settings;
}

QString DefaultSettings::value(const QString& key) const
{
    return settings->value(key).toString();
}

void DefaultSettings::setValue(const QString& key, const QString& value)
{
    settings->setValue(key, value);
    settings->sync();
}

QString DefaultSettings::fileName() const
{
    return settings->fileName();
}

} // namespace TWB
