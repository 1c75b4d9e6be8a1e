#include "docs_catalog.h"
#include "plans/date_time_delegate.h"
#include "platform/plan/restore_file.h"
#include "restore_wizard/page_source.h"
#include "restore_wizard/restore_content_model.h"
#include "restore_wizard/storage_backup_full_model.h"
#include "restore_wizard/storage_backup_model.h"
#include "service_fixture.h"
#include "support/log_capture.h"

#include <QAbstractItemModelTester>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QSignalSpy>
#include <QTreeView>
#include <QtTest>

#include <memory>

using namespace TWB::GUI;
using TWB::Info::Plan::RestoreFile;
using TWB::Test::DocsCatalog;
using TWB::Test::LogCapture;
using TWB::Test::ServiceFixture;
using TWB::Test::StorageConsole;
using Tester = QAbstractItemModelTester;
using Page = RestorePlanEditWizard::PageSource;

namespace {

const QStringList docsEntries = TWB::Test::DocsCatalog::docsEntries();

QModelIndex accountRow(const QAbstractItemModel& model, const QUuid& id)
{
    for (int row = 0; row < model.rowCount(); ++row) {
        if (QUuid(model.index(row, 1).data().toString()) == id)
            return model.index(row, 0);
    }
    return QModelIndex();
}

QStringList names(const QAbstractItemModel& model, const QModelIndex& parent)
{
    QStringList result;
    for (int row = 0; row < model.rowCount(parent); ++row)
        result << model.index(row, 0, parent).data().toString();
    return result;
}

// Expands `parent` as a view does and waits until the listing brings the row called `name`.
QModelIndex open(QAbstractItemModel& model, const QModelIndex& parent, const QString& name)
{
    if (model.canFetchMore(parent))
        model.fetchMore(parent);
    QModelIndex found;
    const bool came = QTest::qWaitFor(
        [&] {
            const int row = names(model, parent).indexOf(name);
            found = row < 0 ? QModelIndex() : model.index(row, 0, parent);
            return found.isValid();
        },
        10000);
    return came ? found : QModelIndex();
}

QModelIndex walk(QAbstractItemModel& model, QModelIndex index, const QStringList& path)
{
    for (const QString& name : path) {
        index = open(model, index, name);
        if (!index.isValid())
            return index;
    }
    return index;
}

// Every earlier reply on the console's one connection has been taken in once a later command answers.
bool channelDrained(const QUuid& account)
{
    return ServiceFixture::callThroughChannel(
        QStringLiteral("GetContentType"), {{QStringLiteral("DestinationId"), account.toString()}})
        .success;
}

QModelIndex find(const QAbstractItemModel& model, const QString& path)
{
    const QModelIndexList hits = model.match(model.index(0, 1), Qt::DisplayRole, path, 1, Qt::MatchRecursive);
    return hits.isEmpty() ? QModelIndex() : hits.first().siblingAtColumn(0);
}

int state(const QAbstractItemModel& model, const QString& path)
{
    const QModelIndex index = find(model, path);
    return index.isValid() ? index.data(Qt::CheckStateRole).toInt() : -1;
}

bool seeded(const RestoreContentModel& model)
{
    return QTest::qWaitFor([&] { return !model.isSeeding(); }, 30000);
}

// Expands the folder as a view does and waits for its rows.
QModelIndex open(RestoreContentModel& model, const QString& path)
{
    const QModelIndex folder = find(model, path);
    if (!folder.isValid())
        return folder;
    if (model.canFetchMore(folder))
        model.fetchMore(folder);
    return QTest::qWaitFor([&] { return model.rowCount(folder) > 0; }, 10000) ? folder : QModelIndex();
}

/// Holds the account's field, as the storage page does.
struct StoragePage : QWizardPage
{
    StoragePage() { registerField(QStringLiteral("Field_CloudId"), new QLineEdit(this)); }
};

/// The source page behind a stand-in for the storage page, which holds the account's field.
struct Wizard : PlanWizardBase
{
    Wizard()
        : PlanWizardBase(2)
        , page(new Page)
    {
        setPage(0, new StoragePage);
        setPage(2, page);
        setPage(101, new QWizardPage);
        resize(640, 480);
    }
    /// Goes to the source page from the storage page with this account chosen.
    bool showSource(const QUuid& account)
    {
        while (currentId() > 0)
            back();
        setField(QStringLiteral("Field_CloudId"), account.toString());
        next();
        return currentPage() == page && page->contentModel() && page->contentModel()->destination() == account;
    }
    Page* page;
};

} // namespace

