#pragma once

#include "twbconsole_export.h"

#include <QStyledItemDelegate>

namespace TWB::GUI {

/// Shows 0 as "no" and 1 as "yes".
class TWBCONSOLE_EXPORT TrueFalseDelegate : public QStyledItemDelegate
{
    Q_OBJECT
    Q_DISABLE_COPY(TrueFalseDelegate)
public:
    explicit TrueFalseDelegate(QObject* parent = nullptr);
    ~TrueFalseDelegate() override;

    static QString toText(const QVariant& value, const QLocale& locale);
    QString displayText(const QVariant& value, const QLocale& locale) const override;
};

} // namespace TWB::GUI
