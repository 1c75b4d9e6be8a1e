#pragma once

#include "twbconsole_export.h"

#include <QStyledItemDelegate>

namespace TWB::GUI {

/// Shows a storage account id as the account's display name, looked up in the shared storage list; "Unknown" when the
/// list does not hold it.
class TWBCONSOLE_EXPORT StorageNameDelegate : public QStyledItemDelegate
{
    Q_OBJECT
    Q_DISABLE_COPY(StorageNameDelegate)
public:
    explicit StorageNameDelegate(QObject* parent = nullptr);
    ~StorageNameDelegate() override;

    static QString toText(const QVariant& value, const QLocale& locale);
    QString displayText(const QVariant& value, const QLocale& locale) const override;
};

} // namespace TWB::GUI
