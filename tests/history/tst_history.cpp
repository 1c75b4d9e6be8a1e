#include "app/history_view.h"
#include "engine_test_support.h"
#include "frame/model_manager.h"
#include "frame/model_names.h"
#include "frame/shared_model_creator.h"
#include "history/history_get_by_file_model.h"
#include "history/history_get_by_plan_model.h"
#include "plans/plan_table_model.h"
#include "platform/history/export_as_csv.h"
#include "platform/plan/backup_file.h"
#include "raw_client.h"
#include "service_fixture.h"

#include <QAbstractItemModelTester>
#include <QComboBox>
#include <QLabel>
#include <QProgressBar>
#include <QSignalSpy>
#include <QTableView>
#include <QTreeView>
#include <QtTest>

#include <memory>

using namespace TWB::GUI;
using TWB::Host::HistoryView;
using TWB::Test::EngineTestSupport;
using TWB::Test::RawClient;
using TWB::Test::ServiceFixture;
using TWB::Test::TestEnvironment;
using Tester = QAbstractItemModelTester;

namespace {

QStringList readLines(const QString& path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return {};
    QStringList lines = QString::fromUtf8(file.readAll()).split(QStringLiteral("\r\n"));
    if (!lines.isEmpty() && lines.last().isEmpty())
        lines.removeLast();
    return lines;
}

// Every reply sent earlier on the console's one connection has been taken in once a later one answers.
bool channelDrained()
{
    return ServiceFixture::callThroughChannel(QStringLiteral("PlanGetList"), {{QStringLiteral("profile"), "alice"}})
        .success;
}

QString text(const QAbstractItemModel& model, int row, int column)
{
    return model.index(row, column).data().toString();
}

} // namespace

/// The history models and the History tab against the real twbd, over runs that restic really made.
class TestHistory : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<ServiceFixture> m_service;
    std::unique_ptr<RawClient> m_client;
    SharedModelCreator<HistoryGetByPlanModel> m_plansCreator {ModelNames::HistoryGetByPlan};
    SharedModelCreator<HistoryGetByFileModel> m_filesCreator {ModelNames::HistoryGetByFile};
    SharedModelCreator<PlanTableModel> m_tableCreator {ModelNames::PlanTable};
    QUuid m_account;
    QUuid m_docs; // two runs: 200 files, then 50 more
    QUuid m_other; // one run of one file
    QString m_docsFolder;

    static HistoryGetByPlanModel* runs()
    {
        return qobject_cast<HistoryGetByPlanModel*>(ModelManager::instance()->create(ModelNames::HistoryGetByPlan));
    }
    static HistoryGetByFileModel* files()
    {
        return qobject_cast<HistoryGetByFileModel*>(ModelManager::instance()->create(ModelNames::HistoryGetByFile));
    }

    QUuid backUp(const QString& name, const QString& folder)
    {
        const auto plan = EngineTestSupport::backupPlan(m_account, name, {folder});
        if (!EngineTestSupport::save(*m_client, *plan))
            return QUuid();
        return plan->id();
    }

    bool runOnce(const QUuid& plan)
    {
        const TWB::Test::RunOutcome outcome = EngineTestSupport::run(*m_client, plan);
        return outcome.ended && outcome.status == 6;
    }

