#include "backup_wizard/file_system_checked_model.h"

#include "backup_wizard/listing_relay_p.h"
#include "widgets/icon_manager.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QJsonObject>
#include <QStyle>
#include <QTimer>
#include <QtConcurrent>

#include <algorithm>
#include <cerrno>

namespace TWB::GUI {

namespace {

// Nodes travel to the GUI thread in slices, so that a huge folder never holds the GUI for long in one go.
constexpr int sliceSize = 2048;

bool isUnder(const QString& path, const QString& folder)
{
    if (folder == QLatin1String("/"))
        return path.startsWith(QLatin1Char('/'));
    return path.startsWith(folder) && (path.size() == folder.size() || path.at(folder.size()) == QLatin1Char('/'));
}

// The longest key that `path` is or lies under is swapped for its value.
QString swapPrefix(const QString& path, const QHash<QString, QString>& map)
{
    QString best;
    for (auto it = map.constBegin(); it != map.constEnd(); ++it) {
        if ((best.isNull() || it.key().size() > best.size()) && isUnder(path, it.key()))
            best = it.key();
    }
    if (best.isNull())
        return path;
    const QString value = map.value(best);
    if (path == best)
        return value;
    const QString rest = best == QLatin1String("/") ? path : path.mid(best.size());
    return value == QLatin1String("/") ? rest : value + rest;
}

QString withoutTrailingSeparator(QString path)
{
    while (path.size() > 1 && path.endsWith(QLatin1Char('/')))
        path.chop(1);
    return path;
}

QSet<QString> wantedSet(const QStringList& paths)
{
    QSet<QString> set;
    set.reserve(paths.size());
    for (const QString& path : paths)
        set.insert(withoutTrailingSeparator(path));
    return set;
}

} // namespace

FileSystemCheckedModel::FileSystemCheckedModel(QObject* parent)
    : BaseFilesModel(parent)
    // The last listing to let go of the relay may run on a pool thread; the relay lives on this one.
    , relay(new ListingRelay, [](ListingRelay* object) { object->deleteLater(); })
{
    connectRelay();
    if (volumeListing.list(QString(), 0, 0, true))
        addVolumes(volumeListing.items());
}

FileSystemCheckedModel::FileSystemCheckedModel(const QJsonArray& volumes, QObject* parent)
    : BaseFilesModel(parent)
    , relay(new ListingRelay, [](ListingRelay* object) { object->deleteLater(); })
{
    connectRelay();
    addVolumes(volumes);
}

void FileSystemCheckedModel::connectRelay()
{
    connect(relay.get(), &ListingRelay::listed, this, [this](const QString& path, const FileNodeBatch& items) {
        deliver([this, path, items] { emit listed(path, items); });
    });
    connect(relay.get(), &ListingRelay::failed, this, [this](const QString& path, const QString& error) {
        deliver([this, path, error] { emit listingFailed(path, error); });
    });
    connect(relay.get(), &ListingRelay::finished, this, [this] {
        deliver([this] {
            if (--listingsInFlight == 0)
                emit listingFinished();
        });
    });
    connect(this, &FileSystemCheckedModel::listed, this, &FileSystemCheckedModel::onResult);
    connect(this, &FileSystemCheckedModel::listingFailed, this, &BaseFilesModel::onListingError);
}

void FileSystemCheckedModel::deliver(std::function<void()> step)
{
    deliveries.push_back(std::move(step));
    if (!drainScheduled) {
        drainScheduled = true;
        QTimer::singleShot(0, this, &FileSystemCheckedModel::drain);
    }
}

void FileSystemCheckedModel::drain()
{
    // A slice costs about a millisecond: a few of them, then the event loop gets its turn.
    constexpr qint64 budgetMs = 8;
    drainScheduled = false;
    QElapsedTimer clock;
    clock.start();
    while (!deliveries.empty() && clock.elapsed() < budgetMs) {
        std::function<void()> step = std::move(deliveries.front());
        deliveries.pop_front();
        step();
    }
    if (!deliveries.empty() && !drainScheduled) {
        drainScheduled = true;
        QTimer::singleShot(0, this, &FileSystemCheckedModel::drain);
    }
}

FileSystemCheckedModel::~FileSystemCheckedModel() = default;

bool FileSystemCheckedModel::load(const QStringList& paths, int option)
{
    if (paths.isEmpty())
        return true;
    ++listingsInFlight;
    QtConcurrent::run([relay = relay, paths, option] { list(relay, paths, option); });
    return true;
}

void FileSystemCheckedModel::list(const std::shared_ptr<ListingRelay>& relay, const QStringList& paths, int option)
{
    for (const QString& path : paths) {
        FileSystemListing listing;
        if (!listing.list(path, option, 0, true)) {
            // A plan names files as well as folders; a file is no folder that failed.
            if (listing.errorCode() != ENOTDIR)
                emit relay->failed(path, listing.errorString());
            continue;
        }
        const QVector<FileSystemListing::Entry> entries = listing.takeEntries();
        if (entries.isEmpty())
            emit relay->listed(path, FileNodeBatch::create());
        for (int first = 0; first < entries.size(); first += sliceSize) {
            FileNodeBatch batch = FileNodeBatch::create(toObjectList(entries.mid(first, sliceSize)));
            emit relay->listed(path, batch);
        }
    }
    emit relay->finished();
}

std::unique_ptr<FileNode> FileSystemCheckedModel::nodeFromEntry(const FileSystemListing::Entry& entry)
{
    // Node kinds by listing type: share, drive, removable, optical disc, other volume, file, folder, computer.
    static const quint8 kinds[8] = {4, 3, 7, 6, 5, 0, 1, 2};
    auto node = std::make_unique<FileNode>();
    node->realPath = entry.realPath;
    const int nameStart = entry.realPath.size() - entry.name.size();
    const bool nameFollows = nameStart > 0 && entry.realPath.at(nameStart - 1) == QLatin1Char('/')
        && entry.realPath.endsWith(entry.name) && !entry.name.isEmpty();
    if (!nameFollows)
        node->name = entry.name;
    node->path = entry.path;
    node->type = kinds[qBound(0, entry.type, 7)];
    node->isExpandable = entry.type != FileSystemListing::File;
    node->isHidden = entry.isHidden;
    node->isSymlink = entry.isSymlink;
    return node;
}

std::unique_ptr<FileNode> FileSystemCheckedModel::objectFromJson(const QJsonObject& object)
{
    return nodeFromEntry(FileSystemListing::entryFromJson(object));
}

FileNodeList FileSystemCheckedModel::toObjectList(const QVector<FileSystemListing::Entry>& entries)
{
    FileNodeList nodes;
    nodes.reserve(size_t(entries.size()));
    for (const FileSystemListing::Entry& entry : entries)
        nodes.push_back(nodeFromEntry(entry));
    return nodes;
}

void FileSystemCheckedModel::addVolumes(const QJsonArray& items)
{
    for (const QJsonValue& item : items) {
        std::unique_ptr<FileNode> node = objectFromJson(item.toObject());
        node->isChangeable = true;
        node->isExpandable = true;
        node->isHidden = false;
        node->isSymlink = false;
        if (node->path.isNull())
            node->path = node->realPath;
        if (node->path != node->realPath) {
            realToPlan.insert(node->realPath, node->path);
            planToReal.insert(node->path, node->realPath);
        }
        appendTopLevel(std::move(node));
    }
}

QString FileSystemCheckedModel::replacePath(QString path) const
{
    return swapPrefix(path, realToPlan);
}

QStringList FileSystemCheckedModel::unReplacePath(QStringList paths) const
{
    for (QString& path : paths)
        path = swapPrefix(path, planToReal);
    return paths;
}

QStringList FileSystemCheckedModel::pathsOf(
    int first, int second, int parentState, int otherParentState, bool real) const
{
    // Depth first in row order, the order a recursive match over the model gives. The invisible root is
    // unchecked, so top-level items count as having an unchecked parent.
    QVector<const FileNode*> found[2];
    QVector<QPair<const FileNode*, size_t>> stack {{rootNode(), 0}};
    while (!stack.isEmpty()) {
        auto& [folder, next] = stack.last();
        if (next == folder->children.size()) {
            stack.removeLast();
            continue;
        }
        const bool parentFits = folder->checked == parentState || folder->checked == otherParentState;
        const FileNode* node = folder->children[next++].get();
        if (parentFits && node->checked == first)
            found[0].append(node);
        else if (parentFits && node->checked == second)
            found[1].append(node);
        if (!node->children.empty())
            stack.append({node, 0});
    }
    QStringList result;
    result.reserve(found[0].size() + found[1].size());
    for (const QVector<const FileNode*>& nodes : found) {
        for (const FileNode* node : nodes)
            result.append(real ? node->realPath : pathOf(node));
    }
    return result;
}

QStringList FileSystemCheckedModel::includePath(bool real) const
{
    // Only the topmost node of each selected subtree stands in the list.
    return pathsOf(Qt::Checked, Qt::PartiallyChecked, Qt::Unchecked, IncompliteChecked, real);
}

QStringList FileSystemCheckedModel::excludePath(bool real) const
{
    return pathsOf(Qt::Unchecked, IncompliteChecked, Qt::PartiallyChecked, Qt::Checked, real);
}

void FileSystemCheckedModel::initChecked(const QStringList& includes, const QStringList& excludes)
{
    const QStringList realIncludes = unReplacePath(includes);
    const QStringList realExcludes = unReplacePath(excludes);
    wantedIncludes = wantedSet(realIncludes);
    wantedExcludes = wantedSet(realExcludes);
    if (wantedIncludes.isEmpty()) {
        load(QStringList(), 0);
        return;
    }
    QStringList joined = realIncludes + realExcludes;
    std::sort(joined.begin(), joined.end());
    QStringList volumes;
    for (const std::unique_ptr<FileNode>& volume : rootNode()->children)
        volumes.append(volume->realPath);
    // Every folder from the volume down to each path is listed once, so that the marks arrive top-down,
    // each parent's before its children's. A path on no volume of the tree has nothing to list.
    QStringList folders;
    QSet<QString> seen;
    for (const QString& path : qAsConst(joined)) {
        const QString target = withoutTrailingSeparator(path);
        QString volume;
        for (const QString& candidate : qAsConst(volumes)) {
            if (candidate.size() > volume.size() && isUnder(target, candidate))
                volume = candidate;
        }
        if (volume.isEmpty())
            continue;
        QString prefix = volume == QLatin1String("/") ? QString() : volume;
        const QStringList parts = target.mid(prefix.size()).split(QLatin1Char('/'), Qt::SkipEmptyParts);
        for (int part = -1; part < parts.size(); ++part) {
            if (part >= 0)
                prefix += QLatin1Char('/') + parts.at(part);
            const QString folder = prefix.isEmpty() ? QStringLiteral("/") : prefix;
            if (!seen.contains(folder)) {
                seen.insert(folder);
                folders.append(folder);
            }
        }
    }
    for (const QString& path : qAsConst(wantedIncludes)) {
        const QModelIndex index = indexByPath(path);
        if (index.isValid() && index.data(Qt::CheckStateRole).toInt() != Qt::Checked) {
            // A volume is marked as it stands; what lies below it follows as its listing arrives.
            setData(index, Qt::Checked, Qt::CheckStateRole);
        }
    }
    load(folders, 0);
}

void FileSystemCheckedModel::onResult(const QString& path, const FileNodeBatch& items)
{
    QVector<QPair<QString, int>> marks;
    if (items && (!wantedIncludes.isEmpty() || !wantedExcludes.isEmpty())) {
        for (const std::unique_ptr<FileNode>& item : *items) {
            if (wantedIncludes.contains(item->realPath))
                marks.append({item->realPath, Qt::Checked});
            if (wantedExcludes.contains(item->realPath))
                marks.append({item->realPath, Qt::Unchecked});
        }
    }
    BaseFilesModel::onResult(path, items);
    for (const auto& [realPath, state] : qAsConst(marks))
        setData(indexByPath(realPath), state, Qt::CheckStateRole);
}

QIcon FileSystemCheckedModel::iconOf(const FileNode* node) const
{
    if (node->parent != rootNode())
        return BaseFilesModel::iconOf(node);
    switch (node->type) {
    case 3:
        return iconProvider.icon(QFileIconProvider::Drive);
    case 4:
        return iconProvider.icon(QFileIconProvider::Network);
    case 5: {
        const QIcon icon = IconManager::icon(26);
        return icon.isNull() ? iconProvider.icon(QFileIconProvider::Drive) : icon;
    }
    case 6:
        return QApplication::style()->standardIcon(QStyle::SP_DriveCDIcon);
    case 7:
        return QApplication::style()->standardIcon(QStyle::SP_DriveFDIcon);
    default:
        return BaseFilesModel::iconOf(node);
    }
}

} // namespace TWB::GUI
