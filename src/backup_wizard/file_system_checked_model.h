#pragma once

#include "backup_wizard/base_files_model.h"
#include "platform/file_system_listing.h"
#include "twbconsole_export.h"

#include <QHash>
#include <QJsonArray>
#include <QSet>

#include <deque>
#include <functional>
#include <memory>

namespace TWB::GUI {

class ListingRelay;

/// The local disks as a checked tree, registered as "TwbFileSystemCheckedModel": lists folders on the
/// global thread pool, and turns marks into a plan's include and exclude lists and back.
class TWBCONSOLE_EXPORT FileSystemCheckedModel : public BaseFilesModel
{
    Q_OBJECT
    Q_DISABLE_COPY(FileSystemCheckedModel)
public:
    /// Lists the volumes at once: the one listing that waits, as it reads the mount table only.
    explicit FileSystemCheckedModel(QObject* parent = nullptr);
    /// A tree over the given volumes instead of this machine's, as a listing of the volumes gives them.
    explicit FileSystemCheckedModel(const QJsonArray& volumes, QObject* parent = nullptr);
    ~FileSystemCheckedModel() override;

    bool init() { return true; }
    /// Lists each path in turn on the global thread pool; returns at once.
    bool load(const QStringList& paths, int option) override;
    /// Adds top-level items from a listing of the volumes.
    void addVolumes(const QJsonArray& items);
    static std::unique_ptr<FileNode> objectFromJson(const QJsonObject& object);
    /// Nodes of a folder's listing; a child's plan path follows from its parent's and is not stored.
    static FileNodeList toObjectList(const QVector<FileSystemListing::Entry>& entries);

    /// A real path in the form a plan stores, by the volume or share that holds it.
    QString replacePath(QString path) const;
    /// Plan paths turned into real paths.
    QStringList unReplacePath(QStringList paths) const;

    /// The topmost node of each selected subtree: plan paths, or real paths when `real` is true.
    QStringList includePath(bool real) const;
    /// What is left out inside a selected folder.
    QStringList excludePath(bool real) const;
    /// Marks a plan's paths. Lists only the paths and their ancestors; the marks arrive with the listings.
    void initChecked(const QStringList& includes, const QStringList& excludes);

    /// Whether a listing is still under way.
    bool isListing() const { return listingsInFlight > 0; }

public slots:
    void onResult(const QString& path, const TWB::GUI::FileNodeBatch& items) override;

signals:
    void listed(const QString& path, const TWB::GUI::FileNodeBatch& items);
    void listingFailed(const QString& path, const QString& error);
    /// No listing is left under way.
    void listingFinished();

protected:
    QIcon iconOf(const FileNode* node) const override;

private:
    void connectRelay();
    /// Queues what a listing reports, in order; drain() hands it to the model a few milliseconds at a
    /// time, so that a worker that reports a huge folder at once never holds the GUI thread for long.
    void deliver(std::function<void()> step);
    void drain();
    static void list(const std::shared_ptr<ListingRelay>& relay, const QStringList& paths, int option);
    static std::unique_ptr<FileNode> nodeFromEntry(const FileSystemListing::Entry& entry);
    /// Nodes in state `first`, then those in `second`, whose parent is in one of the two parent states.
    QStringList pathsOf(int first, int second, int parentState, int otherParentState, bool real) const;

    QSet<QString> wantedIncludes;
    QSet<QString> wantedExcludes;
    QHash<QString, QString> realToPlan; // top-level items only
    QHash<QString, QString> planToReal;
    FileSystemListing volumeListing;
    std::shared_ptr<ListingRelay> relay;
    int listingsInFlight = 0;
    std::deque<std::function<void()>> deliveries;
    bool drainScheduled = false;
};

} // namespace TWB::GUI
