#pragma once

#include "twbconsole_export.h"

#include <QMap>
#include <QPointer>
#include <QUuid>
#include <QWidget>

class QAbstractItemModel;
class QModelIndex;
class QStackedLayout;

namespace TWB::GUI::Settings {

namespace Account {
class Select;
}

/// The storage page of the settings: the accounts at the left, at the right the chooser of a new
/// account's back-end or the chosen account's details.
class TWBCONSOLE_EXPORT Storages : public QWidget
{
    Q_OBJECT
    Q_DISABLE_COPY(Storages)
public:
    class EditList;
    class AddBase;
    class Add;
    class AddContainer;
    class Info;
    class UpdateWatcher;

    explicit Storages(QWidget* parent = nullptr);
    ~Storages() override;

    EditList* list() const { return m_list; }
    Account::Select* chooser() const { return select; }
    /// The widget the right side shows now: the chooser or an account's view.
    QWidget* currentView() const;

public Q_SLOTS:
    void onAddItem();
    void onCreateSelected(int type);
    void onEditItem(const QModelIndex& index);
    void onRemoveItem(const QModelIndex& index);
    void onCurrentChanged(const QModelIndex& index);
    void onDataChanged(const QModelIndex& index);

private:
    EditList* m_list; // owned as a child
    Account::Select* select; // owned by the stack
    QStackedLayout* stack; // owned by the page's layout
    QMap<QUuid, Info*> views; // owned by the stack
};

} // namespace TWB::GUI::Settings
