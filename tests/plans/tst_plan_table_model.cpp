#include "plans/plan_backup_model.h"
#include "plans/plan_control_object.h"
#include "plans/plan_restore_model.h"
#include "plans/plan_table_model.h"
#include "plans/plan_xml_list.h"
#include "platform/communication/connection_manager.h"
#include "platform/communication/notification_types.h"
#include "platform/plan/backup_file.h"
#include "platform/plan/restore_file.h"
#include "plan_test_rows.h"
#include "support/fake_service.h"
#include "support/log_capture.h"
#include "support/test_environment.h"
#include "widgets/icon_manager.h"

#include <QAbstractItemModelTester>
#include <QLocale>
#include <QSignalSpy>
#include <QWidget>
#include <QtTest>

#include <ctime>
#include <memory>

using namespace TWB::GUI;
using TWB::Common::Communication::ConnectionManager;
using TWB::Info::Plan::BackupFile;
using TWB::Info::Plan::Base;
using TWB::Info::Plan::RestoreFile;
using TWB::Test::FakeReply;
using TWB::Test::FakeRequest;
using TWB::Test::FakeService;
using TWB::Test::LogCapture;
using TWB::Test::NoModelCreator;
using TWB::Test::planRow;
using TWB::Test::PlanRows;
using TWB::Test::RegisteredPlanTable;
using TWB::Test::TestEnvironment;
namespace NotificationType = TWB::Common::Communication::Notification::Type;

namespace {

const QUuid Storage("{0d6f3c55-2a41-4b8e-9f0e-7c1d2b3a4e5f}");

QString planXml(const QUuid& id, const QString& name, int kind)
{
    if (kind == 2) {
        RestoreFile plan;
        plan.setId(id);
        plan.setName(name);
        plan.setStorage(Storage);
        plan.setRestoreItems({QStringLiteral("/home/alice/Photos")});
        return plan.toXml();
    }
    BackupFile plan;
    plan.setId(id);
    plan.setName(name);
    plan.setStorage(Storage);
    plan.setItems({QStringLiteral("/home/alice/Photos")});
    return plan.toXml();
}

} // namespace

/// The plan table, the backup and restore tables that show its rows, the plan documents behind them and
/// the control object that starts, stops and removes plans, against a scripted service.
class TestPlanTableModel : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<TestEnvironment> m_env;
    FakeService m_service;
    PlanRows m_rows {m_service};
    std::unique_ptr<RegisteredPlanTable> m_registered;
    std::unique_ptr<QAbstractItemModelTester> m_tester;
    PlanTableModel* m_table = nullptr;
    /// Plan documents the fake service holds, by plan id.
    QMap<QString, QString> m_documents;
    QWidget m_window;
    const QUuid m_idle = QUuid::createUuid();
    const QUuid m_running = QUuid::createUuid();
    const QUuid m_restore = QUuid::createUuid();
    const QUuid m_odd = QUuid::createUuid();

    /// The plans the control object tests act on, loaded into the table: one at rest, one running, a
    /// restore plan, and one with a status the service never sends for a plan at rest.
    bool loadControlledPlans()
    {
        m_rows.put(planRow(m_idle, QStringLiteral("Photos"), 1, 2));
        m_rows.put(planRow(m_running, QStringLiteral("Music"), 1, 1));
        m_rows.put(planRow(m_restore, QStringLiteral("Back home"), 2, 2));
        m_rows.put(planRow(m_odd, QStringLiteral("Odd"), 1, 5));
        for (const char* command : {"PlanExecuteStart", "PlanExecuteStop", "PlanRemove"})
            m_service.on(QLatin1String(command), FakeReply::ok());
        const bool loaded = load();
        m_service.clearRequests();
        return loaded;
    }

    QString cell(int row, int column) const { return m_table->index(row, column).data().toString(); }

    static QStringList names(const QAbstractItemModel& model)
    {
        QStringList result;
        for (int row = 0; row < model.rowCount(); ++row)
            result << model.index(row, 1).data().toString();
        return result;
    }
    QStringList names() const { return names(*m_table); }

    /// Puts a plan in the service, row and document alike.
    QUuid addPlan(const QString& name, int kind)
    {
        const QUuid id = QUuid::createUuid();
        m_rows.put(planRow(id, name, kind));
        m_documents.insert(id.toString(), planXml(id, name, kind));
        return id;
    }

    void notify(const char* type, const QUuid& id, const QJsonObject& more = QJsonObject())
    {
        QJsonObject data = more;
        data.insert(QStringLiteral("id"), id.toString());
        m_service.notify(QLatin1String(type), data);
    }

    /// Loads the table from what the service holds.
    bool load()
    {
        QSignalSpy complite(m_table, &BaseModel::complite);
        return m_table->init() && complite.wait();
    }

