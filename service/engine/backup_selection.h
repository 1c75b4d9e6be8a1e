#pragma once

#include <QString>
#include <QStringList>

namespace TWB::Info::Plan {
class BackupFile;
}

namespace TWB::Service {

class PlanPaths;

/// What a file backup reads, in restic's terms: the real paths of the plan's items, and exclude
/// patterns for the excluded paths, the excluded folder names, the excluded masks and hidden files.
/// restic cannot back up only files that match a mask, so a plan with include masks lists its files
/// itself (walk()), and restic backs up that list.
struct BackupSelection
{
    QStringList items; // real paths that exist
    QStringList missing; // plan items that name nothing on this machine, with the reason
    QStringList excludes; // restic exclude patterns
    bool listFiles = false; // include masks: the files to back up come from walk()

    QStringList masks;
    QStringList excludedPaths; // real
    QStringList excludedFolders; // by name
    bool skipHidden = false;

    static BackupSelection of(const TWB::Info::Plan::BackupFile& plan, const PlanPaths& paths);

    /// The files below the items that the include masks take, and the items that are files; for a
    /// worker thread, since it reads the disk.
    QStringList walk() const;

    /// A path as a restic pattern that matches that path only.
    static QString escaped(const QString& path);
};

} // namespace TWB::Service
