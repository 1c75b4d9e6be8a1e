#include "platform/settings/default_settings.h"

#include "platform/communication/command_calls.h"
#include "platform/communication/command_params.h"
#include "platform/communication/connection_manager.h"
#include "platform/logging/twl_debug.h"

#include <QCoreApplication>
#include <QJsonObject>
#include <QThreadPool>

namespace TWB {

using namespace TWB::Common::Communication;

namespace {

// A command whose receiver is gone still ends, and frees itself, when its answer comes.
void sendOwned(ICommand& command)
{
    QObject::connect(&command, &ICommand::complite, &command, &QObject::deleteLater);
    QObject::connect(&command, &ICommand::error, &command, &QObject::deleteLater);
    QObject::connect(&command, &ICommand::timeout, &command, &QObject::deleteLater);
    command.exec();
}

} // namespace

QPointer<DefaultSettings> DefaultSettings::instance()
{
    static QPointer<DefaultSettings> settings;
    if (!settings) {
        settings = new DefaultSettings;
        if (auto app = QCoreApplication::instance())
            connect(app, &QCoreApplication::aboutToQuit, settings, &QObject::deleteLater);
        // A service met anew may hold other values: one restarted with another data folder, or changed
        // by another console while this one was away.
        if (auto connection = ConnectionManager::instance())
            connect(connection, &ConnectionManager::localManagmentConnected, settings, &DefaultSettings::load);
        settings->load();
    }
    return settings;
}

DefaultSettings::DefaultSettings() = default;

DefaultSettings::~DefaultSettings() = default;

QString DefaultSettings::value(const QString& key) const
{
    const Property* item = m_items.value(key);
    return item ? item->value() : QString();
}

void DefaultSettings::setValue(const QString& key, const QString& value)
{
    property(key)->setValue(value);
}

Property* DefaultSettings::property(const QString& key)
{
    Property*& item = m_items[key];
    if (!item) {
        item = new Property(key, QString(), this);
        connect(item, &Property::valueChanged, this, &DefaultSettings::send);
    }
    return item;
}

void DefaultSettings::followLogOptions()
{
    if (m_logOptions)
        return;
    m_logOptions.emplace();
    connect(this, &DefaultSettings::loaded, this, &DefaultSettings::applyLogOptions);
    connect(this, &DefaultSettings::saved, this, &DefaultSettings::applyLogOptions);
}

// Only a change reaches the log, so that a folder it cannot use is named once, not at each load.
void DefaultSettings::applyLogOptions()
{
    const QPair<QString, QString> options {value(QStringLiteral("LogPath")), getLogsRotateTimeout()};
    if (!m_logOptions || *m_logOptions == options)
        return;
    const bool moves = m_logOptions->first != options.first;
    m_logOptions = options;
    // The folder may sit on a slow disk: it is opened away from the GUI thread.
    QThreadPool::globalInstance()->start([options, moves] {
        QString reason;
        if (moves && !TWL::TwlDebug::setLogDirectory(options.first, &reason))
            TWL::TwlDebug("TWB").warning() << reason << "- the log stays in" << TWL::TwlDebug::logFilePath();
        TWL::TwlDebug::setRotateDays(options.second.toInt());
    });
}

void DefaultSettings::load()
{
    try {
        ICommand* command = newCommand(QStringLiteral("GetProductOptions"), this, &DefaultSettings::onLoadResult);
        setCommandParams(*command, {{QStringLiteral("profile"), currentProfile()}});
        sendOwned(*command);
    } catch (const QString& text) {
        TWL::TwlDebug("TWB").warning() << text;
        Q_EMIT error(text);
    }
}

void DefaultSettings::onLoadResult()
{
    auto* command = qobject_cast<ICommand*>(sender());
    if (!command)
        return;
    command->deleteLater();
    try {
        const QJsonObject options = replyData(*command).value(QStringLiteral("options")).toObject();
        // A value set since this answer was asked for is newer than the answer.
        for (auto it = options.constBegin(); it != options.constEnd(); ++it) {
            if (!m_sending.value(it.key()))
                property(it.key())->take(it.value().toString());
        }
    } catch (const QString& text) {
        logCommandFailure(*command, text);
        Q_EMIT error(text);
        return;
    }
    Q_EMIT loaded();
}

void DefaultSettings::send(const QString& key, const QString& value)
{
    try {
        ICommand* command = newCommand(QStringLiteral("SetProductOptions"), this, &DefaultSettings::onSaveResult);
        setCommandParams(*command,
            {{QStringLiteral("profile"), currentProfile()}, {QStringLiteral("options"), QJsonObject {{key, value}}}});
        sendOwned(*command);
        ++m_sending[key];
    } catch (const QString& text) {
        TWL::TwlDebug("TWB").warning() << text;
        Q_EMIT error(text);
    }
}

void DefaultSettings::onSaveResult()
{
    auto* command = qobject_cast<ICommand*>(sender());
    if (!command)
        return;
    command->deleteLater();
    const QJsonObject options = command->request()
                                    .object()
                                    .value(QStringLiteral("params"))
                                    .toObject()
                                    .value(QStringLiteral("options"))
                                    .toObject();
    const QString key = options.isEmpty() ? QString() : options.constBegin().key();
    if (m_sending.value(key) > 0)
        --m_sending[key];
    try {
        replyData(*command);
    } catch (const QString& text) {
        logCommandFailure(*command, text);
        Q_EMIT error(text);
        return;
    }
    Q_EMIT saved(key);
}

} // namespace TWB