/// The storage trees and the restore tree with its page against the real service, over a catalog that
/// three real backups made.
class TestStorageBackupModel : public QObject
{
    Q_OBJECT

private:
    DocsCatalog m_catalog;
    StorageConsole* m_console = nullptr; // owned by m_catalog
    SharedModelCreator<StorageBackupModel> m_plainCreator {ModelNames::StorageBackup};
    SharedModelCreator<StorageBackupFullModel> m_fullCreator {ModelNames::StorageBackupFull};
    QUuid m_account;
    QUuid m_spare;
    QStringList m_docsPath; // node names from the account down to the backed-up "docs"

    QString docs(const QString& below = QString()) const { return m_catalog.docsServicePath(below); }

    void setPageSize(int size) { m_catalog.setPageSize(size); }

private Q_SLOTS:
    void initTestCase()
    {
        m_catalog.build();
        QVERIFY(!QTest::currentTestFailed());
        ModelManager::instance()->registrateCreator(m_plainCreator);
        ModelManager::instance()->registrateCreator(m_fullCreator);
        m_console = m_catalog.console.get();
        m_account = m_catalog.account;
        m_spare = m_catalog.spare;
        m_docsPath = m_catalog.docsPath;
    }

    void cleanup() { setPageSize(500); }

    void cleanupTestCase() { m_catalog.stop(); }

    void modelsAreSharedByName()
    {
        auto* plain = qobject_cast<StorageBackupModel*>(ModelManager::instance()->create(ModelNames::StorageBackup));
        auto* full
            = qobject_cast<StorageBackupFullModel*>(ModelManager::instance()->create(ModelNames::StorageBackupFull));
        QVERIFY(plain && full && plain != full);
        QCOMPARE(ModelManager::instance()->create(ModelNames::StorageBackup), plain);
        QCOMPARE(plain->columnCount(), 4);
        QCOMPARE(full->columnCount(), 14);
    }

