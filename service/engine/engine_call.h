#pragma once

#include <QMap>
#include <QProcessEnvironment>
#include <QString>
#include <QStringList>

namespace TWB::Service {

struct BackendTarget;

/// One run of restic or rclone: the program, its arguments and its environment. Arguments never
/// hold a secret; passwords and keys travel in the environment, which only the same user can read.
struct EngineCall
{
    QString program;
    QStringList arguments;
    QProcessEnvironment environment;

    /// restic on one plan's repository. `cacheDir` is restic's cache in the data folder;
    /// `rcloneConfig` an empty file that stands for rclone's own configuration, so that a user's
    /// rclone remotes never mix into the service's.
    static EngineCall restic(const BackendTarget& target, const QString& repository, const QString& password,
        const QString& cacheDir, const QString& rcloneConfig, const QStringList& arguments);
    /// rclone on the account's remote.
    static EngineCall rclone(const BackendTarget& target, const QString& rcloneConfig, const QStringList& arguments);

    /// restic's program: $TWB_RESTIC, else restic on the PATH.
    static QString resticProgram();
    /// rclone's program: $TWB_RCLONE, else rclone on the PATH.
    static QString rcloneProgram();

    /// The process environment without any variable restic or rclone would read for a back-end,
    /// so that the user's own settings never leak into the service's runs.
    static QProcessEnvironment cleanEnvironment();
};

} // namespace TWB::Service
