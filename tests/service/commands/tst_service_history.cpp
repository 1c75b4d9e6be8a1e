#include "raw_client.h"
#include "service_fixture.h"

#include "service/store/database.h"
#include "service/store/history_store.h"
#include "service/store/transaction.h"

#include <QJsonArray>
#include <QtTest>

#include <memory>

using TWB::Service::FileOperationRecord;
using TWB::Service::HistoryStore;
using TWB::Service::RunRecord;
using TWB::Test::RawClient;
using TWB::Test::ServiceFixture;
using TWB::Test::ServiceReply;

namespace {

// Reads one CSV line back into fields, quotes and all, to check what a spreadsheet would see.
QStringList parseCsv(const QString& line)
{
    QStringList fields;
    QString field;
    bool quoted = false;
    for (int i = 0; i < line.size(); ++i) {
        const QChar c = line.at(i);
        if (quoted) {
            if (c == QLatin1Char('"') && i + 1 < line.size() && line.at(i + 1) == QLatin1Char('"')) {
                field += c;
                ++i;
            } else if (c == QLatin1Char('"')) {
                quoted = false;
            } else {
                field += c;
            }
        } else if (c == QLatin1Char('"')) {
            quoted = true;
        } else if (c == QLatin1Char(',')) {
            fields << field;
            field.clear();
        } else {
            field += c;
        }
    }
    fields << field;
    return fields;
}

QJsonArray entries(const ServiceReply& reply, const char* key)
{
    return reply.data.value(QLatin1String(key)).toArray();
}

} // namespace

class TestServiceHistory : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<ServiceFixture> m_service;
    std::unique_ptr<RawClient> m_client;
    const QUuid m_planA = QUuid::createUuid();
    const QUuid m_planB = QUuid::createUuid();
    QList<qint64> m_allRuns; // ids, newest first
    qint64 m_quotedRun = 0;

