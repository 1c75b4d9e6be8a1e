#pragma once

#include <QByteArray>
#include <QMap>
#include <QString>
#include <QStringList>

namespace TWB::Service {

struct Account;

/// What a plan asks of its storage beyond the account: the storage class or access tier of new
/// objects, server side encryption and S3 Transfer Acceleration.
struct StorageOptions
{
    int amazonStorageClass = 1; // Backup::StorageInfo::AmazonS3StorageClass
    bool serverSideEncryption = false;
    bool transferAcceleration = false;
    int azureAccessTier = 0; // Backup::StorageInfo::AzureBlobStorageClass
};

/// How restic and rclone reach one storage account. Secrets stand only in `environment`,
/// `rcloneEnvironment` and `files`; the repository string and the options never hold one.
struct BackendTarget
{
    /// restic's repository string of the account's root; a repository is this plus "<prefix>/<plan>".
    QString repositoryRoot;
    /// Extended options of restic, each given as "-o <option>".
    QStringList options;
    /// The variables restic reads for its own back-end.
    QMap<QString, QString> environment;
    /// The same account as an rclone remote, in rclone's variables; restic goes through it when
    /// `throughRclone` is set, and repository synchronisation always lists with it.
    QMap<QString, QString> rcloneEnvironment;
    /// Variables of rcloneEnvironment whose values rclone takes only obscured ("rclone obscure").
    QStringList obscured;
    /// The account's root as an rclone path: "<remote>:<bucket and folder>/".
    QString rcloneRoot;
    bool throughRclone = false;
    /// Files the back-end reads (a Google service account key), by name in the run folder;
    /// the environment names them by their full path.
    QMap<QString, QByteArray> files;
    /// Why the account cannot be reached; empty when it can.
    QString error;

    /// restic's repository string of one plan's repository.
    QString repository(const QString& prefix, const QString& plan) const;
    /// The variables of a restic run: restic's own, and rclone's when restic goes through it.
    QMap<QString, QString> resticEnvironment() const;
};

/// Maps a storage account of each back-end onto restic's repository string and environment, and
/// onto an rclone remote. restic's own back-ends are used where they honour every setting of the
/// account and the plan; otherwise restic goes through rclone, which has more of them.
class BackendMapping final
{
public:
    /// The name of the rclone remote that every mapping defines.
    static QString remoteName() { return QStringLiteral("twbstorage"); }

    /// `runFolder` is the private folder where the files of `BackendTarget::files` will be written.
    /// Sealed secrets of the account document are opened with the local cipher here.
    static BackendTarget map(const Account& account, const StorageOptions& options, const QString& runFolder);
};

} // namespace TWB::Service
