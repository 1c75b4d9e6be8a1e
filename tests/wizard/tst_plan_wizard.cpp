#include "platform/plan/backup_file.h"
#include "support/test_environment.h"
#include "wizard/page_name.h"
#include "wizard/page_source.h"
#include "wizard/page_summary.h"
#include "wizard/plan_wizard_base.h"

#include <QAbstractButton>
#include <QCheckBox>
#include <QHeaderView>
#include <QLineEdit>
#include <QStandardItemModel>
#include <QTextEdit>
#include <QTreeView>
#include <QtTest>

#include <memory>

using namespace TWB::GUI;
using TWB::Test::TestEnvironment;

namespace {

/// A page that contributes a row of its own to the summary.
class RowPage : public PlanWizardBase::PageBase
{
public:
    RowPage(const QString& text, int next)
        : PageBase(text)
        , m_text(text)
        , m_next(next)
    { }
    QString summary() override { return QStringLiteral("<tr><td>%1</td><td></td></tr>").arg(m_text); }
    bool initPlan(TWB::Info::Plan::Base*) override { return true; }
    bool fromPlan(TWB::Info::Plan::Base*) override { return true; }
    int nextId() const override { return m_next; }

private:
    QString m_text;
    int m_next;
};

/// The tree page as a deriving wizard makes it.
class SourcePage : public PlanWizardBase::PageSource
{
public:
    SourcePage()
        : PageSource(QStringLiteral("Source"))
    { }
    QString summary() override { return QString(); }
    bool initPlan(TWB::Info::Plan::Base*) override { return true; }
    bool fromPlan(TWB::Info::Plan::Base*) override { return true; }
};

/// Name (1) -> 2 -> summary (6), with a page 3 that is never visited.
class SmallWizard : public PlanWizardBase
{
public:
    explicit SmallWizard(int planType)
        : PlanWizardBase(planType)
        , name(new PageName)
        , second(new RowPage(QStringLiteral("Second page"), 6))
        , unvisited(new RowPage(QStringLiteral("Never shown"), 6))
        , summary(new PageSummary)
    {
        setPage(1, name);
        setPage(2, second);
        setPage(3, unvisited);
        setPage(6, summary);
        setStartId(1);
        resizeWizardPages();
    }
    PageName* name;
    RowPage* second;
    RowPage* unvisited;
    PageSummary* summary;
};

} // namespace

class TestPlanWizard : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<TestEnvironment> m_env;

