#pragma once

#include "platform/cloud/ioperation.h"
#include "platform/twbplatform_export.h"

#include <QByteArray>
#include <QJsonObject>
#include <QList>
#include <QMap>
#include <QObject>
#include <QPointer>
#include <QSharedPointer>
#include <QUuid>
#include <QVariantMap>

namespace TWL::Cloud {

/// Makes the console's storage operations and keeps them until their caller calls IOperation::remove().
/// Cloud back-ends are reached by rclone, run as a child process with the account's settings in its
/// environment only, never on its command line; file-system accounts are read with QDir.
/// Every call takes a cloud configuration (see account_keys.h) and gives a null pointer when the
/// configuration names no back-end the layer knows.
class TWBPLATFORM_EXPORT OperationManager final : public QObject
{
    Q_OBJECT
    Q_DISABLE_COPY(OperationManager)
public:
    /// The process-wide manager; null once the application has quit.
    static QPointer<OperationManager> instance();
    ~OperationManager() override;

    /// Checks that the account's credentials and container work. The operation's cloudConfig() is the
    /// configuration to use from then on.
    QSharedPointer<IOperation> checkConfig(const QVariantMap& config);
    /// The account's containers (buckets): an Operation::ListContainers.
    QSharedPointer<IOperation> listContainers(const QVariantMap& config);
    /// Creates a container from the json() of a ContainerParams object.
    QSharedPointer<IOperation> createContainer(const QVariantMap& config, const QJsonObject& params);
    /// Objects of the configuration's container whose names begin with `prefix`: an Operation::Listing.
    /// With the delimiter "/" the names below a further "/" are folded into one folder entry; with an empty
    /// delimiter every object is listed. At most `count` entries per page (0: all in one page); `marker`
    /// is the last name of the previous page, empty on the first.
    QSharedPointer<IOperation> listing(const QVariantMap& config, const QString& prefix, const QString& marker,
        const QString& delimiter, unsigned short count);
    /// Space of the account's storage, where the back-end can tell it: an Operation::About.
    QSharedPointer<IOperation> about(const QVariantMap& config);

    /// The operation with this id, while it is in the list.
    QSharedPointer<IOperation> operation(const QUuid& id) const;
    /// Operations made and not yet removed.
    int count() const { return m_operations.size(); }
    /// Takes the operation out of the list.
    void remove(const QUuid& id);

    /// rclone's program: $TWB_RCLONE, else rclone on the PATH, unless set here.
    QString rcloneProgram() const;
    void setRcloneProgram(const QString& program) { m_rcloneProgram = program; }
    /// Time an rclone run may take before it is stopped and the operation fails with TimedOut.
    void setTimeout(int milliseconds) { m_timeoutMs = milliseconds; }
    int timeout() const { return m_timeoutMs; }

    /// Certificates (PEM) that rclone trusts besides the system's, for this process.
    void addTrustedCertificate(const QByteArray& pem);
    QList<QByteArray> trustedCertificates() const { return m_trusted; }
    /// Whether each cloud operation first asks the local service for the certificates the user chose
    /// to trust ("ReadFromSslStorage"). On by default; the service is asked only while connected.
    void setUseServiceTrustStore(bool use) { m_useServiceTrust = use; }
    bool useServiceTrustStore() const { return m_useServiceTrust; }

    /// Adds a made operation to the list; AmazonOperationManager uses it.
    QSharedPointer<IOperation> adopt(IOperation* operation);

private:
    OperationManager();

    QMap<QUuid, QSharedPointer<IOperation>> m_operations;
    QString m_rcloneProgram;
    int m_timeoutMs = 120 * 1000;
    QList<QByteArray> m_trusted;
    bool m_useServiceTrust = true;
};

} // namespace TWL::Cloud
