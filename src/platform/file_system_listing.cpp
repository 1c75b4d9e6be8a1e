#include "platform/file_system_listing.h"

#include "platform/drive_shares.h"

#include <QDir>
#include <QFile>
#include <QJsonObject>

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstdlib>
#include <cstring>
#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>

namespace TWB {

namespace {

QString canonical(const QByteArray& path)
{
    char resolved[PATH_MAX];
    if (!::realpath(path.constData(), resolved))
        return QString();
    return QFile::decodeName(resolved);
}

// A link that resolves to the listed folder or to any folder on the way down to it leads back into itself.
bool loopsBack(const QString& target, const QString& listedPath)
{
    QString ancestor = listedPath;
    while (!ancestor.isEmpty()) {
        if (canonical(QFile::encodeName(ancestor)) == target)
            return true;
        if (ancestor == QLatin1String("/"))
            break;
        const int slash = ancestor.lastIndexOf(QLatin1Char('/'));
        ancestor = slash <= 0 ? QStringLiteral("/") : ancestor.left(slash);
    }
    return false;
}

} // namespace

bool FileSystemListing::list(const QString& path, int, int, bool withHidden)
{
    listed.clear();
    listedFolder.clear();
    errorText.clear();
    errorNumber = 0;
    error = !(path.isEmpty() ? listVolumes() : listFolder(path, withHidden));
    return !error;
}

bool FileSystemListing::listVolumes()
{
    const QVector<Info::DriveShares::Volume> volumes = Info::DriveShares::Instance().volumes();
    for (const Info::DriveShares::Volume& volume : volumes)
        listed.append({volume.name, volume.planPath, volume.realPath, volume.kind, false, false});
    return true;
}

bool FileSystemListing::listFolder(const QString& path, bool withHidden)
{
    QString folder = path;
    while (folder.size() > 1 && folder.endsWith(QLatin1Char('/')))
        folder.chop(1);
    const QByteArray encoded = QFile::encodeName(folder);
    DIR* dir = ::opendir(encoded.constData());
    if (!dir) {
        errorNumber = errno;
        errorText = QString::fromLocal8Bit(std::strerror(errorNumber));
        return false;
    }
    listedFolder = folder;
    const QString prefix = folder == QLatin1String("/") ? folder : folder + QLatin1Char('/');
    const int fd = ::dirfd(dir);
    errno = 0;
    while (const dirent* item = ::readdir(dir)) {
        const char* raw = item->d_name;
        if (raw[0] == '.' && (raw[1] == 0 || (raw[1] == '.' && raw[2] == 0)))
            continue;
        const bool hidden = raw[0] == '.';
        if (hidden && !withHidden)
            continue;
        Entry entry;
        entry.name = QFile::decodeName(raw);
        entry.realPath = prefix + entry.name;
        entry.isHidden = hidden;
        unsigned char kind = item->d_type;
        struct stat info;
        if (kind == DT_UNKNOWN && ::fstatat(fd, raw, &info, AT_SYMLINK_NOFOLLOW) == 0)
            kind = S_ISDIR(info.st_mode) ? DT_DIR : S_ISLNK(info.st_mode) ? DT_LNK : DT_REG;
        if (kind == DT_DIR) {
            entry.type = Folder;
        } else if (kind == DT_LNK) {
            entry.isSymlink = true;
            // A link to a folder opens like a folder unless it leads back up; a dangling link is a plain item.
            if (::fstatat(fd, raw, &info, 0) == 0 && S_ISDIR(info.st_mode))
                entry.type = loopsBack(canonical(QFile::encodeName(entry.realPath)), folder) ? File : Folder;
        }
        listed.append(std::move(entry));
        errno = 0;
    }
    const int readError = errno;
    ::closedir(dir);
    if (readError != 0) {
        listed.clear();
        errorNumber = readError;
        errorText = QString::fromLocal8Bit(std::strerror(readError));
        return false;
    }
    std::sort(listed.begin(), listed.end(), [](const Entry& a, const Entry& b) {
        if ((a.type == Folder) != (b.type == Folder))
            return a.type == Folder;
        const int byName = a.name.compare(b.name, Qt::CaseInsensitive);
        return byName != 0 ? byName < 0 : a.name < b.name;
    });
    return true;
}

QString FileSystemListing::planPath() const
{
    // Asked for only by readers of items(): reading the mount table for every folder would cost more
    // than listing a small folder.
    return listedFolder.isEmpty() ? QString() : Info::DriveShares::Instance().planPath(listedFolder);
}

QJsonArray FileSystemListing::items() const
{
    const QString listedPlanPath = planPath();
    QJsonArray array;
    for (const Entry& entry : listed) {
        array.append(QJsonObject {{QStringLiteral("name"), entry.name},
            {QStringLiteral("path"), entry.path.isNull() ? listedPlanPath + QLatin1Char('/') + entry.name : entry.path},
            {QStringLiteral("real_path"), entry.realPath}, {QStringLiteral("type"), entry.type},
            {QStringLiteral("is_hidden"), entry.isHidden}, {QStringLiteral("is_symlink"), entry.isSymlink}});
    }
    return array;
}

FileSystemListing::Entry FileSystemListing::entryFromJson(const QJsonObject& object)
{
    Entry entry;
    entry.name = object.value(QLatin1String("name")).toString();
    entry.path = object.value(QLatin1String("path")).toString();
    entry.realPath = object.value(QLatin1String("real_path")).toString();
    entry.type = qBound(0, object.value(QLatin1String("type")).toInt(File), 7);
    entry.isHidden = object.value(QLatin1String("is_hidden")).toBool();
    entry.isSymlink = object.value(QLatin1String("is_symlink")).toBool();
    return entry;
}

} // namespace TWB
