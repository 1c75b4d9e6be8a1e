#pragma once

#include "platform/cloud/ioperation.h"
#include "platform/twbplatform_export.h"

#include <QJsonObject>

namespace TWL::Cloud::Operation {

/// Checks an account: its credentials work and its container, when it names one, exists. A file-system
/// account's folder must exist and be writable. On success cloudConfig() is the configuration to use
/// from then on, with "UseSsl" and "Endpoint" as they worked.
class TWBPLATFORM_EXPORT CheckConfig final : public IOperation
{
    Q_OBJECT
public:
    explicit CheckConfig(const QVariantMap& config, QObject* parent = nullptr);

    void exec() override;
};

/// Creates a container from the json() of a ContainerParams object. A container that exists already and
/// is the account's own counts as made.
class TWBPLATFORM_EXPORT CreateContainer final : public IOperation
{
    Q_OBJECT
public:
    CreateContainer(const QVariantMap& config, const QJsonObject& params, QObject* parent = nullptr);

    void exec() override;
    QJsonObject params() const { return m_params; }

private:
    QJsonObject m_params;
};

} // namespace TWL::Cloud::Operation
