#include "support/modal_driver.h"
#include "peers/storage_console.h"
#include "peers/round_trip.h"
#include "platform/cloud/get_prefix_operation.h"
#include "platform/crypt/local_password.h"
#include "storages/account_advanced.h"
#include "storages/account_factory.h"
#include "storages/accounts/openstack.h"
#include "storages/storage_connections_model.h"
#include "storages/storages.h"
#include "storages/storages_add_container.h"
#include "storages/storages_edit_list.h"
#include "storages/storages_info.h"
#include "support/cloud_peers.h"
#include "support/log_capture.h"
#include "support/test_environment.h"

#include <QCheckBox>
#include <QComboBox>
#include <QLineEdit>
#include <QListView>
#include <QPushButton>
#include <QSignalSpy>
#include <QToolButton>
#include <QtTest>

#include <memory>

using namespace TWB::GUI;
using namespace TWB::GUI::Settings;
using SwiftForm = Account::OpenStack::Add;
using TWB::Test::CloudPeer;
using TWB::Test::items;
using TWB::Test::ModalDriver;
using TWB::Test::pressList;
using TWB::Test::StorageConsole;
using TWB::Test::SwiftPeer;
using TWB::Test::TestEnvironment;

namespace {
constexpr int listWait = 60000;
const QString refused
    = QStringLiteral("The identity service refused the user name or the key, or the tenant or project.");
} // namespace

/// The OpenStack Swift account forms against a Swift server of our own on loopback and the real twbd, driven
/// through their widgets.
class TestAccountSwift : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<TestEnvironment> m_env;
    std::unique_ptr<SwiftPeer> m_swift;
    std::unique_ptr<StorageConsole> m_console;

    StorageConnectionsModel* model() const { return m_console->model(); }

    static std::unique_ptr<SwiftForm> newForm(TWL::Cloud::Type type = TWL::Cloud::Openstack)
    {
        return std::unique_ptr<SwiftForm>(dynamic_cast<SwiftForm*>(Account::AccountFactory::add(type, nullptr)));
    }

    /// Types what a user types; the auth URL's last part picks the auth version on its own.
    static void fill(SwiftForm* form, const QString& name, const QString& url, const QString& key,
        const QString& project = SwiftPeer::project())
    {
        QTest::keyClicks(form->displayNameEdit(), name);
        QTest::keyClicks(form->accessKeyEdit(), SwiftPeer::user());
        QTest::keyClicks(form->secretKeyEdit(), key);
        form->endpointEdit()->selectAll();
        QTest::keyClicks(form->endpointEdit(), url);
        QTest::keyClick(form->endpointEdit(), Qt::Key_Return);
        if (form->tenantEdit()->isVisible())
            QTest::keyClicks(form->tenantEdit(), project);
    }

    int rowOf(const QString& name) const { return m_console->rowOf(name); }

