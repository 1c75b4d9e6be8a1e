#include "service_fixture.h"

#include "support/test_caller.h"

#include "platform/communication/connection_manager.h"

#include <QFile>
#include <QJsonArray>
#include <QSignalSpy>
#include <QTest>

namespace TWB::Test {

ServiceFixture::ServiceFixture()
    : m_process(std::make_unique<ServiceProcess>(m_environment.socketPath(), m_environment.dataDir()))
{ }

QString ServiceFixture::storeFile() const
{
    return dataDir() + QStringLiteral("/service.db");
}

bool ServiceFixture::start()
{
    return m_process->isRunning() || m_process->start();
}

bool ServiceFixture::restart()
{
    if (m_process->isRunning() && !m_process->terminate())
        return false;
    return m_process->start();
}

bool ServiceFixture::startWithConsoles(RawClient& client)
{
    if (!start())
        return false;
    TestEnvironment::speedUpChannel();
    if (!QTest::qWaitFor(
            [] { return TWB::Common::Communication::ConnectionManager::instance()->isLocalManagmentConnected(); },
            10000))
        return false;
    return client.connectTo(socketPath());
}

ServiceReply ServiceFixture::callThroughChannel(const QString& command, const QJsonObject& params)
{
    ServiceReply reply;
    TestCaller caller;
    QSignalSpy succeeded(&caller, &TestCaller::succeeded);
    QSignalSpy failed(&caller, &TestCaller::failed);
    if (!caller.send(command, params))
        return reply;
    if (!QTest::qWaitFor([&] { return !succeeded.isEmpty() || !failed.isEmpty(); }, 20000))
        return reply;
    reply.received = true;
    reply.success = !succeeded.isEmpty();
    if (reply.success)
        reply.data = succeeded.first().first().toJsonObject();
    else
        reply.error = failed.first().first().toString();
    return reply;
}

QJsonArray ServiceFixture::accounts(RawClient& client)
{
    return client.call(QStringLiteral("StorageGetConnection"))
        .data.value(QStringLiteral("storageConnection"))
        .toArray();
}

QUuid ServiceFixture::firstAccount(RawClient& client)
{
    const QJsonArray rows = accounts(client);
    return rows.isEmpty() ? QUuid() : QUuid(rows.first().toObject().value(QStringLiteral("ID")).toString());
}

QJsonObject ServiceFixture::localAccount(const QUuid& id, const QString& name, const QString& folder)
{
    return {{QStringLiteral("ID"), id.toString()}, {QStringLiteral("displayName"), name},
        {QStringLiteral("prefix"), QStringLiteral("laptop")}, {QStringLiteral("type"), 1},
        {QStringLiteral("params"), QJsonObject {{QStringLiteral("Path"), folder}}}};
}

QJsonObject ServiceFixture::s3Account(const QUuid& id, const QString& name, const QString& secretKey)
{
    return {{QStringLiteral("ID"), id.toString()}, {QStringLiteral("displayName"), name},
        {QStringLiteral("prefix"), QStringLiteral("laptop")}, {QStringLiteral("type"), 2},
        {QStringLiteral("params"),
            QJsonObject {{QStringLiteral("AccessKey"), QStringLiteral("AKIAEXAMPLE")},
                {QStringLiteral("SecretKey"), secretKey}, {QStringLiteral("ContainerName"), QStringLiteral("bucket")},
                {QStringLiteral("UseSsl"), true}, {QStringLiteral("Archive2Glacier"), false}}}};
}

QByteArray ServiceFixture::storeBytes() const
{
    QByteArray bytes;
    for (const QString& suffix : {QString(), QStringLiteral("-wal")}) {
        QFile file(storeFile() + suffix);
        if (file.open(QIODevice::ReadOnly))
            bytes += file.readAll();
    }
    return bytes;
}

} // namespace TWB::Test
