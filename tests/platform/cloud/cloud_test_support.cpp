#include "cloud_test_support.h"

#include "platform/cloud/account_keys.h"
#include "platform/cloud/list_containers.h"
#include "platform/cloud/listing.h"
#include "platform/cloud/listing_object.h"

#include <QDebug>
#include <QDir>
#include <QFile>
#include <QProcess>
#include <QSignalSpy>
#include <QTemporaryFile>

namespace TWB::Test {

using TWL::Cloud::IOperation;
namespace Key = TWL::Cloud::Key;

bool CloudTestSupport::run(const QSharedPointer<IOperation>& operation, int timeoutMs)
{
    if (!operation)
        return false;
    QSignalSpy finished(operation.data(), &IOperation::finished);
    operation->exec();
    const bool ended = finished.wait(timeoutMs);
    operation->remove();
    return ended && finished.count() == 1 && operation->isComplite();
}

QStringList CloudTestSupport::names(const QJsonArray& entries)
{
    QStringList result;
    for (const QJsonValue& entry : entries)
        result << TWL::Cloud::Api::ListingObject(entry.toObject()).name();
    return result;
}

QStringList CloudTestSupport::names(const QSharedPointer<IOperation>& operation)
{
    const auto* listing = qobject_cast<TWL::Cloud::Operation::Listing*>(operation.data());
    return listing ? names(listing->data()) : QStringList();
}

QStringList CloudTestSupport::containerNames(const QSharedPointer<IOperation>& operation)
{
    QStringList result;
    if (const auto* list = qobject_cast<TWL::Cloud::Operation::ListContainers*>(operation.data())) {
        const QJsonArray data = list->data();
        for (const QJsonValue& entry : data)
            result << entry.toObject().value(QStringLiteral("Name")).toString();
    }
    return result;
}

bool CloudTestSupport::putObject(
    const QVariantMap& s3Config, const QString& bucket, const QString& key, const QByteArray& data)
{
    const QString scheme
        = s3Config.value(Key::UseSsl).toBool() ? QStringLiteral("https://") : QStringLiteral("http://");
    return rcloneCopy(
        {{QStringLiteral("TYPE"), QStringLiteral("s3")}, {QStringLiteral("PROVIDER"), QStringLiteral("Other")},
            {QStringLiteral("ACCESS_KEY_ID"), s3Config.value(Key::AccessKey).toString()},
            {QStringLiteral("SECRET_ACCESS_KEY"), s3Config.value(Key::SecretKey).toString()},
            {QStringLiteral("ENDPOINT"), scheme + s3Config.value(Key::Endpoint).toString()}},
        QStringLiteral("peer:%1/%2").arg(bucket, key), data);
}

bool CloudTestSupport::rcloneCopy(const QMap<QString, QString>& remote, const QString& target, const QByteArray& data)
{
    QTemporaryFile file;
    if (!file.open() || file.write(data) != data.size())
        return false;
    file.flush();
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.remove(QStringLiteral("AWS_CA_BUNDLE"));
    environment.insert(QStringLiteral("RCLONE_CONFIG"), QDir::tempPath() + QStringLiteral("/twb-test-no-rclone.conf"));
    for (auto it = remote.constBegin(); it != remote.constEnd(); ++it)
        environment.insert(QStringLiteral("RCLONE_CONFIG_PEER_") + it.key(), it.value());
    QProcess rclone;
    rclone.setProcessEnvironment(environment);
    rclone.setProcessChannelMode(QProcess::MergedChannels);
    rclone.start(QStringLiteral("rclone"), {QStringLiteral("copyto"), file.fileName(), target});
    if (!rclone.waitForFinished(60000) || rclone.exitCode() != 0) {
        qWarning() << "rclone copyto:" << rclone.readAll();
        return false;
    }
    return true;
}

} // namespace TWB::Test
