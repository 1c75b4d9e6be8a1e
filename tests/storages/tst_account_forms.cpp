// The account dialogs that need no cloud peer, driven against the real twbd: the chooser, the local
// folder form through the storage page, the wizards' storage and notification pages, and a picture of
// every dialog and page.

#include "frame/application.h"
#include "support/modal_driver.h"
#include "peers/storage_console.h"
#include "platform/cloud/cloud_type.h"
#include "platform/plan/backup_file.h"
#include "platform/settings/default_settings.h"
#include "storages/account_advanced.h"
#include "storages/account_factory.h"
#include "storages/account_select.h"
#include "storages/accounts/amazon_s3_compatible.h"
#include "storages/accounts/local.h"
#include "storages/accounts/sftp.h"
#include "storages/storage_connections_model.h"
#include "storages/storages.h"
#include "storages/storages_add.h"
#include "storages/storages_edit_list.h"
#include "storages/storages_info.h"
#include "storages/storages_update_watcher.h"
#include "support/modal_answerer.h"
#include "support/test_caller.h"
#include "support/test_environment.h"
#include "wizard/page_cloud.h"
#include "wizard/page_notification.h"
#include "wizard/plan_wizard_base.h"

#include <QAbstractItemModelTester>
#include <QCheckBox>
#include <QComboBox>
#include <QFile>
#include <QLineEdit>
#include <QListView>
#include <QPushButton>
#include <QSignalSpy>
#include <QTcpServer>
#include <QTcpSocket>
#include <QToolButton>
#include <QWizard>
#include <QtTest>

#include <memory>

using namespace TWB::GUI;
using namespace TWB::GUI::Settings;
using TWB::Test::ModalAnswerer;
using TWB::Test::ModalDriver;
using TWB::Test::StorageConsole;
using TWB::Test::TestEnvironment;

namespace {

/// The confirmation service of notification addresses, on loopback: answers every request with one
/// status and body, and keeps what it was sent.
class EmailService final : public QTcpServer
{
public:
    int status = 200;
    QByteArray body = R"({"confirmed":true})";
    QByteArray received;

    EmailService()
    {
        listen(QHostAddress::LocalHost, 0);
        connect(this, &QTcpServer::newConnection, this, [this] {
            QTcpSocket* socket = nextPendingConnection();
            connect(socket, &QTcpSocket::readyRead, socket, [this, socket] {
                received += socket->readAll();
                if (!received.contains("\r\n\r\n") || !received.trimmed().endsWith('}'))
                    return;
                socket->write("HTTP/1.1 " + QByteArray::number(status) + " X\r\nContent-Type: application/json\r\n"
                    + "Content-Length: " + QByteArray::number(body.size()) + "\r\nConnection: close\r\n\r\n" + body);
                socket->disconnectFromHost();
            });
            connect(socket, &QTcpSocket::disconnected, socket, &QObject::deleteLater);
        });
    }
};

/// A wizard of the two pages under test, at the ids the plan wizards give them.
class PagesWizard final : public PlanWizardBase
{
public:
    PagesWizard()
        : PlanWizardBase(1)
        , cloud(new PlanWizardBase::PageCloud)
        , notification(new PlanWizardBase::PageNotificationStandalone)
    {
        setProperty("PlanType", 1);
        setProperty("Property_BackupPlanType", 0);
        setPage(0, cloud);
        setPage(5, notification);
        setStartId(0);
        resizeWizardPages();
    }
    PlanWizardBase::PageCloud* cloud;
    PlanWizardBase::PageNotificationStandalone* notification;
};

QStringList texts(const QList<Account::Select::Item*>& items)
{
    QStringList all;
    for (const auto* item : items)
        all << item->text();
    return all;
}

} // namespace