    void fullTreeShowsAccountsFoldersFilesAndVersions()
    {
        StorageBackupFullModel model;
        Tester tester(&model, Tester::FailureReportingMode::QtTest);
        QSignalSpy errors(&model, &BaseModel::error);
        QVERIFY(model.init());
        QCOMPARE(model.rowCount(), m_console->model()->rowCount());
        const QModelIndex account = accountRow(model, m_account);
        QVERIFY(account.isValid());
        // The top level is the storage list's: its name, id and type.
        QCOMPARE(account.data().toString(), QStringLiteral("Test storage"));
        QCOMPARE(account.siblingAtColumn(2).data().toInt(), 1);

        const QModelIndex docs = walk(model, account, m_docsPath);
        QVERIFY(docs.isValid());
        QTRY_COMPARE(names(model, docs), docsEntries);
        QCOMPARE(docs.siblingAtColumn(2).data().toInt(), 2);
        QCOMPARE(docs.siblingAtColumn(4).data().toDouble(), 9223372036854775808.0);
        QVERIFY(docs.data(StorageBackupModel::LoadedRole).toBool());
        QVERIFY(!docs.data(Qt::DecorationRole).value<QIcon>().isNull());
        QVERIFY(docs.parent().isValid());
        QCOMPARE(QUuid(docs.siblingAtColumn(1).data().toString()), m_account);

        const QModelIndex a = model.index(1, 0, docs);
        QCOMPARE(a.siblingAtColumn(2).data().toInt(), 0);
        QCOMPARE(a.siblingAtColumn(3).data().toString(), docs.siblingAtColumn(3).data().toString() + "/a.txt");
        QCOMPARE(a.siblingAtColumn(5).data().toDouble(), 200.0); // the newest version's size
        QVERIFY(a.siblingAtColumn(4).data().toDouble() > 0);
        QCOMPARE(a.siblingAtColumn(7).data().toBool(), false); // no password of the user's
        QCOMPARE(a.siblingAtColumn(12).data().toString(), QStringLiteral("/"));
        QVERIFY(!a.siblingAtColumn(13).data().isValid());
        QVERIFY(!a.siblingAtColumn(4).data(Qt::ToolTipRole).isValid());
        QVERIFY(model.hasChildren(a));

        // A file's versions, newest first, each named by its date.
        if (model.canFetchMore(a))
            model.fetchMore(a);
        QTRY_COMPARE(model.rowCount(a), 3);
        QList<double> sizes;
        for (int row = 0; row < 3; ++row) {
            const QModelIndex version = model.index(row, 0, a);
            QCOMPARE(version.siblingAtColumn(2).data().toInt(), 1);
            const QString date = DateTimeDelegate::toText(version.siblingAtColumn(6).data(), QLocale());
            QCOMPARE(version.data().toString(), QStringLiteral("[%1]").arg(date));
            QVERIFY(version.siblingAtColumn(3).data().toString().contains(QLatin1Char('@')));
            QVERIFY(!model.hasChildren(version));
            sizes << version.siblingAtColumn(5).data().toDouble();
        }
        QCOMPARE(sizes, (QList<double> {200, 100, 5}));
        QVERIFY(errors.isEmpty());
    }

    void plainTreeListsFoldersOnly()
    {
        StorageBackupModel model;
        Tester tester(&model, Tester::FailureReportingMode::QtTest);
        QVERIFY(model.init());
        const QModelIndex docs = walk(model, accountRow(model, m_account), m_docsPath);
        QVERIFY(docs.isValid());
        QTRY_COMPARE(names(model, docs), QStringList {"old"});
        const QModelIndex old = model.index(0, 0, docs);
        // "old" holds only a file, which this tree does not show: nothing to expand.
        QVERIFY(!model.hasChildren(old));
        QVERIFY(!model.canFetchMore(old));
        QVERIFY(!old.siblingAtColumn(4).isValid());
    }

    void longFolderArrivesInParts()
    {
        setPageSize(2);
        StorageBackupFullModel model;
        Tester tester(&model, Tester::FailureReportingMode::QtTest);
        QVERIFY(model.init());
        const QModelIndex folder = walk(model, accountRow(model, m_account), m_docsPath);
        QVERIFY(folder.isValid());
        if (model.canFetchMore(folder))
            model.fetchMore(folder);
        QTRY_COMPARE(model.rowCount(folder), docsEntries.size());
        QVERIFY(channelDrained(m_account));

        // Asked anew: a first part of two, then parts as large as what is held, each announced at its place.
        QSignalSpy inserted(&model, &QAbstractItemModel::rowsInserted);
        QSignalSpy updated(&model, &BaseModel::updated);
        model.onUpdate(folder);
        QTRY_COMPARE(model.rowCount(folder), docsEntries.size());
        QVERIFY(channelDrained(m_account));
        QCOMPARE(names(model, folder), docsEntries);
        QList<QPair<int, int>> ranges;
        for (const QList<QVariant>& signal : qAsConst(inserted)) {
            if (signal.at(0).value<QModelIndex>() == folder)
                ranges << qMakePair(signal.at(1).toInt(), signal.at(2).toInt());
        }
        QCOMPARE(ranges, (QList<QPair<int, int>> {{0, 1}, {2, 3}, {4, 7}}));
        QVERIFY(updated.count() >= 3);

        // Collapsed between two parts: the part on its way is not added to the new listing.
        QSignalSpy firstPart(&model, &QAbstractItemModel::rowsInserted);
        model.onUpdate(folder);
        QVERIFY(firstPart.wait());
        model.onCollapse(folder);
        if (model.canFetchMore(folder))
            model.fetchMore(folder);
        QTRY_COMPARE(model.rowCount(folder), docsEntries.size());
        QVERIFY(channelDrained(m_account));
        QCOMPARE(names(model, folder), docsEntries);
    }

