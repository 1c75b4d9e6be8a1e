#pragma once

#include "backup_wizard/file_node.h"
#include "backup_wizard/icon_provider.h"
#include "twbconsole_export.h"

#include <QAbstractItemModel>
#include <QHash>
#include <QStringList>

#include <memory>

namespace TWB::GUI {

/// A lazily listed tree of files with four check states, registered as "TwbFileModelBase".
///
/// A mark propagates as the user means it: 2 takes everything below, also what appears later; 1 is a
/// selected folder with something below left out; 1001 a folder left out with something below selected.
/// States 1 and 1001 store a partly selected folder in opposite ways and are never merged.
class TWBCONSOLE_EXPORT BaseFilesModel : public QAbstractItemModel
{
    Q_OBJECT
    Q_DISABLE_COPY(BaseFilesModel)
public:
    // Names of the node attributes, also the column headers.
    static const QString Name;
    static const QString Path;
    static const QString RealPath;
    static const QString IsChangeable;
    static const QString IsExpandable;
    static const QString Type;
    static const QString IsHidden;
    static const QString IsSymlink;
    static const QString Checked;
    static const QString Row;
    static const QString Load;

    static constexpr int IncompliteChecked = 1001;
    /// Column number to attribute name.
    static const QHash<int, QString>& columns();

    explicit BaseFilesModel(QObject* parent = nullptr);
    ~BaseFilesModel() override;

    QModelIndex index(int row, int column, const QModelIndex& parent = QModelIndex()) const override;
    QModelIndex parent(const QModelIndex& child) const override;
    int rowCount(const QModelIndex& parent = QModelIndex()) const override;
    int columnCount(const QModelIndex& parent = QModelIndex()) const override;
    QVariant data(const QModelIndex& index, int role = Qt::DisplayRole) const override;
    /// Accepts only a check state (0, 1, 2 or 1001) in column 0; an unchanged state returns false.
    bool setData(const QModelIndex& index, const QVariant& value, int role = Qt::EditRole) override;
    QVariant headerData(int section, Qt::Orientation orientation, int role = Qt::DisplayRole) const override;
    Qt::ItemFlags flags(const QModelIndex& index) const override;
    bool hasChildren(const QModelIndex& parent = QModelIndex()) const override;
    bool canFetchMore(const QModelIndex& parent) const override;
    void fetchMore(const QModelIndex& parent) override;

    /// Starts listing each path and returns at once; the nodes arrive through onResult().
    virtual bool load(const QStringList& paths, int option) = 0;

    /// Column 0 of the node with that real path; invalid while the node is not listed, and for the root.
    QModelIndex indexByPath(const QString& realPath) const;
    /// Whether a row from `start` to the last under its parent holds `value` under `role`.
    bool hasMatchFirst(const QModelIndex& start, int role, const QVariant& value, bool withHidden) const;
    /// How many rows under `parent` are hidden files or folders.
    int hiddenChildCount(const QModelIndex& parent) const;
    /// Whether the view has hidden files out of sight; hidden rows keep their marks all the same.
    bool uncheckedAllHiddenFiles() const { return hiddenFilesUnchecked; }

public slots:
    /// Adds the listed items of `path` under its node; an item already in the tree is dropped.
    virtual void onResult(const QString& path, const TWB::GUI::FileNodeBatch& items);
    /// Shows a folder that could not be listed as such: no children, the reason as its tool tip.
    void onListingError(const QString& path, const QString& error);
    /// Forgets the children of a folder, so that it is listed anew when opened; the folder is unchecked.
    void onCollapse(const QModelIndex& index);
    void onUncheckedAllHiddenFiles(bool unchecked);

protected:
    FileNode* nodeOf(const QModelIndex& index) const;
    QModelIndex indexOf(const FileNode* node, int column = 0) const;
    FileNode* rootNode() const { return root.get(); }
    /// The plan path of a node: its own, or its parent's with its name.
    QString pathOf(const FileNode* node) const;
    QString nameOf(const FileNode* node) const;
    void appendTopLevel(std::unique_ptr<FileNode> node);
    /// Drops the whole tree for an empty one, as a model reset.
    void resetTree();
    virtual QIcon iconOf(const FileNode* node) const;

    IconProvider iconProvider;

private:
    void setState(FileNode* node, int state);
    void setDataChecked(FileNode* node, int target);
    void setDataCheckedParent(FileNode* node);
    void setDataUncheckedParent(FileNode* node);
    void setDataPartiallyChecked(FileNode* node);
    void setDataIncompliteChecked(FileNode* node);
    void emitChanged(FileNode* node);
    void emitChildrenChanged(FileNode* node);
    void forget(FileNode* node);

    std::unique_ptr<FileNode> root;
    QHash<QString, FileNode*> pathIndex; // not owned: nodes live in the tree
    QVector<FileNode*> changedAncestors;
    bool hiddenFilesUnchecked = false;
};

} // namespace TWB::GUI
