#pragma once

#include "platform/cloud/ioperation.h"
#include "platform/twbplatform_export.h"

#include <QByteArray>
#include <QObject>
#include <QPointer>
#include <QSharedPointer>
#include <QVariantMap>

namespace TWL::Cloud {

/// Operations only Amazon's S3 has: the lifecycle policy of a bucket. They speak S3 directly (signed
/// with AWS4), since rclone has no command for them, and they sit in OperationManager's list like the
/// others. A configuration that is not of an S3 back-end, or names no bucket, gives a null pointer.
class TWBPLATFORM_EXPORT AmazonOperationManager final : public QObject
{
    Q_OBJECT
    Q_DISABLE_COPY(AmazonOperationManager)
public:
    static QPointer<AmazonOperationManager> instance();

    /// The bucket's policy: an Operation::Amazon::LoadLifecyclePolicy, empty data() when it has none.
    QSharedPointer<IOperation> loadLifecyclePolicy(const QVariantMap& config);
    /// Replaces the bucket's policy with the XML document "LifecycleConfiguration".
    QSharedPointer<IOperation> saveLifecyclePolicy(const QVariantMap& config, const QByteArray& xml);
    /// Removes the bucket's policy.
    QSharedPointer<IOperation> deleteLifecyclePolicy(const QVariantMap& config);

private:
    AmazonOperationManager();
};

} // namespace TWL::Cloud