    void replyForCollapsedFolderIsDropped()
    {
        StorageBackupFullModel model;
        Tester tester(&model, Tester::FailureReportingMode::QtTest);
        QVERIFY(model.init());
        const QModelIndex docs = walk(model, accountRow(model, m_account), m_docsPath);
        QVERIFY(docs.isValid());
        if (model.canFetchMore(docs))
            model.fetchMore(docs);
        QTRY_COMPARE(model.rowCount(docs), docsEntries.size());
        QVERIFY(channelDrained(m_account));
        const QModelIndex source = docs.parent();
        QSignalSpy errors(&model, &BaseModel::error);

        // "docs" is listed anew, and its folder closes before the answer comes.
        model.onUpdate(docs);
        model.onCollapse(source);
        QVERIFY(!source.data(StorageBackupModel::LoadedRole).toBool());
        QVERIFY(errors.wait());
        QCOMPARE(errors.first().first().toString(), QStringLiteral("This tree node is deleted..."));

        // The folder opens again whole.
        const QModelIndex again = open(model, source, QStringLiteral("docs"));
        QVERIFY(again.isValid());
        if (model.canFetchMore(again))
            model.fetchMore(again);
        QTRY_COMPARE(model.rowCount(again), docsEntries.size());
        QVERIFY(channelDrained(m_account));
        QCOMPARE(names(model, again), docsEntries);
    }

    void seedingTicksPlanPathsFetchingOnlyTheFoldersOnTheWay()
    {
        RestoreContentModel model(m_catalog.account);
        LogCapture log;
        QSignalSpy requests(&model, &BaseModel::updated);
        QSignalSpy errors(&model, &BaseModel::error);
        // "gone" is no longer in the storage: the walk to it ends at "docs".
        model.initChecked({docs("old/z.txt"), docs("gone/x.txt"), docs("a.txt")});
        QVERIFY(seeded(model));

        QCOMPARE(state(model, docs("a.txt")), 2);
        QCOMPARE(state(model, docs("old/z.txt")), 2);
        QCOMPARE(state(model, docs("b.txt")), 0);
        QCOMPARE(state(model, docs("old")), 1001);
        QCOMPARE(state(model, docs()), 1001);
        QCOMPARE(model.index(0, 0).data(Qt::CheckStateRole).toInt(), 1001);
        QCOMPARE(model.checkedPath(), (QStringList {docs("old/z.txt"), docs("a.txt")}));
        QVERIFY(log.contains(QtWarningMsg, QStringLiteral("TWB"), QStringLiteral("This path dont exist")));
        QVERIFY(errors.isEmpty());
        // The top, each folder down to "docs", and "old"; nothing for "gone", nothing beside the way.
        QCOMPARE(requests.count(), 1 + m_catalog.docsPath.size() + 1);
    }

