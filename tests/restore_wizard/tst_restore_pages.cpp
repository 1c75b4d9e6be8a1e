#include "engine_test_support.h"
#include "frame/license_restrictions.h"
#include "platform/plan/backup_file.h"
#include "platform/plan/restore_file.h"
#include "restore_wizard/page_destination.h"
#include "restore_wizard/page_encryption.h"
#include "restore_wizard/page_glacier.h"
#include "restore_wizard/page_point_type.h"
#include "service_fixture.h"
#include "support/test_environment.h"

#include <QAbstractButton>
#include <QCheckBox>
#include <QDateTimeEdit>
#include <QLineEdit>
#include <QtTest>

#include <memory>

using namespace TWB::GUI;
using namespace TWB::Info::Plan;
using namespace TWB::Test;
using Wizard = RestorePlanEditWizard;
using RetrievalType = Restore::StorageInfo::Type;

namespace {

/// The four pages with the fields of the pages before them, and blank pages where they lead.
struct PagesWizard : PlanWizardBase
{
    PagesWizard()
        : PlanWizardBase(2)
        , pointType(new Wizard::PagePointType)
        , destination(new Wizard::PageDestination)
        , encryption(new Wizard::PageEncryption)
        , glacier(new Wizard::PageGlacier)
    {
        for (const char* name : {"Field_CloudId", "Field_CloudType"})
            pointType->registerField(QLatin1String(name), new QLineEdit);
        pointType->registerField(QStringLiteral("Field_RestoreOnce"), new QCheckBox);
        setPage(102, pointType);
        setPage(101, destination);
        setPage(103, encryption);
        setPage(104, glacier);
        for (int id : {2, 4, 5, 6})
            setPage(id, new QWizardPage);
        setCloud(1);
    }
    void setCloud(int type, const QUuid& account = QUuid())
    {
        setField(QStringLiteral("Field_CloudType"), QString::number(type));
        setField(QStringLiteral("Field_CloudId"), account.toString());
    }
    void open(int id)
    {
        setStartId(id);
        show();
        QVERIFY(QTest::qWaitForWindowExposed(this));
    }
    bool nextEnabled() const { return button(QWizard::NextButton)->isEnabled(); }
    void picture(const QString& name)
    {
        QVERIFY(grab().save(TestEnvironment::outputDir() + QStringLiteral("/restore_%1.png").arg(name)));
    }
    Wizard::PagePointType* pointType;
    Wizard::PageDestination* destination;
    Wizard::PageEncryption* encryption;
    Wizard::PageGlacier* glacier;
};

int closeId()
{
    return License::LicenseRestrictions::isNotificationsAvailable() ? 5 : 6;
}

} // namespace

class TestRestorePages : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<ServiceFixture> m_service;
    std::unique_ptr<RawClient> m_client;

