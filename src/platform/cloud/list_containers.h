#pragma once

#include "platform/cloud/ioperation.h"
#include "platform/twbplatform_export.h"

#include <QJsonArray>

namespace TWL::Cloud::Operation {

/// The containers (buckets) of an account. data() holds one object per container, sorted by name,
/// with "Name" and, where the back-end tells, "Created" (ISO 8601).
class TWBPLATFORM_EXPORT ListContainers final : public IOperation
{
    Q_OBJECT
public:
    explicit ListContainers(const QVariantMap& config, QObject* parent = nullptr);

    void exec() override;
    QJsonArray data() const { return m_data; }

private:
    QJsonArray m_data;
};

} // namespace TWL::Cloud::Operation