private Q_SLOTS:
    void initTestCase()
    {
        // Far from UTC and not on a whole hour, so that a time shown without conversion stands out.
        qputenv("TZ", "Asia/Kolkata");
        tzset();
        m_env = std::make_unique<TestEnvironment>();
        QVERIFY(m_service.serveConsole(m_env->socketPath()));
    }

    void init()
    {
        qputenv("USER", "alice");
        m_rows.rows.clear();
        m_rows.serve();
        m_documents.clear();
        m_service.on(QStringLiteral("PlanGetXML"), [this](const FakeRequest& request) {
            const QString id = request.params.value(QStringLiteral("ID")).toString();
            if (!m_documents.contains(id))
                return FakeReply::fail(QStringLiteral("Plan %1 is not known").arg(id));
            return FakeReply::ok({{QStringLiteral("planXML"), m_documents.value(id)}});
        });
        m_service.clearRequests();
        m_registered = std::make_unique<RegisteredPlanTable>();
        m_table = m_registered->table;
        QVERIFY(m_table);
        m_tester = std::make_unique<QAbstractItemModelTester>(
            m_table, QAbstractItemModelTester::FailureReportingMode::QtTest);
    }

    void cleanup()
    {
        m_tester.reset();
        m_registered.reset();
        m_table = nullptr;
    }

    void loadShowsEveryPlanInArrivalOrder()
    {
        const QUuid first = QUuid::createUuid();
        const QUuid second = QUuid::createUuid();
        const QUuid third = QUuid::createUuid();
        m_rows.put(planRow(first, QStringLiteral("Photos"), 1));
        m_rows.put(planRow(second, QStringLiteral("Documents"), 1));
        m_rows.put(planRow(third, QStringLiteral("Restore photos"), 2));

        QStringList events;
        connect(m_table, &BaseModel::updated, this, [&] { events << QStringLiteral("updated"); });
        connect(m_table, &QAbstractItemModel::rowsInserted, this,
            [&](const QModelIndex&, int from, int to) { events << QStringLiteral("rows %1-%2").arg(from).arg(to); });
        connect(m_table, &BaseModel::complite, this, [&] { events << QStringLiteral("complite"); });
        QVERIFY(load());
        QCOMPARE(events, (QStringList {"updated", "rows 0-2", "complite"}));

        const FakeRequest request = m_service.requests(QStringLiteral("PlanGetList")).first();
        QCOMPARE(request.params, (QJsonObject {{QStringLiteral("profile"), QStringLiteral("alice")}}));

        QCOMPARE(m_table->rowCount(), 3);
        QCOMPARE(m_table->columnCount(), 15);
        QCOMPARE(names(), (QStringList {"Photos", "Documents", "Restore photos"}));
        QCOMPARE(m_table->index(1, 0).data().toUuid(), second);
        QCOMPARE(m_table->index(2, 2).data().toInt(), 2);
        QCOMPARE(cell(0, 3), QStringLiteral("Every day at 22:00"));
        QCOMPARE(cell(0, 6), QStringLiteral("6 files sent"));
        QCOMPARE(m_table->index(0, 13).data().toDouble(), 52428800.0);
    }

    void timesShowInLocalTime()
    {
        QJsonObject row = planRow(QUuid::createUuid(), QStringLiteral("Photos"), 1);
        row.insert(QStringLiteral("NextRun"), QString());
        m_rows.put(row);
        QVERIFY(load());
        const QDateTime utc(QDate(2024, 3, 1), QTime(10, 15), Qt::UTC);
        const QString local = QLocale::system().toString(utc.toLocalTime(), QLocale::ShortFormat);
        QVERIFY(local.contains(QStringLiteral("3:45")) || local.contains(QStringLiteral("15:45")));
        QCOMPARE(cell(0, 8), local);
        // Not yet scheduled: no date at all rather than a made-up one.
        QVERIFY(!m_table->index(0, 9).data().isValid());
    }

    void loadFailureIsReportedAndLeavesNoRows_data()
    {
        QTest::addColumn<FakeReply>("reply");
        QTest::addColumn<QString>("text");
        QTest::newRow("service error") << FakeReply::fail(QStringLiteral("Plan store is locked"))
                                       << QStringLiteral("Plan store is locked");
        QTest::newRow("connection lost") << FakeReply::closeConnection()
                                         << QStringLiteral("Local command reply format error");
    }

    void loadFailureIsReportedAndLeavesNoRows()
    {
        QFETCH(FakeReply, reply);
        QFETCH(QString, text);
        m_rows.put(planRow(QUuid::createUuid(), QStringLiteral("Photos"), 1));
        m_service.on(QStringLiteral("PlanGetList"), reply);
        LogCapture log;
        QSignalSpy error(m_table, &BaseModel::error);
        QSignalSpy complite(m_table, &BaseModel::complite);
        QVERIFY(m_table->init());
        QVERIFY(error.wait());
        QCOMPARE(error.at(0).at(0).toString(), text);
        QVERIFY(log.contains(QtWarningMsg, QStringLiteral("TWB"), text));
        QCOMPARE(complite.count(), 0);
        QCOMPARE(m_table->rowCount(), 0);
        // A lost connection comes back by itself; later tests need it.
        QTRY_VERIFY(ConnectionManager::instance()->isLocalManagmentConnected());
        QTRY_VERIFY(m_service.clientCount() > 0);
    }

    void stateChangeShowsAtOnceThenReloadsTheRow()
    {
        const QUuid photos = QUuid::createUuid();
        m_rows.put(planRow(photos, QStringLiteral("Photos"), 1, 2, 6));
        QVERIFY(load());

        // The service has run the plan meanwhile: its next answer has a new last run.
        m_rows.put(planRow(photos, QStringLiteral("Photos"), 1, 2, 8));
        QList<int> statusAtEachChange;
        connect(m_table, &QAbstractItemModel::dataChanged, this,
            [&] { statusAtEachChange << m_table->index(0, 4).data().toInt(); });
        QSignalSpy complite(m_table, &BaseModel::complite);
        QSignalSpy updated(m_table, &BaseModel::updated);
        notify(NotificationType::PlanStateChanged, photos, {{QStringLiteral("state"), 1}});
        QVERIFY(complite.wait());
        QCOMPARE(updated.count(), 1);
        // First the notification's state, then the service's row as it stands.
        QCOMPARE(statusAtEachChange, (QList<int> {1, 2}));
        QCOMPARE(m_table->index(0, 7).data().toInt(), 8);
        QCOMPARE(m_service.requests(QStringLiteral("PlanGetInfo")).size(), 1);
    }

    void notificationsArriveInOrder()
    {
        const QUuid photos = QUuid::createUuid();
        const QUuid music = QUuid::createUuid();
        m_rows.put(planRow(photos, QStringLiteral("Photos"), 1));
        m_rows.put(planRow(music, QStringLiteral("Music"), 1));
        QVERIFY(load());
        const QUuid videos = QUuid::createUuid();
        m_rows.put(planRow(videos, QStringLiteral("Videos"), 1, 2));

        // A burst as the service sends it when a new plan starts at once and another is removed.
        // The state change comes before the new plan's row: the table does not hold it yet and lets
        // it pass, so the row shows the service's own status.
        QSignalSpy complite(m_table, &BaseModel::complite);
        notify(NotificationType::PlanCreated, videos);
        notify(NotificationType::PlanStateChanged, videos, {{QStringLiteral("state"), 1}});
        notify(NotificationType::PlanRemoved, music);
        notify(NotificationType::PlanUpdated, photos);
        QTRY_COMPARE(complite.count(), 2);
        QCOMPARE(names(), (QStringList {"Photos", "Videos"}));
        QCOMPARE(m_table->index(1, 4).data().toInt(), 2);
        QStringList asked;
        const QList<FakeRequest> requests = m_service.requests(QStringLiteral("PlanGetInfo"));
        for (const FakeRequest& request : requests)
            asked << request.params.value(QStringLiteral("id")).toString();
        QCOMPARE(asked, (QStringList {videos.toString(), photos.toString()}));
    }

    void notificationsForUnknownPlansAreIgnoredOrAdded()
    {
        const QUuid photos = QUuid::createUuid();
        m_rows.put(planRow(photos, QStringLiteral("Photos"), 1));
        QVERIFY(load());
        QSignalSpy removed(m_table, &QAbstractItemModel::rowsAboutToBeRemoved);
        QSignalSpy changed(m_table, &QAbstractItemModel::dataChanged);
        QSignalSpy complite(m_table, &BaseModel::complite);
        const QUuid stranger = QUuid::createUuid();
        notify(NotificationType::PlanRemoved, stranger);
        notify(NotificationType::PlanStateChanged, stranger, {{QStringLiteral("state"), 1}});
        // Updated for a plan never seen: it is added when the answer comes.
        m_rows.put(planRow(stranger, QStringLiteral("Made elsewhere"), 2));
        notify(NotificationType::PlanUpdated, stranger);
        QVERIFY(complite.wait());
        QCOMPARE(removed.count(), 0);
        QCOMPARE(changed.count(), 0);
        QCOMPARE(names(), (QStringList {"Photos", "Made elsewhere"}));
        QCOMPARE(m_service.requests(QStringLiteral("PlanGetInfo")).size(), 1);
    }

    void emptyPlanInfoChangesNothing()
    {
        const QUuid photos = QUuid::createUuid();
        m_rows.put(planRow(photos, QStringLiteral("Photos"), 1));
        QVERIFY(load());
        // Removed on the service between the notification and the question.
        m_rows.rows.clear();
        QSignalSpy complite(m_table, &BaseModel::complite);
        QSignalSpy changed(m_table, &QAbstractItemModel::dataChanged);
        QSignalSpy inserted(m_table, &QAbstractItemModel::rowsAboutToBeInserted);
        QVERIFY(m_table->loadInfo(photos));
        QVERIFY(complite.wait());
        QCOMPARE(changed.count(), 0);
        QCOMPARE(inserted.count(), 0);
        QCOMPARE(names(), (QStringList {"Photos"}));
    }

    void failedReloadKeepsTheStoredState()
    {
        const QUuid photos = QUuid::createUuid();
        m_rows.put(planRow(photos, QStringLiteral("Photos"), 1, 2, 6));
        QVERIFY(load());
        m_service.on(QStringLiteral("PlanGetInfo"), FakeReply::fail(QStringLiteral("Plan store is locked")));
        LogCapture log;
        QSignalSpy error(m_table, &BaseModel::error);
        notify(NotificationType::PlanStateChanged, photos, {{QStringLiteral("state"), 1}});
        QVERIFY(error.wait());
        QCOMPARE(error.at(0).at(0).toString(), QStringLiteral("Plan store is locked"));
        QVERIFY(log.contains(QtWarningMsg, QStringLiteral("TWB"), QStringLiteral("Plan store is locked")));
        QCOMPARE(m_table->index(0, 4).data().toInt(), 1);
        QCOMPARE(m_table->index(0, 7).data().toInt(), 6);
    }

    void nameShowsTheRunOrHowTheLastRunEnded_data()
    {
        QTest::addColumn<int>("subType");
        QTest::addColumn<int>("status");
        QTest::addColumn<int>("lastRunStatus");
        QTest::addColumn<int>("icon");
        QTest::newRow("backup, success") << 1 << 2 << 6 << int(IconManager::BackupPlanSuccess);
        QTest::newRow("backup, warning") << 1 << 2 << 7 << int(IconManager::BackupPlanWarning);
        QTest::newRow("backup, fail") << 1 << 2 << 8 << int(IconManager::BackupPlanFail);
        QTest::newRow("backup running after a fail") << 1 << 1 << 8 << int(IconManager::BackupPlanRunning);
        QTest::newRow("restore, success") << 2 << 2 << 6 << int(IconManager::RestorePlanSuccess);
        QTest::newRow("restore running") << 2 << 1 << 6 << int(IconManager::RestorePlanRunning);
        QTest::newRow("restore, never ran") << 2 << 2 << -1 << int(IconManager::RestorePlan);
        QTest::newRow("unknown kind") << 3 << 1 << 6 << 0;
    }

    void nameShowsTheRunOrHowTheLastRunEnded()
    {
        QFETCH(int, subType);
        QFETCH(int, status);
        QFETCH(int, lastRunStatus);
        QFETCH(int, icon);
        m_rows.put(planRow(QUuid::createUuid(), QStringLiteral("Photos"), subType, status, lastRunStatus));
        QVERIFY(load());
        const QVariant decoration = m_table->index(0, 1).data(Qt::DecorationRole);
        if (!icon) {
            QVERIFY(!decoration.isValid());
            return;
        }
        QVERIFY(decoration.canConvert<QIcon>());
        const QImage shown = decoration.value<QIcon>().pixmap(16, 16).toImage();
        QVERIFY(!shown.isNull());
        QCOMPARE(shown, IconManager::icon(icon, IconManager::Small).pixmap(16, 16).toImage());
        // The comparison means something only if the states look different.
        const int plain = subType == 1 ? IconManager::BackupPlan : IconManager::RestorePlan;
        if (icon != plain)
            QVERIFY(shown != IconManager::icon(plain, IconManager::Small).pixmap(16, 16).toImage());
    }

    void initPublishesRowsAlreadyLoaded()
    {
        addPlan(QStringLiteral("Photos"), 1);
        addPlan(QStringLiteral("Music"), 1);
        addPlan(QStringLiteral("Back home"), 2);
        QVERIFY(load());
        PlanBackupModel model;
        QAbstractItemModelTester tester(&model, QAbstractItemModelTester::FailureReportingMode::QtTest);
        QSignalSpy inserted(&model, &QAbstractItemModel::rowsInserted);
        QVERIFY(model.init());
        QCOMPARE(inserted.count(), 1);
        QCOMPARE(inserted.at(0).at(1).toInt(), 0);
        QCOMPARE(inserted.at(0).at(2).toInt(), 1);
        QCOMPARE(names(model), (QStringList {"Music", "Photos"}));
        // Time stands before status and message: 6 and 8 are the table's 8 and 6.
        const int music = m_table->match(m_table->index(0, 1), Qt::DisplayRole, QStringLiteral("Music")).first().row();
        QCOMPARE(model.index(0, 6).data(), m_table->index(music, 8).data());
        QCOMPARE(model.index(0, 7).data(), m_table->index(music, 7).data());
        QCOMPARE(model.index(0, 8).data().toString(), QStringLiteral("5 files sent"));

        // A second init changes nothing.
        QVERIFY(model.init());
        QCOMPARE(inserted.count(), 1);

        // The table's failures are the model's.
        m_service.on(QStringLiteral("PlanGetInfo"), FakeReply::fail(QStringLiteral("Plan store is locked")));
        QSignalSpy error(&model, &BaseModel::error);
        QVERIFY(m_table->loadInfo(QUuid::createUuid()));
        QVERIFY(error.wait());
        QCOMPARE(error.at(0).at(0).toString(), QStringLiteral("Plan store is locked"));
    }

    void initWithoutTableFails()
    {
        NoModelCreator none;
        ModelManager::instance()->registrateCreator(none);
        PlanRestoreModel model;
        QVERIFY(!model.init());
        QCOMPARE(model.rowCount(), 0);
    }

    void notificationsReachTheTable()
    {
        const QUuid photos = addPlan(QStringLiteral("Photos"), 1);
        const QUuid music = addPlan(QStringLiteral("Music"), 1);
        QVERIFY(load());
        PlanBackupModel model;
        QAbstractItemModelTester tester(&model, QAbstractItemModelTester::FailureReportingMode::QtTest);
        QVERIFY(model.init());
        QCOMPARE(names(model), (QStringList {"Music", "Photos"}));
        const QPersistentModelIndex photosCell = model.index(1, 8);
        QSignalSpy complite(&model, &BaseModel::complite);

        // A new plan takes its place by name; a restore plan never shows.
        const QUuid archive = addPlan(QStringLiteral("Archive"), 1);
        const QUuid restore = addPlan(QStringLiteral("Another restore"), 2);
        notify(NotificationType::PlanCreated, archive);
        notify(NotificationType::PlanCreated, restore);
        QTRY_COMPARE(complite.count(), 2);
        QCOMPARE(names(model), (QStringList {"Archive", "Music", "Photos"}));
        QCOMPARE(photosCell.row(), 2);

        // A new name moves the row, and what the view holds on to moves with it.
        m_rows.put(planRow(photos, QStringLiteral("Album"), 1));
        notify(NotificationType::PlanUpdated, photos);
        QVERIFY(complite.wait());
        QCOMPARE(names(model), (QStringList {"Album", "Archive", "Music"}));
        QCOMPARE(photosCell.row(), 0);
        QCOMPARE(photosCell.column(), 8);
        QCOMPARE(model.index(photosCell.row(), 0).data().toUuid(), photos);

        // A state change repaints the whole row.
        QSignalSpy changed(&model, &QAbstractItemModel::dataChanged);
        m_service.notify(QLatin1String(NotificationType::PlanStateChanged),
            {{QStringLiteral("id"), music.toString()}, {QStringLiteral("state"), 1}});
        QVERIFY(changed.wait());
        QCOMPARE(changed.at(0).at(0).toModelIndex(), model.index(2, 0));
        QCOMPARE(changed.at(0).at(1).toModelIndex(), model.index(2, 13));
        QCOMPARE(model.index(2, 4).data().toInt(), 1);

        QSignalSpy removed(&model, &QAbstractItemModel::rowsRemoved);
        notify(NotificationType::PlanRemoved, archive);
        QVERIFY(removed.wait());
        QCOMPARE(removed.at(0).at(1).toInt(), 1);
        QCOMPARE(names(model), (QStringList {"Album", "Music"}));
    }

    void documentOfAnotherKindStaysHidden()
    {
        // The table calls the plan a backup, but its document is a restore plan.
        const QUuid id = QUuid::createUuid();
        m_rows.put(planRow(id, QStringLiteral("Mislabelled"), 1));
        m_documents.insert(id.toString(), planXml(id, QStringLiteral("Mislabelled"), 2));
        QVERIFY(load());
        PlanBackupModel model;
        QAbstractItemModelTester tester(&model, QAbstractItemModelTester::FailureReportingMode::QtTest);
        QVERIFY(model.init());
        QSignalSpy complite(PlanXmlList::instance().data(), &PlanXmlList::complite);
        QVERIFY(PlanXmlList::instance()->getPlan(id));
        QVERIFY(complite.wait());
        QVERIFY(PlanXmlList::instance()->plan(id));
        QVERIFY(!model.index(0, 5).data().isValid());
        QVERIFY(!model.index(0, 14).data().isValid());
        QCOMPARE(model.index(0, 1).data().toString(), QStringLiteral("Mislabelled"));
    }

    void documentFailureIsTheModelsError()
    {
        PlanRestoreModel model;
        LogCapture log;
        QSignalSpy error(&model, &BaseModel::error);
        QVERIFY(PlanXmlList::instance()->getPlan(QUuid::createUuid()));
        QVERIFY(error.wait());
        QVERIFY(error.at(0).at(0).toString().contains(QStringLiteral("is not known")));
    }

    void fetchedPlanIsBuiltOnceAndKept()
    {
        auto list = PlanXmlList::instance();
        const QUuid id = QUuid::createUuid();
        m_documents.insert(id.toString(), planXml(id, QStringLiteral("Documents"), 1));
        QSignalSpy begin(list.data(), &PlanXmlList::beginLoad);
        QSignalSpy complite(list.data(), &PlanXmlList::complite);
        QVERIFY(list->getPlan(id));
        QCOMPARE(begin.count(), 1);
        QCOMPARE(begin.at(0).at(0).toUuid(), id);
        QVERIFY(complite.wait());
        QCOMPARE(complite.at(0).at(0).toUuid(), id);

        QCOMPARE(m_service.requests(QStringLiteral("PlanGetXML")).first().params.value(QStringLiteral("ID")).toString(),
            id.toString());

        QVERIFY(list->containts(id));
        QCOMPARE(list->planXml(id).documentElement().tagName(), QStringLiteral("Plan"));
        Base* plan = list->plan(id);
        QVERIFY(dynamic_cast<BackupFile*>(plan));
        QCOMPARE(plan->name(), QStringLiteral("Documents"));
        QCOMPARE(list->plan(id), plan);
    }

    void failedFetchesEmitTheirText_data()
    {
        QTest::addColumn<QString>("planXml");
        QTest::addColumn<bool>("known");
        QTest::addColumn<QString>("text");
        QTest::newRow("service error") << QString() << false << "is not known";
        QTest::newRow("empty planXML") << QString() << true << "Error on XML plan content";
        QTest::newRow("planXML is no XML") << QStringLiteral("<Plan format=") << true << "Error on XML plan content";
    }

    void failedFetchesEmitTheirText()
    {
        QFETCH(QString, planXml);
        QFETCH(bool, known);
        QFETCH(QString, text);
        auto list = PlanXmlList::instance();
        const QUuid id = QUuid::createUuid();
        if (known)
            m_documents.insert(id.toString(), planXml);
        LogCapture log;
        QSignalSpy error(list.data(), &PlanXmlList::error);
        QSignalSpy complite(list.data(), &PlanXmlList::complite);
        QVERIFY(list->getPlan(id));
        QVERIFY(error.wait());
        QVERIFY(error.at(0).at(0).toString().contains(text));
        QVERIFY(log.contains(QtWarningMsg, QStringLiteral("TWB"), text));
        QCOMPARE(complite.count(), 0);
        QVERIFY(!list->containts(id));
        QVERIFY(!list->plan(id));
    }

    void documentTheFactoryRefusesGivesNoPlan()
    {
        auto list = PlanXmlList::instance();
        const QUuid id = QUuid::createUuid();
        m_documents.insert(id.toString(), QStringLiteral("<Inventory><Item>chair</Item></Inventory>"));
        QSignalSpy complite(list.data(), &PlanXmlList::complite);
        QSignalSpy error(list.data(), &PlanXmlList::error);
        QVERIFY(list->getPlan(id));
        QVERIFY(complite.wait());
        LogCapture log;
        QVERIFY(list->containts(id));
        QVERIFY(!list->plan(id));
        QCOMPARE(error.count(), 0);
        QVERIFY(log.contains(QtDebugMsg, QStringLiteral("TWB"), QStringLiteral("<Inventory>")));
        QCOMPARE(log.warnings(), 0);
    }

    void planUpdatedDropsTheCopyAndFetchesAgain()
    {
        auto list = PlanXmlList::instance();
        const QUuid id = QUuid::createUuid();
        m_documents.insert(id.toString(), planXml(id, QStringLiteral("Old name"), 1));
        QSignalSpy complite(list.data(), &PlanXmlList::complite);
        QVERIFY(list->getPlan(id));
        QVERIFY(complite.wait());
        QCOMPARE(list->plan(id)->name(), QStringLiteral("Old name"));

        m_documents.insert(id.toString(), planXml(id, QStringLiteral("New name"), 1));
        QSignalSpy update(list.data(), &PlanXmlList::update);
        m_service.notify(QLatin1String(NotificationType::PlanUpdated), {{QStringLiteral("id"), id.toString()}});
        QVERIFY(update.wait());
        QCOMPARE(update.at(0).at(0).toUuid(), id);
        // Until the new document is in, there is no stale plan to hand out.
        QVERIFY(!list->containts(id));
        QVERIFY(!list->plan(id));
        QTRY_COMPARE(complite.count(), 2);
        QCOMPARE(list->plan(id)->name(), QStringLiteral("New name"));
        QCOMPARE(m_service.requests(QStringLiteral("PlanGetXML")).size(), 2);
    }

    void planRemovedForgetsWithoutASignal()
    {
        auto list = PlanXmlList::instance();
        const QUuid id = QUuid::createUuid();
        m_documents.insert(id.toString(), planXml(id, QStringLiteral("Gone soon"), 1));
        QSignalSpy complite(list.data(), &PlanXmlList::complite);
        QVERIFY(list->getPlan(id));
        QVERIFY(complite.wait());
        QVERIFY(list->plan(id));

        QSignalSpy update(list.data(), &PlanXmlList::update);
        QSignalSpy begin(list.data(), &PlanXmlList::beginLoad);
        const QUuid other = QUuid::createUuid();
        // A second notification after the removal proves the first was handled.
        m_service.notify(QLatin1String(NotificationType::PlanRemoved), {{QStringLiteral("id"), id.toString()}});
        m_service.notify(QLatin1String(NotificationType::PlanUpdated), {{QStringLiteral("id"), other.toString()}});
        QVERIFY(update.wait());
        QCOMPARE(update.count(), 1);
        QCOMPARE(update.at(0).at(0).toUuid(), other);
        QVERIFY(!list->containts(id));
        QVERIFY(!list->plan(id));
        QCOMPARE(begin.count(), 1);
    }

    void laterReplyWins()
    {
        auto list = PlanXmlList::instance();
        const QUuid id = QUuid::createUuid();
        int served = 0;
        m_service.on(QStringLiteral("PlanGetXML"), [&served, id](const FakeRequest& request) {
            if (request.params.value(QStringLiteral("ID")).toString() != id.toString())
                return FakeReply::fail(QStringLiteral("not this test's plan"));
            ++served;
            // The first request is answered last.
            return served == 1
                ? FakeReply::ok({{QStringLiteral("planXML"), planXml(id, QStringLiteral("answered last"), 1)}})
                      .after(300)
                : FakeReply::ok({{QStringLiteral("planXML"), planXml(id, QStringLiteral("answered first"), 1)}});
        });
        QSignalSpy complite(list.data(), &PlanXmlList::complite);
        QVERIFY(list->getPlan(id));
        QVERIFY(list->getPlan(id));
        auto arrivedForThisPlan = [&] {
            return std::count_if(complite.cbegin(), complite.cend(),
                [&](const QList<QVariant>& args) { return args.at(0).toUuid() == id; });
        };
        QTRY_COMPARE(arrivedForThisPlan(), 2);
        QCOMPARE(list->plan(id)->name(), QStringLiteral("answered last"));
    }

    void startOrStopFollowsTheRunStatus_data()
    {
        QTest::addColumn<QString>("plan");
        QTest::addColumn<bool>("force");
        QTest::addColumn<QString>("command");
        QTest::addColumn<QJsonObject>("extra");
        QTest::newRow("idle starts") << "idle" << false << "PlanExecuteStart" << QJsonObject();
        QTest::newRow("idle starts full")
            << "idle" << true << "PlanExecuteStart" << QJsonObject {{QStringLiteral("force_full"), true}};
        QTest::newRow("running stops") << "running" << false << "PlanExecuteStop" << QJsonObject();
        QTest::newRow("running stops, full ignored") << "running" << true << "PlanExecuteStop" << QJsonObject();
    }

    void startOrStopFollowsTheRunStatus()
    {
        QVERIFY(loadControlledPlans());
        QFETCH(QString, plan);
        QFETCH(bool, force);
        QFETCH(QString, command);
        QFETCH(QJsonObject, extra);
        const QUuid id = plan == QLatin1String("idle") ? m_idle
            : plan == QLatin1String("running")         ? m_running
                                                       : m_restore;
        PlanControlObject control(&m_window);
        control.setCurrentPlan(id, 0);
        QStringList events;
        connect(&control, &PlanControlObject::updatedBegin, this, [&] { events << QStringLiteral("begin"); });
        connect(&control, &PlanControlObject::updatedComplite, this, [&] { events << QStringLiteral("complite"); });
        connect(&control, &PlanControlObject::updatedError, this, [&](const QString& text) { events << text; });
        control.onChangePlanStatus(force);
        QCOMPARE(events, QStringList {"begin"});
        QTRY_COMPARE(events, (QStringList {"begin", "complite"}));

        QCOMPARE(m_service.requests(QStringLiteral("PlanExecuteStart")).size()
                + m_service.requests(QStringLiteral("PlanExecuteStop")).size(),
            1);
        const QList<FakeRequest> sent = m_service.requests(command);
        QCOMPARE(sent.size(), 1);
        QJsonObject expected {{QStringLiteral("ID"), id.toString()}, {QStringLiteral("profile"), "alice"}};
        for (auto it = extra.constBegin(); it != extra.constEnd(); ++it)
            expected.insert(it.key(), it.value());
        QCOMPARE(sent.first().params, expected);
        // Nothing changes until the service says so.
        QCOMPARE(m_table->index(m_table->match(m_table->index(0, 0), Qt::DisplayRole, id.toString()).first().row(), 4)
                     .data()
                     .toInt(),
            plan == QLatin1String("running") ? 1 : 2);
    }

    void planThatCannotStartOrStopFails_data()
    {
        QTest::addColumn<bool>("known");
        QTest::newRow("status 5") << true;
        QTest::newRow("no row for the plan") << false;
    }

    void planThatCannotStartOrStopFails()
    {
        QVERIFY(loadControlledPlans());
        QFETCH(bool, known);
        PlanControlObject control(&m_window);
        QSignalSpy status(&control, &PlanControlObject::statusChanged);
        control.setCurrentPlan(known ? m_odd : QUuid::createUuid(), 0);
        control.updateWidget();
        // A plan the table does not hold has no status to show.
        QCOMPARE(status.isEmpty(), !known);
        QSignalSpy begin(&control, &PlanControlObject::updatedBegin);
        QSignalSpy error(&control, &PlanControlObject::updatedError);
        control.onChangePlanStatus(true);
        QCOMPARE(begin.count(), 1);
        QCOMPARE(error.count(), 1);
        QCOMPARE(error.at(0).at(0).toString(), QStringLiteral("Commnunication command don't registrate"));
        QTest::qWait(50); // nothing is expected to arrive; give a stray request the time to show
        QCOMPARE(m_service.requests().size(), 0);
    }

    void refusedCommandIsReported()
    {
        QVERIFY(loadControlledPlans());
        m_service.on(QStringLiteral("PlanExecuteStart"), FakeReply::fail(QStringLiteral("The storage is full")));
        PlanControlObject control(&m_window);
        control.setCurrentPlan(m_idle, 0);
        LogCapture log;
        QSignalSpy error(&control, &PlanControlObject::updatedError);
        QSignalSpy complite(&control, &PlanControlObject::updatedComplite);
        control.onChangePlanStatus(false);
        QVERIFY(error.wait());
        QCOMPARE(error.at(0).at(0).toString(), QStringLiteral("The storage is full"));
        QVERIFY(log.contains(QtWarningMsg, QStringLiteral("TWB"), QStringLiteral("The storage is full")));
        QCOMPARE(complite.count(), 0);
        QCOMPARE(m_table->index(0, 4).data().toInt(), 2);
    }

    void removeAsksTheServiceAndWaitsForIt()
    {
        QVERIFY(loadControlledPlans());
        PlanControlObject control(&m_window);
        control.setCurrentPlan(m_idle, 0);
        QSignalSpy complite(&control, &PlanControlObject::updatedComplite);
        QSignalSpy gone(&control, &PlanControlObject::removeCurrentPlan);
        control.onRemove();
        QVERIFY(complite.wait());
        const QList<FakeRequest> sent = m_service.requests(QStringLiteral("PlanRemove"));
        QCOMPARE(sent.size(), 1);
        QCOMPARE(sent.first().params,
            (QJsonObject {{QStringLiteral("ID"), m_idle.toString()}, {QStringLiteral("profile"), "alice"}}));
        // The row stays until the service reports the removal.
        QCOMPARE(m_table->rowCount(), 4);
        // Another plan's removal leaves the current one.
        QSignalSpy removed(m_table, &QAbstractItemModel::rowsRemoved);
        notify(NotificationType::PlanRemoved, m_running);
        QVERIFY(removed.wait());
        QCOMPARE(gone.count(), 0);

        LogCapture log;
        notify(NotificationType::PlanRemoved, m_idle);
        QVERIFY(gone.wait());
        QCOMPARE(gone.count(), 1);
        QCOMPARE(gone.at(0).at(0).toUuid(), m_idle);
        QVERIFY(log.contains(QtInfoMsg, QStringLiteral("TWB"), QStringLiteral("Current plan remove")));
    }

    void nullPlanIsGoneAtTheFirstRemoval()
    {
        QVERIFY(loadControlledPlans());
        PlanControlObject control(&m_window);
        QSignalSpy status(&control, &PlanControlObject::statusChanged);
        QSignalSpy gone(&control, &PlanControlObject::removeCurrentPlan);
        control.setCurrentPlan(QUuid(), 0);
        QCOMPARE(status.count(), 0);
        notify(NotificationType::PlanRemoved, m_restore);
        QVERIFY(gone.wait());
        QVERIFY(gone.at(0).at(0).toUuid().isNull());
    }

    void statusFollowsTheTable()
    {
        QVERIFY(loadControlledPlans());
        PlanControlObject control(&m_window);
        QSignalSpy status(&control, &PlanControlObject::statusChanged);
        control.setCurrentPlan(m_restore, 7);
        QCOMPARE(status.count(), 1);
        QCOMPARE(status.at(0).at(0).toInt(), 2);
        QCOMPARE(status.at(0).at(1).toInt(), 2);

        // The service reports the plan running; the host hears it at once, and again for the reload.
        status.clear();
        QSignalSpy complite(m_table, &BaseModel::complite);
        m_rows.put(planRow(m_restore, QStringLiteral("Back home"), 2, 1));
        notify(NotificationType::PlanStateChanged, m_restore, {{QStringLiteral("state"), 1}});
        QVERIFY(complite.wait());
        QCOMPARE(status.count(), 2);
        QCOMPARE(status.at(0), (QList<QVariant> {2, 1}));
        QCOMPARE(status.at(1), (QList<QVariant> {2, 1}));

        // Any row's change is passed on, as the current plan's state.
        status.clear();
        notify(NotificationType::PlanUpdated, m_idle);
        QVERIFY(complite.wait());
        QCOMPARE(status.count(), 1);
        QCOMPARE(status.at(0), (QList<QVariant> {2, 1}));
    }

    void withoutTableNothingHappens()
    {
        QVERIFY(loadControlledPlans());
        NoModelCreator none;
        ModelManager::instance()->registrateCreator(none);
        PlanControlObject control(&m_window);
        QSignalSpy begin(&control, &PlanControlObject::updatedBegin);
        QSignalSpy status(&control, &PlanControlObject::statusChanged);
        QSignalSpy gone(&control, &PlanControlObject::removeCurrentPlan);
        QSignalSpy error(&control, &PlanControlObject::updatedError);
        control.setCurrentPlan(m_idle, 0);
        control.onChangePlanStatus(false);
        control.onPlanRemove();
        control.onEdit();
        QCOMPARE(begin.count(), 0);
        QCOMPARE(status.count(), 0);
        QCOMPARE(gone.count(), 0);
        QCOMPARE(error.count(), 0);
    }
};

QTEST_MAIN(TestPlanTableModel)
#include "tst_plan_table_model.moc"
