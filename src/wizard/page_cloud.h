#pragma once

#include "wizard/page_base.h"

#include <QModelIndex>

class QAction;
class QLineEdit;

namespace TWB::GUI {

namespace Settings {
class Storages;
}

/// The storage account a plan writes to or reads from. The choice travels to the other pages in four
/// fields, above all the account's type.
class TWBCONSOLE_EXPORT PlanWizardBase::PageCloud : public PlanWizardBase::PageBase
{
    Q_OBJECT
    Q_DISABLE_COPY(PageCloud)
public:
    static const char* FieldId;
    static const char* FieldType;
    static const char* FieldName;
    static const char* FieldPrefix;

    explicit PageCloud(QWidget* parent = nullptr);

    int nextId() const override;
    void initializePage() override;
    bool isComplete() const override;
    bool validatePage() override;
    bool initPlan(TWB::Info::Plan::Base* plan) override;
    bool fromPlan(TWB::Info::Plan::Base* plan) override;
    QString summary() override;

    /// True when the managed edition has exactly one account to offer and no local folders.
    bool isSingle() const { return single; }
    void setSingle(bool on) { single = on; }

    QWidget* list() const;

public Q_SLOTS:
    void onAddDesctinationClicked();
    void onAddDestinationMenu(QAction* action);
    void onAddDestination(int type);
    void onEditDestinationClicked(const QModelIndex& index);
    void onRemoveDestinationClicked(const QModelIndex& index);
    void onCurrentItem(const QModelIndex& index);

private:
    QWidget* editList; // owned as a child; a Settings::Storages::EditList
    bool single = false;
};

} // namespace TWB::GUI
