#pragma once

#include "twbconsole_export.h"

#include <QStyledItemDelegate>

namespace TWB::GUI {

/// Shows a byte count in binary units. The service marks "no size" with 2^63 or 2^64.
class TWBCONSOLE_EXPORT SizeDelegate : public QStyledItemDelegate
{
    Q_OBJECT
    Q_DISABLE_COPY(SizeDelegate)
public:
    explicit SizeDelegate(QObject* parent = nullptr);
    ~SizeDelegate() override;

    static QString toText(const QVariant& value, const QLocale& locale);
    QString displayText(const QVariant& value, const QLocale& locale) const override;
    /// As toText, with `noSize` in place of "N/A" for the values that mean there is no size.
    static QString toText(const QVariant& value, const QString& noSize);
};

} // namespace TWB::GUI
