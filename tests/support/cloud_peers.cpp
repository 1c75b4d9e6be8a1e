#include "support/cloud_peers.h"

#include "platform/cloud/account_keys.h"
#include "platform/crypt/local_password.h"

#include <QDeadlineTimer>
#include <QFile>
#include <QJsonDocument>
#include <QJsonObject>
#include <QStandardPaths>
#include <QTcpServer>
#include <QTcpSocket>
#include <QThread>
#include <QUuid>
#include <QtTest>

namespace TWB::Test {

namespace Key = TWL::Cloud::Key;

CloudPeer::CloudPeer()
{
    m_process.setProcessChannelMode(QProcess::MergedChannels);
}

CloudPeer::~CloudPeer()
{
    stop();
}

void CloudPeer::stop()
{
    if (m_process.state() == QProcess::NotRunning)
        return;
    m_process.terminate();
    if (!m_process.waitForFinished(5000)) {
        m_process.kill();
        m_process.waitForFinished(5000);
    }
}

QString CloudPeer::output()
{
    m_output += QString::fromUtf8(m_process.readAll());
    return m_output;
}

quint16 CloudPeer::freePort()
{
    QTcpServer probe;
    if (!probe.listen(QHostAddress::LocalHost, 0))
        return 0;
    return probe.serverPort();
}

bool CloudPeer::waitForPort(quint16 port, int timeoutMs, const QProcess* server)
{
    bool open = false;
    static_cast<void>(QTest::qWaitFor(
        [port, server, &open] {
            if (server && server->state() == QProcess::NotRunning)
                return true;
            QTcpSocket socket;
            socket.connectToHost(QHostAddress::LocalHost, port);
            open = socket.waitForConnected(200);
            return open;
        },
        timeoutMs));
    return open;
}

bool CloudPeer::makeCertificate(const QString& folder, QString* certificate, QString* key)
{
    *certificate = folder + QStringLiteral("/peer.crt");
    *key = folder + QStringLiteral("/peer.key");
    QProcess openssl;
    openssl.setProcessChannelMode(QProcess::MergedChannels);
    openssl.start(QStringLiteral("openssl"),
        {QStringLiteral("req"), QStringLiteral("-x509"), QStringLiteral("-newkey"), QStringLiteral("rsa:2048"),
            QStringLiteral("-nodes"), QStringLiteral("-days"), QStringLiteral("2"), QStringLiteral("-subj"),
            QStringLiteral("/CN=127.0.0.1/O=Tidewrack test peer"), QStringLiteral("-addext"),
            QStringLiteral("subjectAltName=IP:127.0.0.1,DNS:localhost"), QStringLiteral("-keyout"), *key,
            QStringLiteral("-out"), *certificate});
    if (!openssl.waitForFinished(60000) || openssl.exitCode() != 0) {
        qWarning() << "openssl:" << openssl.readAll();
        return false;
    }
    return QFile::exists(*certificate) && QFile::exists(*key);
}

// moto

QString MotoPeer::missing()
{
    QProcess python;
    python.setProcessChannelMode(QProcess::MergedChannels);
    python.start(QStringLiteral("python3"), {QStringLiteral("-c"), QStringLiteral("import moto.server, boto3")});
    if (!python.waitForStarted())
        return QStringLiteral("moto's S3 server needs python3, which is not on the PATH");
    if (!python.waitForFinished(60000) || python.exitStatus() != QProcess::NormalExit || python.exitCode() != 0) {
        const QList<QByteArray> lines = python.readAll().trimmed().split('\n');
        return QStringLiteral("moto's S3 server is not installed (%1)").arg(QString::fromUtf8(lines.last()));
    }
    return QString();
}

bool MotoPeer::start(const QString& certificate, const QString& key)
{
    m_port = freePort();
    m_tls = !certificate.isEmpty();
    const QString keys = m_dir.path() + QStringLiteral("/keys.json");
    QStringList arguments {QStringLiteral(TWB_SOURCE_DIR "/tests/support/moto_peer.py"), QStringLiteral("--port"),
        QString::number(m_port), QStringLiteral("--keys"), keys};
    if (m_tls)
        arguments << QStringLiteral("--cert") << certificate << QStringLiteral("--key") << key;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    // boto3 in the helper must not trust a bundle that does not know our peer, nor need one.
    environment.remove(QStringLiteral("AWS_CA_BUNDLE"));
    m_process.setProcessEnvironment(environment);
    m_process.start(QStringLiteral("python3"), arguments);
    if (!m_process.waitForStarted())
        return false;
    const bool ready = QTest::qWaitFor([&] { return QFile::exists(keys) || !isRunning(); }, 60000);
    QFile file(keys);
    if (!ready || !file.open(QIODevice::ReadOnly))
        return false;
    const QJsonObject object = QJsonDocument::fromJson(file.readAll()).object();
    m_accessKey = object.value(QStringLiteral("access_key")).toString();
    m_secretKey = object.value(QStringLiteral("secret_key")).toString();
    return !m_accessKey.isEmpty() && !m_secretKey.isEmpty();
}

QString MotoPeer::endpoint() const
{
    return QStringLiteral("127.0.0.1:%1").arg(m_port);
}

QVariantMap MotoPeer::config(const QString& bucket) const
{
    QVariantMap config {{Key::CloudId, QUuid::createUuid()}, {Key::CloudType, QStringLiteral("S3Compatible")},
        {Key::AccessKey, m_accessKey}, {Key::SecretKey, m_secretKey}, {Key::UseSsl, m_tls}, {Key::Endpoint, endpoint()},
        {Key::Signature, QStringLiteral("V4")}};
    if (!bucket.isEmpty())
        config.insert(Key::ContainerName, bucket);
    return config;
}

QJsonObject MotoPeer::document(const QString& bucket) const
{
    return {{Key::AccessKey, m_accessKey}, {Key::SecretKey, SHARED::cryptNS::encrypt_local_password(m_secretKey)},
        {Key::ContainerName, bucket}, {Key::UseSsl, m_tls}, {Key::Endpoint, endpoint()},
        {Key::Signature, int(TWL::Cloud::SignatureAws4)}};
}

// SFTP

QString SftpPeer::missing()
{
    return QStandardPaths::findExecutable(QStringLiteral("rclone")).isEmpty()
        ? QStringLiteral("rclone is not installed: scripts/setup installs it")
        : QString();
}

bool SftpPeer::start(const QString& authorizedKeys)
{
    m_port = freePort();
    QDir().mkpath(root());
    // An empty list of keys by default: the user's own ~/.ssh/authorized_keys must not let anyone in.
    QString keys = authorizedKeys;
    if (keys.isEmpty()) {
        keys = m_dir.path() + QStringLiteral("/authorized_keys");
        QFile empty(keys);
        if (!empty.open(QIODevice::WriteOnly))
            return false;
    }
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QStringLiteral("RCLONE_CONFIG"), m_dir.path() + QStringLiteral("/none.conf"));
    environment.insert(QStringLiteral("RCLONE_CACHE_DIR"), m_dir.path() + QStringLiteral("/cache"));
    m_process.setProcessEnvironment(environment);
    m_process.start(QStringLiteral("rclone"),
        {QStringLiteral("serve"), QStringLiteral("sftp"), QStringLiteral("--addr"),
            QStringLiteral("127.0.0.1:%1").arg(m_port), QStringLiteral("--user"), user(), QStringLiteral("--pass"),
            password(), QStringLiteral("--authorized-keys"), keys, root()});
    return m_process.waitForStarted() && waitForPort(m_port, 20000, &m_process);
}

