#pragma once

#include "platform/plan/action.h"

namespace TWB::Info::Plan {

class TWBPLATFORM_EXPORT PostAction final : public Action
{
public:
    /// The action runs even after a failed backup.
    bool runOnBackupFailure() const { return m_runOnBackupFailure; }
    void setRunOnBackupFailure(bool run) { m_runOnBackupFailure = run; }

    bool operator==(const PostAction& o) const { return sameAs(o) && m_runOnBackupFailure == o.m_runOnBackupFailure; }
    bool operator!=(const PostAction& o) const { return !(*this == o); }

private:
    bool m_runOnBackupFailure = false;
};

} // namespace TWB::Info::Plan
