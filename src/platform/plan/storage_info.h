#pragma once

#include "platform/twbplatform_export.h"

namespace TWB::Info::Plan {

/// Settings that depend on the plan's storage back-end.
class TWBPLATFORM_EXPORT StorageInfo
{
public:
    virtual ~StorageInfo();

    bool useS3Accelerated() const { return m_useS3Accelerated; }
    void setUseS3Accelerated(bool use) { m_useS3Accelerated = use; }

protected:
    bool sameAs(const StorageInfo& o) const { return m_useS3Accelerated == o.m_useS3Accelerated; }

private:
    bool m_useS3Accelerated = false;
};

} // namespace TWB::Info::Plan
