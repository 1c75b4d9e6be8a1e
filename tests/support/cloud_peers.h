#pragma once

#include <QJsonObject>
#include <QProcess>
#include <QString>
#include <QTemporaryDir>
#include <QVariantMap>

namespace TWB::Test {

/// Real storage servers on loopback for the cloud tests, each in its own process and folder.
class CloudPeer
{
public:
    virtual ~CloudPeer();
    CloudPeer(const CloudPeer&) = delete;
    CloudPeer& operator=(const CloudPeer&) = delete;

    quint16 port() const { return m_port; }
    /// What the peer printed, for a failed start.
    QString output();
    bool isRunning() const { return m_process.state() == QProcess::Running; }

    /// A port nothing listens on at this moment.
    static quint16 freePort();
    /// Waits until something accepts connections on the port; gives up early once `server` has ended.
    static bool waitForPort(quint16 port, int timeoutMs = 20000, const QProcess* server = nullptr);
    /// A self-signed certificate for 127.0.0.1 and localhost, made with openssl; empty on failure.
    static bool makeCertificate(const QString& folder, QString* certificate, QString* key);

protected:
    CloudPeer();
    void stop();

    QTemporaryDir m_dir;
    QProcess m_process;
    quint16 m_port = 0;
    QString m_output;
};

/// moto's S3 server (tests/support/moto_peer.py): keys are checked, and one IAM user may do anything.
class MotoPeer final : public CloudPeer
{
public:
    /// Why the server cannot run on this machine (python3 cannot import moto or boto3), or empty.
    static QString missing();
    /// With a certificate and key, the server speaks HTTPS.
    bool start(const QString& certificate = QString(), const QString& key = QString());
    QString endpoint() const;
    QString accessKey() const { return m_accessKey; }
    QString secretKey() const { return m_secretKey; }
    /// A cloud configuration of an S3-compatible account on this server.
    QVariantMap config(const QString& bucket = QString()) const;
    /// The saved document of the same account, the secret enciphered.
    QJsonObject document(const QString& bucket) const;

private:
    bool m_tls = false;
    QString m_accessKey;
    QString m_secretKey;
};

/// `rclone serve sftp` over a folder, with a user and a password.
class SftpPeer final : public CloudPeer
{
public:
    /// Why the server cannot run here (no rclone on the PATH), or empty.
    static QString missing();
    /// With an authorized_keys file, the keys in it log in as well as the password.
    bool start(const QString& authorizedKeys = QString());
    QString root() const { return m_dir.path() + QStringLiteral("/served"); }
    static QString user() { return QStringLiteral("tester"); }
    static QString password() { return QStringLiteral("sftp Secret 42"); }
    QVariantMap config(const QString& path = QStringLiteral("/")) const;
};

/// Azurite's blob service, from the project's own npm folder; start() fails when it is not installed.
/// Its one account, "devstoreaccount1", is in the path of its endpoint, as rclone reaches an emulator.
class AzuritePeer final : public CloudPeer
{
public:
    /// Why the emulator cannot run here (scripts/setup did not install it), or empty.
    static QString missing();
    bool start();
    static QString program();
    static QString account() { return QStringLiteral("devstoreaccount1"); }
    static QString key();
    QVariantMap config(const QString& container = QString()) const;
};

/// An OAuth provider with Google Cloud Storage's bucket list (tests/support/oauth_peer.py). Codes are traded
/// once; the JSON API takes the access tokens it gives.
class OAuthPeer final : public CloudPeer
{
public:
    bool start(const QStringList& buckets);
    QString url() const;
    static QString clientId() { return QStringLiteral("tidewrack-test.apps.example"); }
    static QString clientSecret() { return QStringLiteral("oauth Secret 7"); }
    static QString project() { return QStringLiteral("tidewrack-tests"); }
    /// Points the console's Google addresses and OAuth client at this peer.
    void exportEnvironment() const;
};

/// A Swift server of our own (tests/support/swift_peer.py) with one user, signing in through TempAuth and
/// Keystone v2 and v3; it keeps what it is given in memory.
class SwiftPeer final : public CloudPeer
{
public:
    /// The containers exist from the start, and so do the objects ("container/name").
    bool start(const QStringList& containers = QStringList(), const QStringList& objects = QStringList());
    /// The identity URL for an authentication version: 1, 2 or 3.
    QString authUrl(int version) const;
    static QString user() { return QStringLiteral("tester"); }
    static QString key() { return QStringLiteral("swift Key 7"); }
    static QString project() { return QStringLiteral("backups"); }
};

} // namespace TWB::Test
