#pragma once

#include "wizard/plan_wizard_base.h"

namespace TWB::Info::Plan {
class Base;
}

namespace TWB::GUI {

/// Creates and edits backup plans. The pages are nested classes, each in a header of its own; an
/// edit builds a fresh plan under the old id from what the visited pages hold.
class TWBCONSOLE_EXPORT BackupPlanEditWizard : public PlanWizardBase
{
    Q_OBJECT
    Q_DISABLE_COPY(BackupPlanEditWizard)
public:
    class PageName;
    class PageSource;
    class PageCompressionEndEncryption;
    class PageRetentionPolicy;
    class PageFullSchedule;
    class PageSummary;
    class PageBackupType;

    /// The wizard property that holds the kind of plan being made: one of the PlanType constants.
    static const char* PropertyBackupPlanType;
    static constexpr quint8 PlanTypeFile = 0;
    static constexpr quint8 PlanTypeDiskImage = 1;
    static constexpr quint8 PlanTypeFullFile = 2;

    explicit BackupPlanEditWizard(QWidget* parent = nullptr);

    /// A wizard that edits `plan`, or null for a null plan.
    static BackupPlanEditWizard* createWizard(TWB::Info::Plan::Base* plan, QWidget* parent = nullptr);

    /// Titles the window after the plan and fills every page from it.
    void init(TWB::Info::Plan::Base* plan);

    /// The pages' own choice, except where it names a page this edition leaves out: the notification
    /// page exists only standalone, so a licence that allows notices leads to the summary instead.
    int nextId() const override;
};

} // namespace TWB::GUI
