#include "backup_wizard/page_advanced_filter.h"
#include "backup_wizard/page_backup_actions.h"
#include "frame/application.h"
#include "platform/plan/backup_file.h"
#include "support/test_environment.h"
#include "widgets/edit_list_widget.h"
#include "widgets/warning_frame.h"

#include <QAbstractButton>
#include <QFile>
#include <QListView>
#include <QProcess>
#include <QSpinBox>
#include <QtTest>

#include <memory>

using namespace TWB::GUI;
using namespace TWB::Info::Plan;
using TWB::Test::TestEnvironment;

namespace {

/// The two pages at their ids in the backup wizard.
class PagesWizard : public PlanWizardBase
{
public:
    PagesWizard()
        : PlanWizardBase(1)
        , filter(new PageAdvancedFilter)
        , actions(new PageBackupActions)
        , cloudType(new QSpinBox(filter))
    {
        // The storage page's field, which the filter page reads to choose its next page.
        cloudType->hide();
        cloudType->setRange(0, 100);
        filter->registerField(QStringLiteral("Field_CloudType"), cloudType);
        setPage(102, filter);
        setPage(107, actions);
        setStartId(102);
        resizeWizardPages();
    }
    PageAdvancedFilter* filter;
    PageBackupActions* actions;
    QSpinBox* cloudType;
};

} // namespace

class TestPageAdvancedFilter : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<TestEnvironment> m_env;
    QString m_repository;

    /// Whether restic itself takes the mask as an exclude pattern.
    bool resticTakes(const QString& mask)
    {
        return QProcess::execute(QStringLiteral("restic"),
                   {QStringLiteral("--repo"), m_repository, QStringLiteral("--no-cache"), QStringLiteral("--quiet"),
                       QStringLiteral("backup"), QStringLiteral("--dry-run"), QStringLiteral("--exclude=") + mask,
                       m_env->root()})
            == 0;
    }