class TestAccountForms : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<TestEnvironment> m_env;
    std::unique_ptr<StorageConsole> m_console;

    StorageConnectionsModel* model() const { return m_console->model(); }

    int rowOf(const QString& name) const { return m_console->rowOf(name); }

    static QModelIndex shownRow(Storages& page, const QString& name)
    {
        QAbstractItemModel* shown = page.list()->view()->model();
        return shown->match(shown->index(0, 0), Qt::DisplayRole, name, 1, Qt::MatchExactly).value(0);
    }

    static void save(QWidget* widget, const QString& name)
    {
        QVERIFY(widget->grab().save(
            TestEnvironment::outputDir() + QStringLiteral("/account_") + name + QStringLiteral(".png")));
    }

    void setManaged(bool managed)
    {
        TestEnvironment::writeFile(m_env->configFile(), managed ? "edition=managed\n" : "edition=standalone\n");
        TWB::GUI::Application::rereadConfiguration();
    }

private Q_SLOTS:
    void initTestCase()
    {
        m_env = std::make_unique<TestEnvironment>();
        qputenv("TWB_CONSOLE_SETTINGS_DIR", m_env->root().toUtf8());
        m_console = std::make_unique<StorageConsole>(*m_env);
        QVERIFY2(m_console->start(), qPrintable(m_console->service().output()));
    }

    void cleanupTestCase()
    {
        if (m_console)
            QVERIFY2(m_console->service().terminate(), qPrintable(m_console->service().output()));
    }

    void chooserOffersEveryBackEndOfTheEdition()
    {
        Account::SelectStandalon chooser;
        const QStringList order = texts(chooser.items());
        QCOMPARE(order.size(), 22);
        QCOMPARE(order.first(), QStringLiteral("Amazon S3 & Glacier"));
        QCOMPARE(order.last(), QStringLiteral("SFTP"));
        // Those with a form here; the others are shown but cannot be picked.
        const QSet<int> built = {1, 2, 3, 4, 5, 6, 7, 8, 9, 11, 12, 13, 14, 15, 19, 20, 21, 28, 29, 30, 31, 33};

        Account::SelectStandalon::Menu menu;
        QCOMPARE(menu.actions().size(), order.size());
        QSignalSpy picked(&chooser, &Account::Select::accountSelected);
        for (int i = 0; i < order.size(); ++i) {
            QAction* action = menu.actions().at(i);
            QCOMPARE(action->text().replace(QStringLiteral("&&"), QStringLiteral("&")), order.at(i));
            const int type = action->data().toInt();
            QCOMPARE(chooser.items().at(i)->type(), type);
            QCOMPARE(action->isEnabled(), built.contains(type));
            QCOMPARE(Account::AccountFactory::canAdd(TWL::Cloud::Type(type)), built.contains(type));
            QTest::mouseClick(chooser.items().at(i), Qt::LeftButton);
        }
        // Only the back-ends with a form answer a click, each with its own type.
        QCOMPARE(picked.count(), built.size());
        QCOMPARE(picked.first().first().toInt(), int(TWL::Cloud::AmazonS3));
        QCOMPARE(picked.at(1).first().toInt(), int(TWL::Cloud::AzureBlob));

        // The managed edition offers only a folder, and the service's own storage for everything else.
        setManaged(true);
        Account::SelectFbs managed;
        QCOMPARE(texts(managed.items()), QStringList {QStringLiteral("File System")});
        QCOMPARE(Account::SelectFbs::storageName(TWL::Cloud::FileSystem), QStringLiteral("File System"));
        QVERIFY(!Account::AccountFactory::canAdd(TWL::Cloud::S3Compatible));
        QVERIFY(Account::AccountFactory::add(TWL::Cloud::S3Compatible, nullptr) == nullptr);
        setManaged(false);
        QVERIFY(Account::AccountFactory::canAdd(TWL::Cloud::S3Compatible));
    }

    void localFolderIsCheckedAddedEditedAndRemoved()
    {
        // The rows come and go by the real service's notifications, under the tester's eye.
        QAbstractItemModelTester tester(model(), QAbstractItemModelTester::FailureReportingMode::QtTest);
        Storages page;
        page.resize(760, 420);
        page.show();
        const QString notes = m_env->root() + QStringLiteral("/notes.txt");
        TestEnvironment::writeFile(notes, QByteArray());
        const QString folder = m_env->root() + QStringLiteral("/usb disk/backups");
        QString fileRefusal;
        QString id;
        ModalDriver<Account::Local::Add> driver([&](Account::Local::Add* form) {
            const auto edits = form->findChildren<QLineEdit*>();
            QLineEdit* name = edits.value(0);
            QLineEdit* path = edits.value(1);
            QTest::keyClicks(name, QStringLiteral("USB disk"));
            QTest::keyClicks(path, notes);
            fileRefusal = form->okButton()->isEnabled() ? QStringLiteral("Ok enabled") : form->messageText();
            path->clear();
            QTest::keyClicks(path, folder);
            save(form, QStringLiteral("local_form"));
            id = form->accountId().toString();
            QTest::mouseClick(form->okButton(), Qt::LeftButton);
        });
        page.onCreateSelected(TWL::Cloud::FileSystem);
        QVERIFY(driver.ran());
        QCOMPARE(fileRefusal, QStringLiteral("\"%1\" is a file, not a folder.").arg(notes));
        // The watcher let go: the row is there, and the service made the folder.
        const int row = rowOf(QStringLiteral("USB disk"));
        QVERIFY(row >= 0);
        QCOMPARE(model()->index(row, 1).data().toString(), id);
        QCOMPARE(model()->index(row, 2).data().toString(), folder);
        QVERIFY(QFileInfo(folder).isDir());

        // Its details show once it is chosen.
        page.list()->setCurrentIndex(shownRow(page, QStringLiteral("USB disk")));
        auto view = qobject_cast<Storages::Info*>(page.currentView());
        QVERIFY(view);
        QCOMPARE(view->displayName(), QStringLiteral("USB disk"));
        QCOMPARE(view->fieldText(QStringLiteral("Path")), folder);
        save(&page, QStringLiteral("storages_page"));

        ModalDriver<Account::Local::Add> editor([](Account::Local::Add* form) {
            QLineEdit* name = form->findChildren<QLineEdit*>().value(0);
            if (!QTest::qWaitFor([name] { return !name->text().isEmpty(); }))
                return form->reject();
            name->selectAll();
            QTest::keyClicks(name, QStringLiteral("USB stick"));
            QTest::mouseClick(form->okButton(), Qt::LeftButton);
        });
        page.onEditItem(shownRow(page, QStringLiteral("USB disk")));
        QVERIFY(editor.ran());
        QCOMPARE(rowOf(QStringLiteral("USB stick")), row);
        QCOMPARE(model()->index(row, 1).data().toString(), id);
        // The open view follows the change.
        QCOMPARE(view->displayName(), QStringLiteral("USB stick"));

        {
            ModalAnswerer answer(QMessageBox::Cancel);
            page.onRemoveItem(shownRow(page, QStringLiteral("USB stick")));
            QVERIFY(answer.answered());
            QCOMPARE(answer.text(), QStringLiteral("Delete \"USB stick\" account?"));
        }
        QCOMPARE(rowOf(QStringLiteral("USB stick")), row);
        {
            ModalAnswerer answer(QMessageBox::Ok);
            page.onRemoveItem(shownRow(page, QStringLiteral("USB stick")));
            QVERIFY(answer.answered());
        }
        QCOMPARE(rowOf(QStringLiteral("USB stick")), -1);
    }

    void accountThatPlansUseIsKeptWithTheServicesReason()
    {
        // The first storage account, and a plan that writes to it.
        const QModelIndex local = model()->index(0, 0);
        const QUuid id(local.sibling(0, 1).data().toString());
        TWB::Info::Plan::BackupFile plan;
        plan.setId(QUuid::createUuid());
        plan.setName(QStringLiteral("Documents"));
        plan.setStorage(id);
        plan.setItems({m_env->root()});
        TWB::Test::TestCaller caller;
        QSignalSpy succeeded(&caller, &TWB::Test::TestCaller::succeeded);
        QVERIFY(caller.send(QStringLiteral("PlanUpdate"),
            {{QStringLiteral("profile"), QStringLiteral("alice")}, {QStringLiteral("ID"), plan.id().toString()},
                {QStringLiteral("planXML"), plan.toXml()}}));
        QVERIFY(succeeded.wait());

        Storages page;
        page.show();
        const QString name = local.data().toString();
        // Ok to the question; then the watcher's report must come, rather than a wait without end.
        QString asked;
        QString reported;
        QTimer answer;
        connect(&answer, &QTimer::timeout, this, [&] {
            auto box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
            if (!box || !box->isVisible())
                return;
            if (box->icon() == QMessageBox::Question && asked.isEmpty()) {
                asked = box->text();
                box->button(QMessageBox::Ok)->click();
            } else if (box->icon() == QMessageBox::Warning && reported.isEmpty()) {
                reported = box->text();
                box->button(QMessageBox::Ok)->click();
            }
        });
        answer.start(20);
        page.onRemoveItem(shownRow(page, name));
        QCOMPARE(asked, QStringLiteral("Delete \"%1\" account?").arg(name));
        QVERIFY2(reported.contains(QStringLiteral("is used by the plans \"Documents\"")), qPrintable(reported));
        QCOMPARE(rowOf(name), 0);

        // The wizard's storage page tells the same.
        asked.clear();
        reported.clear();
        PagesWizard wizard;
        auto list = static_cast<Storages::EditList*>(wizard.cloud->list());
        QAbstractItemModel* shown = list->view()->model();
        wizard.cloud->onRemoveDestinationClicked(shown->match(shown->index(0, 0), Qt::DisplayRole, name).value(0));
        QCOMPARE(asked, QStringLiteral("Delete \"%1\" account?").arg(name));
        QVERIFY2(reported.contains(QStringLiteral("is used by the plans \"Documents\"")), qPrintable(reported));
        QCOMPARE(rowOf(name), 0);
    }

    void pageCloudFollowsThePlanAndTheList()
    {
        // A second account, so that the plan's is not simply the first row.
        const QString folder = m_env->root() + QStringLiteral("/nas");
        ModalDriver<Account::Local::Add> driver([&folder](Account::Local::Add* form) {
            const auto edits = form->findChildren<QLineEdit*>();
            QTest::keyClicks(edits.value(0), QStringLiteral("NAS"));
            QTest::keyClicks(edits.value(1), folder);
            QTest::mouseClick(form->okButton(), Qt::LeftButton);
        });
        PagesWizard wizard;
        wizard.show();
        PlanWizardBase::PageCloud* page = wizard.cloud;
        QVERIFY(!page->isSingle());
        QVERIFY(!page->isComplete());
        QVERIFY(!wizard.button(QWizard::NextButton)->isEnabled());
        page->onAddDestination(TWL::Cloud::FileSystem);
        QVERIFY(driver.ran());
        const int row = rowOf(QStringLiteral("NAS"));
        QVERIFY(row >= 0);
        const QString id = model()->index(row, 1).data().toString();

        TWB::Info::Plan::BackupFile plan;
        plan.setStorage(QUuid(id));
        QSignalSpy complete(page, &QWizardPage::completeChanged);
        QVERIFY(page->fromPlan(&plan));
        QCOMPARE(wizard.field(QStringLiteral("Field_CloudId")).toString(), id);
        QCOMPARE(
            wizard.field(QStringLiteral("Field_CloudType")).toString().toInt(nullptr, 10), int(TWL::Cloud::FileSystem));
        QCOMPARE(wizard.field(QStringLiteral("Field_CloudName")).toString(), QStringLiteral("NAS"));
        QCOMPARE(
            wizard.field(QStringLiteral("Field_CloudPrefix")).toString(), model()->index(row, 3).data().toString());
        QVERIFY(!complete.isEmpty());
        QVERIFY(wizard.button(QWizard::NextButton)->isEnabled());
        QCOMPARE(page->summary(),
            QStringLiteral("<tr><td>Backup storage:</td><td>NAS</td></tr><tr><td>Backup prefix:</td><td>%1</td></tr>")
                .arg(model()->index(row, 3).data().toString()));
        save(&wizard, QStringLiteral("page_cloud"));
        TWB::Info::Plan::BackupFile written;
        QVERIFY(page->initPlan(&written));
        QCOMPARE(written.storage(), QUuid(id));

        // Removing the chosen account asks first; then the fields follow the row the list moves to.
        auto list = static_cast<Storages::EditList*>(page->list());
        const QModelIndex chosen = list->currentIndex();
        QCOMPARE(chosen.data().toString(), QStringLiteral("NAS"));
        complete.clear();
        {
            ModalAnswerer answer(QMessageBox::Ok);
            page->onRemoveDestinationClicked(chosen);
            QVERIFY(answer.answered());
            QCOMPARE(answer.title(), QStringLiteral("Are you sure?"));
        }
        QVERIFY(!complete.isEmpty());
        QCOMPARE(rowOf(QStringLiteral("NAS")), -1);
        const QModelIndex now = list->currentIndex();
        QVERIFY(now.isValid());
        QCOMPARE(wizard.field(QStringLiteral("Field_CloudId")).toString(), now.sibling(now.row(), 1).data().toString());
        QCOMPARE(wizard.field(QStringLiteral("Field_CloudName")).toString(), now.data().toString());

        // A plan whose account is gone leaves nothing chosen in a new page.
        PagesWizard again;
        QVERIFY(again.cloud->fromPlan(&plan));
        QVERIFY(!again.cloud->isComplete());
        QVERIFY(again.cloud->summary().contains(QStringLiteral("<tr><td>Backup prefix:</td><td></td></tr>")));
    }

    void notificationAddresses_data()
    {
        QTest::addColumn<QString>("addresses");
        QTest::addColumn<bool>("complete");
        QTest::newRow("one") << "ann@example.org" << true;
        QTest::newRow("mixed separators") << "ann@example.org;bob@example.org,cy@example.net" << true;
        QTest::newRow("empty part") << "ann@example.org;;bob@example.org" << false;
        QTest::newRow("not an address") << "ann@example.org,bob" << false;
    }

    void notificationAddresses()
    {
        QFETCH(QString, addresses);
        QFETCH(bool, complete);
        PagesWizard wizard;
        PlanWizardBase::PageNotificationStandalone* page = wizard.notification;
        QVERIFY(page->isComplete());
        wizard.setField(QStringLiteral("Field_NotificationUseEnabled"), true);
        wizard.setField(QStringLiteral("Field_NotificationUserName"), QStringLiteral("Ann"));
        wizard.setField(QStringLiteral("Field_NotificationEmail"), addresses);
        QCOMPARE(page->isComplete(), complete);
        wizard.setField(QStringLiteral("Field_NotificationUserName"), QString());
        QVERIFY(!page->isComplete());
    }

    void unconfirmedAddressDoesNotStopTheWizard()
    {
        EmailService service;
        qputenv(
            "TWB_EMAIL_SERVICE_URL", QStringLiteral("http://127.0.0.1:%1/confirm").arg(service.serverPort()).toUtf8());
        PagesWizard wizard;
        wizard.setStartId(5);
        wizard.show();
        wizard.setField(QStringLiteral("Field_NotificationUseEnabled"), true);
        wizard.setField(QStringLiteral("Field_NotificationAllCase"), true);
        wizard.setField(QStringLiteral("Field_NotificationEmail"), QStringLiteral("ann@example.org"));
        wizard.setField(QStringLiteral("Field_NotificationUserName"), QStringLiteral("Ann"));
        save(&wizard, QStringLiteral("page_notification"));

        service.body = R"({"confirmed":false})";
        {
            ModalAnswerer answer(QMessageBox::Ok);
            QVERIFY(wizard.notification->validatePage());
            QVERIFY(answer.answered());
            QCOMPARE(answer.title(), QStringLiteral("Information"));
            QVERIFY2(answer.text().contains(QStringLiteral("Confirmation email is sent to: ann@example.org")),
                qPrintable(answer.text()));
        }
        QVERIFY(service.received.contains(R"("email":"ann@example.org")"));
        QCOMPARE(TWB::DefaultSettings::instance()->getNotifEmail(), QStringLiteral("ann@example.org"));
        QCOMPARE(TWB::DefaultSettings::instance()->getNotifUserName(), QStringLiteral("Ann"));

        // A confirmed address passes without a word; a service that fails keeps the user on the page.
        service.body = R"({"confirmed":true})";
        QVERIFY(wizard.notification->validatePage());
        service.status = 503;
        {
            ModalAnswerer answer(QMessageBox::Ok);
            QVERIFY(!wizard.notification->validatePage());
            QVERIFY(answer.answered());
            QVERIFY(answer.text().startsWith(QStringLiteral("Cannot reach ")));
        }

        TWB::Info::Plan::BackupFile plan;
        QVERIFY(wizard.notification->initPlan(&plan));
        QCOMPARE(int(plan.notification().type()), 2);
        QCOMPARE(plan.notification().subject(), QStringLiteral("Tidewrack Backup %RESULT%"));
        PagesWizard reopened;
        QVERIFY(reopened.notification->fromPlan(&plan));
        QCOMPARE(reopened.field(QStringLiteral("Field_NotificationUseEnabled")).toBool(), true);
        QCOMPARE(reopened.field(QStringLiteral("Field_NotificationAllCase")).toBool(), true);
        QVERIFY(reopened.notification->summary().contains(QStringLiteral("In all cases")));
        qunsetenv("TWB_EMAIL_SERVICE_URL");
    }

    void everyDialogRenders()
    {
        Account::SelectStandalon chooser;
        chooser.resize(320, 600);
        save(&chooser, QStringLiteral("chooser"));
        Account::SelectStandalon::Menu menu;
        save(&menu, QStringLiteral("chooser_menu"));

        for (auto type : {TWL::Cloud::S3Compatible, TWL::Cloud::AmazonS3, TWL::Cloud::Wasabi, TWL::Cloud::Sftp,
                 TWL::Cloud::AzureBlob, TWL::Cloud::BackBlaze}) {
            std::unique_ptr<Storages::Add> form(Account::AccountFactory::add(type, nullptr));
            QVERIFY(form);
            form->show();
            QVERIFY(form->okButton() && !form->okButton()->isEnabled());
            QCOMPARE(form->windowTitle(), QStringLiteral("Add New Account"));
            save(form.get(), TWL::Cloud::typeNames().value(type));
        }
        Account::AmazonS3Compatible::AddContainer bucket({}, true, TWL::Cloud::AmazonS3);
        QVERIFY(bucket.regionBox()->count() > 1);
        save(&bucket, QStringLiteral("add_bucket"));
        Account::AmazonS3Compatible::AdvancedStorage advanced(true, QStringLiteral("laptop"), true, nullptr, 1);
        QCOMPARE(advanced.prefixBox()->currentText(), QStringLiteral("laptop"));
        save(&advanced, QStringLiteral("advanced"));
        Storages::UpdateWatcher watcher(QUuid::createUuid(), Storages::UpdateWatcher::AddAccount);
        save(&watcher, QStringLiteral("update_watcher"));
        // Escape does not end the wait.
        watcher.show();
        QTest::keyClick(&watcher, Qt::Key_Escape);
        QVERIFY(watcher.isVisible());

        std::unique_ptr<Storages::Info> local(Account::AccountFactory::view(model()->index(0, 0)));
        save(local.get(), QStringLiteral("info_local"));
    }
};

QTEST_MAIN(TestAccountForms)
#include "tst_account_forms.moc"
