#pragma once

#include "wizard/plan_wizard_base.h"

#include <QStringList>
#include <QUuid>

namespace TWB::Info::Plan {
class Base;
class BackupFile;
} // namespace TWB::Info::Plan

namespace TWB::GUI {

/// Creates and edits restore plans. The pages are nested classes, each in a header of its own; the
/// plan saved at Finish is always a fresh one built from the visited pages.
class TWBCONSOLE_EXPORT RestorePlanEditWizard : public PlanWizardBase
{
    Q_OBJECT
    Q_DISABLE_COPY(RestorePlanEditWizard)
public:
    class PageName;
    class PageSchedule;
    class PageSummary;
    class PageRestoreType;
    class PageSource;
    class PagePointType;
    class PageDestination;
    class PageEncryption;
    class PageGlacier;

    /// The wizard property that holds the kind of restore: one of the PlanType constants.
    static const char* PropertyRestorePlanType;
    static constexpr quint8 PlanTypeFile = 0;
    static constexpr quint8 PlanTypeFullFile = 1;
    static constexpr quint8 PlanTypeDiskImagePhysicalDisk = 2;
    static constexpr quint8 PlanTypeDiskImageVirtualDisk = 3;
    static constexpr quint8 PlanTypeDiskImageVirtualMachine = 4;

    explicit RestorePlanEditWizard(QWidget* parent = nullptr);

    /// A wizard that edits `plan`, or null for a null plan.
    static RestorePlanEditWizard* createWizard(TWB::Info::Plan::Base* plan, QWidget* parent = nullptr);
    /// A new plan that restores `items` of the storage account `storageId`; opens on the name page.
    static RestorePlanEditWizard* createWizardFromBackupStorage(
        const QUuid& storageId, const QStringList& items, QWidget* parent = nullptr);
    /// A new plan that restores what `plan` backs up, with its password when `withPassword` is set.
    static RestorePlanEditWizard* createWizardFromBackupPlan(
        TWB::Info::Plan::BackupFile* plan, bool withPassword, QWidget* parent = nullptr);

    /// Titles the window after the plan and fills every page from it.
    void init(TWB::Info::Plan::Base* plan);

    /// The pages' "close" rule: the notification page where the licence allows notices, else the summary.
    static int closeId();
    /// Whether the walk passes the Glacier page: an Amazon S3 storage whose archived files are wanted.
    bool glacierWanted() const;

    /// The pages' own choice, except where it names a page this edition leaves out: the notification
    /// page exists only standalone, so a licence that allows notices leads to the summary instead.
    int nextId() const override;
};

} // namespace TWB::GUI
