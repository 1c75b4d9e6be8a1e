#include "service/engine/run_mailer.h"

#include "platform/communication/notification_types.h"
#include "platform/logging/twl_debug.h"
#include "platform/plan/base.h"
#include "platform/plan/factory.h"
#include "service/engine/run_state.h"
#include "service/engine/smtp_mail.h"
#include "service/store/certificate_store.h"
#include "service/store/history_store.h"
#include "service/store/plan_store.h"
#include "service/store/transaction.h"

#include <QHostInfo>
#include <QLocale>

#include <memory>

namespace TWB::Service {

namespace {

namespace Type = TWB::Common::Communication::Notification::Type;

// A detailed report lists at most this many files: a mail of a million lines reaches nobody.
constexpr int reportLimit = 1000;

QString resultText(int state)
{
    switch (state) {
    case RunState::Success:
        return QStringLiteral("Success");
    case RunState::Warning:
        return QStringLiteral("Warning");
    case RunState::Interrupted:
    case RunState::InterruptedByBattery:
        return QStringLiteral("Interrupted");
    default:
        return QStringLiteral("Failed");
    }
}

bool failed(int state)
{
    return state != RunState::Success && state != RunState::Warning;
}

} // namespace

RunMailer::RunMailer(Database& database, const QString& settingsFile, QObject* parent)
    : QObject(parent)
    , m_database(database)
    , m_settingsFile(settingsFile)
{ }

void RunMailer::onEngineNotification(const QString& type, const QJsonObject& data)
{
    if (type != QLatin1String(Type::PlanStateChanged) || data.value(QStringLiteral("state")).toInt() != 2)
        return;
    try {
        mail(QUuid(data.value(QStringLiteral("id")).toString()));
    } catch (const QString& text) {
        TWL::TwlDebug("TWB").warning() << "Cannot prepare the notification email of the plan"
                                       << data.value(QStringLiteral("id")).toString() << ":" << text;
    }
}

QString RunMailer::subjectFor(const QString& pattern, const RunRecord& run)
{
    QString subject = pattern.isEmpty() ? QStringLiteral("Tidewrack Backup %RESULT%") : pattern;
    subject.replace(QLatin1String("%RESULT%"), resultText(run.result))
        .replace(QLatin1String("%PLAN_NAME%"), run.planName)
        .replace(QLatin1String("%COMPUTER_NAME%"), QHostInfo::localHostName());
    // A subject is one header line.
    subject.replace(QLatin1Char('\r'), QLatin1Char(' ')).replace(QLatin1Char('\n'), QLatin1Char(' '));
    return subject;
}

void RunMailer::mail(const QUuid& plan)
{
    // Read now, before the end of the run goes further: a run-once restore plan is removed next.
    const std::optional<PlanRecord> record = PlanStore(m_database).find(plan);
    if (!record)
        return;
    QString error;
    std::unique_ptr<TWB::Info::Plan::Base> document(TWB::Info::Plan::Factory::create(record->xml, &error));
    if (!document)
        throw QStringLiteral("the plan no longer reads: %1").arg(error);
    const TWB::Info::Plan::Notification& notice = document->notification();
    if (notice.type() == TWB::Info::Plan::Notification::Never)
        return;
    const QList<RunRecord> runs = HistoryStore(m_database).runs(plan, QDateTime(), 0, 1);
    if (runs.isEmpty())
        return;
    const RunRecord run = runs.first();
    if (notice.type() == TWB::Info::Plan::Notification::OnFailure && !failed(run.result))
        return;

    const NoticeSettings settings = NoticeSettings::read(m_settingsFile);
    if (!settings.isSet() || settings.recipientList().isEmpty()) {
        const QString reason = settings.isSet() ? QStringLiteral("no address to send to is set")
                                                : QStringLiteral("no mail server is set");
        recordFailure(run.id, reason);
        Q_EMIT sent(plan, reason);
        return;
    }
    SmtpMail message(settings, subjectFor(notice.subject(), run), bodyFor(run, notice.generateDetailedReport()));
    message.setTrustedCertificates(CertificateStore(m_database).all());
    message.sendLater(this, [this, plan, runId = run.id, to = settings.recipients](const QString& failure) {
        if (failure.isEmpty())
            TWL::TwlDebug("TWB").info() << "Sent the notification email of the plan" << plan.toString() << "to" << to;
        else
            recordFailure(runId, failure);
        Q_EMIT sent(plan, failure);
    });
}

QString RunMailer::bodyFor(const RunRecord& run, bool detailed)
{
    const QLocale c = QLocale::c();
    QStringList lines;
    lines
        << QStringLiteral("Plan: %1").arg(run.planName)
        << QStringLiteral("Computer: %1").arg(QHostInfo::localHostName())
        << QStringLiteral("Result: %1").arg(resultText(run.result))
        << QStringLiteral("Started: %1").arg(c.toString(run.start.toLocalTime(), QStringLiteral("yyyy-MM-dd hh:mm:ss")))
        << QStringLiteral("Duration: %1 s").arg(run.duration) << QStringLiteral("Files: %1").arg(run.fileCount)
        << QStringLiteral("Size: %1 bytes").arg(run.size);
    if (!run.errorMessage.isEmpty())
        lines << QStringLiteral("Message: %1").arg(run.errorMessage);
    if (detailed) {
        lines << QString() << QStringLiteral("Files of this run:");
        const QList<FileOperationRecord> operations
            = HistoryStore(m_database).fileOperations(run.plan, run.start, 0, 0, reportLimit * 4);
        int listed = 0;
        for (const FileOperationRecord& operation : operations) {
            if (operation.run != run.id || listed == reportLimit)
                continue;
            ++listed;
            QString line
                = QStringLiteral("%1 %2").arg(FileOperationRecord::kindName(operation.operation), operation.path);
            if (!operation.message.isEmpty())
                line += QStringLiteral(": ") + operation.message;
            lines << line;
        }
        if (run.fileCount > listed)
            lines << QStringLiteral("... and %1 more").arg(run.fileCount - listed);
    }
    return lines.join(QLatin1Char('\n')) + QLatin1Char('\n');
}

void RunMailer::recordFailure(qint64 runId, const QString& error)
{
    TWL::TwlDebug("TWB").warning() << "The notification email of run" << runId << "was not sent:" << error;
    try {
        HistoryStore store(m_database);
        // The run's own figures stay as they are: only its message learns of the email.
        QList<RunRecord> runs = store.runs(QUuid(), QDateTime(), runId + 1, 1);
        if (runs.isEmpty() || runs.first().id != runId)
            return;
        RunRecord run = runs.first();
        const QString note = QStringLiteral("The notification email was not sent: %1").arg(error);
        run.errorMessage = run.errorMessage.isEmpty() ? note : run.errorMessage + QStringLiteral("; ") + note;
        Transaction transaction(m_database);
        store.updateRun(run);
        transaction.commit();
    } catch (const QString& text) {
        TWL::TwlDebug("TWB").warning() << "Cannot write the failed email into the history:" << text;
    }
}

} // namespace TWB::Service
