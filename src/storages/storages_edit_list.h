#pragma once

#include "storages/storages.h"
#include "widgets/edit_list_widget.h"

#include <QModelIndex>
#include <QUuid>

class QMenu;

namespace TWB::GUI::Settings {

/// The list of accounts: add, remove and "Edit Account" under it. It keeps the chosen account chosen
/// while the list refreshes itself, by its id.
class TWBCONSOLE_EXPORT Storages::EditList : public EditListWidget
{
    Q_OBJECT
    Q_DISABLE_COPY(EditList)
public:
    explicit EditList(bool readOnly, QWidget* parent = nullptr);

    void setModel(QAbstractItemModel* model, int column = 0) override;
    /// The add button opens this menu instead of raising addItem().
    void setAddButtonMenu(QMenu* menu);
    QModelIndex currentIndex() const;
    void setCurrentIndex(const QModelIndex& index);
    QToolButton* editButton() const { return edit; }

public Q_SLOTS:
    void onSetCurrentItem(const QModelIndex& index) override;
    /// Chooses the remembered account again after the model changed.
    void setCurrentItem();

Q_SIGNALS:
    void addItem();
    void removeItem(const QModelIndex& index);
    void editItem(const QModelIndex& index);
    void currentItem(const QModelIndex& index);
    /// A double-click on a row.
    void activatedItem(const QModelIndex& index);

protected Q_SLOTS:
    void onAddClicked() override;
    void onRemoveClicked() override;

private:
    QToolButton* edit; // owned as a child
    QUuid current;
};

} // namespace TWB::GUI::Settings
