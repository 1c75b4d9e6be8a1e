#include "support/modal_driver.h"
#include "peers/storage_console.h"
#include "platform/crypt/local_password.h"
#include "storages/account_factory.h"
#include "storages/accounts/google.h"
#include "storages/accounts/google_authentication.h"
#include "storages/storage_connections_model.h"
#include "support/cloud_peers.h"
#include "support/log_capture.h"
#include "support/test_environment.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDesktopServices>
#include <QLabel>
#include <QLineEdit>
#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QPushButton>
#include <QToolButton>
#include <QtTest>

#include <memory>

using namespace TWB::GUI;
using namespace TWB::GUI::Settings;
using Form = Account::Google::Add;
using InstallApp = Form::AuthenticatioInstallApp;
using TWB::Test::items;
using TWB::Test::ModalDriver;
using TWB::Test::MotoPeer;
using TWB::Test::OAuthPeer;
using TWB::Test::pressList;
using TWB::Test::StorageConsole;
using TWB::Test::TestEnvironment;

namespace {
constexpr int listWait = 60000;
}

/// Stands in for the user's browser: follows the provider's redirect to the console's loopback listener.
class Browser : public QObject
{
    Q_OBJECT
public:
    int opened = 0;
public Q_SLOTS:
    void open(const QUrl& url)
    {
        ++opened;
        QNetworkRequest request(url);
        request.setAttribute(QNetworkRequest::RedirectPolicyAttribute, QNetworkRequest::NoLessSafeRedirectPolicy);
        QNetworkReply* reply = network.get(request);
        connect(reply, &QNetworkReply::finished, reply, &QObject::deleteLater);
    }

private:
    QNetworkAccessManager network;
};

/// The Google account form against a local OAuth provider with Google's bucket list (installed application)
/// and moto's S3 server (keys through the S3 interface), saving through the real twbd.
class TestAccountGoogle : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<TestEnvironment> m_env;
    std::unique_ptr<OAuthPeer> m_provider;
    std::unique_ptr<StorageConsole> m_console;
    Browser m_browser;

    StorageConnectionsModel* model() const { return m_console->model(); }

    static std::unique_ptr<Form> newForm(const QString& name)
    {
        std::unique_ptr<Form> form(
            dynamic_cast<Form*>(Account::AccountFactory::add(TWL::Cloud::GoogleStorage, nullptr)));
        form->show();
        QTest::keyClicks(form->displayNameEdit(), name);
        return form;
    }

    /// Picks the installed application and signs in through the browser; gives the code that arrived.
    QString authorise(Form* form)
    {
        QString code;
        ModalDriver<InstallApp> driver([&code](InstallApp* dialog) {
            QCOMPARE(dialog->windowTitle(), QStringLiteral("Authentication with Install Application"));
            QTest::keyClicks(dialog->findChild<QLineEdit*>(), OAuthPeer::project());
            QTest::mouseClick(dialog->getTokenButton(), Qt::LeftButton);
            QVERIFY(QTest::qWaitFor([dialog] { return !dialog->codeEdit()->text().isEmpty(); }, 20000));
            code = dialog->codeEdit()->text();
            QVERIFY(dialog->okButton()->isEnabled());
            QTest::mouseClick(dialog->okButton(), Qt::LeftButton);
        });
        form->authenticationBox()->setCurrentIndex(Form::InstalledApplicationMode);
        return driver.ran() ? code : QString();
    }

    QJsonObject savedDocument(Form* form, const QString& name)
    {
        QTest::mouseClick(form->okButton(), Qt::LeftButton);
        if (!QTest::qWaitFor([&] { return rowOf(name) >= 0; }, 20000))
            return {};
        return model()->index(rowOf(name), 8).data().toJsonObject();
    }

    int rowOf(const QString& name) const { return m_console->rowOf(name); }

    static void save(QWidget* widget, const QString& name)
    {
        widget->show();
        QVERIFY(widget->grab().save(
            TestEnvironment::outputDir() + QStringLiteral("/google_") + name + QStringLiteral(".png")));
    }

