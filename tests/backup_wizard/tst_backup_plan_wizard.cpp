// The backup plan wizard driven as a user would against the real twbd and a real folder tree: the plan
// it saves backs up exactly what was ticked, and opening it again brings every choice back.

#include "backup_wizard/backup_plan_edit_wizard.h"
#include "backup_wizard/file_system_checked_model.h"
#include "backup_wizard/page_advanced_filter.h"
#include "backup_wizard/page_check_box_legend_dialog.h"
#include "backup_wizard/page_backup_actions.h"
#include "backup_wizard/page_name.h"
#include "backup_wizard/page_source.h"
#include "backup_wizard/page_summary.h"
#include "frame/application.h"
#include "frame/model_manager.h"
#include "frame/model_names.h"
#include "frame/shared_model_creator.h"
#include "platform/communication/connection_manager.h"
#include "platform/plan/backup_file.h"
#include "plans/plan_table_model.h"
#include "plans/plan_xml_list.h"
#include "storages/storage_connections_model.h"
#include "storages/storages_edit_list.h"
#include "support/modal_answerer.h"
#include "support/service_process.h"
#include "support/test_caller.h"
#include "support/test_environment.h"
#include "wizard/page_cloud.h"
#include "wizard/page_schedule.h"

#include <QAbstractButton>
#include <QAbstractProxyModel>
#include <QCheckBox>
#include <QComboBox>
#include <QDir>
#include <QFile>
#include <QJsonArray>
#include <QLineEdit>
#include <QListView>
#include <QRadioButton>
#include <QSignalSpy>
#include <QSpinBox>
#include <QTreeView>
#include <QScopeGuard>
#include <QtTest>

#include <memory>

using namespace TWB::GUI;
using namespace TWB::Test;
using TWB::Common::Communication::ConnectionManager;

namespace {

int rowOf(QAbstractItemModel* table, const QUuid& id)
{
    for (int row = 0; row < table->rowCount(); ++row) {
        if (table->index(row, 0).data().toUuid() == id)
            return row;
    }
    return -1;
}

template <typename Button> Button* button(QWidget* parent, const QString& text)
{
    const auto buttons = parent->findChildren<Button*>();
    for (Button* b : buttons) {
        if (b->text() == text && b->isVisible())
            return b;
    }
    return nullptr;
}

/// Clicks a check box or radio button on its indicator, where a user would.
void click(QAbstractButton* b)
{
    QVERIFY(b);
    QTest::mouseClick(b, Qt::LeftButton, {}, QPoint(8, b->height() / 2));
}

void next(QWizard& wizard)
{
    QVERIFY2(wizard.button(QWizard::NextButton)->isEnabled(), qPrintable(wizard.currentPage()->title()));
    QTest::mouseClick(wizard.button(QWizard::NextButton), Qt::LeftButton);
}

} // namespace

