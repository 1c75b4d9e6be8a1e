#pragma once

#include "frame/base_model.h"
#include "twbconsole_export.h"

#include <QHash>
#include <QString>
#include <QStringList>
#include <QUuid>
#include <QVariant>

namespace TWB::Common::Communication {
class ICommand;
}

namespace TWB::GUI {

/// The checkable tree of what one storage account holds, from which a restore plan picks its items.
/// Folders are fetched lazily; a plan opened for editing has only paths, so the folders on the way to
/// each path are fetched one after another and the marks are set as their rows arrive.
class TWBCONSOLE_EXPORT RestoreContentModel : public BaseModel
{
    Q_OBJECT
    Q_DISABLE_COPY(RestoreContentModel)
public:
    /// Check state of a folder that is not selected itself while something below it is.
    static constexpr int IncompliteChecked = 1001;

    RestoreContentModel(const QUuid& destination, QObject* parent = nullptr);
    ~RestoreContentModel() override;

    QModelIndex index(int row, int column, const QModelIndex& parent = QModelIndex()) const override;
    QModelIndex parent(const QModelIndex& child) const override;
    int rowCount(const QModelIndex& parent = QModelIndex()) const override;
    int columnCount(const QModelIndex& parent = QModelIndex()) const override;
    QVariant data(const QModelIndex& index, int role = Qt::DisplayRole) const override;
    bool setData(const QModelIndex& index, const QVariant& value, int role = Qt::EditRole) override;
    QVariant headerData(int section, Qt::Orientation orientation, int role = Qt::DisplayRole) const override;
    Qt::ItemFlags flags(const QModelIndex& index) const override;
    bool hasChildren(const QModelIndex& parent = QModelIndex()) const override;
    bool canFetchMore(const QModelIndex& parent) const override;
    void fetchMore(const QModelIndex& parent) override;

    QUuid destination() const { return m_destination; }

    /// Sends one listing request for `path` (empty for the top), asking for the entries after the
    /// `currentPart` already held. False when it could not be sent.
    bool load(const QString& path, int currentPart);
    /// Lists the top level.
    bool init() override;
    /// Takes `paths` as the selection and fetches the folders on the way to each of them.
    void initChecked(const QStringList& paths);
    /// The selection as the topmost fully checked paths: a checked folder stands for all below it.
    QStringList checkedPath() const;
    /// Whether a run of initChecked is still fetching folders.
    bool isSeeding() const { return seeding; }

public Q_SLOTS:
    void onResult();
    void onDestoryedItem();
    /// Forgets a folder's rows and deselects it; a view that wants this connects its collapsed().
    void onCollapse(const QModelIndex& index);

protected:
    void setDataChecked(const QModelIndex& index);
    void setDataUnchecked(const QModelIndex& index);
    void setDataCheckedParent(const QModelIndex& index);
    void setDataUncheckedParent(const QModelIndex& index);
    void setDataPartiallyChecked(const QModelIndex& index);
    void setDataIncompliteChecked(const QModelIndex& index);
    /// Whether any row from `first` to the last under the same parent holds `value` under `role` in column 0.
    bool hasMatchFirst(const QModelIndex& first, int role, const QVariant& value) const;

private:
    QObject* nodeOf(const QModelIndex& index) const;
    QModelIndex indexOf(QObject* node, int column = 0) const;
    static int stateOf(const QObject* node);
    /// Sets a node's mark and tells the views.
    void setState(QObject* node, int state);
    /// Drops `path` and every path below it from the lists that mark rows still to come.
    void forgetSelection(const QString& path);
    /// Whether a reply for `node` at `currentPart` is the one the node waits for.
    bool awaits(QObject* node, int currentPart) const;
    /// Sends one listing; `run` is the seeding run it carries on, 0 for none.
    bool send(const QString& path, int currentPart, int run);
    /// Sends the next listing of a seeding run, passing folders that are gone or already listed.
    void loadNextPending();
    void fail(const QString& text);

    const QUuid m_destination;
    QStringList checkedList;
    QStringList partialList;
    QObject* root = nullptr; // owned by parent-child
    QHash<QString, QObject*> nodes; // not owned
    QHash<int, QString> keys;
    QStringList pendingLoads;
    /// Listings in flight by folder path, parts included.
    QHash<QString, int> inFlight;
    bool seeding = false;
    /// Whether a listing of the seeding run is in flight.
    bool seedBusy = false;
    int seedRun = 0;
};

} // namespace TWB::GUI
