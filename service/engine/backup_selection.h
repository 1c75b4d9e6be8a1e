#pragma once

#include <QDateTime>
#include <QString>
#include <QStringList>

namespace TWB::Info::Plan {
class BackupFile;
}

namespace TWB::Service {

class PlanPaths;

/// What a file backup reads, in restic's terms: the real paths of the plan's items, exclude
/// patterns for the excluded paths, the excluded folder names and hidden files, the exclude masks
/// and the size limit. restic can neither back up only files that match a mask nor leave out files
/// by age, so a plan with include masks or a modified-before date lists its files itself (walk()),
/// and restic backs up that list.
struct BackupSelection
{
    QStringList items; // real paths that exist
    QStringList missing; // plan items that name nothing on this machine, with the reason
    QStringList excludes; // restic exclude patterns, for an exclude file
    bool listFiles = false; // include masks or an age limit: the files to back up come from walk()

    /// restic's options for the exclude masks and the size limit. Masks go on the command line:
    /// an exclude file would expand "$NAME" and drop a mask that starts with "#".
    QStringList options() const;

    QStringList masks; // include masks, for walk()
    QStringList excludeMasks;
    bool ignoreCase = false; // for both kinds of masks
    unsigned long long largerThan = 0; // bytes; 0 is no limit
    QDateTime modifiedBefore; // files older than this are left out; invalid for none
    QStringList excludedPaths; // real
    QStringList excludedFolders; // by name
    bool skipHidden = false;

    static BackupSelection of(const TWB::Info::Plan::BackupFile& plan, const PlanPaths& paths);

    /// The files below the items, and the items that are files, that the include masks take (all
    /// without masks) and that were modified at or after modifiedBefore; for a worker thread, since
    /// it reads the disk.
    QStringList walk() const;

    /// A path as a restic pattern that matches that path only, also when read from an exclude file.
    static QString escaped(const QString& path);
};

} // namespace TWB::Service
