#pragma once

#include "twbconsole_export.h"

#include <QStyledItemDelegate>

namespace TWB::GUI {

/// Shows the plan kind, "Backup" or "Restore", with its icon.
class TWBCONSOLE_EXPORT PlanTypeDelegate : public QStyledItemDelegate
{
    Q_OBJECT
    Q_DISABLE_COPY(PlanTypeDelegate)
public:
    explicit PlanTypeDelegate(QObject* parent = nullptr);
    ~PlanTypeDelegate() override;

    static QString toText(const QVariant& value, const QLocale& locale);
    QString displayText(const QVariant& value, const QLocale& locale) const override;

protected:
    void initStyleOption(QStyleOptionViewItem* option, const QModelIndex& index) const override;
};

} // namespace TWB::GUI
