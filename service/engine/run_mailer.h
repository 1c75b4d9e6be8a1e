#pragma once

#include <QJsonObject>
#include <QObject>
#include <QString>
#include <QUuid>

namespace TWB::Service {

class Database;
struct RunRecord;

/// Sends the result of each run by email when the plan's notification settings ask for it, through
/// the mail server of notices.ini. Sending happens off the main thread; a send that fails is logged and
/// added to the run's message in the history, and never changes the run's result.
class RunMailer final : public QObject
{
    Q_OBJECT
    Q_DISABLE_COPY(RunMailer)
public:
    RunMailer(Database& database, const QString& settingsFile, QObject* parent = nullptr);

    /// Fed with the engine's notifications: the end of a run (state 2) is the cue.
    void onEngineNotification(const QString& type, const QJsonObject& data);

    /// The text of a run's email: the subject with its macros filled, and the body.
    static QString subjectFor(const QString& pattern, const RunRecord& run);

Q_SIGNALS:
    /// A run's email went out, or failed with `error`; for those who watch the service work.
    void sent(const QUuid& plan, const QString& error);

private:
    void mail(const QUuid& plan);
    QString bodyFor(const RunRecord& run, bool detailed);
    void recordFailure(qint64 run, const QString& error);

    Database& m_database;
    QString m_settingsFile;
};

} // namespace TWB::Service
