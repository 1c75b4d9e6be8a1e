#pragma once

#include "frame/base_model.h"
#include "twbconsole_export.h"

#include <QHash>
#include <QIcon>
#include <QPointer>
#include <QString>
#include <QUuid>
#include <QVariant>
#include <QVector>

#include <map>
#include <memory>
#include <vector>

class QJsonObject;

namespace TWB::GUI {

/// What the storage accounts hold, as one lazy tree, registered as "TwbStorageBackupModel". The top
/// level is the rows of "TwbStorageConnectionModel"; below each account stand the folders the service
/// lists for it, fetched when a view expands a node and arriving in parts for a long folder.
///
/// Nodes are plain structs, not objects with dynamic properties: a folder may hold a hundred thousand
/// files, and an object with its seventeen properties costs about 60 µs and 2.7 KB where the struct
/// costs 3 µs and 0.2 KB.
class TWBCONSOLE_EXPORT StorageBackupModel : public BaseModel
{
    Q_OBJECT
    Q_DISABLE_COPY(StorageBackupModel)
public:
    /// Role of whether a node's listing has arrived.
    static constexpr int LoadedRole = Qt::UserRole + 1;
    /// The "Type" of the entry that ends one part of a listing when more follow.
    static constexpr int EndOfPartType = 4;

    explicit StorageBackupModel(QObject* parent = nullptr);
    ~StorageBackupModel() override;

    QModelIndex index(int row, int column, const QModelIndex& parent = QModelIndex()) const override;
    QModelIndex parent(const QModelIndex& child) const override;
    int rowCount(const QModelIndex& parent = QModelIndex()) const override;
    int columnCount(const QModelIndex& parent = QModelIndex()) const override;
    QVariant data(const QModelIndex& index, int role = Qt::DisplayRole) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role = Qt::DisplayRole) const override;
    Qt::ItemFlags flags(const QModelIndex& index) const override;
    bool hasChildren(const QModelIndex& parent = QModelIndex()) const override;
    bool canFetchMore(const QModelIndex& parent) const override;
    void fetchMore(const QModelIndex& parent) override;

    /// Takes the accounts of the storage connections model as the top level and follows its changes.
    bool init() override;

    /// Sends one listing request for `path` (empty for the top of the account) of item type `type`,
    /// asking for the entries after the `currentPart` already held. False when it could not be sent.
    virtual bool load(const QUuid& destination, const QString& path, int type, int currentPart);

    /// The icon of an item type.
    static QIcon typeImage(int type);

public Q_SLOTS:
    /// Forgets a node's children, so that the next expansion lists it anew.
    void onCollapse(const QModelIndex& index);
    /// Lists a node anew.
    void onUpdate(const QModelIndex& index);
    /// The one result slot of all listing commands.
    void onResult();

    void onScRowsAboutToBeInserted(const QModelIndex& parent, int first, int last);
    void onScRowsInserted(const QModelIndex& parent, int first, int last);
    void onScRowsAboutToBeRemoved(const QModelIndex& parent, int first, int last);
    void onScRowsRemoved(const QModelIndex& parent, int first, int last);
    void onScDataChanged(const QModelIndex& topLeft, const QModelIndex& bottomRight, const QVector<int>& roles);

protected:
    /// One folder, file or version of the tree; top-level nodes stand for the accounts.
    struct Node
    {
        Node* parent = nullptr; // not owned; null at the top level
        std::vector<std::unique_ptr<Node>> children;
        QUuid destination;
        QString name;
        QString path;
        QString dateModified;
        QString delimiter;
        double size = 0;
        double originalSize = 0;
        double revision = 0;
        double attribute = 0;
        int row = 0;
        int type = 0;
        /// The "currentPart" of the one request whose reply this node takes in; -1 when none is awaited.
        int awaitedPart = -1;
        /// Which keys the reply entry held, by bit of the key's place in the table of keys.
        quint32 present = 0;
        quint8 loaded = 0;
        bool isChangeable = false;
        bool isExpandable = false;
        bool isEncrypted = false;
        bool isCompressed = false;
        bool isFull = false;
    };

    /// Key of the table of keys to the reply's name for it; the full model adds its own.
    QHash<int, QString> keys;

    Node* nodeOf(const QModelIndex& index) const;
    bool isTopLevel(const QModelIndex& index) const;
    /// A node's value under a key of the table of keys, as the reply gave it; invalid when it gave none.
    QVariant value(const Node* node, int key) const;
    /// Sends "command" with the params both models share and `extra`; throws the usual texts.
    void sendListing(const QString& command, const QString& managerGone, const QUuid& destination, const QString& path,
        int type, int currentPart, const QJsonObject& extra);
    /// Logs a failure the way every command of the model does and tells the views.
    void fail(const QString& text);

private:
    struct Root
    {
        std::unique_ptr<Node> node;
        /// Every node below the account by "path:type"; the one place a reply finds its node again.
        QHash<QString, Node*> nodes; // not owned
    };

    Node* root(int row) const;
    /// The source's row of the account on a top-level row; -1 when the source no longer has it.
    int sourceRow(int row) const;
    QModelIndex indexOf(const Node* node, int column = 0) const;
    void addRoot(int row);
    void forget(Root& root, Node* node);
    void take(Node* node, const QJsonObject& entry, const QUuid& destination);

    static QString nodeKey(const QString& path, int type);

    void renumberRoots();
    /// Lists anew every folder whose listing the lost service left unanswered.
    void refetchStalled();

    /// Listings that broke off with the service: account and node key, empty for the account's top.
    QVector<QPair<QUuid, QString>> stalled;

    std::map<QUuid, Root> roots;
    /// The accounts in the order of the top-level rows. The model keeps its own list, since the storage
    /// connections model fills its rows before it announces them.
    QVector<QUuid> accounts;
    QPointer<QAbstractItemModel> source;
};

} // namespace TWB::GUI
