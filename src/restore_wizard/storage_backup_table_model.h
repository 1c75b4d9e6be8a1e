#pragma once

#include "frame/base_model.h"
#include "twbconsole_export.h"

#include <QPersistentModelIndex>
#include <QPointer>

namespace TWB::GUI {

class StorageBackupFullModel;

/// One folder of the full storage tree as a flat table, registered as "TwbStorageBackupTableModel":
/// the folder's files and subfolders as rows, with every column of the tree ("Size on Storage",
/// "Date Modified", "Encrypted", "Compressed", ...). It holds no rows of its own and follows the
/// tree as its parts arrive, so that a list beside a folder tree shares the tree's listings.
class TWBCONSOLE_EXPORT StorageBackupTableModel : public BaseModel
{
    Q_OBJECT
    Q_DISABLE_COPY(StorageBackupTableModel)
public:
    explicit StorageBackupTableModel(QObject* parent = nullptr);
    ~StorageBackupTableModel() override;

    QModelIndex index(int row, int column, const QModelIndex& parent = QModelIndex()) const override;
    QModelIndex parent(const QModelIndex& child) const override;
    int rowCount(const QModelIndex& parent = QModelIndex()) const override;
    int columnCount(const QModelIndex& parent = QModelIndex()) const override;
    QVariant data(const QModelIndex& index, int role = Qt::DisplayRole) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role = Qt::DisplayRole) const override;
    Qt::ItemFlags flags(const QModelIndex& index) const override;
    bool canFetchMore(const QModelIndex& parent) const override;
    void fetchMore(const QModelIndex& parent) override;

    /// Takes the shared "TwbStorageBackupFullModel" unless a tree was set; false without one.
    bool init() override;

    void setSourceModel(StorageBackupFullModel* tree);
    StorageBackupFullModel* sourceModel() const { return tree; }
    /// Shows the entries of `folder`, an index of the tree; an invalid index shows nothing.
    void setFolder(const QModelIndex& folder);
    QModelIndex folder() const { return shown; }
    QModelIndex mapToSource(const QModelIndex& index) const;

private:
    void onAboutToBeInserted(const QModelIndex& parent, int first, int last);
    void onInserted(const QModelIndex& parent);
    void onAboutToBeRemoved(const QModelIndex& parent, int first, int last);
    void onRemoved(const QModelIndex& parent);
    void onDataChanged(const QModelIndex& topLeft, const QModelIndex& bottomRight, const QVector<int>& roles);
    /// Whether the shown folder lies within rows first to last of `parent`, or is one of them.
    bool holdsFolder(const QModelIndex& parent, int first, int last) const;

    QPointer<StorageBackupFullModel> tree;
    QPersistentModelIndex shown;
    bool inserting = false;
    bool removing = false;
    bool resetting = false;
};

} // namespace TWB::GUI
