#pragma once

#include "platform/twbplatform_export.h"

#include <QJsonObject>
#include <QString>

/// The second argument of OperationManager::createContainer. json() holds "Name" and the back-end's
/// own settings of a new container.
namespace TWL::Cloud::ContainerParams {

class TWBPLATFORM_EXPORT Base
{
public:
    explicit Base(const QString& name);
    virtual ~Base();
    QString name() const { return m_name; }
    virtual QJsonObject json() const;

private:
    QString m_name;
};

/// `location` is a region code of Info::AmazonS3Like::regions(); empty for the service's default.
class TWBPLATFORM_EXPORT AmazonS3Like final : public Base
{
public:
    AmazonS3Like(const QString& name, const QString& location);
    QJsonObject json() const override;

private:
    QString m_location;
};

/// `accessType` is a code of Info::AzureBlob::accessType().
class TWBPLATFORM_EXPORT AzureBlob final : public Base
{
public:
    AzureBlob(const QString& name, const QString& accessType);
    QJsonObject json() const override;

private:
    QString m_accessType;
};

/// `accessType` is a code of Info::BackBlaze::containerAccessType().
class TWBPLATFORM_EXPORT BackBlaze final : public Base
{
public:
    BackBlaze(const QString& name, const QString& accessType);
    QJsonObject json() const override;

private:
    QString m_accessType;
};

class TWBPLATFORM_EXPORT GoogleStorage final : public Base
{
public:
    GoogleStorage(const QString& name, const QString& storageClass, const QString& location);
    QJsonObject json() const override;

private:
    QString m_storageClass;
    QString m_location;
};

class TWBPLATFORM_EXPORT OpenStack final : public Base
{
public:
    explicit OpenStack(const QString& name);
};

} // namespace TWL::Cloud::ContainerParams
