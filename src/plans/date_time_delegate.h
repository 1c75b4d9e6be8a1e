#pragma once

#include "twbconsole_export.h"

#include <QStyledItemDelegate>

namespace TWB::GUI {

/// Shows the service's compact UTC time "yyyyMMddhhmmss" as a short local date and time.
class TWBCONSOLE_EXPORT DateTimeDelegate : public QStyledItemDelegate
{
    Q_OBJECT
    Q_DISABLE_COPY(DateTimeDelegate)
public:
    explicit DateTimeDelegate(QObject* parent = nullptr);
    ~DateTimeDelegate() override;

    static QString toText(const QVariant& value, const QLocale& locale);
    QString displayText(const QVariant& value, const QLocale& locale) const override;
};

} // namespace TWB::GUI
