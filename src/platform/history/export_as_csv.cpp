#include "platform/history/export_as_csv.h"

#include "platform/logging/twl_debug.h"

#include <QCoreApplication>
#include <QDir>

namespace TWB::Common::History {

namespace {

QString heading(const QStringList& titles)
{
    QStringList quoted;
    for (const QString& title : titles)
        quoted << QLatin1Char('"') + title + QLatin1Char('"');
    return quoted.join(QLatin1Char(','));
}

QSharedPointer<QTemporaryFile> write(const QString& heading, const QStringList& lines)
{
    auto file = QSharedPointer<QTemporaryFile>::create(QDir::tempPath() + QStringLiteral("/twb-history-XXXXXX.csv"));
    if (!file->open()) {
        TWL::TwlDebug("TWB").warning() << "History export: cannot create" << file->fileTemplate()
                                       << file->errorString();
        return {};
    }
    // One buffer and one write: a hundred thousand small writes cost more than the encoding.
    qsizetype size = heading.size() + 2;
    for (const QString& line : lines)
        size += line.size() + 2;
    QByteArray bytes;
    bytes.reserve(int(size + size / 8));
    const QByteArray end("\r\n");
    bytes += heading.toUtf8() + end;
    for (const QString& line : lines) {
        bytes += line.toUtf8();
        bytes += end;
    }
    if (file->write(bytes) != bytes.size() || !file->flush()) {
        TWL::TwlDebug("TWB").warning() << "History export: cannot write" << file->fileName() << file->errorString();
        return {};
    }
    file->close();
    return file;
}

} // namespace

QString ExportAsCSV::planHeading()
{
    return heading({QCoreApplication::translate("ExportAsCSV", "Plan Name"),
        QCoreApplication::translate("ExportAsCSV", "Operation"), QCoreApplication::translate("ExportAsCSV", "Files"),
        QCoreApplication::translate("ExportAsCSV", "Size"), QCoreApplication::translate("ExportAsCSV", "Result"),
        QCoreApplication::translate("ExportAsCSV", "Start Time"),
        QCoreApplication::translate("ExportAsCSV", "Duration"),
        QCoreApplication::translate("ExportAsCSV", "Finish Time"),
        QCoreApplication::translate("ExportAsCSV", "Error Message")});
}

QString ExportAsCSV::fileHeading()
{
    return heading({QCoreApplication::translate("ExportAsCSV", "Operation"),
        QCoreApplication::translate("ExportAsCSV", "Plan name"), QCoreApplication::translate("ExportAsCSV", "File"),
        QCoreApplication::translate("ExportAsCSV", "Size"), QCoreApplication::translate("ExportAsCSV", "Finish Time"),
        QCoreApplication::translate("ExportAsCSV", "Duration"),
        QCoreApplication::translate("ExportAsCSV", "Date Modified"),
        QCoreApplication::translate("ExportAsCSV", "Message")});
}

QSharedPointer<QTemporaryFile> ExportAsCSV::preparePlanExport(const QStringList& lines)
{
    return write(planHeading(), lines);
}

QSharedPointer<QTemporaryFile> ExportAsCSV::prepareFileExport(const QStringList& lines)
{
    return write(fileHeading(), lines);
}

} // namespace TWB::Common::History
