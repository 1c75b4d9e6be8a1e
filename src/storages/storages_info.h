#pragma once

#include "platform/cloud/cloud_type.h"
#include "storages/storages.h"

#include <QMap>
#include <QModelIndex>
#include <QWidget>

class QFormLayout;
class QLabel;

namespace TWB::GUI {
class ElidedLabel;
}

namespace TWB::GUI::Settings {

/// The read-only view of one account: its back-end, its name and the settings its back-end shows.
class TWBCONSOLE_EXPORT Storages::Info : public QWidget
{
    Q_OBJECT
    Q_DISABLE_COPY(Info)
public:
    using Delegate = QString (*)(const QVariant&);

    explicit Info(TWL::Cloud::Type type, QWidget* parent = nullptr);
    ~Info() override;

    /// A row showing the key of the account's settings, through the delegate when there is one.
    void addField(const QString& label, const QString& key, Delegate delegate = nullptr);
    /// The value a row shows now, empty for a hidden row.
    QString fieldText(const QString& key) const;
    QString displayName() const;

    static QString decryptDelegate(const QVariant& value);
    static QString trueFalseDelegate(const QVariant& value);

public Q_SLOTS:
    virtual void setItem(const QModelIndex& index);
    virtual void updateItem(const QModelIndex& index);

protected:
    /// Spaces a row by margins of its own, which go away with the row when it is hidden.
    void spaceRow(QWidget* value);

    const TWL::Cloud::Type type;
    QFormLayout* form; // owned by the widget's layout
    QLabel* name; // owned as a child
    QMap<QString, ElidedLabel*> values; // owned as children
    QMap<QString, Delegate> delegates;
};

} // namespace TWB::GUI::Settings
