#pragma once

#include "platform/twbplatform_export.h"

#include <QString>

namespace TWB::Info::Plan {

/// When and how the plan's owner hears about a run.
class TWBPLATFORM_EXPORT Notification final
{
public:
    enum Type : int { Never = 0, OnFailure = 1, Always = 2 };

    Type type() const { return m_type; }
    void setType(Type type) { m_type = type; }
    QString subject() const { return m_subject; }
    void setSubject(const QString& subject) { m_subject = subject; }
    bool generateDetailedReport() const { return m_detailedReport; }
    void setGenerateDetailedReport(bool generate) { m_detailedReport = generate; }

    bool operator==(const Notification& o) const
    {
        return m_type == o.m_type && m_subject == o.m_subject && m_detailedReport == o.m_detailedReport;
    }
    bool operator!=(const Notification& o) const { return !(*this == o); }

private:
    Type m_type = Never;
    QString m_subject;
    bool m_detailedReport = false;
};

} // namespace TWB::Info::Plan
