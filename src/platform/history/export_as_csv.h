#pragma once

#include "platform/twbplatform_export.h"

#include <QSharedPointer>
#include <QStringList>
#include <QTemporaryFile>

namespace TWB::Common::History {

/// Turns the CSV lines the service gives for each history entry into a file a spreadsheet opens:
/// a heading line, then the lines as they came, each ended by CRLF.
class TWBPLATFORM_EXPORT ExportAsCSV final
{
public:
    /// The runs of plans. Null when the temporary file could not be written.
    static QSharedPointer<QTemporaryFile> preparePlanExport(const QStringList& lines);
    /// The file operations of runs. Null when the temporary file could not be written.
    static QSharedPointer<QTemporaryFile> prepareFileExport(const QStringList& lines);

    /// The heading lines, in the order of the fields of the service's lines.
    static QString planHeading();
    static QString fileHeading();
};

} // namespace TWB::Common::History
