#pragma once

#include "platform/cloud/ioperation.h"

#include <QByteArray>
#include <QJsonArray>
#include <QMap>
#include <QSharedPointer>
#include <QString>
#include <QStringList>
#include <QVariantMap>

namespace TWB::Test {

/// Helpers of the cloud tests.
class CloudTestSupport final
{
public:
    /// Starts the operation and waits for finished(); false when it never came. Removes it from the
    /// manager's list, as callers do.
    static bool run(const QSharedPointer<TWL::Cloud::IOperation>& operation, int timeoutMs = 60000);
    /// Writes an object through rclone itself, outside the layer under test.
    static bool putObject(const QVariantMap& s3Config, const QString& bucket, const QString& key,
        const QByteArray& data = QByteArrayLiteral("x"));
    /// Copies a one-byte file to `target` ("peer:container/key") through rclone itself, the remote "peer"
    /// defined by `remote`'s options ("TYPE", "ACCOUNT", ...).
    static bool rcloneCopy(
        const QMap<QString, QString>& remote, const QString& target, const QByteArray& data = QByteArrayLiteral("x"));
    /// The names of a listing's entries, in its order.
    static QStringList names(const QJsonArray& entries);
    /// The names a listing operation found; empty for any other operation.
    static QStringList names(const QSharedPointer<TWL::Cloud::IOperation>& operation);
    /// The container names a container listing found; empty for any other operation.
    static QStringList containerNames(const QSharedPointer<TWL::Cloud::IOperation>& operation);
};

} // namespace TWB::Test