    void multiPartFolderIsTickedInEveryPart()
    {
        m_catalog.setPageSize(2);
        RestoreContentModel model(m_catalog.account);
        QAbstractItemModelTester tester(&model, QAbstractItemModelTester::FailureReportingMode::Warning);
        LogCapture log;
        // "g.txt" comes in the last of three parts, "old" in the first.
        model.initChecked({docs("g.txt"), docs("old/z.txt")});
        QVERIFY(seeded(model));
        const QModelIndex folder = find(model, docs());
        QStringList names;
        for (int row = 0; row < model.rowCount(folder); ++row) {
            const QModelIndex child = model.index(row, 0, folder);
            QCOMPARE(child.parent(), folder);
            names << child.data().toString();
        }
        QCOMPARE(names, DocsCatalog::docsEntries());
        QCOMPARE(state(model, docs("g.txt")), 2);
        QCOMPARE(state(model, docs("old/z.txt")), 2);
        QCOMPARE(model.checkedPath(), (QStringList {docs("old/z.txt"), docs("g.txt")}));
        // The tester knows only Qt's three check states, not the fourth, 1001, of the folders on the way.
        for (const LogCapture::Entry& entry : log.entries()) {
            QVERIFY2(
                !entry.message.contains(QLatin1String("FAIL")) || entry.message.contains(QLatin1String("state ==")),
                qPrintable(entry.message));
        }
        QVERIFY(!log.contains(QtWarningMsg, QStringLiteral("TWB"), QStringLiteral("This path dont exist")));
    }

    void rowsBelowTickedFolderArriveTicked()
    {
        RestoreContentModel model(m_catalog.account);
        model.initChecked({});
        QTRY_VERIFY(model.rowCount() > 0);
        for (int depth = 1; depth <= m_catalog.docsPath.size(); ++depth)
            QVERIFY(open(model, QLatin1Char('/') + m_catalog.docsPath.mid(0, depth).join(QLatin1Char('/'))).isValid());
        const QModelIndex old = find(model, docs("old"));
        QVERIFY(!model.canFetchMore(old) || model.rowCount(old) == 0);
        QVERIFY(model.setData(old, 2, Qt::CheckStateRole));
        QCOMPARE(state(model, docs()), 1001);
        QVERIFY(open(model, docs("old")).isValid());
        QCOMPARE(state(model, docs("old/z.txt")), 2);
        QCOMPARE(model.checkedPath(), QStringList {docs("old")});
        QVERIFY(!model.setData(old, 7, Qt::CheckStateRole));
    }

    void ticksOfEveryChild_data()
    {
        QTest::addColumn<bool>("folderTickedFirst");
        QTest::addColumn<bool>("folderAlone");
        // A folder unticked in part and then whole again stands for all below it.
        QTest::newRow("folder at 1") << true << true;
        // A folder never ticked itself lists what was ticked below it.
        QTest::newRow("folder at 1001") << false << false;
    }

    void ticksOfEveryChild()
    {
        QFETCH(bool, folderTickedFirst);
        QFETCH(bool, folderAlone);
        RestoreContentModel model(m_catalog.account);
        model.initChecked({docs("a.txt")});
        QVERIFY(seeded(model));
        const QModelIndex folder = find(model, docs());
        const QModelIndex a = find(model, docs("a.txt"));
        if (folderTickedFirst) {
            QVERIFY(model.setData(folder, 2, Qt::CheckStateRole));
            QVERIFY(model.setData(a, 0, Qt::CheckStateRole));
            QCOMPARE(folder.data(Qt::CheckStateRole).toInt(), 1);
        }
        QStringList children;
        for (int row = 0; row < model.rowCount(folder); ++row) {
            const QModelIndex child = model.index(row, 0, folder);
            children << docs(child.data().toString());
            model.setData(child, 2, Qt::CheckStateRole);
        }
        QCOMPARE(folder.data(Qt::CheckStateRole).toInt(), folderAlone ? 2 : 1001);
        QCOMPARE(model.checkedPath(), folderAlone ? QStringList {docs()} : children);
    }