QVariantMap SftpPeer::config(const QString& path) const
{
    return {{Key::CloudId, QUuid::createUuid()}, {Key::CloudType, QStringLiteral("Sftp")},
        {Key::Address, QStringLiteral("127.0.0.1")}, {Key::Port, int(m_port)}, {Key::KeepAlive, false},
        {Key::UseProxy, false}, {Key::Path, path}, {Key::User, user()}, {Key::Password, password()},
        {Key::PrivateKey, QByteArray()}};
}

// Azurite

QString AzuritePeer::program()
{
    const QString installed = QStringLiteral(TWB_SOURCE_DIR "/tests/support/azurite/node_modules/.bin/azurite-blob");
    return QFile::exists(installed) ? installed : QString();
}

QString AzuritePeer::key()
{
    // The emulator's published development key.
    return QStringLiteral("Eby8vdM02xNOcqFlqUwJPLlmEtlCDXJ1OUzFT50uSRZ6IFsuFq2UVErCz4I6tq/K1SZFPTOtr/KBHBeksoGMGw==");
}

QString AzuritePeer::missing()
{
    if (program().isEmpty())
        return QStringLiteral("azurite is not installed in tests/support/azurite: scripts/setup installs it");
    if (QStandardPaths::findExecutable(QStringLiteral("node")).isEmpty())
        return QStringLiteral("azurite needs node, which is not on the PATH: scripts/setup installs it");
    return QString();
}

