#pragma once

#include "platform/cloud/ioperation.h"
#include "platform/twbplatform_export.h"

namespace TWL::Cloud::Operation {

/// Space of an account's storage. A value the back-end cannot tell is -1.
class TWBPLATFORM_EXPORT About final : public IOperation
{
    Q_OBJECT
public:
    explicit About(const QVariantMap& config, QObject* parent = nullptr);

    void exec() override;
    qint64 total() const { return m_total; }
    qint64 used() const { return m_used; }
    qint64 free() const { return m_free; }

private:
    qint64 m_total = -1;
    qint64 m_used = -1;
    qint64 m_free = -1;
};

} // namespace TWL::Cloud::Operation
