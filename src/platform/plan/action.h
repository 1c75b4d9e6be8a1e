#pragma once

#include "platform/twbplatform_export.h"

#include <QString>

namespace TWB::Info::Plan {

/// A program run before or after a backup.
class TWBPLATFORM_EXPORT Action
{
public:
    virtual ~Action();

    bool isEnabled() const { return m_enabled; }
    void setEnabled(bool enabled) { m_enabled = enabled; }
    QString program() const { return m_program; }
    void setProgram(const QString& program) { m_program = program; }
    QString arguments() const { return m_arguments; }
    void setArguments(const QString& arguments) { m_arguments = arguments; }

protected:
    bool sameAs(const Action& o) const
    {
        return m_enabled == o.m_enabled && m_program == o.m_program && m_arguments == o.m_arguments;
    }

private:
    bool m_enabled = false;
    QString m_program;
    QString m_arguments;
};

} // namespace TWB::Info::Plan
