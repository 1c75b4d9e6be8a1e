#pragma once

#include <QDateTime>
#include <QList>
#include <QString>
#include <QSqlQuery>
#include <QUuid>

namespace TWB::Service {

class Database;

/// One run of a plan. `operation` is 0 for a backup and 1 for a restore; `result` is a plan
/// state (6 success, 7 warning, 8 fail, 2 running and so on).
struct RunRecord
{
    qint64 id = 0;
    QUuid plan;
    QString planName;
    int operation = 0;
    int result = 2;
    QDateTime start;
    qint64 duration = 0; // seconds
    qint64 fileCount = 0;
    qint64 size = 0;
    QString errorMessage;
};

/// What a run did with one file.
struct FileOperationRecord
{
    /// Kinds of file operation; a history filter of 0 takes them all.
    enum Operation : int { Uploaded = 1, Restored = 2, Deleted = 3, Failed = 4 };
    /// The kind's name in exports and mails: "Uploaded", "Restored", "Deleted", "Failed", else its number.
    static QString kindName(int operation);

    qint64 id = 0;
    qint64 run = 0;
    QUuid plan;
    QString planName; // read from the run; not written
    int operation = Uploaded;
    QString path;
    qint64 size = 0;
    QDateTime modified;
    QDateTime finish;
    qint64 duration = 0; // seconds
    QString message;
};

/// Runs and file operations, newest first, paged by id.
class HistoryStore final
{
public:
    explicit HistoryStore(Database& database)
        : m_database(database)
    { }

    qint64 addRun(const RunRecord& run);
    /// Rewrites result, duration, counts and message of a run that ended.
    void updateRun(const RunRecord& run);
    qint64 addFileOperation(const FileOperationRecord& operation);
    /// The file operations of one run, with one prepared statement: a run may bring many thousands.
    void addFileOperations(qint64 run, const QList<FileOperationRecord>& operations);
    /// Runs still marked as running; after a start of the service, those its death cut short.
    QList<RunRecord> unfinishedRuns();

    /// Runs of one plan, or of all plans for a null id, that started at `since` or later (all for an
    /// invalid time), with ids below `beforeId` (all for 0), newest first.
    QList<RunRecord> runs(const QUuid& plan, const QDateTime& since, qint64 beforeId, int limit);
    /// File operations, likewise by finish time; `operation` 0 takes every kind, `run` 0 every run.
    QList<FileOperationRecord> fileOperations(
        const QUuid& plan, const QDateTime& since, qint64 beforeId, int operation, int limit, qint64 run = 0);

    /// Columns of selectFileOperations(), as the store keeps them: times as "yyyyMMddhhmmss" text.
    enum FileOperationColumn : int {
        OperationId,
        OperationRun,
        OperationPlan,
        OperationKind,
        OperationPath,
        OperationSize,
        OperationModified,
        OperationFinish,
        OperationDuration,
        OperationMessage,
        OperationPlanName
    };
    /// The rows of fileOperations() as a forward-only query, for callers that write them out as text:
    /// a page of the export is read a hundred thousand times over and parsing times back and forth showed.
    QSqlQuery selectFileOperations(
        const QUuid& plan, const QDateTime& since, qint64 beforeId, int operation, int limit, qint64 run = 0);

private:
    Database& m_database;
};

} // namespace TWB::Service
