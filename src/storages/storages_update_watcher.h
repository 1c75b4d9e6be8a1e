#pragma once

#include "storages/storages.h"

#include <QDialog>
#include <QPointer>
#include <QUuid>

class QAbstractItemModel;

namespace TWB::GUI {
class ProgressWheel;
}

namespace TWB::GUI::Settings {

/// Waits, modally, until the account list shows what the service was asked to do: the new account, the
/// edited one, or the removed one gone. It has no time limit and the user cannot close it: the list
/// follows the service's notifications, and the dialog closes as soon as the change arrives.
class TWBCONSOLE_EXPORT Storages::UpdateWatcher : public QDialog
{
    Q_OBJECT
    Q_DISABLE_COPY(UpdateWatcher)
public:
    enum Type : int { AddAccount = 0, UpdateAccount = 1, RemoveAccount = 2 };
    Q_ENUM(Type)

    UpdateWatcher(const QUuid& id, int type, QWidget* parent = nullptr);
    ~UpdateWatcher() override;

    QUuid id() const { return m_id; }
    int type() const { return m_type; }

protected:
    void keyPressEvent(QKeyEvent* event) override;

private:
    void onRowsInserted(const QModelIndex& parent, int first, int last);
    void onDataChanged(const QModelIndex& topLeft, const QModelIndex& bottomRight);
    void onRowsRemoved();
    bool rowShowsId(int row) const;

    const QUuid m_id;
    const int m_type;
    QPointer<QAbstractItemModel> model;
    ProgressWheel* wheel; // owned as a child
};

} // namespace TWB::GUI::Settings