class TestBackupPlanWizard : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<TestEnvironment> m_env;
    std::unique_ptr<ServiceProcess> m_service;
    std::unique_ptr<SharedModelCreator<PlanTableModel>> m_tables;
    std::unique_ptr<SharedModelCreator<StorageConnectionsModel>> m_storages;
    QString m_tree; // what the plans back up from
    QUuid m_account;

    BaseModel* table() const { return ModelManager::instance()->create(ModelNames::PlanTable); }

    void write(const QString& relative, const QByteArray& text)
    {
        TestEnvironment::writeFile(m_tree + QLatin1Char('/') + relative, text);
    }

    /// Opens the source page's tree down to `path`, folder by folder, as a user clicks the arrows.
    QModelIndex reveal(BackupPlanEditWizard::PageSource* page, const QString& path)
    {
        FileSystemCheckedModel* model = page->sourceModel();
        auto* proxy = static_cast<QAbstractProxyModel*>(page->view()->model());
        QString walked;
        QModelIndex index = model->indexByPath(QStringLiteral("/"));
        const QStringList parts = path.split(QLatin1Char('/'), Qt::SkipEmptyParts);
        for (const QString& part : parts) {
            walked += QLatin1Char('/') + part;
            if (index.isValid()) {
                page->view()->expand(proxy->mapFromSource(index));
                if (model->canFetchMore(index))
                    model->fetchMore(index);
            }
            if (!QTest::qWaitFor([&] { return model->indexByPath(walked).isValid(); }, 10000))
                return {};
            index = model->indexByPath(walked);
        }
        return index;
    }

    void tick(BackupPlanEditWizard::PageSource* page, const QString& relative, Qt::CheckState state)
    {
        const QModelIndex index = reveal(page, m_tree + QLatin1Char('/') + relative);
        QVERIFY2(index.isValid(), qPrintable(relative));
        auto* proxy = static_cast<QAbstractProxyModel*>(page->view()->model());
        QVERIFY(proxy->setData(proxy->mapFromSource(index), state, Qt::CheckStateRole));
    }

    int runsOf(const QUuid& id)
    {
        TestCaller caller;
        QSignalSpy succeeded(&caller, &TestCaller::succeeded);
        if (!caller.send(QStringLiteral("HistoryListByPlan"), {{QStringLiteral("planID"), id.toString()}})
            || !succeeded.wait())
            return -1;
        return succeeded.first().first().toJsonObject().value(QStringLiteral("HistoryListByPlan")).toArray().size();
    }

    /// Every file path the catalog of the account holds, walked through the same commands the
    /// restore browser uses.
    QStringList catalogFiles(const QString& path = QString())
    {
        QStringList files;
        TestCaller caller;
        QSignalSpy answered(&caller, &TestCaller::succeeded);
        if (!caller.send(QStringLiteral("GetRestoreContent"),
                {{QStringLiteral("destination"), m_account.toString()}, {QStringLiteral("path"), path}})
            || !answered.wait(10000))
            return {QStringLiteral("<no answer for %1>").arg(path)};
        const QJsonArray entries
            = answered.first().first().toJsonObject().value(QStringLiteral("contentRestore")).toArray();
        for (const QJsonValue& value : entries) {
            const QJsonObject entry = value.toObject();
            const QString child = entry.value(QStringLiteral("Path")).toString();
            if (entry.value(QStringLiteral("Type")).toInt() == 0)
                files << child;
            else if (entry.value(QStringLiteral("IsExpandable")).toBool())
                files << catalogFiles(child);
        }
        return files;
    }

    /// The pages a walk went through, in order.
    QList<int> m_path;

    void nextAndRecord(QWizard& wizard)
    {
        next(wizard);
        m_path << wizard.currentId();
    }

    /// A new plan, made with the wizard alone: every page a user meets on the way to a plan that
    /// runs, encrypted, with a filter, a retention rule, a schedule and an action after each run.
    QUuid createPlan()
    {
        BackupPlanEditWizard wizard;
        wizard.show();
        if (!QTest::qWaitForWindowExposed(&wizard))
            return {};
        m_path = {wizard.currentId()};
        // 0: the account, clicked in the list.
        auto* cloud = static_cast<PlanWizardBase::PageCloud*>(wizard.page(0));
        QListView* accounts = static_cast<Settings::Storages::EditList*>(cloud->list())->view();
        const QModelIndex local = accounts->model()
                                      ->match(accounts->model()->index(0, 0), Qt::DisplayRole,
                                          QStringLiteral("Local storage"), 1, Qt::MatchExactly)
                                      .value(0);
        QTest::mouseClick(accounts->viewport(), Qt::LeftButton, {}, accounts->visualRect(local).center());
        nextAndRecord(wizard);
        // 1: the name.
        QTest::keyClicks(wizard.page(1)->findChild<QLineEdit*>(), QStringLiteral("Home folders"));
        nextAndRecord(wizard);
        // 2: docs and photos, but not docs/skip.
        auto* source = static_cast<BackupPlanEditWizard::PageSource*>(wizard.page(2));
        if (wizard.button(QWizard::NextButton)->isEnabled())
            return {}; // nothing is ticked yet
        tick(source, QStringLiteral("docs"), Qt::Checked);
        tick(source, QStringLiteral("docs/skip"), Qt::Unchecked);
        tick(source, QStringLiteral("photos"), Qt::Checked);
        nextAndRecord(wizard);
        // 102: leave out temporary files.
        auto* filter = static_cast<PageAdvancedFilter*>(wizard.page(102));
        wizard.setField(QLatin1String(PageAdvancedFilter::FieldFilterType), 2);
        filter->setMasks({QStringLiteral("*.tmp")});
        nextAndRecord(wizard);
        // 3: encryption with a password, which the wizard asks to be written down.
        click(button<QCheckBox>(wizard.page(3), QStringLiteral("Enable encryption")));
        const auto passwords = wizard.page(3)->findChildren<QLineEdit*>();
        for (QLineEdit* edit : passwords) {
            if (edit->echoMode() == QLineEdit::Password)
                QTest::keyClicks(edit, QStringLiteral("s3cret words"));
        }
        ModalAnswerer writeItDown(QMessageBox::Ok);
        nextAndRecord(wizard);
        if (!writeItDown.wait() || writeItDown.title() != QLatin1String("Write down your password!"))
            return {};
        // 103: keep five versions of each file.
        click(
            button<QRadioButton>(wizard.page(103), QStringLiteral("Specify custom retention policy for backup plan")));
        click(button<QCheckBox>(wizard.page(103), QStringLiteral("Keep number of versions (for each file)")));
        wizard.setField(QStringLiteral("Field_RPUseKeepVersionNumber"), 5);
        nextAndRecord(wizard);
        // 4: every day at 21:30.
        QWidget* schedule = wizard.page(4);
        if (!wizard.field(QStringLiteral("Field_ScheduleDisabled")).toBool())
            click(button<QCheckBox>(schedule, QStringLiteral("Enable schedule")));
        click(button<QRadioButton>(schedule, QStringLiteral("Recurring. Frequency Type:")));
        wizard.setField(QStringLiteral("Field_UsedOccursAt"), true);
        wizard.setField(QStringLiteral("Field_UsedOccursAtValue"), QDateTime(QDate::currentDate(), QTime(21, 30)));
        nextAndRecord(wizard);
        // 107: touch a file after each run.
        wizard.setField(QLatin1String(PageBackupActions::FieldPostActionEnable), true);
        wizard.setField(QLatin1String(PageBackupActions::FieldPostActionProgram), QStringLiteral("/usr/bin/touch"));
        wizard.setField(
            QLatin1String(PageBackupActions::FieldPostActionArguments), m_env->root() + QStringLiteral("/post-ran"));
        nextAndRecord(wizard);
        while (wizard.currentId() != 6 && wizard.button(QWizard::NextButton)->isEnabled())
            nextAndRecord(wizard);
        click(button<QCheckBox>(wizard.page(6), QStringLiteral("Run plan now")));
        wizard.grab().save(TestEnvironment::outputDir() + QStringLiteral("/backup_wizard_summary.png"));
        QTest::mouseClick(wizard.button(QWizard::FinishButton), Qt::LeftButton);
        if (!QTest::qWaitFor([&] { return !wizard.isVisible(); }, 20000) || wizard.result() != QDialog::Accepted)
            return {};
        return PlanXmlList::instance()->lastCreatedPlan();
    }