private Q_SLOTS:
    void initTestCase()
    {
        m_env = std::make_unique<TestEnvironment>();
        m_repository = m_env->root() + QStringLiteral("/repository");
        qputenv("RESTIC_PASSWORD", "masks");
        QCOMPARE(QProcess::execute(QStringLiteral("restic"),
                     {QStringLiteral("init"), QStringLiteral("--quiet"), QStringLiteral("--repo"), m_repository}),
            0);
    }

    void cleanup()
    {
        QFile::remove(m_env->configFile());
        QFile::remove(m_env->rebrandingFile());
        Application::rereadConfiguration();
    }

    void maskThatResticRefusesIsRefusedWithItsReason_data()
    {
        QTest::addColumn<QString>("mask");
        QTest::addColumn<QString>("reason"); // empty: the mask is taken
        const QString unclosed = QStringLiteral("a \"[\" is not closed by \"]\"");
        const QString backslash = QStringLiteral("a \"\\\" at the end of a name escapes nothing");
        QTest::newRow("unclosed class") << "*.[ch" << unclosed;
        QTest::newRow("lone backslash at the end") << "notes\\" << backslash;
        QTest::newRow("lone backslash before a slash") << "a\\/b" << backslash;
        QTest::newRow("empty class") << "x[]" << QStringLiteral("\"[]\" holds no character");
        QTest::newRow("range without end")
            << "[a-]" << QStringLiteral("a \"-\" in \"[...]\" has no character after it");
        QTest::newRow("bad folder part") << "cache/[/x" << unclosed;
        QTest::newRow("bad negated mask") << "![x" << unclosed;
        QTest::newRow("reversed range") << "[z-a]" << QString();
        QTest::newRow("escaped brackets") << "\\[draft\\]" << QString();
        QTest::newRow("escaped bracket in a class") << "[\\]]" << QString();
        QTest::newRow("any depth") << "**/node_modules/*.js" << QString();
    }

    void maskThatResticRefusesIsRefusedWithItsReason()
    {
        QFETCH(QString, mask);
        QFETCH(QString, reason);
        // The page's grammar must agree with restic's own.
        QCOMPARE(resticTakes(mask), reason.isEmpty());

        PagesWizard wizard;
        wizard.show();
        QVERIFY(QTest::qWaitForWindowExposed(&wizard));
        wizard.setField(QLatin1String(PageAdvancedFilter::FieldFilterType), int(BackupFile::ExcludeMasks));
        wizard.filter->setMasks({QStringLiteral("*.tmp"), mask});
        auto* next = wizard.button(QWizard::NextButton);
        auto* shown = wizard.filter->findChild<WarningFrame*>();
        QCOMPARE(next->isEnabled(), reason.isEmpty());
        QCOMPARE(shown->isVisible(), !reason.isEmpty());
        if (!reason.isEmpty())
            QVERIFY(shown->text().contains(
                QStringLiteral("The mask \"%1\" cannot be used: %2.").arg(mask, reason).toHtmlEscaped()));
        // Unused masks are not judged; taking the bad one out lets the user on.
        wizard.setField(QLatin1String(PageAdvancedFilter::FieldFilterType), int(BackupFile::NoFilter));
        QVERIFY(next->isEnabled());
        wizard.setField(QLatin1String(PageAdvancedFilter::FieldFilterType), int(BackupFile::IncludeMasks));
        wizard.filter->setMasks({QStringLiteral("*.tmp")});
        QVERIFY(next->isEnabled());
        QVERIFY(!shown->isVisible());
    }

    void nextPageFollowsCloudTypeAndRebranding_data()
    {
        QTest::addColumn<int>("cloudType");
        QTest::addColumn<QByteArray>("rebranding");
        QTest::addColumn<QByteArray>("config");
        QTest::addColumn<int>("next");
        const QByteArray plain("AllowCompression=false\nAllowEncryption=false\n");
        const QByteArray noS3Options = plain + "showSSE=false\nshowSIA=false\nS3Accelerate=false\n";
        QTest::newRow("defaults") << 4 << QByteArray() << QByteArray() << 3;
        QTest::newRow("nothing to choose") << 4 << plain << QByteArray() << 103;
        QTest::newRow("encryption alone") << 4 << QByteArray("AllowCompression=false\n") << QByteArray() << 3;
        QTest::newRow("compression alone") << 4 << QByteArray("AllowEncryption=false\n") << QByteArray() << 3;
        QTest::newRow("Amazon S3 with SSE") << 2 << plain << QByteArray() << 3;
        QTest::newRow("S3 China with acceleration only") << 20 << plain + "showSSE=false\nshowSIA=false\n"
                                                         << QByteArray() << 3;
        QTest::newRow("Amazon S3 without options") << 2 << noS3Options << QByteArray() << 103;
        QTest::newRow("type 37 is not asked") << 37 << plain << QByteArray() << 103;
        QTest::newRow("Azure standalone") << 3 << plain << QByteArray() << 3;
        QTest::newRow("Azure managed") << 3 << plain << QByteArray("edition=managed\n") << 103;
    }

    void nextPageFollowsCloudTypeAndRebranding()
    {
        QFETCH(int, cloudType);
        QFETCH(QByteArray, rebranding);
        QFETCH(QByteArray, config);
        QFETCH(int, next);
        if (!rebranding.isEmpty())
            TestEnvironment::writeFile(m_env->rebrandingFile(), rebranding);
        if (!config.isEmpty())
            TestEnvironment::writeFile(m_env->configFile(), config);
        Application::rereadConfiguration();
        PagesWizard wizard;
        wizard.cloudType->setValue(cloudType);
        QCOMPARE(wizard.filter->nextId(), next);
    }

    void actionsLeadToNotificationsWhereTheLicenceAllows()
    {
        PagesWizard wizard;
        QCOMPARE(wizard.actions->nextId(), 5);
        TestEnvironment::writeFile(m_env->configFile(), "license=free\n");
        QCOMPARE(wizard.actions->nextId(), 6);
    }

    void pagesCarryAPlanThroughUnchanged_data()
    {
        QTest::addColumn<bool>("filled");
        QTest::newRow("a new plan") << false;
        QTest::newRow("every setting") << true;
    }

    void pagesCarryAPlanThroughUnchanged()
    {
        QFETCH(bool, filled);
        BackupFile plan;
        if (filled) {
            plan.setFilterType(BackupFile::IncludeMasks);
            plan.setFilter({QStringLiteral("*.odt"), QStringLiteral("[Rr]eport?.pdf")});
            plan.setFilterCaseInsensitive(true);
            plan.setExcludeFolderList({QStringLiteral("node_modules"), QStringLiteral(".git")});
            plan.setExcludeSystemAndHidden(true);
            plan.setExcludeLargerThan(5ULL << 20);
            plan.setExcludeModifiedBefore(QDateTime(QDate(2023, 3, 4), QTime(0, 0)));
            plan.actions().pre().setEnabled(true);
            plan.actions().pre().setProgram(QStringLiteral("/usr/bin/mysqldump"));
            plan.actions().pre().setArguments(QStringLiteral("--all-databases -r \"/var/backups/all.sql\""));
            plan.actions().pre().setTerminateOnFailure(true);
            plan.actions().post().setEnabled(true);
            plan.actions().post().setProgram(QStringLiteral("logger"));
            plan.actions().post().setArguments(QStringLiteral("backup done"));
            plan.actions().post().setRunOnBackupFailure(true);
        }
        PagesWizard wizard;
        QVERIFY(wizard.filter->fromPlan(&plan));
        QVERIFY(wizard.actions->fromPlan(&plan));
        BackupFile saved;
        QVERIFY(wizard.filter->initPlan(&saved));
        QVERIFY(wizard.actions->initPlan(&saved));
        QVERIFY(saved == plan);
        QCOMPARE(wizard.filter->maskList()->view()->model()->rowCount(), plan.filter().size());

        const QString summary = wizard.filter->summary() + wizard.actions->summary();
        QCOMPARE(summary.contains(QStringLiteral("<tr><td>Skip files larger than:</td><td>5 MB</td></tr>")), filled);
        QCOMPARE(summary.isEmpty(), !filled);
    }

    void actionNeedsAProgramThatRuns()
    {
        PagesWizard wizard;
        wizard.setStartId(107);
        wizard.show();
        QVERIFY(QTest::qWaitForWindowExposed(&wizard));
        wizard.setField(QLatin1String(PageBackupActions::FieldPostActionEnable), true);
        QVERIFY(!wizard.button(QWizard::NextButton)->isEnabled());
        wizard.setField(QLatin1String(PageBackupActions::FieldPostActionProgram), m_env->root());
        QVERIFY(wizard.button(QWizard::NextButton)->isEnabled());
        QVERIFY(!wizard.actions->validatePage());
        QVERIFY(wizard.actions->findChild<WarningFrame*>()->isVisible());
        wizard.setField(QLatin1String(PageBackupActions::FieldPostActionProgram), QStringLiteral("sh"));
        QVERIFY(wizard.actions->validatePage());
    }
};

QTEST_MAIN(TestPageAdvancedFilter)
#include "tst_page_advanced_filter.moc"