private Q_SLOTS:
    void initTestCase()
    {
        m_service = std::make_unique<ServiceFixture>();
        m_client = std::make_unique<RawClient>();
        QVERIFY2(m_service->startWithConsoles(*m_client), qPrintable(m_service->process().output()));

        // Runs are written by runs; here the test writes them into the live store.
        TWB::Service::Database store(m_service->storeFile());
        store.open();
        HistoryStore history(store);
        TWB::Service::Transaction transaction(store);
        const QDateTime now = QDateTime::currentDateTimeUtc();
        // Plan A: 3 runs in the last day, 4 more in the week, 5 more in the month, 6 older.
        const QList<QPair<int, int>> ages = {{3, 2}, {4, 3 * 24}, {5, 20 * 24}, {6, 60 * 24}};
        for (const auto& [count, hours] : ages) {
            for (int i = 0; i < count; ++i) {
                RunRecord run;
                run.plan = m_planA;
                run.planName = QStringLiteral("Plan A");
                run.result = 6;
                run.start = now.addSecs(-hours * 3600 - i * 60);
                run.duration = 90;
                run.fileCount = 10;
                run.size = 1000;
                m_allRuns.prepend(history.addRun(run));
            }
        }
        // Plan B: 432 runs an hour apart, the newest 45 minutes ago.
        for (int i = 431; i >= 0; --i) {
            RunRecord run;
            run.plan = m_planB;
            run.planName = QStringLiteral("Plan B");
            run.operation = 1;
            run.result = i % 7 == 0 ? 8 : 6;
            run.start = now.addSecs(-2700 - qint64(i) * 3600);
            m_allRuns.prepend(history.addRun(run));
        }
        RunRecord quoted;
        quoted.plan = m_planA;
        quoted.planName = QStringLiteral("Docs \"daily\", v2");
        quoted.result = 8;
        quoted.start = QDateTime(QDate(2020, 1, 2), QTime(3, 4, 5), Qt::UTC);
        quoted.duration = 3600;
        quoted.errorMessage = QStringLiteral("Disk full\nat 99%");
        m_quotedRun = history.addRun(quoted);
        m_allRuns.prepend(m_quotedRun);

        for (int i = 0; i < 250; ++i) {
            FileOperationRecord operation;
            operation.run = m_allRuns.last();
            operation.plan = m_planA;
            operation.operation = i % 4 + 1;
            // The newest has all that its JSON and CSV must carry through: quotes, a comma, UTF-8, a tab.
            operation.path = i == 249 ? QStringLiteral("/home/alice/\"\u00e9t\u00e9\", file249\tx")
                                      : QStringLiteral("/home/alice/file%1").arg(i);
            operation.message = i == 249 ? QStringLiteral("Can't \"read\"") : QString();
            operation.size = i;
            operation.modified = now.addDays(-3);
            operation.finish = now.addSecs(-60);
            history.addFileOperation(operation);
        }
        transaction.commit();
    }

    void runsArePagedNewestFirstWithoutGapsOrRepeats()
    {
        QList<qint64> seen;
        QList<int> pages;
        qint64 last = 0;
        for (int page = 0; page < 10; ++page) {
            const ServiceReply reply = ServiceFixture::callThroughChannel(QStringLiteral("HistoryListByPlan"),
                {{QStringLiteral("filter"), QString()}, {QStringLiteral("lastID"), last},
                    {QStringLiteral("period"), QStringLiteral("All")}, {QStringLiteral("planID"), QString()}});
            QVERIFY2(reply.success, qPrintable(reply.error));
            const QJsonArray runs = entries(reply, "HistoryListByPlan");
            pages << runs.size();
            if (runs.isEmpty())
                break;
            for (const QJsonValue& run : runs)
                seen << qint64(run.toObject().value(QStringLiteral("DbID")).toDouble());
            last = seen.last();
        }
        QCOMPARE(pages, QList<int>({200, 200, 51, 0}));
        std::sort(m_allRuns.begin(), m_allRuns.end(), std::greater<qint64>());
        QCOMPARE(seen, m_allRuns);
    }

    void runEntriesCarryTheirKeys()
    {
        const ServiceReply reply = m_client->call(QStringLiteral("HistoryListByPlan"),
            {{QStringLiteral("planID"), m_planB.toString()}, {QStringLiteral("period"), QStringLiteral("DayLast")}});
        const QJsonArray runs = entries(reply, "HistoryListByPlan");
        QVERIFY(!runs.isEmpty());
        const QJsonObject run = runs.first().toObject();
        for (const char* key : {"DbID", "Duration", "ErrorMessage", "FileOperationsTotalCount", "PlanId", "PlanName",
                 "Result", "Size", "StartTimeUTC", "Operation"})
            QVERIFY2(run.contains(QLatin1String(key)), key);
        QVERIFY(!run.contains(QStringLiteral("CSVLine")));
        QCOMPARE(run.value(QStringLiteral("PlanId")).toString(), m_planB.toString());
        QCOMPARE(run.value(QStringLiteral("Operation")).toInt(), 1);
        const QDateTime start = QDateTime::fromString(
            run.value(QStringLiteral("StartTimeUTC")).toString(), QStringLiteral("yyyyMMddhhmmss"));
        QVERIFY(start.isValid());
    }

    void periodsAndPlansNarrowTheList_data()
    {
        QTest::addColumn<QString>("period");
        QTest::addColumn<QString>("plan");
        QTest::addColumn<int>("count");
        QTest::newRow("A, last day") << "DayLast" << m_planA.toString() << 3;
        QTest::newRow("A, last week") << "WeekLast" << m_planA.toString() << 7;
        QTest::newRow("A, last month") << "MonthLast" << m_planA.toString() << 12;
        QTest::newRow("A, all") << "All" << m_planA.toString() << 19;
        QTest::newRow("B, last day") << "DayLast" << m_planB.toString() << 24;
        QTest::newRow("B, last week") << "WeekLast" << m_planB.toString() << 168;
        QTest::newRow("nobody's plan") << "All" << QUuid::createUuid().toString() << 0;
    }

    void periodsAndPlansNarrowTheList()
    {
        QFETCH(QString, period);
        QFETCH(QString, plan);
        QFETCH(int, count);
        int total = 0;
        qint64 last = 0;
        for (;;) {
            const ServiceReply reply = m_client->call(QStringLiteral("HistoryListByPlan"),
                {{QStringLiteral("planID"), plan}, {QStringLiteral("period"), period},
                    {QStringLiteral("lastID"), last}});
            QVERIFY2(reply.success, qPrintable(reply.error));
            const QJsonArray runs = entries(reply, "HistoryListByPlan");
            if (runs.isEmpty())
                break;
            for (const QJsonValue& run : runs)
                QCOMPARE(run.toObject().value(QStringLiteral("PlanId")).toString(), plan);
            total += runs.size();
            last = qint64(runs.last().toObject().value(QStringLiteral("DbID")).toDouble());
        }
        QCOMPARE(total, count);
    }

    void csvLinesQuoteWhatNeedsIt()
    {
        const ServiceReply reply = m_client->call(QStringLiteral("HistoryListByPlan"),
            {{QStringLiteral("planID"), m_planA.toString()}, {QStringLiteral("generateCSV"), true},
                {QStringLiteral("lastID"), double(m_quotedRun + 1)}});
        const QJsonObject run = entries(reply, "HistoryListByPlan").first().toObject();
        QCOMPARE(qint64(run.value(QStringLiteral("DbID")).toDouble()), m_quotedRun);
        QCOMPARE(parseCsv(run.value(QStringLiteral("CSVLine")).toString()),
            QStringList({QStringLiteral("Docs \"daily\", v2"), QStringLiteral("Backup"), QStringLiteral("0"),
                QStringLiteral("0"), QStringLiteral("Fail"), QStringLiteral("2020-01-02 03:04:05"),
                QStringLiteral("3600"), QStringLiteral("2020-01-02 04:04:05"), QStringLiteral("Disk full\nat 99%")}));
    }

    void fileOperationsAreFilteredByKindAndPaged()
    {
        QList<qint64> ids;
        qint64 last = 0;
        for (;;) {
            const ServiceReply reply = ServiceFixture::callThroughChannel(QStringLiteral("HistoryListByFiles"),
                {{QStringLiteral("planId"), m_planA.toString()}, {QStringLiteral("lastId"), last},
                    {QStringLiteral("filterOperationType"), 2}, {QStringLiteral("period"), QStringLiteral("DayLast")},
                    {QStringLiteral("filter"), QString()}});
            QVERIFY2(reply.success, qPrintable(reply.error));
            const QJsonArray operations = entries(reply, "HistoryListByFiles");
            if (operations.isEmpty())
                break;
            for (const QJsonValue& value : operations) {
                const QJsonObject operation = value.toObject();
                QCOMPARE(operation.value(QStringLiteral("Operation")).toInt(), 2);
                ids << qint64(operation.value(QStringLiteral("ID")).toDouble());
            }
            last = ids.last();
        }
        QCOMPARE(ids.size(), 63); // every fourth of 250, starting with the second
        QVERIFY(std::is_sorted(ids.crbegin(), ids.crend()));

        const ServiceReply all = m_client->call(QStringLiteral("HistoryListByFiles"),
            {{QStringLiteral("planId"), m_planA.toString()}, {QStringLiteral("filterOperationType"), 0},
                {QStringLiteral("generateCSV"), true}});
        const QJsonArray page = entries(all, "HistoryListByFiles");
        QCOMPARE(page.size(), 200);
        const QJsonObject newest = page.first().toObject();
        const QString strange = QStringLiteral("/home/alice/\"\u00e9t\u00e9\", file249\tx");
        QCOMPARE(newest.value(QStringLiteral("File")).toString(), strange);
        for (const char* key :
            {"ID", "DateModified", "Duration", "File", "Message", "Operation", "Size", "FinishTime", "PlanId"})
            QVERIFY2(newest.contains(QLatin1String(key)), key);
        // Plan A is in no plan list: the name comes from its run.
        QCOMPARE(newest.value(QStringLiteral("PlanName")).toString(), QStringLiteral("Plan A"));
        const QStringList csv = parseCsv(newest.value(QStringLiteral("CSVLine")).toString());
        QCOMPARE(csv.at(0), QStringLiteral("Restored"));
        QCOMPARE(csv.size(), 8);
        QCOMPARE(csv.at(2), strange);
        QCOMPARE(csv.at(3), QStringLiteral("249"));
        QCOMPARE(csv.at(7), QStringLiteral("Can't \"read\""));
        QVERIFY2(QRegularExpression(QStringLiteral("^\\d{4}-\\d\\d-\\d\\d \\d\\d:\\d\\d:\\d\\d$"))
                     .match(csv.at(4))
                     .hasMatch(),
            qPrintable(csv.at(4)));
    }

    void historyRefusals_data()
    {
        QTest::addColumn<QString>("command");
        QTest::addColumn<QJsonObject>("params");
        QTest::addColumn<QString>("error");
        QTest::newRow("unknown period") << "HistoryListByPlan"
                                        << QJsonObject {{QStringLiteral("period"), QStringLiteral("Yesterday")}}
                                        << "Parameter \"period\" of HistoryListByPlan is \"Yesterday\", not one of";
        QTest::newRow("negative last id") << "HistoryListByPlan" << QJsonObject {{QStringLiteral("lastID"), -5}}
                                          << "Parameter \"lastID\" of HistoryListByPlan is -5, outside";
        QTest::newRow("last id not a number")
            << "HistoryListByFiles" << QJsonObject {{QStringLiteral("lastId"), QStringLiteral("end")}}
            << "Parameter \"lastId\" of HistoryListByFiles is not a whole number";
        QTest::newRow("plan not an id") << "HistoryListByPlan"
                                        << QJsonObject {{QStringLiteral("planID"), QStringLiteral("plan A")}}
                                        << "Parameter \"planID\" of HistoryListByPlan is not an identifier";
        QTest::newRow("unknown operation kind")
            << "HistoryListByFiles" << QJsonObject {{QStringLiteral("filterOperationType"), 9}}
            << "Parameter \"filterOperationType\" of HistoryListByFiles is 9, outside 0 to 4";
        QTest::newRow("csv not a flag") << "HistoryListByFiles"
                                        << QJsonObject {{QStringLiteral("generateCSV"), QStringLiteral("yes please")}}
                                        << "Parameter \"generateCSV\" of HistoryListByFiles is not true or false";
    }

    void historyRefusals()
    {
        QFETCH(QString, command);
        QFETCH(QJsonObject, params);
        QFETCH(QString, error);
        const ServiceReply reply = m_client->call(command, params);
        QVERIFY(reply.received);
        QVERIFY(!reply.success);
        QVERIFY2(reply.error.startsWith(error), qPrintable(reply.error));
    }
};

QTEST_MAIN(TestServiceHistory)
#include "tst_service_history.moc"