private Q_SLOTS:
    void initTestCase()
    {
        qputenv("USER", "alice");
        m_service = std::make_unique<ServiceFixture>();
        m_client = std::make_unique<RawClient>();
        QVERIFY2(m_service->startWithConsoles(*m_client), qPrintable(m_service->process().output()));
        for (ModelCreator* creator :
            std::initializer_list<ModelCreator*> {&m_plansCreator, &m_filesCreator, &m_tableCreator})
            ModelManager::instance()->registrateCreator(*creator);
        m_account = EngineTestSupport::addLocalAccount(
            *m_client, m_service->environment().root() + QStringLiteral("/repo"), QStringLiteral("laptop"));
        QVERIFY(!m_account.isNull());

        m_docsFolder = m_service->environment().root() + QStringLiteral("/docs");
        for (int i = 0; i < 200; ++i)
            EngineTestSupport::writeFile(m_docsFolder + QStringLiteral("/first/%1.txt").arg(i), QByteArray::number(i));
        m_docs = backUp(QStringLiteral("Docs"), m_docsFolder);
        QVERIFY(runOnce(m_docs));
        for (int i = 0; i < 50; ++i)
            EngineTestSupport::writeFile(m_docsFolder + QStringLiteral("/second/%1.txt").arg(i), QByteArray::number(i));
        QVERIFY(runOnce(m_docs));
        const QString other = m_service->environment().root() + QStringLiteral("/other");
        EngineTestSupport::writeFile(other + QStringLiteral("/one.txt"), "one");
        m_other = backUp(QStringLiteral("Other"), other);
        QVERIFY(runOnce(m_other));
    }

    void listsPageByPageToTheEnd()
    {
        HistoryGetByFileModel* model = files();
        QSignalSpy complite(model, &BaseModel::complite);
        model->setRun(0);
        QVERIFY(model->load(0, m_docs, 0));
        QVERIFY(complite.wait());
        QCOMPARE(model->rowCount(), 200);
        QVERIFY(model->canFetchMore(QModelIndex()));
        model->fetchMore(QModelIndex());
        QTRY_COMPARE(complite.size(), 2);
        QCOMPARE(model->rowCount(), 250);
        // The end shows as an empty page, which leaves the rows as they were.
        model->fetchMore(QModelIndex());
        QTRY_COMPARE(complite.size(), 3);
        QCOMPARE(model->rowCount(), 250);
        QVERIFY(!model->canFetchMore(QModelIndex()));
        QSet<qint64> ids;
        for (int row = 0; row < model->rowCount(); ++row) {
            const qint64 id = model->entry(row).value(QStringLiteral("ID")).toLongLong();
            QVERIFY2(row == 0 || id < model->entry(row - 1).value(QStringLiteral("ID")).toLongLong(), "newest first");
            ids.insert(id);
        }
        QCOMPARE(ids.size(), 250);
        // The newest run's files come first.
        QVERIFY(text(*model, 0, 2).contains(QStringLiteral("/second/")));
        QVERIFY(text(*model, 249, 2).contains(QStringLiteral("/first/")));
        QCOMPARE(QUuid(text(*model, 0, 1)), m_docs);
        QCOMPARE(model->index(0, 1).data(Qt::UserRole).toString(), QStringLiteral("Docs"));

        HistoryGetByPlanModel* plans = runs();
        QSignalSpy planComplite(plans, &BaseModel::complite);
        QVERIFY(plans->load(0, m_docs));
        QVERIFY(planComplite.wait());
        QCOMPARE(plans->rowCount(), 2);
        QCOMPARE(text(*plans, 0, 0), QStringLiteral("Docs"));
        QCOMPARE(text(*plans, 0, 1), QStringLiteral("50"));
        QCOMPARE(text(*plans, 1, 1), QStringLiteral("200"));
        QCOMPARE(plans->index(0, 3).data().toInt(), 6);
        const QDateTime start = QDateTime::fromString(text(*plans, 0, 4), QStringLiteral("yyyyMMddhhmmss"));
        QCOMPARE(text(*plans, 0, 6),
            start.addSecs(text(*plans, 0, 5).toLongLong()).toString(QStringLiteral("yyyyMMddhhmmss")));
    }

    void aViewScrolledToItsEndFetchesEveryPage()
    {
        HistoryGetByFileModel* model = files();
        Tester tester(model, Tester::FailureReportingMode::QtTest);
        HistoryGetByPlanModel* plans = runs();
        Tester planTester(plans, Tester::FailureReportingMode::QtTest);
        QTreeView view;
        view.setModel(model);
        view.resize(400, 300);
        view.show();
        QVERIFY(plans->load(2, QUuid()));
        QVERIFY(model->load(0, QUuid(), 0, 1));
        QTRY_VERIFY((view.scrollToBottom(), model->rowCount() == 251 && !model->canFetchMore(QModelIndex())));
        QTRY_COMPARE(plans->rowCount(), 3);
        QVERIFY(channelDrained());
        QCOMPARE(model->rowCount(), 251);
    }

    void olderReplyVanishes()
    {
        HistoryGetByPlanModel* model = runs();
        QSignalSpy complite(model, &BaseModel::complite);
        QSignalSpy inserted(model, &QAbstractItemModel::rowsInserted);
        QVERIFY(model->load(0, m_docs));
        QVERIFY(model->load(0, m_other));
        QVERIFY(complite.wait());
        QVERIFY(channelDrained());
        QCOMPARE(complite.size(), 1);
        QCOMPARE(inserted.size(), 1);
        QCOMPARE(model->rowCount(), 1);
        QCOMPARE(text(*model, 0, 0), QStringLiteral("Other"));
    }

    void exportsTheWholeSelection_data()
    {
        QTest::addColumn<bool>("byRun");
        QTest::addColumn<int>("lines");
        QTest::addColumn<QStringList>("progress");
        // Exactly one full page still asks for the next one, and that empty page ends it.
        QTest::newRow("one page of a run") << true << 200 << QStringList {"200", "200"};
        QTest::newRow("two pages of a plan") << false << 250 << QStringList {"200", "250"};
    }
    void exportsTheWholeSelection()
    {
        QFETCH(bool, byRun);
        QFETCH(int, lines);
        QFETCH(QStringList, progress);
        HistoryGetByPlanModel* plans = runs();
        QSignalSpy planComplite(plans, &BaseModel::complite);
        QVERIFY(plans->load(0, m_docs));
        QVERIFY(planComplite.wait());
        HistoryGetByFileModel* model = files();
        model->setRun(byRun ? plans->entry(1).value(QStringLiteral("DbID")).toLongLong() : 0);
        QSignalSpy ready(model, &HistoryGetByFileModel::saveFileReady);
        QSignalSpy pages(model, &HistoryModelBase::exportProgress);
        QVERIFY(model->issueFileExport(0, m_docs, 0, 0));
        QVERIFY(ready.wait());
        QStringList counts;
        for (const QList<QVariant>& page : qAsConst(pages))
            counts << page.first().toString();
        QCOMPARE(counts, progress);
        const auto file = ready.first().first().value<QSharedPointer<QTemporaryFile>>();
        QVERIFY(file);
        const QStringList csv = readLines(file->fileName());
        QCOMPARE(csv.size(), lines + 1);
        QCOMPARE(csv.first(), TWB::Common::History::ExportAsCSV::fileHeading());
        QVERIFY(csv.at(1).startsWith(QStringLiteral("\"Uploaded\",\"Docs\",\"") + m_docsFolder));
        model->setRun(0);
    }

    void historyTab()
    {
        ModelManager::instance()->create(ModelNames::PlanTable)->init();
        HistoryView view;
        view.resize(1000, 560);
        view.show();
        QVERIFY(view.hasModels());
        QTRY_COMPARE(view.planBox()->count(), 3);
        QTRY_COMPARE(view.runsView()->model()->rowCount(), 3);

        // The operations of all runs fill the table from one page; the next waits for a scroll.
        QTRY_COMPARE(view.filesView()->model()->rowCount(), 200);
        QVERIFY(channelDrained());
        QCOMPARE(view.filesView()->model()->rowCount(), 200);
        view.filesView()->scrollToBottom();
        QTRY_COMPARE(view.filesView()->model()->rowCount(), 251);

        // A run that goes on: shown at once, newest first, with no finish time yet.
        const QString large = m_service->environment().root() + QStringLiteral("/large");
        EngineTestSupport::writeFile(large + QStringLiteral("/video.raw"), EngineTestSupport::noise(3 << 20, 7));
        const QUuid slow = backUp(QStringLiteral("Large"), large);
        EngineTestSupport::setOption(m_service->dataDir(), QStringLiteral("Local Bandwidth"), QStringLiteral("200"));
        QVERIFY(m_client->call(QStringLiteral("PlanExecuteStart"), {{QStringLiteral("ID"), slow.toString()}}).success);
        const QAbstractItemModel* shown = view.runsView()->model();
        QTRY_COMPARE_WITH_TIMEOUT(text(*shown, 0, 0), QStringLiteral("Large"), 10000);
        QCOMPARE(shown->index(0, 3).data().toInt(), 2);
        QCOMPARE(text(*shown, 0, 6), QString());

        // Its CSV line has an empty finish time too.
        const QString path = m_service->environment().root() + QStringLiteral("/runs.csv");
        QSignalSpy finished(&view, &HistoryView::exportFinished);
        view.exportRuns(path);
        QVERIFY(view.exportProgress()->isVisible());
        QVERIFY(finished.wait());
        QCOMPARE(finished.first().at(1).toString(), QString());
        const QStringList csv = readLines(path);
        QCOMPARE(csv.size(), 5);
        QVERIFY2(csv.at(1).startsWith(QStringLiteral("\"Large\",\"Backup\"")), qPrintable(csv.at(1)));
        QVERIFY2(csv.at(1).endsWith(QStringLiteral(",\"\",\"\"")), qPrintable(csv.at(1)));
        QVERIFY(!view.exportProgress()->isVisible());

        // The result filter keeps the runs asked for; selecting a run shows its own operations.
        view.resultBox()->setCurrentIndex(view.resultBox()->findText(QStringLiteral("Running")));
        QCOMPARE(shown->rowCount(), 1);
        view.resultBox()->setCurrentIndex(0);
        QCOMPARE(shown->rowCount(), 4);
        view.runsView()->setCurrentIndex(shown->index(2, 0));
        QTRY_COMPARE(view.filesView()->model()->rowCount(), 50);
        QVERIFY(view.statusLabel()->text().contains(path));
        QVERIFY(view.grab().save(TestEnvironment::outputDir() + QStringLiteral("/history_tab.png")));

        // The run's end reaches the rows without a reload by hand, and the selection stays.
        const qint64 selected = view.selectedRun();
        QVERIFY(selected > 0);
        QVERIFY(m_client->call(QStringLiteral("PlanExecuteStop"), {{QStringLiteral("ID"), slow.toString()}}).success);
        QVERIFY(EngineTestSupport::waitForEnd(*m_client, slow).ended);
        EngineTestSupport::setOption(m_service->dataDir(), QStringLiteral("Local Bandwidth"), QString());
        QTRY_VERIFY_WITH_TIMEOUT(
            text(*shown, 0, 0) == QLatin1String("Large") && shown->index(0, 3).data().toInt() != 2, 10000);
        QVERIFY(!text(*shown, 0, 6).isEmpty());
        QTRY_COMPARE(view.selectedRun(), selected);
        QTRY_COMPARE(view.filesView()->model()->rowCount(), 50);
    }
};

QTEST_MAIN(TestHistory)
#include "tst_history.moc"
