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
/// follows the service's notifications, and the dialog closes as soon as the change arrives. When the
/// list reports a failure instead (the service refused to remove an account that plans use), the
/// watcher shows it and closes rejected, since the change will never come.
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
    /// What the list reported when the change failed; empty while none failed.
    QString failure() const { return m_failure; }

protected:
    void keyPressEvent(QKeyEvent* event) override;

private:
    void onRowsInserted(const QModelIndex& parent, int first, int last);
    void onDataChanged(const QModelIndex& topLeft, const QModelIndex& bottomRight);
    void onRowsRemoved();
    bool rowShowsId(int row) const;
    void onModelError(const QString& text);

    const QUuid m_id;
    const int m_type;
    QPointer<QAbstractItemModel> model;
    QString m_failure;
    ProgressWheel* wheel; // owned as a child
};

} // namespace TWB::GUI::Settings
