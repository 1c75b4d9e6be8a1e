#include "backup_wizard/page_compression_end_encryption.h"
#include "frame/model_manager.h"
#include "frame/model_names.h"
#include "frame/shared_model_creator.h"
#include "platform/plan/backup_file.h"
#include "storages/storage_connections_model.h"
#include "storages/storage_test_rows.h"
#include "support/log_capture.h"
#include "support/modal_answerer.h"
#include "support/test_environment.h"

#include <QAbstractButton>
#include <QComboBox>
#include <QFile>
#include <QLabel>
#include <QLineEdit>
#include <QtTest>

#include <memory>

using namespace TWB::GUI;
using namespace TWB::Info::Plan;
using TWB::Test::ModalAnswerer;
using TWB::Test::TestEnvironment;
using Page = BackupPlanEditWizard::PageCompressionEndEncryption;
using Info = Backup::StorageInfo;

namespace {

/// The page alone, with the storage fields of the storage page and a page where it leads.
struct EncryptionWizard : PlanWizardBase
{
    explicit EncryptionWizard(int cloudType = 2, const QUuid& account = QUuid())
        : PlanWizardBase(1)
        , page(new Page)
    {
        for (const char* name : {"Field_CloudId", "Field_CloudType"})
            page->registerField(QLatin1String(name), new QLineEdit);
        setPage(3, page);
        setPage(103, new QWizardPage);
        setStorage(cloudType, account);
    }
    void setStorage(int cloudType, const QUuid& account = QUuid())
    {
        setField(QStringLiteral("Field_CloudType"), QString::number(cloudType));
        setField(QStringLiteral("Field_CloudId"), account.toString());
    }
    void setPassword(const QString& password)
    {
        setField(QLatin1String(Page::FieldUseEncryption), true);
        setField(QLatin1String(Page::FieldEncryptionPassword), password);
        setField(QLatin1String(Page::FieldEncryptionConfirmPassword), password);
    }
    QComboBox* classes() const { return page->findChild<QComboBox*>(QStringLiteral("storageClass")); }
    bool shown(const char* name) const { return !page->findChild<QWidget*>(QLatin1String(name))->isHidden(); }
    Page* page;
};

void encrypt(BackupFile& plan, const QString& password, Backup::Encyption::Type type)
{
    plan.encryption().setEnabled(true);
    plan.encryption().setEncryptionType(type);
    plan.encryption().setPassword(password);
}

} // namespace

class TestPageCompressionEndEncryption : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<TestEnvironment> m_env;
    TWB::Test::FakeService m_service;
    std::unique_ptr<SharedModelCreator<StorageConnectionsModel>> m_storages;
    QUuid m_azure;
    QUuid m_azureStack;

