// The restore wizard driven as a user would against the real twbd and real restic backups: the bytes
// that come back are those of the moment chosen, in the place chosen, under the overwrite rule chosen.

#include "restore_wizard/restore_plan_edit_wizard.h"
#include "restore_wizard/page_source.h"
#include "engine_test_support.h"
#include "frame/model_manager.h"
#include "frame/model_names.h"
#include "frame/shared_model_creator.h"
#include "peers/storage_console.h"
#include "platform/drive_shares.h"
#include "platform/plan/backup_file.h"
#include "plans/plan_table_model.h"
#include "plans/plan_xml_list.h"
#include "raw_client.h"
#include "support/modal_answerer.h"
#include "support/test_environment.h"
#include "wizard/page_cloud.h"

#include <QAbstractButton>
#include <QDir>
#include <QFile>
#include <QTreeView>
#include <QtTest>

#include <memory>

using namespace TWB::GUI;
using TWB::Test::EngineTestSupport;
using TWB::Test::ModalAnswerer;
using TWB::Test::RawClient;
using TWB::Test::StorageConsole;
using TWB::Test::TestEnvironment;

namespace {

const QString password = QStringLiteral("tide and wrack");

/// Next, and the page after it: a page may check something with the service before it lets go.
bool advance(QWizard& wizard)
{
    const int from = wizard.currentId();
    if (!QTest::qWaitFor([&] { return wizard.button(QWizard::NextButton)->isEnabled(); }, 20000))
        return false;
    QTest::mouseClick(wizard.button(QWizard::NextButton), Qt::LeftButton);
    return QTest::qWaitFor([&] { return wizard.currentId() != from; }, 20000);
}

} // namespace

class TestRestorePlanWizard : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<TestEnvironment> m_env;
    std::unique_ptr<StorageConsole> m_console;
    SharedModelCreator<PlanTableModel> m_tables {ModelNames::PlanTable};
    std::unique_ptr<RawClient> m_client;
    std::unique_ptr<TWB::Info::Plan::BackupFile> m_backup;
    QUuid m_account;
    QString m_source;
    QMap<QString, QByteArray> m_first, m_second; // the source after each backup
    QDateTime m_between;

    /// Walks a wizard from the page it shows to the page `stop`, or through Finish when `stop` is the
    /// summary, with the fields `choices` set on the way; returns the ids walked, or an empty list
    /// where a page would not let go.
    QList<int> walk(RestorePlanEditWizard& wizard, const QVariantHash& choices, int stop = 6)
    {
        wizard.show();
        if (!QTest::qWaitForWindowExposed(&wizard))
            return {};
        QList<int> walked {wizard.currentId()};
        while (wizard.currentId() != stop) {
            const auto fields = choices.keys();
            for (const QString& field : fields)
                wizard.setField(field, choices.value(field));
            if (!advance(wizard))
                return {};
            walked << wizard.currentId();
        }
        if (stop != 6)
            return walked;
        QTest::mouseClick(wizard.button(QWizard::FinishButton), Qt::LeftButton);
        if (!QTest::qWaitFor([&] { return !wizard.isVisible(); }, 30000) || wizard.result() != QDialog::Accepted)
            return {};
        return walked;
    }

    /// The source as it stands below `root`, by its paths there.
    QMap<QString, QByteArray> restored(const QString& root) { return EngineTestSupport::tree(root + m_source); }