private Q_SLOTS:
    void initTestCase()
    {
        m_env = std::make_unique<TestEnvironment>();
        m_provider = std::make_unique<OAuthPeer>();
        QVERIFY2(m_provider->start({QStringLiteral("archive-eu"), QStringLiteral("family-photos")}),
            qPrintable(m_provider->output()));
        m_provider->exportEnvironment();
        QDesktopServices::setUrlHandler(QStringLiteral("http"), &m_browser, "open");
        m_console = std::make_unique<StorageConsole>(*m_env);
        QVERIFY2(m_console->start(), qPrintable(m_console->service().output()));
    }

    void cleanupTestCase()
    {
        QDesktopServices::unsetUrlHandler(QStringLiteral("http"));
        if (m_console)
            QVERIFY2(m_console->service().terminate(), qPrintable(m_console->service().output()));
    }

    void installedApplicationSignsInListsSavesAndReopens()
    {
        const QString name = QStringLiteral("Google app");
        auto form = newForm(name);
        QVERIFY(!form->bucketBox()->isEnabled());
        QVERIFY(!authorise(form.get()).isEmpty());
        QCOMPARE(m_browser.opened, 1);
        QVERIFY(form->settingsButton()->isEnabled());
        QVERIFY(form->bucketBox()->isEnabled());
        QVERIFY(!form->okButton()->isEnabled());

        // The press trades the code for a refresh token, with which rclone lists the provider's buckets.
        QVERIFY(pressList(form.get()));
        QVERIFY2(form->isListLoaded(), qPrintable(form->messageText()));
        QCOMPARE(form->bucketBox()->count(), 2);
        QVERIFY(form->heldRefreshToken().startsWith("1//refresh-"));
        form->bucketBox()->setCurrentText(QStringLiteral("family-photos"));
        QVERIFY(form->okButton()->isEnabled());

        const QJsonObject saved = savedDocument(form.get(), name);
        QCOMPARE(saved.value(QStringLiteral("AuthType")).toInt(), 2);
        QCOMPARE(saved.value(QStringLiteral("ContainerName")).toString(), QStringLiteral("family-photos"));
        QCOMPARE(saved.value(QStringLiteral("UseSsl")).toInt(), 1);
        QVERIFY(!saved.contains(QStringLiteral("AccessKey")));
        for (const auto& [key, plain] :
            {std::pair {QStringLiteral("RefreshToken"), QString::fromLatin1(form->heldRefreshToken())},
                std::pair {QStringLiteral("ProjectId"), OAuthPeer::project()}}) {
            const QString stored = saved.value(key).toString();
            QVERIFY2(stored != plain, qPrintable(key));
            QCOMPARE(SHARED::cryptNS::decrypt_local_password(stored), plain);
        }

        // Reopened, the form lists with the stored token at once and its dialog shows the stored values.
        const QModelIndex row = model()->index(rowOf(name), 0);
        std::unique_ptr<Storages::Add> edit(Account::AccountFactory::edit(row, nullptr));
        auto reopened = dynamic_cast<Form*>(edit.get());
        QVERIFY(reopened);
        reopened->show();
        QTRY_VERIFY_WITH_TIMEOUT(reopened->isListLoaded(), listWait);
        QCOMPARE(reopened->authenticationBox()->currentIndex(), int(Form::InstalledApplicationMode));
        QCOMPARE(reopened->bucketBox()->currentText(), QStringLiteral("family-photos"));
        QString shownProject;
        ModalDriver<InstallApp> driver([&shownProject](InstallApp* dialog) {
            shownProject = dialog->findChild<QLineEdit*>()->text();
            dialog->reject();
        });
        QTest::mouseClick(reopened->settingsButton(), Qt::LeftButton);
        QVERIFY(driver.ran());
        QCOMPARE(shownProject, OAuthPeer::project());
        QCOMPARE(reopened->authenticationBox()->currentIndex(), int(Form::InstalledApplicationMode));

        std::unique_ptr<Storages::Info> view(Account::AccountFactory::view(row));
        QCOMPARE(view->fieldText(QStringLiteral("AuthType")), QStringLiteral("OAuth 2.0 (Installed Application)"));
        QCOMPARE(view->fieldText(QStringLiteral("ProjectId")), OAuthPeer::project());
        QVERIFY(view->fieldText(QStringLiteral("AccessKey")).isEmpty());
        save(view.get(), QStringLiteral("view"));
    }

    void spentCodeIsRefusedAtTheTokenStepOnly()
    {
        TWB::Test::LogCapture log;
        auto form = newForm(QStringLiteral("Google spent"));
        const QString code = authorise(form.get());
        QVERIFY(!code.isEmpty());
        // Traded once elsewhere: the provider refuses it the second time.
        QVERIFY(!form->refreshTokenInstalledApp(code.toLatin1()).isEmpty());
        QVERIFY(pressList(form.get()));
        QVERIFY(form->heldRefreshToken().isEmpty());
        QVERIFY(log.contains(QtWarningMsg, QStringLiteral("TWB"), QStringLiteral("invalid_grant")));
        QVERIFY(!form->isListLoaded());
        QCOMPARE(form->messageText(),
            QStringLiteral("Google did not accept the code. Get a new code in the authentication settings."));
        QVERIFY(!form->okButton()->isEnabled());
        QVERIFY(form->settingsButton()->isEnabled());

        // A new code from the settings button gets the list going again.
        ModalDriver<InstallApp> again([](InstallApp* dialog) {
            QTest::mouseClick(dialog->getTokenButton(), Qt::LeftButton);
            const QString spent = dialog->codeEdit()->text();
            if (QTest::qWaitFor([&] { return dialog->codeEdit()->text() != spent; }, 20000))
                QTest::mouseClick(dialog->okButton(), Qt::LeftButton);
            else
                dialog->reject();
        });
        QTest::mouseClick(form->settingsButton(), Qt::LeftButton);
        QVERIFY(again.ran());
        QVERIFY(pressList(form.get()));
        QVERIFY2(form->isListLoaded(), qPrintable(form->messageText()));
        for (const auto& entry : log.entries())
            QVERIFY2(entry.type == QtDebugMsg || !entry.message.contains(code), qPrintable(entry.message));
    }

    void cancelledDialogLeavesNoMode_data()
    {
        QTest::addColumn<int>("mode");
        QTest::addColumn<QString>("title");
        QTest::newRow("keys") << 0 << "Authentication with Access and Secret Key";
        QTest::newRow("installed application") << 1 << "Authentication with Install Application";
        QTest::newRow("service account") << 2 << "Authentication with Service Account";
    }

    void cancelledDialogLeavesNoMode()
    {
        QFETCH(int, mode);
        QFETCH(QString, title);
        auto form = newForm(QStringLiteral("Cancelled"));
        QString shown;
        bool okOff = false;
        ModalDriver<Form::Authentication> driver([&](Form::Authentication* dialog) {
            shown = dialog->windowTitle();
            okOff = !dialog->okButton()->isEnabled();
            dialog->reject();
        });
        form->authenticationBox()->setCurrentIndex(mode);
        QVERIFY(driver.ran());
        QCOMPARE(shown, title);
        QVERIFY(okOff);
        QCOMPARE(form->authenticationBox()->currentIndex(), -1);
        QVERIFY(!form->settingsButton()->isEnabled());
        QVERIFY(!form->bucketBox()->isEnabled());
    }

    void accessKeysListAndCreateThroughTheS3Interface()
    {
        MotoPeer moto;
        if (!MotoPeer::missing().isEmpty())
            QSKIP(qPrintable(MotoPeer::missing()));
        QVERIFY2(moto.start(), qPrintable(moto.output()));
        const QByteArray before = qgetenv("TWB_GOOGLE_STORAGE_ENDPOINT");
        qputenv("TWB_GOOGLE_STORAGE_ENDPOINT", QByteArray("http://") + moto.endpoint().toUtf8());
        const QString name = QStringLiteral("Google keys");
        auto form = newForm(name);
        ModalDriver<Form::AuthenticationAccessKey> keys([&moto](Form::AuthenticationAccessKey* dialog) {
            const auto lines = dialog->findChildren<QLineEdit*>();
            QTest::keyClicks(lines.value(0), moto.accessKey());
            QTest::keyClicks(lines.value(1), moto.secretKey());
            QTest::mouseClick(dialog->okButton(), Qt::LeftButton);
        });
        form->authenticationBox()->setCurrentIndex(Form::AccessKeyMode);
        QVERIFY(keys.ran());
        // moto speaks plain HTTP: Use SSL is the keys' own choice.
        bool sslOffered = false;
        ModalDriver<Account::AdvancedStorage> advanced([&sslOffered](Account::AdvancedStorage* dialog) {
            sslOffered = dialog->sslBox()->isEnabled();
            dialog->sslBox()->setChecked(false);
            QTest::mouseClick(dialog->okButton(), Qt::LeftButton);
        });
        QTest::mouseClick(form->advancedButton(), Qt::LeftButton);
        QVERIFY(advanced.ran());
        QVERIFY(sslOffered);
        QVERIFY(pressList(form.get()));
        QVERIFY2(form->isListLoaded(), qPrintable(form->messageText()));

        ModalDriver<Account::Google::AddContainer> bucket([](Account::Google::AddContainer* dialog) {
            QTest::keyClicks(dialog->nameEdit(), QStringLiteral("gcs-keys"));
            dialog->typeBox()->setCurrentIndex(1);
            QTest::mouseClick(dialog->okButton(), Qt::LeftButton);
        });
        QTest::mouseClick(form->addBucketButton(), Qt::LeftButton);
        QVERIFY(bucket.ran());
        QTRY_COMPARE_WITH_TIMEOUT(form->bucketBox()->currentText(), QStringLiteral("gcs-keys"), listWait);

        const QJsonObject saved = savedDocument(form.get(), name);
        qputenv("TWB_GOOGLE_STORAGE_ENDPOINT", before);
        QCOMPARE(saved.value(QStringLiteral("AuthType")).toInt(), 0);
        QCOMPARE(saved.value(QStringLiteral("AccessKey")).toString(), moto.accessKey());
        QCOMPARE(saved.value(QStringLiteral("UseSsl")).toBool(), false);
        QVERIFY(saved.value(QStringLiteral("SecretKey")).toString() != moto.secretKey());
        QCOMPARE(SHARED::cryptNS::decrypt_local_password(saved.value(QStringLiteral("SecretKey")).toString()),
            moto.secretKey());
        std::unique_ptr<Storages::Info> view(Account::AccountFactory::view(model()->index(rowOf(name), 0)));
        QCOMPARE(view->fieldText(QStringLiteral("AccessKey")), moto.accessKey());
        QVERIFY(view->fieldText(QStringLiteral("ProjectId")).isEmpty());
    }

    void everyDialogRenders()
    {
        auto form = newForm(QStringLiteral("Google Cloud"));
        save(form.get(), QStringLiteral("form"));
        QString access, secret, project, code, redirect, account;
        QByteArray key;
        Form::AuthenticationAccessKey keys(&access, &secret);
        save(&keys, QStringLiteral("access_key"));
        InstallApp app(&project, &code, &redirect);
        save(&app, QStringLiteral("install_app"));
        Form::AuthenticationAccount service(&project, &account, &key);
        QCOMPARE(service.keyLabel()->text(), QStringLiteral("Not specified"));
        save(&service, QStringLiteral("service_account"));
        Account::Google::AddContainer bucket({});
        QVERIFY(bucket.typeBox()->count() > 1 && bucket.locationBox()->count() > 1);
        save(&bucket, QStringLiteral("add_bucket"));
    }
};

QTEST_MAIN(TestAccountGoogle)
#include "tst_account_google.moc"