bool AzuritePeer::start()
{
    if (!missing().isEmpty())
        return false;
    m_port = freePort();
    m_process.start(program(),
        {QStringLiteral("--silent"), QStringLiteral("--skipApiVersionCheck"), QStringLiteral("--loose"),
            QStringLiteral("--disableTelemetry"), QStringLiteral("--blobHost"), QStringLiteral("127.0.0.1"),
            QStringLiteral("--blobPort"), QString::number(m_port), QStringLiteral("--location"), m_dir.path()});
    return m_process.waitForStarted() && waitForPort(m_port, 20000, &m_process);
}

QVariantMap AzuritePeer::config(const QString& container) const
{
    QVariantMap config {{Key::CloudId, QUuid::createUuid()}, {Key::CloudType, QStringLiteral("AzureBlob")},
        {Key::UseSsl, false}, {Key::Username, account()}, {Key::Password, key()},
        {Key::Endpoint, QStringLiteral("127.0.0.1:%1/%2").arg(m_port).arg(account())}, {Key::Type, QString()}};
    if (!container.isEmpty())
        config.insert(Key::ContainerName, container);
    return config;
}

// OAuth provider

bool OAuthPeer::start(const QStringList& buckets)
{
    const QString ready = m_dir.path() + QStringLiteral("/ready.json");
    QStringList arguments {QStringLiteral(TWB_SOURCE_DIR "/tests/support/oauth_peer.py"), QStringLiteral("--ready"),
        ready, QStringLiteral("--client-id"), clientId(), QStringLiteral("--client-secret"), clientSecret(),
        QStringLiteral("--project"), project()};
    for (const QString& bucket : buckets)
        arguments << QStringLiteral("--bucket") << bucket;
    m_process.start(QStringLiteral("python3"), arguments);
    if (!m_process.waitForStarted() || !QTest::qWaitFor([&] { return QFile::exists(ready) || !isRunning(); }, 20000))
        return false;
    QFile file(ready);
    if (!file.open(QIODevice::ReadOnly))
        return false;
    m_port = quint16(QJsonDocument::fromJson(file.readAll()).object().value(QStringLiteral("port")).toInt());
    return m_port != 0;
}

QString OAuthPeer::url() const
{
    return QStringLiteral("http://127.0.0.1:%1").arg(m_port);
}

void OAuthPeer::exportEnvironment() const
{
    qputenv("TWB_GOOGLE_OAUTH_PROVIDER", url().toUtf8());
    qputenv("TWB_GOOGLE_STORAGE_ENDPOINT", url().toUtf8());
    qputenv("TWB_GOOGLE_OAUTH_CLIENT_ID", clientId().toUtf8());
    qputenv("TWB_GOOGLE_OAUTH_CLIENT_SECRET", clientSecret().toUtf8());
}

// Swift

bool SwiftPeer::start(const QStringList& containers, const QStringList& objects)
{
    m_port = freePort();
    QStringList arguments {QStringLiteral(TWB_SOURCE_DIR "/tests/support/swift_peer.py"), QStringLiteral("--port"),
        QString::number(m_port), QStringLiteral("--user"), user(), QStringLiteral("--key"), key(),
        QStringLiteral("--project"), project()};
    for (const QString& name : containers)
        arguments << QStringLiteral("--container") << name;
    for (const QString& path : objects)
        arguments << QStringLiteral("--object") << path;
    m_process.start(QStringLiteral("python3"), arguments);
    return m_process.waitForStarted() && waitForPort(m_port, 20000, &m_process);
}

QString SwiftPeer::authUrl(int version) const
{
    static const char* const paths[] = {"/auth/v1.0", "/v2.0", "/v3"};
    return QStringLiteral("http://127.0.0.1:%1%2").arg(m_port).arg(QLatin1String(paths[qBound(1, version, 3) - 1]));
}

} // namespace TWB::Test
