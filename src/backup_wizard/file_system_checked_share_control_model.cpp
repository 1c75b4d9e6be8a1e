#include "backup_wizard/file_system_checked_share_control_model.h"

#include "platform/communication/command_calls.h"
#include "platform/logging/twl_debug.h"

#include <QJsonArray>
#include <QJsonObject>

namespace TWB::GUI {

using namespace TWB::Common::Communication;

namespace {

constexpr int RealPathColumn = 2;
constexpr int ShareType = 4;

QString withoutTrailingSeparator(QString path)
{
    while (path.size() > 1 && path.endsWith(QLatin1Char('/')))
        path.chop(1);
    return path;
}

} // namespace

FileSystemCheckedShareControlModel::FileSystemCheckedShareControlModel(QObject* parent)
    : FileSystemCheckedModel(parent)
{
    askUsedShares();
}

FileSystemCheckedShareControlModel::FileSystemCheckedShareControlModel(const QJsonArray& volumes, QObject* parent)
    : FileSystemCheckedModel(volumes, parent)
{
    askUsedShares();
}

void FileSystemCheckedShareControlModel::askUsedShares()
{
    for (const std::unique_ptr<FileNode>& node : rootNode()->children) {
        if (node->type == ShareType)
            shares.append(node->realPath);
    }
    try {
        // The service needs nothing but the name: it answers for every plan of the machine.
        newCommand(QStringLiteral("GetUsedShare"), this, &FileSystemCheckedShareControlModel::onGetUsedShareResult)
            ->exec();
    } catch (const QString& text) {
        TWL::TwlDebug("TWB").warning() << text;
    }
}

FileSystemCheckedShareControlModel::~FileSystemCheckedShareControlModel() = default;

QString FileSystemCheckedShareControlModel::isShare(const QString& path) const
{
    for (const QString& root : shares) {
        if (path == root || path.startsWith(QStringLiteral("%1%2").arg(root, QStringLiteral("/"))))
            return root;
    }
    return QString();
}

void FileSystemCheckedShareControlModel::onGetUsedShareResult()
{
    auto* command = qobject_cast<ICommand*>(sender());
    if (!command)
        return;
    try {
        const QJsonArray list = replyData(*command).value(QStringLiteral("list")).toArray();
        for (const QJsonValue& value : list) {
            const QJsonObject entry = value.toObject();
            usedShare.insert(
                entry.value(QStringLiteral("share")).toString(), QUuid(entry.value(QStringLiteral("plan")).toString()));
        }
    } catch (const QString& text) {
        logCommandFailure(*command, text);
    }
    command->deleteLater();
}

void FileSystemCheckedShareControlModel::initChecked(
    const QUuid& plan, const QStringList& includes, const QStringList& excludes)
{
    planId = plan;
    // The plan's own marks are its shares already, one for each of its paths, counted below; a mark the
    // base sets at once on a node in the tree must not count them again.
    restoring = true;
    FileSystemCheckedModel::initChecked(includes, excludes);
    restoring = false;
    const QStringList paths = unReplacePath(includes);
    for (const QString& path : paths) {
        const QString share = isShare(withoutTrailingSeparator(path));
        if (!share.isEmpty())
            ownShares.append(share);
    }
}

bool FileSystemCheckedShareControlModel::setData(const QModelIndex& index, const QVariant& value, int role)
{
    // The base refuses other roles and columns and an unchanged state; nothing changed then.
    if (!BaseFilesModel::setData(index, value, role))
        return false;
    if (restoring)
        return true;
    const int state = value.toInt();
    if (state != Qt::Checked && state != Qt::Unchecked)
        return true;
    const QString share = isShare(index.siblingAtColumn(RealPathColumn).data().toString());
    if (share.isEmpty())
        return true;
    if (state == Qt::Checked) {
        if (usedShare.isEmpty())
            usedShare.insert(share, planId);
        else if (!usedShare.contains(share))
            emit shareControlAttention();
        if (!ownShares.contains(share))
            ownShares.append(share);
        return true;
    }
    ownShares.removeOne(share);
    if (ownShares.isEmpty()) {
        for (auto it = usedShare.begin(); it != usedShare.end();) {
            if (it.value() == planId)
                it = usedShare.erase(it);
            else
                ++it;
        }
    }
    return true;
}

} // namespace TWB::GUI
