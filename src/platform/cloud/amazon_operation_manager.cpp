#include "platform/cloud/amazon_operation_manager.h"

#include "platform/cloud/account_keys.h"
#include "platform/cloud/lifecycle_policy.h"
#include "platform/cloud/operation_manager.h"
#include "platform/cloud/application_instance_p.h"

namespace TWL::Cloud {

namespace {

bool usable(const QVariantMap& config)
{
    return isS3Like(typeFromName(config.value(Key::CloudType).toString()))
        && !config.value(Key::ContainerName).toString().trimmed().isEmpty();
}

} // namespace

QPointer<AmazonOperationManager> AmazonOperationManager::instance()
{
    return Detail::applicationInstance<AmazonOperationManager>([] { return new AmazonOperationManager; });
}

AmazonOperationManager::AmazonOperationManager() = default;

QSharedPointer<IOperation> AmazonOperationManager::loadLifecyclePolicy(const QVariantMap& config)
{
    const QPointer<OperationManager> operations = OperationManager::instance();
    if (!usable(config) || !operations)
        return {};
    return operations->adopt(new Operation::Amazon::LoadLifecyclePolicy(config));
}

QSharedPointer<IOperation> AmazonOperationManager::saveLifecyclePolicy(const QVariantMap& config, const QByteArray& xml)
{
    const QPointer<OperationManager> operations = OperationManager::instance();
    if (!usable(config) || !operations || xml.trimmed().isEmpty())
        return {};
    return operations->adopt(new Operation::Amazon::SaveLifecyclePolicy(config, xml));
}

QSharedPointer<IOperation> AmazonOperationManager::deleteLifecyclePolicy(const QVariantMap& config)
{
    const QPointer<OperationManager> operations = OperationManager::instance();
    if (!usable(config) || !operations)
        return {};
    return operations->adopt(new Operation::Amazon::DeleteLifecyclePolicy(config));
}

} // namespace TWL::Cloud
