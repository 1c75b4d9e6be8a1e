#include "platform/cloud/container_params.h"

namespace TWL::Cloud::ContainerParams {

namespace {
const QString nameKey = QStringLiteral("Name");
} // namespace

Base::Base(const QString& name)
    : m_name(name.trimmed())
{ }

Base::~Base() = default;

QJsonObject Base::json() const
{
    return {{nameKey, m_name}};
}

AmazonS3Like::AmazonS3Like(const QString& name, const QString& location)
    : Base(name)
    , m_location(location.trimmed())
{ }

QJsonObject AmazonS3Like::json() const
{
    QJsonObject object = Base::json();
    object.insert(QStringLiteral("Location"), m_location);
    return object;
}

AzureBlob::AzureBlob(const QString& name, const QString& accessType)
    : Base(name)
    , m_accessType(accessType)
{ }

QJsonObject AzureBlob::json() const
{
    QJsonObject object = Base::json();
    object.insert(QStringLiteral("AccessType"), m_accessType);
    return object;
}

BackBlaze::BackBlaze(const QString& name, const QString& accessType)
    : Base(name)
    , m_accessType(accessType)
{ }

QJsonObject BackBlaze::json() const
{
    QJsonObject object = Base::json();
    object.insert(QStringLiteral("AccessType"), m_accessType);
    return object;
}

GoogleStorage::GoogleStorage(const QString& name, const QString& storageClass, const QString& location)
    : Base(name)
    , m_storageClass(storageClass)
    , m_location(location)
{ }

QJsonObject GoogleStorage::json() const
{
    QJsonObject object = Base::json();
    object.insert(QStringLiteral("StorageClass"), m_storageClass);
    object.insert(QStringLiteral("Location"), m_location);
    return object;
}

OpenStack::OpenStack(const QString& name)
    : Base(name)
{ }

} // namespace TWL::Cloud::ContainerParams
