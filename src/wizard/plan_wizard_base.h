#pragma once

#include "wizard/base_wizard.h"

#include <QUuid>

namespace TWB::GUI {

/// Base of the backup and restore plan wizards: the plan's identity, the one-at-a-time rule and
/// the window fitted to the wizard artwork. Pages are nested classes, each in a header of its own.
class TWBCONSOLE_EXPORT PlanWizardBase : public BaseWizard
{
    Q_OBJECT
    Q_DISABLE_COPY(PlanWizardBase)
    Q_PROPERTY(int PlanType READ planType)
    Q_PROPERTY(bool IsEdit READ isEdit WRITE setEdit)
    Q_PROPERTY(QUuid PlanId READ planId WRITE setPlanId)
public:
    class PageBase;
    class PageName;
    class PageSource;
    class PageSummary;
    class PageSchedule;
    class PageCloud;
    class PageNotification;
    class PageNotificationStandalone;

    /// `planType` is 1 for a backup plan wizard and 2 for a restore plan wizard.
    explicit PlanWizardBase(int planType, QWidget* parent = nullptr);

    /// Runs the wizard modally. While any plan wizard runs, a second call returns 0 at once.
    int exec() override;
    /// Makes the window as large as the largest page, so that it never jumps from page to page.
    void resizeWizardPages();

protected:
    void showEvent(QShowEvent* event) override;

    int planType() const { return m_planType; }
    bool isEdit() const { return m_isEdit; }
    void setEdit(bool edit) { m_isEdit = edit; }
    QUuid planId() const { return m_planId; }
    void setPlanId(const QUuid& id) { m_planId = id; }

private:
    /// The widest page's size hint, as resizeWizardPages() found it.
    int m_widestPage = 0;
    const int m_planType;
    bool m_isEdit = false;
    QUuid m_planId;
};

} // namespace TWB::GUI