private Q_SLOTS:
    void initTestCase() { m_env = std::make_unique<TestEnvironment>(); }

    void wizardIsFittedToItsArtwork()
    {
        SmallWizard wizard(1);
        QCOMPARE(wizard.wizardStyle(), QWizard::MacStyle);
        QVERIFY(!wizard.pixmap(QWizard::BackgroundPixmap).isNull());
        wizard.show();
        QVERIFY(QTest::qWaitForWindowExposed(&wizard));
        // Cancel, Back, Next, Finish from left to right.
        QVERIFY(wizard.button(QWizard::CancelButton)->x() < wizard.button(QWizard::BackButton)->x());
        QVERIFY(wizard.button(QWizard::BackButton)->x() < wizard.button(QWizard::NextButton)->x());
        wizard.resizeWizardPages();
        const auto ids = wizard.pageIds();
        for (int id : ids) {
            QVERIFY(wizard.minimumWidth() >= wizard.page(id)->sizeHint().width());
            QVERIFY(wizard.minimumHeight() >= wizard.page(id)->sizeHint().height());
        }
    }

    void secondExecIsRefused()
    {
        SmallWizard first(1);
        SmallWizard second(2);
        int inner = -1;
        QTimer::singleShot(100, &first, [&] {
            inner = second.exec();
            first.reject();
        });
        QCOMPARE(first.exec(), int(QDialog::Rejected));
        QCOMPARE(inner, 0);
        // Once the first is closed, a wizard may run again.
        QTimer::singleShot(50, &second, [&] { second.reject(); });
        QCOMPARE(second.exec(), int(QDialog::Rejected));
    }

    void nameMustHoldMoreThanBlanksAndIsKeptAsTyped()
    {
        SmallWizard wizard(1);
        wizard.show();
        QVERIFY(QTest::qWaitForWindowExposed(&wizard));
        QAbstractButton* next = wizard.button(QWizard::NextButton);
        auto* edit = wizard.name->findChild<QLineEdit*>();
        QVERIFY(!next->isEnabled());
        QTest::keyClicks(edit, QStringLiteral("   "));
        QVERIFY(!next->isEnabled());
        QVERIFY(!wizard.name->validatePage());
        QTest::keyClicks(edit, QStringLiteral("Photos  "));
        QVERIFY(next->isEnabled());
        TWB::Info::Plan::BackupFile plan;
        QVERIFY(wizard.name->initPlan(&plan));
        QCOMPARE(plan.name(), QStringLiteral("   Photos  "));
        QCOMPARE(wizard.name->summary(), QStringLiteral("<tr><td>Plan name:</td><td>   Photos  </td></tr>"));

        TWB::Info::Plan::BackupFile stored;
        stored.setName(QStringLiteral("Stored name"));
        QVERIFY(wizard.name->fromPlan(&stored));
        QCOMPARE(edit->text(), QStringLiteral("Stored name"));
        QVERIFY(!wizard.name->initPlan(nullptr));
    }

    void summaryShowsVisitedPagesInOrder()
    {
        SmallWizard wizard(2);
        wizard.show();
        QVERIFY(QTest::qWaitForWindowExposed(&wizard));
        QTest::keyClicks(wizard.name->findChild<QLineEdit*>(), QStringLiteral("Restore & <mail>"));
        wizard.next();
        wizard.next();
        QCOMPARE(wizard.currentId(), 6);
        const QString text = wizard.summary->findChild<QTextEdit*>()->toPlainText();
        QVERIFY(text.contains(QStringLiteral("Restore & <mail>")));
        QVERIFY(text.indexOf(QStringLiteral("Plan name:")) < text.indexOf(QStringLiteral("Second page")));
        QVERIFY(!text.contains(QStringLiteral("Never shown")));
        auto* runNow = wizard.summary->findChild<QCheckBox*>();
        QVERIFY(!runNow->isChecked() && runNow->isVisible());
        QVERIFY(wizard.grab().save(TestEnvironment::outputDir() + QStringLiteral("/page_summary.png")));
        Q_EMIT wizard.summary->setVisibleRunNow(false);
        QVERIFY(!runNow->isVisible());
        QVERIFY(wizard.summary->isFinalPage());
        // The base summary never finishes a wizard by itself.
        QVERIFY(!wizard.summary->validatePage());
    }

    void sourcePageShowsOneColumnAndRetestsOnChecks()
    {
        SourcePage page;
        QStandardItemModel model(2, 3);
        page.setModel(&model, 1);
        auto* tree = page.findChild<QTreeView*>();
        QVERIFY(tree->isHeaderHidden());
        QVERIFY(tree->isColumnHidden(0));
        QVERIFY(!tree->isColumnHidden(1));
        QVERIFY(tree->isColumnHidden(2));
        QVERIFY(!tree->header()->stretchLastSection());
        QSignalSpy complete(&page, &QWizardPage::completeChanged);
        model.setData(model.index(0, 0), Qt::Checked, Qt::CheckStateRole);
        QCOMPARE(complete.count(), 1);
    }

    void trimmeredPathShowsDrivesAndSharesAsUsersKnowThem_data()
    {
        QTest::addColumn<QString>("path");
        QTest::addColumn<QString>("shown");
        QTest::newRow("share") << "/TWB_SHARES/nas/photos"
                               << "nas/photos";
        QTest::newRow("volume") << "/TWB_VOLUMES/sdb1/data"
                                << "sdb1/data";
        QTest::newRow("neither") << "/home/alice"
                                 << "/home/alice";
        QTest::newRow("prefix not at the start") << "/x/TWB_SHARES/y"
                                                 << "/x/TWB_SHARES/y";
    }

    void trimmeredPathShowsDrivesAndSharesAsUsersKnowThem()
    {
        QFETCH(QString, path);
        QFETCH(QString, shown);
        SourcePage page;
        QCOMPARE(page.trimmeredPath(path), shown);
    }
};

QTEST_MAIN(TestPlanWizard)
#include "tst_plan_wizard.moc"
