#include "engine_test_support.h"
#include "support/modal_driver.h"
#include "peers/storage_console.h"
#include "peers/round_trip.h"
#include "platform/cloud/account_keys.h"
#include "platform/cloud/operation_manager.h"
#include "platform/crypt/local_password.h"
#include "platform/plan/backup_file.h"
#include "platform/plan/restore_file.h"
#include "storages/account_factory.h"
#include "storages/accounts/amazon_s3_compatible.h"
#include "storages/accounts/azure.h"
#include "storages/accounts/sftp.h"
#include "storages/ssl_cert_make_trust_dialog.h"
#include "storages/storage_connections_model.h"
#include "storages/storages.h"
#include "storages/storages_edit_list.h"
#include "storages/storages_update_watcher.h"
#include "support/cloud_peers.h"
#include "support/log_capture.h"
#include "support/modal_answerer.h"
#include "support/test_environment.h"
#include "wizard/page_cloud.h"

#include <QComboBox>
#include <QFormLayout>
#include <QLabel>
#include <QLineEdit>
#include <QListView>
#include <QPushButton>
#include <QSpinBox>
#include <QSignalSpy>
#include <QToolButton>
#include <QWizard>
#include <QtTest>

#include <functional>
#include <memory>

using namespace TWB::GUI;
using namespace TWB::GUI::Settings;
using S3Form = Account::AmazonS3Compatible::Add;
using TWB::Test::AzuritePeer;
using TWB::Test::items;
using TWB::Test::ModalAnswerer;
using TWB::Test::ModalDriver;
using TWB::Test::MotoPeer;
using TWB::Test::pressList;
using TWB::Test::SftpPeer;
using TWB::Test::StorageConsole;
using TWB::Test::TestEnvironment;

namespace {
constexpr int listWait = 60000;
}

/// The cloud account forms against real peers on loopback (moto's S3 server, rclone's SFTP server) and the
/// real twbd, driven through their widgets.
class TestAccountCloud : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<TestEnvironment> m_env;
    std::unique_ptr<MotoPeer> m_moto;
    std::unique_ptr<StorageConsole> m_console;

    StorageConnectionsModel* model() const { return m_console->model(); }

    std::unique_ptr<S3Form> newForm()
    {
        auto form = dynamic_cast<S3Form*>(Account::AccountFactory::add(TWL::Cloud::S3Compatible, nullptr));
        return std::unique_ptr<S3Form>(form);
    }

    void backsUpAndRestores(
        TWB::Test::RawClient& client, const QString& name, const std::function<bool(TWB::Info::Plan::Base*)>& onAccount)
    {
        TWB::Test::backsUpAndRestores(client, m_env->root(), name, onAccount);
    }

    void fill(S3Form* form, const QString& name, const QString& secret)
    {
        QTest::keyClicks(form->displayNameEdit(), name);
        QTest::keyClicks(form->accessKeyEdit(), m_moto->accessKey());
        QTest::keyClicks(form->secretKeyEdit(), secret);
        QTest::keyClicks(form->endpointEdit(), QStringLiteral("http://") + m_moto->endpoint());
        // Return ends the endpoint's editing, which reads its scheme.
        QTest::keyClick(form->endpointEdit(), Qt::Key_Return);
    }

    static QModelIndex shownRow(Storages& page, const QString& name) { return shownRow(page.list(), name); }

    static QModelIndex shownRow(Storages::EditList* list, const QString& name)
    {
        QAbstractItemModel* shown = list->view()->model();
        return shown->match(shown->index(0, 0), Qt::DisplayRole, name, 1, Qt::MatchExactly).value(0);
    }

    int rowOf(const QString& name) const { return m_console->rowOf(name); }

