#pragma once

#include "raw_client.h"
#include "support/service_process.h"
#include "support/test_environment.h"

#include <QJsonArray>
#include <QJsonObject>
#include <QString>
#include <QUuid>

#include <memory>

namespace TWB::Test {

/// The real twbd on a test's own socket and data folder, with helpers to talk to it.
class ServiceFixture final
{
public:
    ServiceFixture();
    ServiceFixture(const ServiceFixture&) = delete;
    ServiceFixture& operator=(const ServiceFixture&) = delete;

    TestEnvironment& environment() { return m_environment; }
    ServiceProcess& process() { return *m_process; }
    QString socketPath() const { return m_environment.socketPath(); }
    QString dataDir() const { return m_environment.dataDir(); }
    QString storeFile() const;

    /// Starts twbd unless it runs.
    bool start();
    /// SIGTERM and a new start, as a user's restart.
    bool restart();
    /// Starts twbd, waits for the console's channel to reach it and connects `client` as a second console.
    bool startWithConsoles(RawClient& client);

    /// Sends one command through the console's channel (Manager, ICommand), the way the console's
    /// models do, and waits for the result.
    static ServiceReply callThroughChannel(const QString& command, const QJsonObject& params = QJsonObject());

    /// Every account row that StorageGetConnection lists.
    static QJsonArray accounts(RawClient& client);
    /// The account that the first start made.
    static QUuid firstAccount(RawClient& client);
    /// The params of SaveStorage for a file-system account on `folder`.
    static QJsonObject localAccount(const QUuid& id, const QString& name, const QString& folder);
    /// The params of SaveStorage for an Amazon S3 account with a plain secret key.
    static QJsonObject s3Account(const QUuid& id, const QString& name, const QString& secretKey);

    /// All the bytes of service.db and its WAL, for looking for texts that must not be there.
    QByteArray storeBytes() const;

private:
    TestEnvironment m_environment;
    std::unique_ptr<ServiceProcess> m_process;
};

} // namespace TWB::Test
