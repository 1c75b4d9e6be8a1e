#pragma once

#include "platform/plan/post_action.h"
#include "platform/plan/pre_action.h"

namespace TWB::Info::Plan {

/// The pre- and post-actions of a backup plan.
class TWBPLATFORM_EXPORT Actions final
{
public:
    PreAction& pre() { return m_pre; }
    const PreAction& pre() const { return m_pre; }
    PostAction& post() { return m_post; }
    const PostAction& post() const { return m_post; }

    bool operator==(const Actions& o) const { return m_pre == o.m_pre && m_post == o.m_post; }
    bool operator!=(const Actions& o) const { return !(*this == o); }

private:
    PreAction m_pre;
    PostAction m_post;
};

} // namespace TWB::Info::Plan