private Q_SLOTS:
    void planMadeWithTheWizardBacksUpWhatWasTickedAndComesBackAsSaved()
    {
        const QUuid id = createPlan();
        QVERIFY(!id.isNull());
        QCOMPARE(m_path, (QList<int> {0, 1, 2, 102, 3, 103, 4, 107, 5, 6}));
        QTRY_VERIFY(rowOf(table(), id) >= 0);
        // "Run plan now": the run ends in success, and the post-action ran after it.
        QTRY_COMPARE_WITH_TIMEOUT(table()->index(rowOf(table(), id), 7).data().toInt(), 6, 60000);
        QTRY_VERIFY(QFile::exists(m_env->root() + QStringLiteral("/post-ran")));
        QStringList files;
        for (const QString& path : catalogFiles())
            files << path.section(QStringLiteral("/home/"), 1);
        files.sort();
        QCOMPARE(files,
            (QStringList {QStringLiteral("docs/keep/kept.txt"), QStringLiteral("docs/letter.txt"),
                QStringLiteral("photos/cat.jpg")}));

        // Open it again: every page shows what was saved.
        QSignalSpy fetched(PlanXmlList::instance().data(), &PlanXmlList::complite);
        QVERIFY(PlanXmlList::instance()->getPlan(id));
        QVERIFY(fetched.wait());
        std::unique_ptr<BackupPlanEditWizard> edit(
            BackupPlanEditWizard::createWizard(PlanXmlList::instance()->plan(id)));
        QCOMPARE(edit->windowTitle(), QStringLiteral("Edit backup plan: Home folders"));
        QCOMPARE(edit->field(QStringLiteral("Field_CloudId")).toString(), m_account.toString());
        QCOMPARE(edit->field(QStringLiteral("Field_PlanName")).toString(), QStringLiteral("Home folders"));
        QCOMPARE(static_cast<PageAdvancedFilter*>(edit->page(102))->masks(), QStringList {QStringLiteral("*.tmp")});
        QVERIFY(edit->field(QStringLiteral("Field_FieldUseEncryption")).toBool());
        QCOMPARE(edit->field(QStringLiteral("Field_EncryptionPassword")).toString(), QStringLiteral("s3cret words"));
        QVERIFY(edit->field(QStringLiteral("Field_RPUseCustom")).toBool());
        QCOMPARE(edit->field(QStringLiteral("Field_RPUseKeepVersionNumber")).toInt(), 5);
        QCOMPARE(edit->field(QStringLiteral("Field_UsedOccursAtValue")).toDateTime().time(), QTime(21, 30));
        QCOMPARE(edit->field(QLatin1String(PageBackupActions::FieldPostActionProgram)).toString(),
            QStringLiteral("/usr/bin/touch"));
        auto* source = static_cast<BackupPlanEditWizard::PageSource*>(edit->page(2));
        const QHash<QString, int> marks = {{QStringLiteral("docs"), 1}, {QStringLiteral("docs/skip"), 0},
            {QStringLiteral("docs/keep"), 2}, {QStringLiteral("photos"), 2}, {QStringLiteral("other"), 0}};
        for (auto mark = marks.cbegin(); mark != marks.cend(); ++mark) {
            const QModelIndex index = reveal(source, m_tree + QLatin1Char('/') + mark.key());
            QVERIFY2(index.isValid(), qPrintable(mark.key()));
            QCOMPARE(index.data(Qt::CheckStateRole).toInt(), mark.value());
        }
        // Walking it through saves the same plan: the pages keep every choice, and the tree opens
        // itself down to the plan's marks.
        source->view()->collapseAll();
        edit->show();
        QVERIFY(QTest::qWaitForWindowExposed(edit.get()));
        QList<int> path {edit->currentId()};
        while (edit->currentId() != 6 && !QTest::currentTestFailed()) {
            ModalAnswerer none(QMessageBox::Ok, 300);
            next(*edit);
            path << edit->currentId();
            if (edit->currentId() == 2) {
                auto* proxy = static_cast<QAbstractProxyModel*>(source->view()->model());
                const QModelIndex docs = source->sourceModel()->indexByPath(m_tree + QStringLiteral("/docs"));
                QVERIFY(source->view()->isExpanded(proxy->mapFromSource(docs)));
            }
            QVERIFY2(!none.wait(300), qPrintable(none.text())); // an unchanged password asks nothing
        }
        QCOMPARE(path, m_path);
        auto* before = PlanXmlList::instance()->plan(id);
        QVERIFY(before);
        const QString saved = before->toXml();
        click(button<QCheckBox>(edit->page(6), QStringLiteral("Run plan now")));
        QTest::mouseClick(edit->button(QWizard::FinishButton), Qt::LeftButton);
        QTRY_VERIFY_WITH_TIMEOUT(!edit->isVisible(), 20000);
        QCOMPARE(edit->result(), int(QDialog::Accepted));
        // Started once, however often the edited row changes while the wait lasts.
        QTRY_COMPARE_WITH_TIMEOUT(runsOf(id), 2, 60000);
        QTRY_COMPARE(table()->index(rowOf(table(), id), 4).data().toInt(), 2);
        QTest::qWait(500); // a second start would show as a third run; nothing signals its absence
        QCOMPARE(runsOf(id), 2);
        QVERIFY(PlanXmlList::instance()->getPlan(id));
        QVERIFY(fetched.wait());
        QCOMPARE(PlanXmlList::instance()->plan(id)->toXml(), saved);
    }

    void branchesFollowEditionAndRebranding_data()
    {
        QTest::addColumn<QByteArray>("configuration");
        QTest::addColumn<QByteArray>("rebranding");
        QTest::addColumn<QList<int>>("path");
        // One account and nothing else to choose: the storage page is never shown.
        QTest::newRow("managed, one account")
            << QByteArray("edition = Managed\n") << QByteArray("AllowFileSystemAccount=false\n")
            << QList<int> {1, 2, 102, 3, 103, 4, 107, 6};
        QTest::newRow("no compression, no encryption")
            << QByteArray() << QByteArray("AllowCompression=false\nAllowEncryption=false\n")
            << QList<int> {0, 1, 2, 102, 103, 4, 107, 5, 6};
        QTest::newRow("no actions") << QByteArray() << QByteArray("AllowPrePostActions=false\n")
                                    << QList<int> {0, 1, 2, 102, 3, 103, 4, 5, 6};
    }

    void branchesFollowEditionAndRebranding()
    {
        QFETCH(QByteArray, configuration);
        QFETCH(QByteArray, rebranding);
        QFETCH(QList<int>, path);
        TestEnvironment::writeFile(m_env->configFile(), configuration);
        TestEnvironment::writeFile(m_env->rebrandingFile(), rebranding);
        Application::rereadConfiguration();
        auto restore = qScopeGuard([this] {
            QFile::remove(m_env->configFile());
            QFile::remove(m_env->rebrandingFile());
            Application::rereadConfiguration();
        });

        BackupPlanEditWizard wizard;
        wizard.show();
        QVERIFY(QTest::qWaitForWindowExposed(&wizard));
        QList<int> walked {wizard.currentId()};
        if (wizard.currentId() == 0) {
            auto* cloud = static_cast<PlanWizardBase::PageCloud*>(wizard.page(0));
            QListView* accounts = static_cast<Settings::Storages::EditList*>(cloud->list())->view();
            accounts->setCurrentIndex(accounts->model()->index(0, 0));
            next(wizard);
            walked << wizard.currentId();
        } else {
            // Nowhere to go back to, and the one account is not the user's to change.
            QVERIFY(
                !wizard.button(QWizard::BackButton)->isVisible() || !wizard.button(QWizard::BackButton)->isEnabled());
            auto* cloud = static_cast<PlanWizardBase::PageCloud*>(wizard.page(0));
            QVERIFY(static_cast<Settings::Storages::EditList*>(cloud->list())->isReadOnly());
        }
        QTest::keyClicks(wizard.page(1)->findChild<QLineEdit*>(), QString::fromLatin1(QTest::currentDataTag()));
        next(wizard);
        walked << wizard.currentId();
        tick(static_cast<BackupPlanEditWizard::PageSource*>(wizard.page(2)), QStringLiteral("photos"), Qt::Checked);
        while (wizard.currentId() != 6 && !QTest::currentTestFailed()) {
            next(wizard);
            walked << wizard.currentId();
        }
        QCOMPARE(walked, path);
        QTest::mouseClick(wizard.button(QWizard::FinishButton), Qt::LeftButton);
        QTRY_VERIFY_WITH_TIMEOUT(!wizard.isVisible(), 20000);
        QCOMPARE(wizard.result(), int(QDialog::Accepted));
        // A storage page that was never shown still chose the storage.
        const QUuid id = PlanXmlList::instance()->lastCreatedPlan();
        QSignalSpy fetched(PlanXmlList::instance().data(), &PlanXmlList::complite);
        QVERIFY(PlanXmlList::instance()->getPlan(id));
        QVERIFY(fetched.wait());
        QCOMPARE(PlanXmlList::instance()->plan(id)->storage(), m_account);
    }

    void pagePictures()
    {
        // Each page as the user meets it, in the window the wizard gives it.
        BackupPlanEditWizard wizard;
        wizard.show();
        QVERIFY(QTest::qWaitForWindowExposed(&wizard));
        const QString folder = TestEnvironment::outputDir() + QStringLiteral("/backup_wizard");
        QVERIFY(QDir().mkpath(folder));
        const auto ids = wizard.pageIds();
        for (int id : ids) {
            wizard.setStartId(id);
            wizard.restart();
            QCOMPARE(wizard.currentId(), id);
            QVERIFY(wizard.grab().save(QStringLiteral("%1/page_%2.png").arg(folder).arg(id)));
        }
        // The legend the source page offers beside its tree.
        static_cast<BackupPlanEditWizard::PageSource*>(wizard.page(2))->onShowLegend();
        auto* legend = wizard.findChild<PageCheckBoxLegendDialog*>();
        QVERIFY(legend);
        QVERIFY(QTest::qWaitForWindowExposed(legend));
        QVERIFY(legend->grab().save(folder + QStringLiteral("/legend.png")));
        legend->close();
    }

    // Last: it stops the service.
    void doneWithoutTheServiceSaysSoAndKeepsThePages()
    {
        BackupPlanEditWizard wizard;
        wizard.show();
        QVERIFY(QTest::qWaitForWindowExposed(&wizard));
        auto* cloud = static_cast<PlanWizardBase::PageCloud*>(wizard.page(0));
        static_cast<Settings::Storages::EditList*>(cloud->list())
            ->view()
            ->setCurrentIndex(static_cast<Settings::Storages::EditList*>(cloud->list())->view()->model()->index(0, 0));
        next(wizard);
        QTest::keyClicks(wizard.page(1)->findChild<QLineEdit*>(), QStringLiteral("Offline"));
        next(wizard);
        tick(static_cast<BackupPlanEditWizard::PageSource*>(wizard.page(2)), QStringLiteral("photos"), Qt::Checked);
        while (wizard.currentId() != 6 && !QTest::currentTestFailed())
            next(wizard);
        QVERIFY2(m_service->terminate(), qPrintable(m_service->output()));
        m_service.reset();
        QTRY_VERIFY(!ConnectionManager::instance()->isLocalManagmentConnected());
        ModalAnswerer told(QMessageBox::Ok);
        QTest::mouseClick(wizard.button(QWizard::FinishButton), Qt::LeftButton);
        QVERIFY(told.wait());
        QVERIFY2(told.text().startsWith(QStringLiteral("The backup service is not running")), qPrintable(told.text()));
        QCOMPARE(wizard.currentId(), 6);
        QVERIFY(wizard.isVisible());
        QCOMPARE(wizard.field(QStringLiteral("Field_PlanName")).toString(), QStringLiteral("Offline"));
    }

    void initTestCase()
    {
        m_env = std::make_unique<TestEnvironment>();
        m_service = std::make_unique<ServiceProcess>(m_env->socketPath(), m_env->dataDir());
        QVERIFY2(m_service->start(), qPrintable(m_service->output()));
        TestEnvironment::speedUpChannel();
        QTRY_VERIFY(ConnectionManager::instance()->isLocalManagmentConnected());
        m_tables = std::make_unique<SharedModelCreator<PlanTableModel>>(ModelNames::PlanTable);
        ModelManager::instance()->registrateCreator(*m_tables);
        QSignalSpy loaded(table(), &BaseModel::complite);
        QVERIFY(table()->init());
        QVERIFY(loaded.wait());
        m_storages = std::make_unique<SharedModelCreator<StorageConnectionsModel>>(ModelNames::StorageConnection);
        ModelManager::instance()->registrateCreator(*m_storages);
        auto* storages = ModelManager::instance()->create(ModelNames::StorageConnection);
        QSignalSpy listed(storages, &BaseModel::complite);
        QVERIFY(storages->init());
        QVERIFY(listed.wait());
        const QModelIndexList local = storages->match(
            storages->index(0, 0), Qt::DisplayRole, QStringLiteral("Local storage"), 1, Qt::MatchExactly);
        QVERIFY(!local.isEmpty());
        m_account = QUuid(local.first().siblingAtColumn(1).data().toString());

        m_tree = m_env->root() + QStringLiteral("/home");
        write(QStringLiteral("docs/letter.txt"), "Dear reader,\n");
        write(QStringLiteral("docs/draft.tmp"), "scratch\n");
        write(QStringLiteral("docs/keep/kept.txt"), "kept\n");
        write(QStringLiteral("docs/skip/skipped.txt"), "not wanted\n");
        write(QStringLiteral("photos/cat.jpg"), "meow\n");
        write(QStringLiteral("other/other.txt"), "never ticked\n");
    }

    void cleanupTestCase()
    {
        if (m_service)
            QVERIFY2(m_service->terminate(), qPrintable(m_service->output()));
    }
};

QTEST_MAIN(TestBackupPlanWizard)
#include "tst_backup_plan_wizard.moc"