private Q_SLOTS:
    void initTestCase()
    {
        m_env = std::make_unique<TestEnvironment>();
        m_console = std::make_unique<StorageConsole>(*m_env);
        QVERIFY2(m_console->start(), qPrintable(m_console->service().output()));
        ModelManager::instance()->registrateCreator(m_tables);
        QSignalSpy loaded(ModelManager::instance()->create(ModelNames::PlanTable), &BaseModel::complite);
        QVERIFY(ModelManager::instance()->create(ModelNames::PlanTable)->init());
        QVERIFY(loaded.wait());
        m_client = std::make_unique<RawClient>();
        QVERIFY(m_client->connectTo(m_env->socketPath()));
        m_account = EngineTestSupport::addLocalAccount(*m_client, m_env->root() + QStringLiteral("/repo"), "laptop");
        QVERIFY(!m_account.isNull());

        // Two backups: between them a file changes, a folder goes and a file comes.
        m_source = m_env->root() + QStringLiteral("/source");
        EngineTestSupport::writeFile(m_source + QStringLiteral("/docs/a.txt"), "first words");
        EngineTestSupport::writeFile(m_source + QStringLiteral("/docs/b.txt"), "bee");
        EngineTestSupport::writeFile(m_source + QStringLiteral("/docs/old/z.txt"), "zed");
        EngineTestSupport::writeFile(m_source + QStringLiteral("/photos/cat.jpg"), EngineTestSupport::noise(70000, 7));
        m_backup = EngineTestSupport::backupPlan(m_account, QStringLiteral("Home"), {m_source}, password);
        QVERIFY(EngineTestSupport::save(*m_client, *m_backup));
        auto outcome = EngineTestSupport::run(*m_client, m_backup->id());
        QVERIFY2(outcome.ended && outcome.status == 6, qPrintable(outcome.message));
        m_first = EngineTestSupport::tree(m_source);
        QTest::qWait(1100);
        m_between = QDateTime::currentDateTime();
        QTest::qWait(1100);
        EngineTestSupport::writeFile(m_source + QStringLiteral("/docs/a.txt"), "second words, longer");
        QVERIFY(QDir(m_source + QStringLiteral("/docs/old")).removeRecursively());
        EngineTestSupport::writeFile(m_source + QStringLiteral("/docs/new.txt"), "new");
        m_client->clearNotifications();
        outcome = EngineTestSupport::run(*m_client, m_backup->id());
        QVERIFY2(outcome.ended && outcome.status == 6, qPrintable(outcome.message));
        m_second = EngineTestSupport::tree(m_source);
        QVERIFY(m_first != m_second);
    }

    void cleanupTestCase()
    {
        if (m_console)
            QVERIFY2(m_console->service().terminate(), qPrintable(m_console->service().output()));
    }

    void restoresTheMomentChosenIntoANewFolder_data()
    {
        QTest::addColumn<bool>("fromStorage");
        QTest::addColumn<bool>("pointInTime");
        QTest::newRow("latest, from the backup plan") << false << false;
        QTest::newRow("between the runs, from the storage") << true << true;
    }

    void restoresTheMomentChosenIntoANewFolder()
    {
        QFETCH(bool, fromStorage);
        QFETCH(bool, pointInTime);
        const QString target = m_env->root() + QStringLiteral("/out-") + QString::number(QTest::currentDataTag()[0]);
        QVERIFY(QDir().mkpath(target));
        std::unique_ptr<RestorePlanEditWizard> wizard;
        if (fromStorage) {
            // The items a storage browser hands over are in the service's own path form.
            const auto shares = TWB::Info::DriveShares::Instance();
            wizard.reset(RestorePlanEditWizard::createWizardFromBackupStorage(
                m_account, {shares.getSqlPathFromLocal(shares.get_local_path(m_source, 0))}));
        } else {
            wizard.reset(RestorePlanEditWizard::createWizardFromBackupPlan(m_backup.get(), true));
        }
        QVariantHash choices {{QStringLiteral("Field_RestoreOnce"), true},
            {QStringLiteral("Field_UseCustomLocation"), true}, {QStringLiteral("Field_CustomLocationValue"), target}};
        if (pointInTime) {
            choices.insert(QStringLiteral("Field_TypeUsePointInTime"), true);
            choices.insert(QStringLiteral("Field_TypePointInTimeValue"), m_between);
        } else {
            choices.insert(QStringLiteral("Field_TypeUseLatestVersion;"), true);
        }
        const QUuid before = PlanXmlList::instance()->lastCreatedPlan();
        // The storage is settled: the walk starts on the name page, with no way back to the storage page.
        QCOMPARE(walk(*wizard, choices, 103), (QList<int> {1, 102, 2, 101, 103}));
        // The source page opened the tree down to the plan's ticks.
        QTreeView* tree = static_cast<RestorePlanEditWizard::PageSource*>(wizard->page(2))->view();
        const QModelIndexList ways = tree->model()->match(
            tree->model()->index(0, 0), Qt::CheckStateRole, 1001, -1, Qt::MatchRecursive | Qt::MatchExactly);
        QVERIFY(!ways.isEmpty());
        for (const QModelIndex& way : ways)
            QVERIFY(tree->isExpanded(way));
        if (fromStorage) {
            // Nothing told the wizard the password: a wrong one is refused, the right one opens the backup.
            auto* refusal = wizard->page(103)->findChild<QWidget*>(QStringLiteral("refusal"));
            QVERIFY(refusal);
            wizard->setField(QStringLiteral("Field_RestoreEncryptionPassword"), QStringLiteral("not it"));
            QTRY_VERIFY(wizard->button(QWizard::NextButton)->isEnabled());
            QTest::mouseClick(wizard->button(QWizard::NextButton), Qt::LeftButton);
            QTRY_VERIFY_WITH_TIMEOUT(refusal->isVisible(), 20000);
            QCOMPARE(wizard->currentId(), 103);
            choices.insert(QStringLiteral("Field_RestoreEncryptionPassword"), password);
        }
        QVERIFY(!walk(*wizard, choices).isEmpty());
        QTRY_VERIFY(PlanXmlList::instance()->lastCreatedPlan() != before);
        const auto outcome = EngineTestSupport::waitForEnd(*m_client, PlanXmlList::instance()->lastCreatedPlan());
        QVERIFY(outcome.ended);
        QCOMPARE(outcome.lastState, 6);
        QCOMPARE(restored(target), pointInTime ? m_first : m_second);
    }
    void walkFollowsRunOnceStorageAndEdition_data()
    {
        QTest::addColumn<bool>("once");
        QTest::addColumn<QString>("cloudType");
        QTest::addColumn<bool>("skipArchived");
        QTest::addColumn<int>("afterEncryption");
        QTest::addColumn<int>("afterSchedule");
        // Standalone, where the licence allows notices: "close" is the notification page.
        QTest::newRow("once, local") << true << QStringLiteral("1") << false << 5 << 5;
        QTest::newRow("once, S3, archived files wanted") << true << QStringLiteral("2") << false << 104 << 104;
        QTest::newRow("once, S3 China, archived skipped") << true << QStringLiteral("20") << true << 5 << 5;
        QTest::newRow("kept, S3, archived wanted") << false << QStringLiteral("2") << false << 4 << 104;
        QTest::newRow("kept, local") << false << QStringLiteral("1") << false << 4 << 5;
    }

    void walkFollowsRunOnceStorageAndEdition()
    {
        QFETCH(bool, once);
        QFETCH(QString, cloudType);
        QFETCH(bool, skipArchived);
        QFETCH(int, afterEncryption);
        QFETCH(int, afterSchedule);
        RestorePlanEditWizard wizard;
        QCOMPARE(wizard.pageIds(), (QList<int> {0, 1, 2, 4, 5, 6, 101, 102, 103, 104}));
        wizard.setField(QStringLiteral("Field_RestoreOnce"), once);
        wizard.setField(QStringLiteral("Field_SaveRestorePlan"), !once);
        wizard.setField(QStringLiteral("Field_CloudType"), cloudType);
        wizard.setField(QStringLiteral("Field_TypeUseGlacier"), skipArchived);
        QCOMPARE(wizard.page(103)->nextId(), afterEncryption);
        QCOMPARE(wizard.page(4)->nextId(), afterSchedule);
        QCOMPARE(wizard.page(104)->nextId(), 5);
    }

    void pagePictures()
    {
        std::unique_ptr<RestorePlanEditWizard> wizard(
            RestorePlanEditWizard::createWizardFromBackupPlan(m_backup.get(), true));
        wizard->show();
        QVERIFY(QTest::qWaitForWindowExposed(wizard.get()));
        const QString folder = TestEnvironment::outputDir() + QStringLiteral("/restore_wizard");
        QVERIFY(QDir().mkpath(folder));
        const auto ids = wizard->pageIds();
        for (int id : ids) {
            wizard->setStartId(id);
            wizard->restart();
            QCOMPARE(wizard->currentId(), id);
            // Let the pages that ask the service show its answer.
            QTest::qWait(id == 2 || id == 103 ? 1500 : 50);
            QVERIFY(wizard->grab().save(QStringLiteral("%1/page_%2.png").arg(folder).arg(id)));
        }
    }

    void restoresOverTheOriginalUnderEachRule_data()
    {
        QTest::addColumn<bool>("overwrite");
        QTest::addColumn<bool>("onlyNewer");
        QTest::addColumn<QByteArray>("older"); // a file edited here, older than its backup
        QTest::addColumn<QByteArray>("newer"); // a file edited here after its backup
        const QByteArray olderEdit("older local edit"), newerEdit("newer local edit");
        QTest::newRow("skip existing") << false << false << olderEdit << newerEdit;
        QTest::newRow("overwrite") << true << false << QByteArray("second words, longer") << QByteArray("bee");
        QTest::newRow("overwrite older only") << true << true << QByteArray("second words, longer") << newerEdit;
    }

    void restoresOverTheOriginalUnderEachRule()
    {
        QFETCH(bool, overwrite);
        QFETCH(bool, onlyNewer);
        QFETCH(QByteArray, older);
        QFETCH(QByteArray, newer);
        const QString a = m_source + QStringLiteral("/docs/a.txt"), b = m_source + QStringLiteral("/docs/b.txt");
        EngineTestSupport::writeFile(a, "older local edit", QDateTime::currentDateTime().addDays(-1));
        EngineTestSupport::writeFile(b, "newer local edit", QDateTime::currentDateTime().addSecs(3600));
        QVERIFY(QFile::remove(m_source + QStringLiteral("/photos/cat.jpg")));

        std::unique_ptr<RestorePlanEditWizard> wizard(
            RestorePlanEditWizard::createWizardFromBackupPlan(m_backup.get(), true));
        const QUuid before = PlanXmlList::instance()->lastCreatedPlan();
        QVERIFY(!walk(*wizard,
            {{QStringLiteral("Field_RestoreOnce"), true}, {QStringLiteral("Field_TypeUseLatestVersion;"), true},
                {QStringLiteral("Field_UseOriginalLocation"), true},
                {QStringLiteral("Field_UseOverwriteExistingFiles"), overwrite},
                {QStringLiteral("Field_RestoreOnlyNewFiles"), onlyNewer}})
                     .isEmpty());
        QTRY_VERIFY(PlanXmlList::instance()->lastCreatedPlan() != before);
        const auto outcome = EngineTestSupport::waitForEnd(*m_client, PlanXmlList::instance()->lastCreatedPlan());
        QVERIFY(outcome.ended);
        QCOMPARE(outcome.lastState, 6);
        QCOMPARE(EngineTestSupport::readText(a).toUtf8(), older);
        QCOMPARE(EngineTestSupport::readText(b).toUtf8(), newer);
        // What was missing comes back under every rule.
        QCOMPARE(EngineTestSupport::tree(m_source).value(QStringLiteral("photos/cat.jpg")),
            m_second.value(QStringLiteral("photos/cat.jpg")));
    }
};

QTEST_MAIN(TestRestorePlanWizard)
#include "tst_restore_plan_wizard.moc"
