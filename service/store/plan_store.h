#pragma once

#include <QDateTime>
#include <QList>
#include <QString>
#include <QStringList>
#include <QUuid>
#include <QVariant>
#include <QVector>

#include <optional>

namespace TWB::Service {

class Database;
struct PlanListCache;

/// A plan as the store keeps it: the XML, what the plan table shows of it, and the summary of
/// its last run. The run summary is null until a run writes it.
struct PlanRecord
{
    QUuid id;
    QString name;
    int subtype = 1; // 1 backup, 2 restore
    int type = 0; // 0 file, 1 disk image, 2 system full file, 3 unknown
    QUuid storage;
    QString scheduleText;
    QDateTime nextRun;
    QDateTime nextRunFull;
    QString xml;
    /// The schedules in the scheduler's short form; empty when not known yet.
    QString timing;
    int status = 2; // 1 running, 2 idle

    struct LastRun
    {
        QString message;
        int status = -1;
        QDateTime time;
        qint64 duration = 0;
        qint64 uploadedCount = 0;
        qint64 failedCount = 0;
        qint64 uploadedSize = 0;
        qint64 fileCount = 0;
        qint64 fileSize = 0;
    };
    std::optional<LastRun> lastRun;
};

/// The plans table. The XML is kept sealed with the local cipher, since it holds the plan's
/// passwords as they are. Writes belong inside a Transaction; failures throw a QString.
class PlanStore final
{
public:
    explicit PlanStore(Database& database)
        : m_database(database)
    { }

    /// Every plan, oldest first, without the XML, which listings do not need. Kept between calls on
    /// the connection, so that a list of thousands of plans is read from the file once.
    QList<PlanRecord> all();
    /// One plan of the kept list, without the XML.
    std::optional<PlanRecord> listed(const QUuid& id);
    /// One plan with its XML, deciphered.
    std::optional<PlanRecord> find(const QUuid& id);
    int count();
    /// Creates the plan, or rewrites what the XML decides of it, keeping its run summary and
    /// status. True when it was new.
    bool save(const PlanRecord& plan);
    bool remove(const QUuid& id);
    void setNextRun(const QUuid& id, const QDateTime& nextRun, const QDateTime& nextRunFull);
    struct NextRuns
    {
        QUuid id;
        QDateTime nextRun;
        QDateTime nextRunFull;
    };
    /// Many plans' next runs with one statement, as a pass after a long sleep moves thousands.
    void setNextRuns(const QVector<NextRuns>& runs);
    void setTiming(const QUuid& id, const QString& timing);
    void setStatus(const QUuid& id, int status);
    /// Every plan marked running becomes idle: after a start of the service none runs.
    void setAllIdle();
    void setLastRun(const QUuid& id, const PlanRecord::LastRun& lastRun);
    /// Names of the plans that store into the account.
    QStringList namesUsingStorage(const QUuid& storage);

private:
    void saveDocument(const QUuid& id, const QString& sealedXml);
    void saveTimings(const PlanRecord& plan);
    /// The kept list, read anew when there is none or another connection changed the file.
    PlanListCache& list();
    /// The kept list when it is current, to be updated with a write; null otherwise.
    PlanListCache* kept();

    Database& m_database;
};

} // namespace TWB::Service