private Q_SLOTS:
    void initTestCase()
    {
        m_env = std::make_unique<TestEnvironment>();
        QVERIFY(m_service.serveConsole(m_env->socketPath()));
        // The storage list, as the service sends it, holds an Azure account and an Azure Stack account.
        static TWB::Test::StorageRows rows(m_service);
        m_azure = rows.add(QStringLiteral("Blobs"), 3);
        m_azureStack = rows.add(QStringLiteral("On premises"), 3);
        QJsonObject detail = rows.rows.last().value(QStringLiteral("DetailParams")).toObject();
        detail.insert(QStringLiteral("AdditionalSettings"),
            QJsonObject {{QStringLiteral("AzureAccountType"), QStringLiteral("AzureStack")}});
        rows.rows.last().insert(QStringLiteral("DetailParams"), detail);
        m_storages = std::make_unique<SharedModelCreator<StorageConnectionsModel>>(ModelNames::StorageConnection);
        ModelManager::instance()->registrateCreator(*m_storages);
        BaseModel* model = ModelManager::instance()->create(ModelNames::StorageConnection);
        QVERIFY(model->init());
        QTRY_COMPARE(model->rowCount(), 2);
    }

    void cleanup()
    {
        QFile::remove(m_env->configFile());
        QFile::remove(m_env->rebrandingFile());
    }

    void passwordQuestions_data()
    {
        QTest::addColumn<QString>("stored");
        QTest::addColumn<QString>("typed");
        QTest::addColumn<int>("answer");
        QTest::addColumn<QString>("title");
        QTest::addColumn<bool>("leaves");
        QTest::addColumn<bool>("rebackup");
        const QString note = QStringLiteral("Write down your password!");
        const QString changed = QStringLiteral("Encryption option has changed!");
        QTest::newRow("new plan, ok") << QString() << "secret" << int(QMessageBox::Ok) << note << true << false;
        QTest::newRow("new plan, cancel stays")
            << QString() << "s" << int(QMessageBox::Cancel) << note << false << false;
        QTest::newRow("edited, same password") << "old"
                                               << "old" << int(QMessageBox::Ok) << QString() << true << false;
        QTest::newRow("edited, rebackup") << "old"
                                          << "new" << int(QMessageBox::Ok) << changed << true << true;
        QTest::newRow("edited, no rebackup") << "old"
                                             << "new" << int(QMessageBox::No) << changed << true << false;
        QTest::newRow("edited, cancel stays") << "old"
                                              << "new" << int(QMessageBox::Cancel) << changed << false << false;
    }

    void passwordQuestions()
    {
        QFETCH(QString, stored);
        QFETCH(QString, typed);
        QFETCH(int, answer);
        QFETCH(QString, title);
        QFETCH(bool, leaves);
        QFETCH(bool, rebackup);
        EncryptionWizard wizard;
        BackupFile plan;
        if (!stored.isEmpty())
            encrypt(plan, stored, Backup::Encyption::AES256);
        QVERIFY(wizard.page->fromPlan(&plan));
        wizard.page->initializePage();
        wizard.setPassword(typed);
        {
            ModalAnswerer answerer {QMessageBox::StandardButton(answer), title.isEmpty() ? 300 : 5000};
            QCOMPARE(wizard.page->validatePage(), leaves);
            QCOMPARE(answerer.title(), title);
            QVERIFY(title.isEmpty() || answerer.flags().testFlag(Qt::Sheet));
        }
        BackupFile written;
        QVERIFY(wizard.page->initPlan(&written));
        QCOMPARE(written.reBackupModifiedSince().isValid(), rebackup);
        QCOMPARE(written.encryption().password(), typed);
        if (!leaves || title.isEmpty())
            return;
        // Back and forth again: the answer stands for this password.
        wizard.page->initializePage();
        ModalAnswerer none {QMessageBox::Cancel, 300};
        QVERIFY(wizard.page->validatePage());
        QVERIFY(!none.answered());
    }

    void backEndOptions_data()
    {
        QTest::addColumn<int>("type");
        QTest::addColumn<bool>("stack");
        QTest::addColumn<QByteArray>("rebranding");
        QTest::addColumn<bool>("sse");
        QTest::addColumn<bool>("acceleration");
        QTest::addColumn<QString>("classLabel");
        QTest::addColumn<int>("classes");
        const QString amazon = QStringLiteral("Storage class:");
        QTest::newRow("Amazon S3") << 2 << false << QByteArray() << true << true << amazon << 7;
        QTest::newRow("Amazon S3 China") << 20 << false << QByteArray() << true << true << amazon << 7;
        QTest::newRow("Amazon S3 UB, never accelerated") << 37 << false << QByteArray() << true << false << amazon << 7;
        QTest::newRow("Amazon S3, classes and SSE not in the product")
            << 2 << false << QByteArray("showSIA=false\nshowSSE=false\n") << false << true << QString() << 0;
        QTest::newRow("Azure") << 3 << false << QByteArray() << false << false << "Access tier:" << 3;
        QTest::newRow("Azure Stack") << 3 << true << QByteArray() << false << false << QString() << 0;
        QTest::newRow("Wasabi") << 29 << false << QByteArray() << false << false << QString() << 0;
        QTest::newRow("file system") << 1 << false << QByteArray() << false << false << QString() << 0;
    }

    void backEndOptions()
    {
        QFETCH(int, type);
        QFETCH(bool, stack);
        QFETCH(QByteArray, rebranding);
        QFETCH(bool, sse);
        QFETCH(bool, acceleration);
        QFETCH(QString, classLabel);
        QFETCH(int, classes);
        if (!rebranding.isEmpty())
            TestEnvironment::writeFile(m_env->rebrandingFile(), rebranding);
        // Entered first with another back-end: nothing of it may stay.
        EncryptionWizard wizard(type == 3 ? 2 : 3, m_azure);
        wizard.page->initializePage();
        wizard.setStorage(type, stack ? m_azureStack : m_azure);
        wizard.page->initializePage();
        QCOMPARE(wizard.shown("sse"), sse);
        QCOMPARE(wizard.shown("acceleration"), acceleration);
        QCOMPARE(wizard.shown("storageClass"), classes > 0);
        QCOMPARE(wizard.classes()->count(), classes);
        if (classes > 0)
            QCOMPARE(wizard.page->findChild<QLabel*>(QStringLiteral("storageClassLabel"))->text(), classLabel);
        if (classes == 7) {
            QCOMPARE(wizard.classes()->itemText(3), QStringLiteral("One Zone-IA"));
            QVERIFY(wizard.classes()->itemData(3, Qt::ToolTipRole).toString().contains(QStringLiteral("20% less")));
        }
    }

    void desIsLoadedWithAWarningAndSavedAsAes128()
    {
        EncryptionWizard wizard;
        BackupFile plan;
        encrypt(plan, QStringLiteral("pw"), Backup::Encyption::DES64);
        TWB::Test::LogCapture log;
        QVERIFY(wizard.page->fromPlan(&plan));
        QVERIFY(log.contains(QtWarningMsg, QStringLiteral("TWB"), QStringLiteral("Encryption type don't support!")));
        BackupFile written;
        QVERIFY(wizard.page->initPlan(&written));
        QCOMPARE(written.encryption().encryptionType(), Backup::Encyption::AES128);
        QCOMPARE(wizard.page->summary(),
            QStringLiteral("<tr><td>Backup options:</td><td></td></tr><tr><td></td><td>Compression: enabled</td></tr>"
                           "<tr><td></td><td>Encryption: AES 128</td></tr>"));
    }

    void planSurvivesFromPlanAndInitPlan()
    {
        BackupFile stored;
        encrypt(stored, QStringLiteral("pw"), Backup::Encyption::AES192);
        stored.setUseCompression(false);
        stored.storageInfo().setUseSSE(true);
        stored.storageInfo().setUseS3Accelerated(true);
        stored.storageInfo().setStorageClassAmazonS3(Info::GlacierDeepArchive);
        stored.storageInfo().setStorageClassAzureBlob(Info::AzureArchive);
        EncryptionWizard wizard(2);
        QVERIFY(wizard.page->fromPlan(&stored));
        wizard.page->initializePage();
        QCOMPARE(wizard.page->summary(),
            QStringLiteral("<tr><td>Backup options:</td><td></td></tr><tr><td></td><td>Compression: disabled</td></tr>"
                           "<tr><td></td><td>Encryption: AES 192</td></tr>"
                           "<tr><td></td><td>Use Server Side Encryption</td></tr>"
                           "<tr><td></td><td>Use S3 Transfer Acceleration</td></tr>"
                           "<tr><td></td><td>Use Glacier Deep Archive</td></tr>"));
        BackupFile written;
        QVERIFY(wizard.page->initPlan(&written));
        QCOMPARE(written.useCompression(), false);
        QCOMPARE(written.encryption(), stored.encryption());
        // An Amazon storage leaves the access tier at its default.
        stored.storageInfo().setStorageClassAzureBlob(Info::AzureDefault);
        QCOMPARE(written.storageInfo(), stored.storageInfo());

        // Trips to an Azure storage and back keep both choices; a tier asks for the preview.
        wizard.setStorage(3, m_azure);
        wizard.page->initializePage();
        QCOMPARE(wizard.classes()->currentText(), QStringLiteral("Archive"));
        QVERIFY(wizard.shown("previewFrame"));
        wizard.classes()->setCurrentIndex(1);
        wizard.setStorage(2);
        wizard.page->initializePage();
        QVERIFY(!wizard.shown("previewFrame"));
        QCOMPARE(wizard.classes()->currentText(), QStringLiteral("Glacier Deep Archive"));
        wizard.setStorage(3, m_azure);
        wizard.page->initializePage();
        QVERIFY(wizard.page->summary().endsWith(QStringLiteral("<tr><td></td><td>Use Azure Cool</td></tr>")));
        BackupFile onAzure;
        QVERIFY(wizard.page->initPlan(&onAzure));
        QCOMPARE(onAzure.storageInfo().storageClassAzureBlob(), Info::AzureCool);
        QCOMPARE(onAzure.storageInfo().storageClassAmazonS3(), Info::Standard);
    }

    void pagePictures_data()
    {
        QTest::addColumn<int>("type");
        QTest::addColumn<bool>("free");
        QTest::newRow("s3") << 2 << false;
        QTest::newRow("azure") << 3 << false;
        QTest::newRow("free") << 2 << true;
    }

    void pagePictures()
    {
        QFETCH(int, type);
        QFETCH(bool, free);
        if (free)
            TestEnvironment::writeFile(m_env->configFile(), "license=free\n");
        EncryptionWizard wizard(type, m_azure);
        wizard.setStartId(3);
        BackupFile plan;
        encrypt(plan, QStringLiteral("pw"), Backup::Encyption::AES256);
        plan.storageInfo().setStorageClassAzureBlob(Info::AzureCool);
        QVERIFY(wizard.page->fromPlan(&plan));
        wizard.show();
        QVERIFY(QTest::qWaitForWindowExposed(&wizard));
        if (!free)
            wizard.setField(QLatin1String(Page::FieldEncryptionConfirmPassword), QStringLiteral("typo"));
        QVERIFY(wizard.grab().save(
            TestEnvironment::outputDir() + QStringLiteral("/page_compression_%1.png").arg(QTest::currentDataTag())));
        QCOMPARE(wizard.button(QWizard::NextButton)->isEnabled(), free);
        // The free edition has no password to mismatch, so no such notice at all.
        const auto* attention = wizard.page->findChild<QWidget*>(QStringLiteral("passwordAttention"));
        QCOMPARE(attention && !attention->isHidden(), !free);
    }
};

QTEST_MAIN(TestPageCompressionEndEncryption)
#include "tst_page_compression_end_encryption.moc"
