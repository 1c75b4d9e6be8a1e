#pragma once

#include <QDialog>
#include <QPersistentModelIndex>
#include <QStringList>
#include <QUuid>

class QLabel;
class QPushButton;
class QTreeView;

namespace TWB::GUI {
class StorageBackupFullModel;
}

namespace TWB::Host {

/// What one storage account holds, browsed as a tree with sizes, dates and each file's versions, from
/// which the chosen items can be restored. The tree is the view's own, so that folders it opens and
/// closes do not change the restore wizard's.
class StorageBrowseView final : public QDialog
{
    Q_OBJECT
    Q_DISABLE_COPY(StorageBrowseView)
public:
    StorageBrowseView(const QUuid& storageId, const QString& name, QWidget* parent = nullptr);
    ~StorageBrowseView() override;

    QUuid storageId() const { return m_storageId; }
    QTreeView* tree() const { return m_tree; }
    TWB::GUI::StorageBackupFullModel* model() const { return m_model; }
    QLabel* status() const { return m_status; }
    QPushButton* restoreButton() const { return m_restore; }
    /// The paths of the selected rows, as the restore wizard takes them.
    QStringList selectedItems() const;

Q_SIGNALS:
    void restoreRequested(const QUuid& storageId, const QStringList& items);

private:
    void findAccount();
    void refresh();
    void updateStatus();

    QUuid m_storageId;
    TWB::GUI::StorageBackupFullModel* m_model; // owned by parent-child
    QTreeView* m_tree; // owned by parent-child
    QLabel* m_status; // owned by parent-child
    QPushButton* m_refresh; // owned by parent-child
    QPushButton* m_restore; // owned by parent-child
    QPersistentModelIndex m_account;
    QString m_error;
    int m_waiting = 0; // listings sent and not yet answered
};

} // namespace TWB::Host
