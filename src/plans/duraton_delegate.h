#pragma once

#include "twbconsole_export.h"

#include <QStyledItemDelegate>

namespace TWB::GUI {

/// Shows a number of seconds as a duration; a missing value reads "N/A".
class TWBCONSOLE_EXPORT DuratonDelegate : public QStyledItemDelegate
{
    Q_OBJECT
    Q_DISABLE_COPY(DuratonDelegate)
public:
    explicit DuratonDelegate(QObject* parent = nullptr);
    ~DuratonDelegate() override;

    static QString toText(const QVariant& value, const QLocale& locale);
    QString displayText(const QVariant& value, const QLocale& locale) const override;
};

} // namespace TWB::GUI
