#pragma once

#include "twbconsole_export.h"

#include <QStyledItemDelegate>

namespace TWB::GUI {

/// Shows a plan state by its text, coloured by what it means: failures red, warnings and pauses yellow, success and
/// runs green, interruptions blue.
class TWBCONSOLE_EXPORT PlanResultDelegate : public QStyledItemDelegate
{
    Q_OBJECT
    Q_DISABLE_COPY(PlanResultDelegate)
public:
    explicit PlanResultDelegate(QObject* parent = nullptr);
    ~PlanResultDelegate() override;

    static QString toText(const QVariant& value, const QLocale& locale);
    QString displayText(const QVariant& value, const QLocale& locale) const override;

    /// The text colour for a state.
    static QColor stateColor(int state);

protected:
    void initStyleOption(QStyleOptionViewItem* option, const QModelIndex& index) const override;
};

} // namespace TWB::GUI
