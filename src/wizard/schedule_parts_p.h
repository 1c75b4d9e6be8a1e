#pragma once

#include "wizard/frequency_base.h"

#include <QCoreApplication>
#include <QMap>
#include <QString>

class QCheckBox;
class QComboBox;
class QHBoxLayout;
class QSpinBox;
class QWidget;

namespace TWB::GUI {

/// What the plan's schedule page and the full schedule page build and read alike.
class ScheduleParts final
{
    Q_DECLARE_TR_FUNCTIONS(ScheduleParts)

public:
    /// "Stop plan if it runs for:" with its hours and minutes, which are usable only while it is checked.
    struct StopControls
    {
        QCheckBox* check;
        QSpinBox* hours;
        QSpinBox* minutes;
        QHBoxLayout* row; // not owned: the caller puts it into its layout
    };

    /// The daily, weekly and monthly widgets under the keys 0, 1 and 2, in a stack in `box` that follows `type`.
    static QMap<int, FrequencyBase*> addFrequencies(
        FrequencyBase::Type kind, PlanWizardBase::PageBase* page, QWidget* box, QComboBox* type);
    static StopControls addStopControls(QWidget* parent);
    /// The stop time in seconds; 0 when the rule is off or says nothing.
    static unsigned long long stopAfter(bool on, int hours, int minutes);
    /// Fills the three stop fields from a stop time; a time of 0 leaves them as they are.
    static void loadStopAfter(PlanWizardBase::PageBase* page, unsigned long long stopAfter, const char* enableField,
        const char* hoursField, const char* minutesField);
    static QString stopSummary(int hours, int minutes);
    /// The combo box item of a frequency type: both monthly kinds share the one "Monthly" item.
    static int frequencyIndex(int frequencyType);
};

} // namespace TWB::GUI
