#pragma once

#include "twbconsole_export.h"

#include <QStyledItemDelegate>

namespace TWB::GUI {

/// Shows the run status of a plan, "Run" or "Stop", with its icon. The icon area stays for every value, so the column
/// does not shift.
class TWBCONSOLE_EXPORT PlanQuickPlanStatus : public QStyledItemDelegate
{
    Q_OBJECT
    Q_DISABLE_COPY(PlanQuickPlanStatus)
public:
    explicit PlanQuickPlanStatus(QObject* parent = nullptr);
    ~PlanQuickPlanStatus() override;

    static QString toText(const QVariant& value, const QLocale& locale);
    QString displayText(const QVariant& value, const QLocale& locale) const override;

protected:
    void initStyleOption(QStyleOptionViewItem* option, const QModelIndex& index) const override;
};

} // namespace TWB::GUI