private Q_SLOTS:
    void initTestCase()
    {
        m_env = std::make_unique<TestEnvironment>();
        m_moto = std::make_unique<MotoPeer>();
        QVERIFY2(m_moto->start(), qPrintable(m_moto->output()));
        QProcess seed;
        seed.start(QStringLiteral("python3"),
            {QStringLiteral(TWB_MOTO_SEED_SCRIPT), QStringLiteral("http://") + m_moto->endpoint(), m_moto->accessKey(),
                m_moto->secretKey()});
        QVERIFY(seed.waitForFinished(60000));
        QVERIFY2(seed.exitCode() == 0, seed.readAllStandardError().constData());
        // Google's S3 interface is moto here, for the service's runs as for the console.
        qputenv("TWB_GOOGLE_STORAGE_ENDPOINT", QByteArray("http://") + m_moto->endpoint().toUtf8());
        m_console = std::make_unique<StorageConsole>(*m_env);
        QVERIFY2(m_console->start(), qPrintable(m_console->service().output()));
    }

    void cleanupTestCase()
    {
        if (m_console)
            QVERIFY2(m_console->service().terminate(), qPrintable(m_console->service().output()));
    }

    void wrongSecretShowsTheErrorAndLeavesTheFormUnlocked()
    {
        TWB::Test::LogCapture log;
        auto form = newForm();
        QVERIFY(form);
        form->show();
        fill(form.get(), QStringLiteral("Moto"), QStringLiteral("not-the-secret"));
        QVERIFY(form->bucketBox()->isEnabled());
        QVERIFY(pressList(form.get()));
        QVERIFY(!form->isListLoaded());
        QCOMPARE(form->messageText(), QStringLiteral("The storage refused the secret key."));
        QVERIFY(!form->okButton()->isEnabled());
        QVERIFY(form->secretKeyEdit()->isEnabled());
        QVERIFY(form->displayNameEdit()->isEnabled());
        QVERIFY(form->cursor().shape() != Qt::WaitCursor);

        // Correcting the secret forgets the failure: the next press lists the buckets.
        form->secretKeyEdit()->selectAll();
        QTest::keyClicks(form->secretKeyEdit(), m_moto->secretKey());
        QVERIFY(form->messageText().isEmpty());
        QVERIFY(form->bucketBox()->isEnabled());
        QVERIFY(pressList(form.get()));
        QVERIFY2(form->isListLoaded(), qPrintable(form->messageText()));
        // Neither secret reached the log above debug level.
        const auto entries = log.entries();
        for (const auto& entry : entries) {
            if (entry.type == QtDebugMsg)
                continue;
            QVERIFY2(!entry.message.contains(m_moto->secretKey()), qPrintable(entry.message));
            QVERIFY2(!entry.message.contains(QStringLiteral("not-the-secret")), qPrintable(entry.message));
        }
    }

    void rightKeysListTheBucketsAndANewBucketIsCreated()
    {
        auto form = newForm();
        form->show();
        fill(form.get(), QStringLiteral("Moto"), m_moto->secretKey());
        QVERIFY(!form->okButton()->isEnabled());
        QVERIFY(pressList(form.get()));
        QVERIFY2(form->isListLoaded(), qPrintable(form->messageText()));
        QVERIFY(items(form->bucketBox()).contains(QStringLiteral("photos-2026")));
        QVERIFY(items(form->bucketBox()).contains(QStringLiteral("ledger")));
        QVERIFY(form->okButton()->isEnabled());
        QVERIFY(form->addBucketButton()->isEnabled());

        // The add button asks for a name, and the bucket listed as taken is refused there.
        ModalDriver<Storages::AddContainer> driver([](Storages::AddContainer* dialog) {
            QTest::keyClicks(dialog->nameEdit(), QStringLiteral("ledger"));
            const bool takenRefused = !dialog->okButton()->isEnabled();
            dialog->nameEdit()->clear();
            QTest::keyClicks(dialog->nameEdit(), QStringLiteral("new.archive"));
            if (takenRefused && dialog->okButton()->isEnabled())
                QTest::mouseClick(dialog->okButton(), Qt::LeftButton);
            else
                dialog->reject();
        });
        QTest::mouseClick(form->addBucketButton(), Qt::LeftButton);
        QVERIFY(driver.ran());
        QTRY_VERIFY_WITH_TIMEOUT(items(form->bucketBox()).contains(QStringLiteral("new.archive")), listWait);
        QTRY_COMPARE(form->bucketBox()->currentText(), QStringLiteral("new.archive"));
        QVERIFY(form->okButton()->isEnabled());
    }

    void bucketNamesFollowTheRules_data()
    {
        QTest::addColumn<QString>("typed");
        QTest::addColumn<QString>("kept");
        QTest::addColumn<bool>("ok");
        QTest::newRow("two characters") << "ab"
                                        << "ab" << false;
        QTest::newRow("three characters") << "abc"
                                          << "abc" << true;
        QTest::newRow("two dots in a row") << "a..b"
                                           << "a.b" << true;
        QTest::newRow("leading dash") << "-abc"
                                      << "abc" << true;
        QTest::newRow("slash") << "ab/c"
                               << "abc" << true;
        QTest::newRow("taken") << "photos-2026"
                               << "photos-2026" << false;
        QTest::newRow("other case counts as new") << "Photos-2026"
                                                  << "Photos-2026" << true;
    }

    void bucketNamesFollowTheRules()
    {
        QFETCH(QString, typed);
        QFETCH(QString, kept);
        QFETCH(bool, ok);
        Account::AmazonS3Compatible::AddContainer dialog(
            {QStringLiteral("photos-2026")}, false, TWL::Cloud::S3Compatible);
        QTest::keyClicks(dialog.nameEdit(), typed);
        QCOMPARE(dialog.nameEdit()->text(), kept);
        QCOMPARE(dialog.okButton()->isEnabled(), ok);
    }

    void prefixesOfTheBucketAreListed()
    {
        auto form = newForm();
        form->show();
        fill(form.get(), QStringLiteral("Moto"), m_moto->secretKey());
        QVERIFY(pressList(form.get()));
        form->bucketBox()->setCurrentText(QStringLiteral("ledger"));
        QCOMPARE(form->bucketBox()->currentText(), QStringLiteral("ledger"));

        // In the advanced settings, a press on the prefix list fetches what the bucket holds.
        QStringList offered;
        ModalDriver<Account::AdvancedStorage> driver([&offered](Account::AdvancedStorage* dialog) {
            QTest::mousePress(dialog->prefixBox(), Qt::LeftButton);
            (void)QTest::qWaitFor(
                [dialog] { return dialog->prefixBox()->findText(QStringLiteral("office")) >= 0; }, listWait);
            for (int i = 0; i < dialog->prefixBox()->count(); ++i)
                offered << dialog->prefixBox()->itemText(i);
            dialog->prefixBox()->setCurrentText(QStringLiteral("desk"));
            QTest::mouseClick(dialog->okButton(), Qt::LeftButton);
        });
        QTest::mouseClick(form->advancedButton(), Qt::LeftButton);
        QVERIFY(driver.ran());
        QVERIFY2(offered.contains(QStringLiteral("office")), qPrintable(offered.join(u',')));
        QVERIFY2(offered.contains(QStringLiteral("desk")), qPrintable(offered.join(u',')));
        QCOMPARE(form->accountPrefix(), QStringLiteral("desk"));
    }

    void okSavesAndTheWatcherClosesWhenTheRowArrives()
    {
        Storages page;
        page.show();
        const int before = model()->rowCount();
        QString saved;
        ModalDriver<S3Form> driver([this, &saved](S3Form* form) {
            fill(form, QStringLiteral("Holiday pictures"), m_moto->secretKey());
            if (!pressList(form))
                return form->reject();
            form->bucketBox()->setCurrentText(QStringLiteral("photos-2026"));
            saved = form->accountId().toString();
            QTest::mouseClick(form->okButton(), Qt::LeftButton);
        });
        page.onCreateSelected(TWL::Cloud::S3Compatible);
        QVERIFY(driver.ran());
        // onCreateSelected returned: the dialog was accepted and the watcher saw the row come.
        QCOMPARE(model()->rowCount(), before + 1);
        const int row = rowOf(QStringLiteral("Holiday pictures"));
        QVERIFY(row >= 0);
        QCOMPARE(model()->index(row, 1).data().toString(), saved);
        QCOMPARE(model()->index(row, 5).data().toInt(), int(TWL::Cloud::S3Compatible));

        const QJsonObject document = model()->index(row, 8).data().toJsonObject();
        QCOMPARE(document.value(QStringLiteral("ContainerName")).toString(), QStringLiteral("photos-2026"));
        QCOMPARE(document.value(QStringLiteral("AccessKey")).toString(), m_moto->accessKey());
        QCOMPARE(document.value(QStringLiteral("UseSsl")).toBool(), false);
        QCOMPARE(document.value(QStringLiteral("Endpoint")).toString(), m_moto->endpoint());
        // The secret is kept enciphered, and only the local key opens it.
        const QString sealed = document.value(QStringLiteral("SecretKey")).toString();
        QVERIFY(!sealed.isEmpty());
        QVERIFY(!sealed.contains(m_moto->secretKey()));
        QCOMPARE(SHARED::cryptNS::decrypt_local_password(sealed), m_moto->secretKey());

        // The page shows the new account's details once it is chosen.
        const QModelIndexList hits = page.list()->view()->model()->match(
            page.list()->view()->model()->index(0, 0), Qt::DisplayRole, QStringLiteral("Holiday pictures"));
        QVERIFY(!hits.isEmpty());
        page.list()->view()->setCurrentIndex(hits.first());
        auto view = qobject_cast<Storages::Info*>(page.currentView());
        QVERIFY(view);
        QCOMPARE(view->fieldText(QStringLiteral("ContainerName")), QStringLiteral("photos-2026"));
    }

    void editingWithoutTouchingTheBucketKeepsIt()
    {
        const int row = rowOf(QStringLiteral("Holiday pictures"));
        QVERIFY2(row >= 0, "needs the account saved by the test before");
        Storages page;
        page.show();
        QAbstractItemModel* shown = page.list()->view()->model();
        const QModelIndex index
            = shown->match(shown->index(0, 0), Qt::DisplayRole, QStringLiteral("Holiday pictures")).value(0);
        QVERIFY(index.isValid());
        QString title;
        ModalDriver<S3Form> driver([&title](S3Form* form) {
            title = form->windowTitle();
            // The form lists the buckets by itself and selects the account's.
            if (!QTest::qWaitFor([form] { return form->isListLoaded(); }, listWait))
                return form->reject();
            (void)QTest::qWaitFor([form] { return form->okButton()->isEnabled(); }, 5000);
            form->displayNameEdit()->selectAll();
            QTest::keyClicks(form->displayNameEdit(), QStringLiteral("Holiday pictures 2026"));
            QTest::mouseClick(form->okButton(), Qt::LeftButton);
        });
        page.onEditItem(index);
        QVERIFY(driver.ran());
        QCOMPARE(title, QStringLiteral("Edit Account"));
        QCOMPARE(rowOf(QStringLiteral("Holiday pictures")), -1);
        const int edited = rowOf(QStringLiteral("Holiday pictures 2026"));
        QCOMPARE(edited, row);
        const QJsonObject document = model()->index(edited, 8).data().toJsonObject();
        QCOMPARE(document.value(QStringLiteral("ContainerName")).toString(), QStringLiteral("photos-2026"));
        QCOMPARE(SHARED::cryptNS::decrypt_local_password(document.value(QStringLiteral("SecretKey")).toString()),
            m_moto->secretKey());
    }

    void planOnTheAccountChosenInTheWizardBacksUpAndRestores()
    {
        // An account on its own bucket, so that the plan does not hold back the removal tests above.
        TWB::Test::RawClient client;
        QVERIFY(client.connectTo(m_env->socketPath()));
        const QUuid account = QUuid::createUuid();
        QVERIFY(client
                    .call(QStringLiteral("SaveStorage"),
                        {{QStringLiteral("ID"), account.toString()},
                            {QStringLiteral("displayName"), QStringLiteral("Vault")},
                            {QStringLiteral("prefix"), QStringLiteral("laptop")},
                            {QStringLiteral("type"), int(TWL::Cloud::S3Compatible)},
                            {QStringLiteral("params"), m_moto->document(QStringLiteral("ledger"))}})
                    .success);
        QTRY_VERIFY(rowOf(QStringLiteral("Vault")) >= 0);

        // The wizard's first page: the user clicks the account.
        QWizard wizard;
        auto page = new TWB::GUI::PlanWizardBase::PageCloud;
        wizard.setPage(0, page);
        wizard.show();
        auto list = static_cast<Storages::EditList*>(page->list());
        const QModelIndex row = shownRow(list, QStringLiteral("Vault"));
        QVERIFY(row.isValid());
        QTest::mouseClick(list->view()->viewport(), Qt::LeftButton, {}, list->view()->visualRect(row).center());
        QCOMPARE(wizard.field(QStringLiteral("Field_CloudId")).toString(), account.toString());
        QCOMPARE(wizard.field(QStringLiteral("Field_CloudType")).toString(), QString::number(TWL::Cloud::S3Compatible));
        QVERIFY(page->isComplete());

        backsUpAndRestores(
            client, QStringLiteral("papers"), [page](TWB::Info::Plan::Base* plan) { return page->initPlan(plan); });
    }

    void googleKeysAccountBacksUpAndRestores()
    {
        // The document as the Google form saves keys: no endpoint, plain HTTP chosen in the form.
        TWB::Test::RawClient client;
        QVERIFY(client.connectTo(m_env->socketPath()));
        const QUuid account = QUuid::createUuid();
        QVERIFY(client
                    .call(QStringLiteral("SaveStorage"),
                        {{QStringLiteral("ID"), account.toString()},
                            {QStringLiteral("displayName"), QStringLiteral("Google keys")},
                            {QStringLiteral("prefix"), QStringLiteral("studio")},
                            {QStringLiteral("type"), int(TWL::Cloud::GoogleStorage)},
                            {QStringLiteral("params"),
                                QJsonObject {{QStringLiteral("AuthType"), int(TWL::Cloud::GoogleAccessKey)},
                                    {QStringLiteral("AccessKey"), m_moto->accessKey()},
                                    {QStringLiteral("SecretKey"),
                                        SHARED::cryptNS::encrypt_local_password(m_moto->secretKey())},
                                    {QStringLiteral("ContainerName"), QStringLiteral("photos-2026")},
                                    {QStringLiteral("UseSsl"), false}}}})
                    .success);
        backsUpAndRestores(client, QStringLiteral("sketches"), [account](TWB::Info::Plan::Base* plan) {
            plan->setStorage(account);
            return true;
        });
    }

    void azureAccountIsCheckedAndGetsANewContainer()
    {
        if (const QString why = AzuritePeer::missing(); !why.isEmpty())
            QSKIP(qPrintable(why));
        AzuritePeer azurite;
        QVERIFY2(azurite.start(), qPrintable(azurite.output()));
        Storages page;
        page.show();
        QString label;
        ModalDriver<Account::Azure::Add> driver([&](Account::Azure::Add* form) {
            QTest::keyClicks(form->displayNameEdit(), QStringLiteral("Azure archive"));
            QTest::keyClicks(form->accessKeyEdit(), AzuritePeer::account());
            QTest::keyClicks(form->secretKeyEdit(), AzuritePeer::key());
            form->endpointEdit()->selectAll();
            QTest::keyClicks(form->endpointEdit(),
                QStringLiteral("http://127.0.0.1:%1/%2").arg(azurite.port()).arg(AzuritePeer::account()));
            QTest::keyClick(form->endpointEdit(), Qt::Key_Return);
            if (!pressList(form) || !form->isListLoaded())
                return form->reject();
            ModalDriver<Storages::AddContainer> name([](Storages::AddContainer* dialog) {
                QTest::keyClicks(dialog->nameEdit(), QStringLiteral("backups"));
                QTest::mouseClick(dialog->okButton(), Qt::LeftButton);
            });
            QTest::mouseClick(form->addBucketButton(), Qt::LeftButton);
            if (!QTest::qWaitFor(
                    [form] { return form->bucketBox()->currentText() == QLatin1String("backups"); }, listWait))
                return form->reject();
            QVERIFY(form->grab().save(TestEnvironment::outputDir() + QStringLiteral("/account_azure_checked.png")));
            label
                = qobject_cast<QLabel*>(form->findChild<QFormLayout*>()->labelForField(form->accessKeyEdit()))->text();
            QTest::mouseClick(form->okButton(), Qt::LeftButton);
        });
        page.onCreateSelected(TWL::Cloud::AzureBlob);
        QVERIFY(driver.ran());
        QCOMPARE(label, QStringLiteral("Storage account:"));
        const int row = rowOf(QStringLiteral("Azure archive"));
        QVERIFY(row >= 0);
        QCOMPARE(model()->index(row, 5).data().toInt(), int(TWL::Cloud::AzureBlob));
        const QJsonObject document = model()->index(row, 8).data().toJsonObject();
        QCOMPARE(document.value(QStringLiteral("UserName")).toString(), AzuritePeer::account());
        QCOMPARE(document.value(QStringLiteral("ContainerName")).toString(), QStringLiteral("backups"));
        QCOMPARE(document.value(QStringLiteral("UseSsl")).toBool(), false);
        QCOMPARE(document.value(QStringLiteral("Endpoint")).toString(),
            QStringLiteral("127.0.0.1:%1/%2").arg(azurite.port()).arg(AzuritePeer::account()));
        QCOMPARE(SHARED::cryptNS::decrypt_local_password(document.value(QStringLiteral("Password")).toString()),
            AzuritePeer::key());

        // Backups reach the emulator through rclone's emulator mode.
        TWB::Test::RawClient client;
        QVERIFY(client.connectTo(m_env->socketPath()));
        const QUuid account(model()->index(row, 1).data().toString());
        backsUpAndRestores(client, QStringLiteral("ledger"), [account](TWB::Info::Plan::Base* plan) {
            plan->setStorage(account);
            return true;
        });
    }

    void untrustedCertificateIsRefusedThenTrusted()
    {
        QTemporaryDir folder;
        QString certificate;
        QString key;
        QVERIFY(TWB::Test::CloudPeer::makeCertificate(folder.path(), &certificate, &key));
        MotoPeer tls;
        QVERIFY2(tls.start(certificate, key), qPrintable(tls.output()));
        auto form = newForm();
        form->show();
        QTest::keyClicks(form->displayNameEdit(), QStringLiteral("Office S3"));
        QTest::keyClicks(form->accessKeyEdit(), tls.accessKey());
        QTest::keyClicks(form->secretKeyEdit(), tls.secretKey());
        QTest::keyClicks(form->endpointEdit(), QStringLiteral("https://") + tls.endpoint());
        QTest::keyClick(form->endpointEdit(), Qt::Key_Return);

        // The first time the user does not trust it: the form stays usable, and Ok stays off.
        QString shown;
        ModalDriver<SslCertMakeTrustDialog> refuse([&shown](SslCertMakeTrustDialog* dialog) {
            shown = dialog->windowTitle();
            QVERIFY(dialog->grab().save(TestEnvironment::outputDir() + QStringLiteral("/account_trust.png")));
            dialog->reject();
        });
        QTest::mousePress(form->bucketBox(), Qt::LeftButton);
        QVERIFY(QTest::qWaitFor([&refuse] { return refuse.ran(); }, listWait));
        QTRY_VERIFY(form->cursor().shape() != Qt::WaitCursor);
        QCOMPARE(shown, QStringLiteral("Untrusted certificate"));
        QVERIFY(!form->isListLoaded());
        QVERIFY(!form->okButton()->isEnabled());
        QVERIFY(form->bucketBox()->isEnabled());
        QVERIFY(form->displayNameEdit()->isEnabled());

        // The second time it is trusted, and the list that follows works.
        ModalDriver<SslCertMakeTrustDialog> trust([](SslCertMakeTrustDialog* dialog) { dialog->accept(); });
        QVERIFY(pressList(form.get()) || trust.ran());
        QVERIFY(trust.ran());
        QTRY_VERIFY_WITH_TIMEOUT(form->isListLoaded(), listWait);
        QVERIFY(items(form->bucketBox()).isEmpty() || form->okButton()->isEnabled());
        QVERIFY2(form->messageText().isEmpty(), qPrintable(form->messageText()));
    }

    void sftpAccountIsCheckedBeforeItIsSaved()
    {
        SftpPeer sftp;
        QVERIFY2(sftp.start(), qPrintable(sftp.output()));
        QDir().mkpath(sftp.root() + QStringLiteral("/backups/laptop"));
        Storages page;
        page.show();
        QString refusal;
        QString signedIn;
        ModalDriver<Account::Sftp::Add> driver([&](Account::Sftp::Add* form) {
            QTest::keyClicks(form->displayNameEdit(), QStringLiteral("Home server"));
            QTest::keyClicks(form->hostEdit(), QStringLiteral("127.0.0.1"));
            form->portBox()->setValue(sftp.port());
            QTest::keyClicks(form->userEdit(), SftpPeer::user());
            QTest::keyClicks(form->passwordEdit(), QStringLiteral("wrong password"));
            QTest::keyClicks(form->folderEdit(), QStringLiteral("backups"));
            QTest::mouseClick(form->connectButton(), Qt::LeftButton);
            if (!QTest::qWaitFor([form] { return !form->messageText().isEmpty(); }, listWait))
                return form->reject();
            refusal = form->messageText();
            if (form->okButton()->isEnabled() || !form->passwordEdit()->isEnabled())
                return form->reject();
            form->passwordEdit()->clear();
            QTest::keyClicks(form->passwordEdit(), SftpPeer::password());
            QTest::mouseClick(form->connectButton(), Qt::LeftButton);
            if (!QTest::qWaitFor([form] { return form->isChecked(); }, listWait))
                return form->reject();
            signedIn = form->messageText();
            QVERIFY(form->grab().save(TestEnvironment::outputDir() + QStringLiteral("/account_sftp_checked.png")));
            QTest::mouseClick(form->okButton(), Qt::LeftButton);
        });
        page.onCreateSelected(TWL::Cloud::Sftp);
        QVERIFY(driver.ran());
        QCOMPARE(refusal, QStringLiteral("The server refused the user name, the password or the private key."));
        QVERIFY2(signedIn.startsWith(QStringLiteral("Signed in.")), qPrintable(signedIn));
        const int row = rowOf(QStringLiteral("Home server"));
        QVERIFY(row >= 0);
        QCOMPARE(model()->index(row, 5).data().toInt(), int(TWL::Cloud::Sftp));
        const QJsonObject document = model()->index(row, 8).data().toJsonObject();
        QCOMPARE(document.value(QStringLiteral("Address")).toString(), QStringLiteral("127.0.0.1"));
        QCOMPARE(document.value(QStringLiteral("Port")).toInt(), int(sftp.port()));
        QCOMPARE(document.value(QStringLiteral("Path")).toString(), QStringLiteral("backups"));
        QCOMPARE(SHARED::cryptNS::decrypt_local_password(document.value(QStringLiteral("Password")).toString()),
            SftpPeer::password());

        // Opening it again signs in by itself, so that a new name can be saved at once.
        const QModelIndex index = shownRow(page, QStringLiteral("Home server"));
        ModalDriver<Account::Sftp::Add> editor([](Account::Sftp::Add* form) {
            if (!QTest::qWaitFor([form] { return form->isChecked(); }, listWait))
                return form->reject();
            form->displayNameEdit()->selectAll();
            QTest::keyClicks(form->displayNameEdit(), QStringLiteral("Home NAS"));
            // A changed field asks for a new check before Ok.
            if (form->okButton()->isEnabled())
                return form->reject();
            QTest::mouseClick(form->connectButton(), Qt::LeftButton);
            if (!QTest::qWaitFor([form] { return form->okButton()->isEnabled(); }, listWait))
                return form->reject();
            QTest::mouseClick(form->okButton(), Qt::LeftButton);
        });
        page.onEditItem(index);
        QVERIFY(editor.ran());
        QCOMPARE(rowOf(QStringLiteral("Home NAS")), row);
    }
};

QTEST_MAIN(TestAccountCloud)
#include "tst_account_cloud.moc"
