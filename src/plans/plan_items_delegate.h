#pragma once

#include "twbconsole_export.h"

#include <QStyledItemDelegate>

namespace TWB::GUI {

/// Shows the items of a plan as a small table, one path a row, without the service's share and volume prefixes.
class TWBCONSOLE_EXPORT PlanItemsDelegate : public QStyledItemDelegate
{
    Q_OBJECT
    Q_DISABLE_COPY(PlanItemsDelegate)
public:
    explicit PlanItemsDelegate(QObject* parent = nullptr);
    ~PlanItemsDelegate() override;

    static QString toText(const QVariant& value, const QLocale& locale);
    QString displayText(const QVariant& value, const QLocale& locale) const override;

    void paint(QPainter* painter, const QStyleOptionViewItem& option, const QModelIndex& index) const override;
    QSize sizeHint(const QStyleOptionViewItem& option, const QModelIndex& index) const override;
};

} // namespace TWB::GUI
