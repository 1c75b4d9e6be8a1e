#include "restore_wizard/page_source.h"
#include "restore_wizard/restore_content_model.h"
#include "docs_catalog.h"
#include "platform/plan/restore_file.h"
#include "support/log_capture.h"

#include <QAbstractItemModelTester>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QSignalSpy>
#include <QTreeView>
#include <QtTest>

using namespace TWB::GUI;
using TWB::Info::Plan::RestoreFile;
using TWB::Test::DocsCatalog;
using TWB::Test::LogCapture;
using Page = RestorePlanEditWizard::PageSource;

namespace {

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

/// The restore tree and its page against the real service, over a catalog that real backups made.
class TestRestoreContentModel : public QObject
{
    Q_OBJECT

private:
    DocsCatalog m_catalog;

    QString docs(const QString& below = QString()) const { return m_catalog.docsServicePath(below); }

private Q_SLOTS:
    void initTestCase()
    {
        m_catalog.build();
        QVERIFY(!QTest::currentTestFailed());
    }

    void cleanup() { m_catalog.setPageSize(500); }

    void cleanupTestCase() { m_catalog.stop(); }

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
};

QTEST_MAIN(TestRestoreContentModel)
#include "tst_restore_content_model.moc"
