#pragma once

#include "platform/plan/action.h"

namespace TWB::Info::Plan {

class TWBPLATFORM_EXPORT PreAction final : public Action
{
public:
    /// The backup does not run when the action fails.
    bool terminateOnFailure() const { return m_terminateOnFailure; }
    void setTerminateOnFailure(bool terminate) { m_terminateOnFailure = terminate; }

    bool operator==(const PreAction& o) const { return sameAs(o) && m_terminateOnFailure == o.m_terminateOnFailure; }
    bool operator!=(const PreAction& o) const { return !(*this == o); }

private:
    bool m_terminateOnFailure = false;
};

} // namespace TWB::Info::Plan
