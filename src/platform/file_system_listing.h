#pragma once

#include "platform/twbplatform_export.h"

#include <QJsonArray>
#include <QString>
#include <QVector>

namespace TWB {

/// Lists one folder of the local disks, or the volumes when the path is empty, for the backup source tree.
///
/// One object serves one listing at a time; threads that list side by side each use their own object.
/// Nothing follows a symbolic link that loops back into the folder being listed or one of its ancestors:
/// such a link is listed as a plain item, so a tree cannot be expanded forever.
class TWBPLATFORM_EXPORT FileSystemListing final
{
public:
    /// Item types, as the "type" key carries them.
    enum ItemType : int {
        NetworkShare = 0,
        Drive = 1,
        Removable = 2,
        OpticalDisc = 3,
        OtherVolume = 4,
        File = 5,
        Folder = 6,
        Computer = 7
    };

    struct Entry
    {
        QString name;
        /// The path a plan stores; null when it is the listed folder's plan path, a separator and the name.
        QString path;
        QString realPath;
        int type = File;
        bool isHidden = false;
        bool isSymlink = false;
    };

    /// Lists `path` synchronously: folders first, then files, each by name without regard to case.
    /// `option` and the third argument are reserved and 0; `withHidden` false leaves hidden items out.
    /// Returns false when the folder cannot be read; errorString() tells why.
    bool list(const QString& path, int option = 0, int reserved = 0, bool withHidden = true);

    bool hasError() const { return error; }
    QString errorString() const { return errorText; }
    /// The system's error number of the failed listing; ENOTDIR when the path is a file.
    int errorCode() const { return errorNumber; }
    /// The plan path of the folder last listed; empty after listing the volumes.
    QString planPath() const;

    const QVector<Entry>& entries() const { return listed; }
    QVector<Entry> takeEntries() { return std::move(listed); }
    /// The last listing as objects with "name", "path", "real_path", "type", "is_hidden" and "is_symlink".
    QJsonArray items() const;

    static Entry entryFromJson(const QJsonObject& object);

private:
    bool listVolumes();
    bool listFolder(const QString& path, bool withHidden);

    QVector<Entry> listed;
    QString listedFolder;
    QString errorText;
    int errorNumber = 0;
    bool error = false;
};

} // namespace TWB