private Q_SLOTS:
    void pointTypeCarriesThePlan_data()
    {
        QTest::addColumn<int>("cloud");
        QTest::addColumn<int>("restoreType");
        QTest::addColumn<int>("glacier");
        QTest::addColumn<int>("writtenType"); // of a plan that held 7
        QTest::addColumn<int>("writtenGlacier"); // of a plan that held Bulk
        QTest::newRow("latest, archived skipped, S3") << 2 << 0 << 0 << 0 << 0;
        QTest::newRow("point in time, archived wanted, S3 China") << 20 << 1 << 3 << 1 << 2;
        QTest::newRow("unknown type is left alone") << 2 << 5 << 0 << 7 << 0;
        QTest::newRow("archived wanted, then a local storage") << 1 << 0 << 1 << 0 << 2;
    }

    void pointTypeCarriesThePlan()
    {
        QFETCH(int, cloud);
        QFETCH(int, restoreType);
        QFETCH(int, glacier);
        PagesWizard wizard;
        wizard.setCloud(cloud);
        RestoreFile plan;
        plan.setRestoreType(Restore::RestoreType(restoreType));
        const QDateTime when(QDate(2026, 3, 1), QTime(8, 30));
        plan.setPointInTime(when);
        plan.setSyncBeforeRun(true);
        plan.storageInfo().setType(RetrievalType(glacier));
        QVERIFY(wizard.pointType->fromPlan(&plan));
        wizard.open(102);

        auto* latest = wizard.pointType->findChildren<QAbstractButton*>().value(0);
        auto* pointInTime = wizard.pointType->findChildren<QAbstractButton*>().value(1);
        auto* edit = wizard.pointType->findChild<QDateTimeEdit*>();
        QCOMPARE(latest->isChecked(), restoreType == 0);
        QCOMPARE(pointInTime->isChecked(), restoreType == 1);
        QCOMPARE(edit->isEnabled(), restoreType == 1);
        QVERIFY(wizard.nextEnabled());
        const bool s3 = cloud == 2 || cloud == 20;
        QCOMPARE(!wizard.pointType->findChildren<QCheckBox*>().value(2)->isHidden(), s3);
        QCOMPARE(!wizard.pointType->findChildren<QCheckBox*>().value(1)->isHidden(), s3);

        RestoreFile written;
        written.setRestoreType(Restore::RestoreType(7));
        written.storageInfo().setType(Restore::StorageInfo::RetrievalBulk);
        QVERIFY(wizard.pointType->initPlan(&written));
        QTEST(int(written.restoreType()), "writtenType");
        QTEST(int(written.storageInfo().type()), "writtenGlacier");
        QVERIFY(written.syncBeforeRun());
        if (restoreType == 1)
            QCOMPARE(written.pointInTime(), when);
        // Turning point in time off keeps the time it held.
        if (restoreType == 1) {
            latest->click();
            QVERIFY(!edit->isEnabled());
            QCOMPARE(wizard.field(QLatin1String(Wizard::PagePointType::FieldPointInTimeValue)).toDateTime(), when);
        }
    }

    void glacierPageKeepsTheTier_data()
    {
        QTest::addColumn<int>("stored");
        QTest::addColumn<int>("written");
        QTest::newRow("bulk") << int(Restore::StorageInfo::RetrievalBulk) << int(Restore::StorageInfo::RetrievalBulk);
        QTest::newRow("expedited") << int(Restore::StorageInfo::RetrievalExpedited)
                                   << int(Restore::StorageInfo::RetrievalExpedited);
        QTest::newRow("skipped until now")
            << int(Restore::StorageInfo::NoGlacier) << int(Restore::StorageInfo::RetrievalStandard);
    }

    void glacierPageKeepsTheTier()
    {
        QFETCH(int, stored);
        PagesWizard wizard;
        RestoreFile plan;
        plan.storageInfo().setType(RetrievalType(stored));
        QVERIFY(wizard.glacier->fromPlan(&plan));
        RestoreFile written;
        QVERIFY(wizard.glacier->initPlan(&written));
        QTEST(int(written.storageInfo().type()), "written");
        QCOMPARE(wizard.glacier->nextId(), closeId());
    }

    void destinationWritesThePlan_data()
    {
        QTest::addColumn<bool>("custom");
        QTest::addColumn<QString>("path");
        QTest::addColumn<bool>("overwrite");
        QTest::addColumn<bool>("onlyNew");
        QTest::addColumn<bool>("complete");
        QTest::addColumn<bool>("writtenSkip");
        QTest::addColumn<bool>("writtenOnlyNew");
        QTest::newRow("original, overwrite older") << false << "" << true << true << true << false << true;
        QTest::newRow("custom without a folder") << true << "" << true << false << false << false << false;
        QTest::newRow("custom, keep existing despite a stale tick")
            << true << "/srv/restore" << false << true << true << true << false;
    }

    void destinationWritesThePlan()
    {
        QFETCH(bool, custom);
        QFETCH(QString, path);
        QFETCH(bool, overwrite);
        QFETCH(bool, onlyNew);
        PagesWizard wizard;
        RestoreFile plan;
        plan.setRestoreToOriginalLocation(!custom);
        plan.setDestination(path);
        plan.setSkipExistingFiles(!overwrite);
        plan.setOnlyNewFiles(onlyNew);
        QVERIFY(wizard.destination->fromPlan(&plan));
        wizard.open(101);
        QTEST(wizard.nextEnabled(), "complete");
        QCOMPARE(wizard.destination->findChildren<QCheckBox*>().value(1)->isEnabled(), overwrite);

        RestoreFile written;
        written.setDestination(QStringLiteral("/left/over"));
        QVERIFY(wizard.destination->initPlan(&written));
        QCOMPARE(written.restoreToOriginalLocation(), !custom);
        QCOMPARE(written.destination(), custom ? path : QString());
        QTEST(written.skipExistingFiles(), "writtenSkip");
        QTEST(written.onlyNewFiles(), "writtenOnlyNew");
        QCOMPARE(
            wizard.destination->summary().contains(QLatin1String("Restore only new files")), written.onlyNewFiles());
    }

    void encryptionPageLeadsOn_data()
    {
        QTest::addColumn<bool>("once");
        QTest::addColumn<int>("cloud");
        QTest::addColumn<bool>("skipArchived");
        QTest::addColumn<int>("next");
        QTest::newRow("saved plan") << false << 2 << false << 4;
        QTest::newRow("once, S3, archived wanted") << true << 2 << false << 104;
        QTest::newRow("once, S3 China, archived wanted") << true << 20 << false << 104;
        QTest::newRow("once, S3, archived skipped") << true << 2 << true << closeId();
        QTest::newRow("once, local storage") << true << 1 << false << closeId();
    }

    void encryptionPageLeadsOn()
    {
        QFETCH(bool, once);
        QFETCH(int, cloud);
        QFETCH(bool, skipArchived);
        PagesWizard wizard;
        wizard.setCloud(cloud);
        wizard.setField(QStringLiteral("Field_RestoreOnce"), once);
        wizard.setField(QLatin1String(Wizard::PagePointType::FieldUseGlacier), skipArchived);
        QTEST(wizard.encryption->nextId(), "next");
    }

    void encryptionPageChecksThePasswordWithTheService_data()
    {
        QTest::addColumn<QString>("password");
        QTest::newRow("encrypted") << QStringLiteral("correct horse");
        QTest::newRow("plain") << QString();
    }

    void encryptionPageChecksThePasswordWithTheService()
    {
        QFETCH(QString, password);
        if (!m_service) {
            m_service = std::make_unique<ServiceFixture>();
            m_client = std::make_unique<RawClient>();
            QVERIFY2(m_service->startWithConsoles(*m_client), qPrintable(m_service->process().output()));
        }
        const QString root = m_service->environment().root();
        const QString tag = QString::fromLatin1(QTest::currentDataTag());
        const QUuid account
            = EngineTestSupport::addLocalAccount(*m_client, root + QStringLiteral("/storage-") + tag, tag);
        const QString source = root + QStringLiteral("/source-") + tag;
        EngineTestSupport::writeFile(source + QStringLiteral("/notes.txt"), "kept safe\n");
        auto backup
            = EngineTestSupport::backupPlan(account, tag, {QStringLiteral("/TWB_VOLUMES/root") + source}, password);
        QVERIFY(EngineTestSupport::save(*m_client, *backup));
        QCOMPARE(EngineTestSupport::run(*m_client, backup->id()).status, 6);

        PagesWizard wizard;
        wizard.setCloud(1, account);
        wizard.setField(QStringLiteral("Field_RestoreOnce"), true);
        auto plan = EngineTestSupport::restorePlan(
            account, {QStringLiteral("/%1/TWB_VOLUMES/root%2").arg(tag, source)}, root + QStringLiteral("/back"));
        QVERIFY(wizard.encryption->fromPlan(plan.get()));
        wizard.open(103);
        QVERIFY(!wizard.nextEnabled()); // until the service has answered
        QTRY_VERIFY_WITH_TIMEOUT(wizard.encryption->state() != Wizard::PageEncryption::State::Asking, 15000);
        if (password.isEmpty()) {
            QCOMPARE(wizard.encryption->state(), Wizard::PageEncryption::State::Plain);
            QVERIFY(wizard.encryption->findChild<QLineEdit*>(QStringLiteral("password"))->isHidden());
            wizard.picture(QStringLiteral("encryption_plain"));
            wizard.next();
            QCOMPARE(wizard.currentId(), closeId());
            RestoreFile written;
            written.setUseEncryption(true);
            QVERIFY(wizard.encryption->initPlan(&written));
            QVERIFY(!written.useEncryption());
            return;
        }
        QCOMPARE(wizard.encryption->state(), Wizard::PageEncryption::State::Encrypted);
        auto* edit = wizard.encryption->findChild<QLineEdit*>(QStringLiteral("password"));
        auto* refusal = wizard.encryption->findChild<QWidget*>(QStringLiteral("refusal"));
        edit->setText(QStringLiteral("battery staple"));
        wizard.next();
        QVERIFY(wizard.encryption->isChecking());
        QVERIFY(!wizard.nextEnabled());
        QTRY_VERIFY_WITH_TIMEOUT(!wizard.encryption->isChecking(), 15000);
        QVERIFY(!refusal->isHidden());
        QCOMPARE(wizard.currentId(), 103);
        wizard.picture(QStringLiteral("encryption_refused"));

        edit->setText(password);
        QVERIFY(refusal->isHidden());
        wizard.next();
        QTRY_COMPARE_WITH_TIMEOUT(wizard.currentId(), closeId(), 15000);
        RestoreFile written;
        QVERIFY(wizard.encryption->initPlan(&written));
        QVERIFY(written.useEncryption());
        QCOMPARE(written.encryptionPassword(), password);
    }
};

QTEST_MAIN(TestRestorePages)
#include "tst_restore_pages.moc"
