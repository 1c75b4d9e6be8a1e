#pragma once

#include "platform/twbplatform_export.h"

#include <QDebug>
#include <QString>

namespace TWL {

/// Log front end of the product: one logger per category, five levels.
/// Messages go through Qt's message handler, so they reach the terminal, the log file
/// installed by installLogFile() and any handler a test puts in front.
class TWBPLATFORM_EXPORT TwlDebug final
{
public:
    explicit TwlDebug(const char* category = "TWB");

    QDebug debug() const;
    QDebug info() const;
    /// Information that matters to support (start, stop, version): never filtered out of the log file.
    QDebug infoH() const;
    QDebug warning() const;
    QDebug error() const;

    /// Appends every message at info level and above (debug too when TWB_DEBUG is set) to
    /// <log folder>/<fileName>-<yyyy-MM-dd>.log, a new file each local day, so that old days can be
    /// dropped whole. The log folder is <data folder>/log unless setLogDirectory() chose another.
    /// Messages keep going to the previous handler as well.
    /// Returns false when the file cannot be opened; logging then stays on the terminal.
    static bool installLogFile(const QString& fileName);
    /// Stops writing to the log file and puts back the previous handler.
    static void removeLogFile();
    /// The file installLogFile() writes now, or an empty string.
    static QString logFilePath();
    /// Moves the log file into `folder` (absolute; empty for <data folder>/log), making it when missing;
    /// the next line goes there. False with a sentence in `error` when the folder cannot be made or the
    /// file cannot be written there: logging then goes on where it was.
    static bool setLogDirectory(const QString& folder, QString* error = nullptr);
    /// Log files of this program older than `days` days are removed from the log folder now and at
    /// each local midnight, on the thread pool; 0 keeps them all. Files of other programs, and any
    /// file not named as installLogFile() names them, are never touched.
    static void setRotateDays(int days);
    /// Programs call this at start: debug messages of the product's categories are shown only when
    /// TWB_DEBUG is set, since they may carry details (paths, ids) nobody needs day to day.
    static void applyDefaultFilter();
    /// Whether the previous handler (the terminal) still gets the messages; a detached service turns it off.
    static void setTerminalOutput(bool enabled);

private:
    const QLoggingCategory& m_category;
};

} // namespace TWL
