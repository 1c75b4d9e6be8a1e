#pragma once

#include "platform/cloud/cloud_type.h"

#include <QMap>
#include <QString>
#include <QStringList>
#include <QVariantMap>

namespace TWL::Cloud::Detail {

/// A cloud configuration as an rclone remote defined wholly by RCLONE_CONFIG_<REMOTE>_* variables, so that
/// no secret reaches a command line or a file. The same variables as the service's engine sets for its
/// runs, read from the configuration's keys instead of the saved document's.
struct RcloneRemote
{
    Type type = Unknown;
    /// The variables that define the remote.
    QMap<QString, QString> environment;
    /// Variables whose values rclone takes only obscured ("rclone obscure").
    QStringList obscured;
    /// The configuration's container; empty when it names none.
    QString container;
    /// For SFTP: the folder on the server that stands for the account; its containers are folders in it.
    QString base;
    /// The host the back-end is reached at, for messages.
    QString host;
    /// Why the configuration cannot be used; empty when it can.
    QString error;

    static RcloneRemote fromConfig(const QVariantMap& config);
    static QString remoteName() { return QStringLiteral("twbstorage"); }
    static QString variable(const char* option);

    /// The remote's root: the list of containers ("twbstorage:", or the SFTP folder).
    QString root() const;
    /// A path in a container, without a trailing "/": "twbstorage:bucket/folder".
    QString path(const QString& container, const QString& inside = QString()) const;
    /// Whether the back-end has containers (buckets) of its own, rather than folders.
    bool hasBuckets() const { return type != Sftp && type != FileSystem; }
};

} // namespace TWL::Cloud::Detail
