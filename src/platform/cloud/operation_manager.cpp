#include "platform/cloud/operation_manager.h"

#include "platform/cloud/about.h"
#include "platform/cloud/account_keys.h"
#include "platform/cloud/check_config.h"
#include "platform/cloud/list_containers.h"
#include "platform/cloud/listing.h"
#include "platform/cloud/application_instance_p.h"

#include <QProcessEnvironment>
#include <QStandardPaths>

namespace TWL::Cloud {

namespace {

// A configuration the layer can act on: it names a type the layer knows.
bool usable(const QVariantMap& config)
{
    return typeFromName(config.value(Key::CloudType).toString()) != Unknown;
}

} // namespace

QPointer<OperationManager> OperationManager::instance()
{
    return Detail::applicationInstance<OperationManager>([] { return new OperationManager; });
}

OperationManager::OperationManager() = default;

OperationManager::~OperationManager()
{
    // Operations still running stop here: their rclone runs are children of theirs.
    for (const QSharedPointer<IOperation>& operation : qAsConst(m_operations))
        operation->disconnect();
}

QSharedPointer<IOperation> OperationManager::adopt(IOperation* operation)
{
    QSharedPointer<IOperation> shared(operation, &QObject::deleteLater);
    m_operations.insert(operation->id(), shared);
    return shared;
}

QSharedPointer<IOperation> OperationManager::checkConfig(const QVariantMap& config)
{
    if (!usable(config))
        return {};
    return adopt(new Operation::CheckConfig(config));
}

QSharedPointer<IOperation> OperationManager::listContainers(const QVariantMap& config)
{
    if (!usable(config))
        return {};
    return adopt(new Operation::ListContainers(config));
}

QSharedPointer<IOperation> OperationManager::createContainer(const QVariantMap& config, const QJsonObject& params)
{
    if (!usable(config))
        return {};
    return adopt(new Operation::CreateContainer(config, params));
}

QSharedPointer<IOperation> OperationManager::listing(const QVariantMap& config, const QString& prefix,
    const QString& marker, const QString& delimiter, unsigned short count)
{
    if (!usable(config))
        return {};
    return adopt(new Operation::Listing(config, prefix, marker, delimiter, count));
}

QSharedPointer<IOperation> OperationManager::about(const QVariantMap& config)
{
    if (!usable(config))
        return {};
    return adopt(new Operation::About(config));
}

QSharedPointer<IOperation> OperationManager::operation(const QUuid& id) const
{
    return m_operations.value(id);
}

void OperationManager::remove(const QUuid& id)
{
    m_operations.remove(id);
}

QString OperationManager::rcloneProgram() const
{
    if (!m_rcloneProgram.isEmpty())
        return m_rcloneProgram;
    const QString configured = QProcessEnvironment::systemEnvironment().value(QStringLiteral("TWB_RCLONE"));
    if (!configured.isEmpty())
        return configured;
    const QString found = QStandardPaths::findExecutable(QStringLiteral("rclone"));
    return found.isEmpty() ? QStringLiteral("rclone") : found;
}

void OperationManager::addTrustedCertificate(const QByteArray& pem)
{
    if (!pem.trimmed().isEmpty() && !m_trusted.contains(pem))
        m_trusted << pem;
}

} // namespace TWL::Cloud