    void untickedFolderStaysUntickedWhenItsRowsArrive()
    {
        RestoreContentModel model(m_catalog.account);
        // "docs" is unticked as soon as its rows show, while "old" is still to be fetched.
        connect(&model, &QAbstractItemModel::rowsInserted, &model, [&](const QModelIndex& parent) {
            if (parent.siblingAtColumn(1).data().toString() == docs())
                model.setData(parent, 0, Qt::CheckStateRole);
        });
        model.initChecked({docs("a.txt"), docs("old/z.txt")});
        QVERIFY(seeded(model));
        QVERIFY(find(model, docs("old/z.txt")).isValid());
        for (const QString& path : {docs(), docs("a.txt"), docs("old"), docs("old/z.txt")})
            QCOMPARE(state(model, path), 0);
        QVERIFY(model.checkedPath().isEmpty());
    }

    void pageKeepsTicksForTheSameAccountOnly()
    {
        Wizard wizard;
        RestoreFile plan;
        plan.setRestoreItems({docs("a.txt"), docs("old/z.txt")});
        QVERIFY(wizard.page->fromPlan(&plan));
        wizard.show();
        QVERIFY(wizard.showSource(m_catalog.account));
        RestoreContentModel* model = wizard.page->contentModel();
        // Next waits for the plan's paths: the tree is not yet all that the plan holds.
        QVERIFY(!wizard.button(QWizard::NextButton)->isEnabled());
        QTRY_VERIFY(wizard.button(QWizard::NextButton)->isEnabled());
        QVERIFY(wizard.page->legend()->isVisible());
        QVERIFY(model->setData(find(*model, docs("b.txt")), 2, Qt::CheckStateRole));

        QVERIFY(wizard.showSource(m_catalog.account));
        QCOMPARE(wizard.page->contentModel(), model);
        QCOMPARE(state(*model, docs("b.txt")), 2);

        QVERIFY(wizard.showSource(m_catalog.spare));
        QVERIFY(wizard.showSource(m_catalog.account));
        QVERIFY(seeded(*wizard.page->contentModel()));
        QCOMPARE(state(*wizard.page->contentModel(), docs("b.txt")), 0);
        RestoreFile saved;
        QVERIFY(wizard.page->initPlan(&saved));
        QCOMPARE(saved.restoreItems(), (QStringList {docs("old/z.txt"), docs("a.txt")}));
        QCOMPARE(wizard.page->summary(),
            QStringLiteral("<tr><td>Restore source</td><td></td></tr><tr><td></td><td>%1</td></tr>"
                           "<tr><td></td><td>%2</td></tr>")
                .arg(docs("old/z.txt"), docs("a.txt")));

        // Only folders that are partly wanted: nothing to restore yet.
        plan.setRestoreItems({docs("gone/x.txt")});
        QVERIFY(wizard.page->fromPlan(&plan));
        QVERIFY(wizard.showSource(m_catalog.account));
        QVERIFY(seeded(*wizard.page->contentModel()));
        QCOMPARE(state(*wizard.page->contentModel(), docs()), 1001);
        QVERIFY(!wizard.page->isComplete());
        QVERIFY(!wizard.button(QWizard::NextButton)->isEnabled());
    }

    // Last: the spare account leaves the shared list for good.
    void replyForRemovedAccountIsDropped()
    {
        StorageBackupModel model;
        Tester tester(&model, Tester::FailureReportingMode::QtTest);
        QVERIFY(model.init());
        const int before = model.rowCount();
        const QModelIndex spare = accountRow(model, m_spare);
        QVERIFY(spare.isValid());
        QSignalSpy errors(&model, &BaseModel::error);
        if (model.canFetchMore(spare))
            model.fetchMore(spare);
        m_console->model()->removeStorage(m_spare);
        QCOMPARE(model.rowCount(), before - 1);
        QVERIFY(!accountRow(model, m_spare).isValid());
        QVERIFY(accountRow(model, m_account).isValid());
        QVERIFY(errors.wait());
        QCOMPARE(errors.first().first().toString(), QStringLiteral("This destination is not registrate on system"));
    }
};

QTEST_MAIN(TestStorageBackupModel)
#include "tst_storage_backup_model.moc"