private Q_SLOTS:
    void initTestCase()
    {
        m_env = std::make_unique<TestEnvironment>();
        m_swift = std::make_unique<SwiftPeer>();
        QVERIFY2(m_swift->start({QStringLiteral("ledger"), QStringLiteral("photos")},
                     {QStringLiteral("ledger/TWB_office/config")}),
            qPrintable(m_swift->output()));
        m_console = std::make_unique<StorageConsole>(*m_env);
        QVERIFY2(m_console->start(), qPrintable(m_console->service().output()));
    }

    void cleanupTestCase()
    {
        if (m_console)
            QVERIFY2(m_console->service().terminate(), qPrintable(m_console->service().output()));
    }

    void signInOutcomes_data()
    {
        QTest::addColumn<int>("type");
        QTest::addColumn<QString>("url");
        QTest::addColumn<QString>("key");
        QTest::addColumn<QString>("project");
        QTest::addColumn<int>("version");
        QTest::addColumn<QString>("message");
        const QString host = QStringLiteral("127.0.0.1:%1").arg(m_swift->port());
        const QString project = SwiftPeer::project();
        QTest::newRow("TempAuth, wrong key")
            << int(TWL::Cloud::Openstack) << m_swift->authUrl(1) << "not the key" << project << 1 << refused;
        QTest::newRow("TempAuth") << int(TWL::Cloud::Openstack) << m_swift->authUrl(1) << SwiftPeer::key() << project
                                  << 1 << QString();
        QTest::newRow("Keystone v2") << int(TWL::Cloud::Openstack) << m_swift->authUrl(2) << SwiftPeer::key() << project
                                     << 2 << QString();
        QTest::newRow("Keystone v3, other project")
            << int(TWL::Cloud::Openstack) << m_swift->authUrl(3) << SwiftPeer::key() << "sales" << 3 << refused;
        QTest::newRow("Keystone v3") << int(TWL::Cloud::Openstack) << m_swift->authUrl(3) << SwiftPeer::key() << project
                                     << 3 << QString();
        // Providers sign in with their own version, at a typed address as well as at their locations.
        QTest::newRow("Rackspace, at another location")
            << int(TWL::Cloud::Rackspace) << m_swift->authUrl(2) << SwiftPeer::key() << project << 2 << QString();
        QTest::newRow("SoftLayer, at another location")
            << int(TWL::Cloud::SoftLayer) << m_swift->authUrl(1) << SwiftPeer::key() << project << 1 << QString();
        QTest::newRow("no identity service there")
            << int(TWL::Cloud::Openstack) << QStringLiteral("http://%1/identity").arg(host) << SwiftPeer::key()
            << project << 3
            << QStringLiteral("%1 has no identity service at this address. Check the auth URL and the auth version.")
                   .arg(host);
        const QString silent = QStringLiteral("127.0.0.1:%1").arg(CloudPeer::freePort());
        QTest::newRow("nobody listens") << int(TWL::Cloud::Openstack) << QStringLiteral("http://%1/v3").arg(silent)
                                        << SwiftPeer::key() << project << 3
                                        << QStringLiteral("%1 could not be reached. Check the address and the "
                                                          "network connection.")
                                               .arg(silent);
    }

    void signInOutcomes()
    {
        QFETCH(int, type);
        QFETCH(QString, url);
        QFETCH(QString, key);
        QFETCH(QString, project);
        QFETCH(int, version);
        QFETCH(QString, message);
        TWB::Test::LogCapture log;
        auto form = newForm(TWL::Cloud::Type(type));
        QVERIFY(form);
        form->show();
        fill(form.get(), QStringLiteral("Swift"), url, key, project);
        QCOMPARE(form->authVersion(), version);
        // A typed address is none of the provider's locations.
        if (form->locationBox()->count() > 0)
            QCOMPARE(form->locationBox()->currentText(), QStringLiteral("Other"));
        QVERIFY(form->bucketBox()->isEnabled());
        QVERIFY(pressList(form.get()));
        QCOMPARE(form->messageText(), message);
        QCOMPARE(form->isListLoaded(), message.isEmpty());
        QCOMPARE(form->okButton()->isEnabled(), message.isEmpty());
        if (message.isEmpty()) {
            QCOMPARE(items(form->bucketBox()), QStringList({QStringLiteral("ledger"), QStringLiteral("photos")}));
            QVERIFY(form->addBucketButton()->isEnabled());
        } else {
            // A failure leaves the form to be corrected.
            QVERIFY(form->secretKeyEdit()->isEnabled());
            QVERIFY(form->endpointEdit()->isEnabled());
            QVERIFY(form->cursor().shape() != Qt::WaitCursor);
        }
        const auto entries = log.entries();
        for (const auto& entry : entries)
            QVERIFY2(entry.type == QtDebugMsg || !entry.message.contains(key), qPrintable(entry.message));
    }

    void newContainerIsCreatedAndPrefixesListed()
    {
        auto form = newForm();
        form->show();
        fill(form.get(), QStringLiteral("Swift"), m_swift->authUrl(1), SwiftPeer::key());
        QVERIFY(pressList(form.get()));
        QVERIFY2(form->isListLoaded(), qPrintable(form->messageText()));

        ModalDriver<Storages::AddContainer> driver([](Storages::AddContainer* dialog) {
            // "/" would make a folder of the rest: it cannot be typed.
            QTest::keyClicks(dialog->nameEdit(), QStringLiteral("Archiv/2026 Q1"));
            QTest::mouseClick(dialog->okButton(), Qt::LeftButton);
        });
        QTest::mouseClick(form->addBucketButton(), Qt::LeftButton);
        QVERIFY(driver.ran());
        QTRY_COMPARE_WITH_TIMEOUT(form->bucketBox()->currentText(), QStringLiteral("Archiv2026 Q1"), listWait);
        QVERIFY(form->okButton()->isEnabled());

        form->bucketBox()->setCurrentText(QStringLiteral("ledger"));
        QStringList offered;
        bool internalOffered = false;
        ModalDriver<Account::OpenStack::AdvancedStorage> advanced([&](Account::OpenStack::AdvancedStorage* dialog) {
            internalOffered = dialog->internalBox()->isVisible() && !dialog->internalBox()->isChecked();
            QTest::mousePress(dialog->prefixBox(), Qt::LeftButton);
            (void)QTest::qWaitFor(
                [dialog] { return dialog->prefixBox()->findText(QStringLiteral("office")) >= 0; }, listWait);
            for (int i = 0; i < dialog->prefixBox()->count(); ++i)
                offered << dialog->prefixBox()->itemText(i);
            dialog->prefixBox()->setCurrentText(QStringLiteral("desk"));
            QTest::mouseClick(dialog->okButton(), Qt::LeftButton);
        });
        QTest::mouseClick(form->advancedButton(), Qt::LeftButton);
        QVERIFY(advanced.ran());
        QVERIFY(internalOffered);
        QVERIFY2(offered.contains(QStringLiteral("office")), qPrintable(offered.join(u',')));
        QCOMPARE(form->accountPrefix(), QStringLiteral("desk"));

        // A container that went away is named as such.
        QVariantMap config = form->cloudConfig();
        config.insert(QStringLiteral("ContainerName"), QStringLiteral("gone"));
        TWB::Operation::GetPrefixOperation prefixes(config, QStringLiteral("TWB_"));
        QSignalSpy failed(&prefixes, &TWB::Operation::GetPrefixOperation::error);
        prefixes.exec();
        QVERIFY(failed.wait(listWait));
        QCOMPARE(failed.first().at(2).toString(),
            QStringLiteral("There is no container \"gone\" on 127.0.0.1:%1.").arg(m_swift->port()));
    }

    void okSavesTheAccountWhichBacksUpAndRestores()
    {
        Storages page;
        page.show();
        ModalDriver<SwiftForm> driver([this](SwiftForm* form) {
            fill(form, QStringLiteral("Private cloud"), m_swift->authUrl(3), SwiftPeer::key());
            if (!pressList(form) || !form->isListLoaded())
                return form->reject();
            form->bucketBox()->setCurrentText(QStringLiteral("photos"));
            QTest::mouseClick(form->okButton(), Qt::LeftButton);
        });
        page.onCreateSelected(TWL::Cloud::Openstack);
        QVERIFY(driver.ran());
        const int row = rowOf(QStringLiteral("Private cloud"));
        QVERIFY(row >= 0);
        QCOMPARE(model()->index(row, 5).data().toInt(), int(TWL::Cloud::Openstack));
        const QJsonObject document = model()->index(row, 8).data().toJsonObject();
        QCOMPARE(document.value(QStringLiteral("AuthType")).toInt(), 3);
        QCOMPARE(document.value(QStringLiteral("UserName")).toString(), SwiftPeer::user());
        QCOMPARE(document.value(QStringLiteral("Endpoint")).toString(), m_swift->authUrl(3));
        QCOMPARE(document.value(QStringLiteral("ProjectName")).toString(), SwiftPeer::project());
        QCOMPARE(document.value(QStringLiteral("DomainName")).toString(), QStringLiteral("Default"));
        QCOMPARE(document.value(QStringLiteral("ContainerName")).toString(), QStringLiteral("photos"));
        QVERIFY(!document.contains(QStringLiteral("TenantName")));
        const QString sealed = document.value(QStringLiteral("ApiKey")).toString();
        QVERIFY(!sealed.contains(SwiftPeer::key()));
        QCOMPARE(SHARED::cryptNS::decrypt_local_password(sealed), SwiftPeer::key());

        // The view shows where and who, never the key.
        QAbstractItemModel* shown = page.list()->view()->model();
        page.list()->view()->setCurrentIndex(
            shown->match(shown->index(0, 0), Qt::DisplayRole, QStringLiteral("Private cloud")).value(0));
        auto view = qobject_cast<Storages::Info*>(page.currentView());
        QVERIFY(view);
        QCOMPARE(view->fieldText(QStringLiteral("ProjectName")), SwiftPeer::project());
        QCOMPARE(view->fieldText(QStringLiteral("AuthType")), QStringLiteral("3 (Keystone)"));
        QVERIFY(view->fieldText(QStringLiteral("ApiKey")).isEmpty());
        QVERIFY(view->grab().save(TestEnvironment::outputDir() + QStringLiteral("/account_swift_view.png")));

        // Opened again, the form signs in by itself and keeps what was saved.
        QString kept;
        ModalDriver<SwiftForm> editor([&kept](SwiftForm* form) {
            if (!QTest::qWaitFor([form] { return form->isListLoaded(); }, listWait))
                return form->reject();
            kept = QStringList({form->bucketBox()->currentText(), form->tenantEdit()->text(),
                                   form->versionBox()->currentText(), form->secretKeyEdit()->text()})
                       .join(u'|');
            form->displayNameEdit()->selectAll();
            QTest::keyClicks(form->displayNameEdit(), QStringLiteral("Company cloud"));
            QTest::mouseClick(form->okButton(), Qt::LeftButton);
        });
        page.onEditItem(shown->match(shown->index(0, 0), Qt::DisplayRole, QStringLiteral("Private cloud")).value(0));
        QVERIFY(editor.ran());
        QCOMPARE(kept,
            QStringList(
                {QStringLiteral("photos"), SwiftPeer::project(), QStringLiteral("3 (Keystone)"), SwiftPeer::key()})
                .join(u'|'));
        QCOMPARE(rowOf(QStringLiteral("Company cloud")), row);

        TWB::Test::RawClient client;
        QVERIFY(client.connectTo(m_env->socketPath()));
        const QUuid account(model()->index(row, 1).data().toString());
        TWB::Test::backsUpAndRestores(client, m_env->root(), QStringLiteral("albums"), [account](auto plan) {
            plan->setStorage(account);
            return true;
        });
    }

    void everyFormRenders_data()
    {
        QTest::addColumn<int>("type");
        for (const auto type : {TWL::Cloud::Openstack, TWL::Cloud::Rackspace, TWL::Cloud::SoftLayer,
                 TWL::Cloud::OracleCloud, TWL::Cloud::HPCloud})
            QTest::newRow(qPrintable(TWL::Cloud::typeName(type))) << int(type);
    }

    void everyFormRenders()
    {
        QFETCH(int, type);
        auto form = newForm(TWL::Cloud::Type(type));
        QVERIFY(form);
        form->show();
        QVERIFY(QTest::qWaitForWindowExposed(form.get()));
        QCOMPARE(form->locationBox()->isVisibleTo(form.get()), !form->endpointEdit()->text().isEmpty());
        const QString file = QStringLiteral("/account_swift_%1.png").arg(TWL::Cloud::typeName(TWL::Cloud::Type(type)));
        QVERIFY(form->grab().save(TestEnvironment::outputDir() + file));
        if (type != TWL::Cloud::Openstack)
            return;
        Account::OpenStack::AdvancedStorage advanced(false, QStringLiteral("laptop"), true, nullptr);
        advanced.show();
        QVERIFY(advanced.grab().save(TestEnvironment::outputDir() + QStringLiteral("/account_swift_advanced.png")));
        std::unique_ptr<Storages::AddContainer> container(form->addContainerDialog());
        container->show();
        QVERIFY(container->grab().save(TestEnvironment::outputDir() + QStringLiteral("/account_swift_container.png")));
    }
};

QTEST_MAIN(TestAccountSwift)
#include "tst_account_swift.moc"
