#pragma once

#include "wizard/frequency_base.h"

class QGridLayout;
class QRadioButton;
class QSpinBox;
class QTimeEdit;

namespace TWB::GUI {

/// Runs every day: at one time, or every so many minutes between two times. The weekly and monthly
/// widgets put their own part above a daily part of their own, named with their prefix.
class TWBCONSOLE_EXPORT FrequencyDaily : public FrequencyBase
{
    Q_OBJECT
    Q_DISABLE_COPY(FrequencyDaily)
public:
    static const char* Name;
    static const char* FieldUsedOccursAt;
    static const char* FieldUsedOccursAtValue;
    static const char* FieldUsedOccursEvery;
    static const char* FieldUsedOccursEveryValue;
    static const char* FieldUsedOccursEveryForm;
    static const char* FieldUsedOccursEveryTo;

    FrequencyDaily(Type type, PlanWizardBase::PageBase* page, QWidget* parent = nullptr);

    QString summary() override;
    bool initPlan(TWB::Info::Plan::Base* plan) override;
    bool fromPlan(TWB::Info::Plan::Base* plan) override;
    bool validate() override;

    /// The name of one of the daily fields: "<prefix>_<name>", and "Full_" in front for the full schedule.
    QString fieldName(const char* name) const;
    QString prefix() const { return m_prefix; }

protected:
    /// For the weekly and monthly widgets, which build their own part before calling init().
    FrequencyDaily(Type type, const QString& prefix, PlanWizardBase::PageBase* page, QWidget* parent);
    /// Builds the daily part under whatever the widget already holds.
    void init();
    /// A small caption and a rule across the grid.
    void addSubTitle(const QString& text);
    /// A field of the page, by its full name.
    QVariant pageField(const QString& name) const;

    QGridLayout* grid = nullptr; // owned by parent-child

private:
    QString m_prefix;
};

} // namespace TWB::GUI
