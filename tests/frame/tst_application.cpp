#include "frame/application.h"
#include "frame/application_event_controller.h"
#include "frame/base_model.h"
#include "frame/get_program_path.h"
#include "frame/model_creator.h"
#include "frame/model_manager.h"
#include "frame/model_names.h"
#include "frame/shared_model_creator.h"
#include "frame/system_url_open_handler.h"
#include "platform/communication/connection_manager.h"
#include "platform/communication/notification_center.h"
#include "platform/communication/notification_types.h"
#include "support/fake_service.h"
#include "support/log_capture.h"
#include "support/test_environment.h"

#include <QDesktopServices>
#include <QEventLoop>
#include <QFile>
#include <QSignalSpy>
#include <QtTest>

#include <memory>

using namespace TWB::GUI;
using TWB::Common::Communication::ConnectionManager;
namespace NotificationType = TWB::Common::Communication::Notification::Type;
using TWB::Test::FakeService;
using TWB::Test::LogCapture;
using TWB::Test::TestEnvironment;

namespace {

/// An empty model, enough to stand behind a name in the registry.
class ListModel : public BaseModel
{
public:
    explicit ListModel(QObject* parent = nullptr)
        : BaseModel(parent)
    {
        ++instances;
    }
    ~ListModel() override { --instances; }

    bool init() override { return true; }
    QModelIndex index(int, int, const QModelIndex&) const override { return QModelIndex(); }
    QModelIndex parent(const QModelIndex&) const override { return QModelIndex(); }
    int rowCount(const QModelIndex&) const override { return 0; }
    int columnCount(const QModelIndex&) const override { return 1; }
    QVariant data(const QModelIndex&, int) const override { return QVariant(); }

    static int instances;
};

int ListModel::instances = 0;

/// A creator that breaks the sharing rule, to show what the registry does and does not do.
class FreshCreator : public ModelCreator
{
public:
    BaseModel* create() override { return new ListModel(&owner); }
    const QString& name() const override { return m_name; }
    QObject owner;

private:
    const QString m_name = QStringLiteral("TwbPlanTableModel");
};

} // namespace

/// Stands in for the system's URL opener and notes the environment it was called in.
class UrlRecorder : public QObject
{
    Q_OBJECT
public:
    QList<QUrl> urls;
    QList<QByteArray> libraryPaths;
    QList<QByteArray> programPaths;

public Q_SLOTS:
    void record(const QUrl& url)
    {
        urls << url;
        libraryPaths << qgetenv("LD_LIBRARY_PATH");
        programPaths << qgetenv("PATH");
    }
};

/// The application frame: its identity, the event controller, URL opening and the model registry.
class TestApplication : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<TestEnvironment> m_env;
    FakeService m_service;

private Q_SLOTS:
    void initTestCase()
    {
        m_env = std::make_unique<TestEnvironment>();
        QVERIFY(m_service.serveConsole(m_env->socketPath()));
    }

    void programPathIsTheFirstWordOfACommandLine_data()
    {
        QTest::addColumn<QString>("line");
        QTest::addColumn<QString>("program");
        QTest::newRow("quoted path with a blank, then an option") << "\"/opt/my tools/backup\" --silent"
                                                                  << "/opt/my tools/backup";
        QTest::newRow("lone quote at the start") << "\"/usr/bin/tool -x"
                                                 << "/usr/bin/tool";
        QTest::newRow("empty line") << ""
                                    << "";
        QTest::newRow("plain program and arguments") << "/usr/bin/rsync -a /a /b"
                                                     << "/usr/bin/rsync";
        QTest::newRow("blanks only") << "   "
                                     << "   ";
        QTest::newRow("leading blanks") << "  \"/opt/a b/c\" -q"
                                        << "/opt/a b/c";
    }

    void programPathIsTheFirstWordOfACommandLine()
    {
        QFETCH(QString, line);
        QFETCH(QString, program);
        QCOMPARE(getProgramPath(line), program);
    }

    void controllerReportsTheStateAtInitAndConnectsOnce()
    {
        ApplicationEventController controller;
        QSignalSpy connected(&controller, &ApplicationEventController::localManagmentConnected);
        QSignalSpy disconnected(&controller, &ApplicationEventController::localManagmentDisconnected);
        QSignalSpy updates(&controller, &ApplicationEventController::updateStarted);
        controller.init();
        QCOMPARE(connected.count(), 1);
        QCOMPARE(disconnected.count(), 0);
        controller.init();
        QCOMPARE(connected.count(), 1);

        LogCapture log;
        m_service.notify(QLatin1String(NotificationType::UpdateStarting));
        QVERIFY(updates.wait());
        QTest::qWait(50); // a second connection would deliver a second signal within this turn
        QCOMPARE(updates.count(), 1);
        QCOMPARE(log.count(QtInfoMsg, QStringLiteral("TWB"), QStringLiteral("Notification to start update...")), 1);
    }

    void applicationQuitNotificationQuitsTheEventLoop()
    {
        ApplicationEventController controller;
        controller.init();
        QEventLoop loop;
        QTimer::singleShot(0, this, [this] { m_service.notify(QLatin1String(NotificationType::ApplicationQuit)); });
        QTimer guard;
        guard.setSingleShot(true);
        connect(&guard, &QTimer::timeout, &loop, [&loop] { loop.exit(42); });
        guard.start(5000);
        // QCoreApplication::quit() ends every running event loop with 0; the guard would end it with 42.
        QCOMPARE(loop.exec(), 0);
    }

    void urlHandlerOpensWithTheSystemSearchPaths()
    {
        UrlRecorder system;
        QDesktopServices::setUrlHandler(QStringLiteral("twbtest"), &system, "record");
        qputenv("LD_LIBRARY_PATH", "/opt/console/lib");
        qputenv("PATH", "/opt/console/bin:/usr/bin");
        Handlers::SystemUrlOpenHandler handler;
        handler.handleUrl(QUrl(QStringLiteral("twbtest:one")));
        QCOMPARE(system.urls, QList<QUrl> {QUrl(QStringLiteral("twbtest:one"))});
        QCOMPARE(system.libraryPaths.first(), QByteArray("/usr/lib:/usr/local/lib"));
        QCOMPARE(system.programPaths.first(), QByteArray("/usr/bin:/usr/local/bin"));
        QCOMPARE(qgetenv("LD_LIBRARY_PATH"), QByteArray("/opt/console/lib"));
        QCOMPARE(qgetenv("PATH"), QByteArray("/opt/console/bin:/usr/bin"));

        // Another scheme goes straight to its opener with the environment untouched,
        // and openURL leaves no handler of its own behind.
        Application::openURL(QUrl(QStringLiteral("twbtest:two")));
        QCOMPARE(system.urls.size(), 2);
        QCOMPARE(system.libraryPaths.last(), QByteArray("/opt/console/lib"));
        QCOMPARE(system.programPaths.last(), QByteArray("/opt/console/bin:/usr/bin"));
        QDesktopServices::unsetUrlHandler(QStringLiteral("twbtest"));
    }

    void identityComesFromRebrandingAndConfiguration()
    {
        TestEnvironment::writeFile(m_env->rebrandingFile(),
            "ProductName=Harbour Backup\nCompanyName=Harbour\nWebSite=https://harbour.example\n");
        QCOMPARE(Application::applicationName(), QStringLiteral("Harbour Backup"));
        QCOMPARE(Application::companyName(), QStringLiteral("Harbour"));
        QCOMPARE(Application::website(), QStringLiteral("https://harbour.example"));
        QVERIFY(Application::copyright().contains(QStringLiteral("Tidewrack")));
        // Each accessor keeps the table it loaded first.
        TestEnvironment::writeFile(m_env->rebrandingFile(), "ProductName=Changed\n");
        QCOMPARE(Application::applicationName(), QStringLiteral("Harbour Backup"));

        TestEnvironment::writeFile(m_env->configFile(), "supportEmail = help@harbour.example\nedition = managed\n");
        QCOMPARE(Application::supportEmail(), QStringLiteral("help@harbour.example"));
        QVERIFY(Application::isFbs());
        QVERIFY(!Application::isStandalon());
        // Read once: widgets ask while they paint, and the file does not change under a running console.
        TestEnvironment::writeFile(m_env->configFile(), "supportEmail = other@harbour.example\n");
        QCOMPARE(Application::supportEmail(), QStringLiteral("help@harbour.example"));
        QVERIFY(Application::isFbs());
        Application::rereadConfiguration();
        QCOMPARE(Application::supportEmail(), QStringLiteral("other@harbour.example"));
        QVERIFY(Application::isStandalon());
        QVERIFY(!Application::buildVersion().isEmpty());
    }

    void creatorWithoutOwnerDeletesItsModel()
    {
        {
            SharedModelCreator<ListModel> creator(ModelNames::AmazonLifecyclePolicy);
            QCOMPARE(creator.name(), QStringLiteral("TwbAmazonLifececlyPolicyModel"));
            QVERIFY(creator.create());
            QCOMPARE(ListModel::instances, 1);
        }
        QCOMPARE(ListModel::instances, 0);
    }

    void deletedSharedModelIsNotRebuilt()
    {
        auto* owner = new QObject;
        SharedModelCreator<ListModel> creator(ModelNames::HistoryGetByPlan, owner);
        QVERIFY(creator.create());
        delete owner;
        QVERIFY(!creator.create());
        QCOMPARE(ListModel::instances, 0);
    }

    void creatorThatDiesLeavesTheRegistry()
    {
        auto manager = ModelManager::instance();
        {
            QObject owner;
            SharedModelCreator<ListModel> creator(ModelNames::PlanBackupTable, &owner);
            manager->registrateCreator(creator);
            QVERIFY(manager->create(ModelNames::PlanBackupTable));
        }
        // Null, not a call through a dangling pointer.
        QVERIFY(!manager->create(ModelNames::PlanBackupTable));
        FreshCreator fresh;
        manager->registrateCreator(fresh);
        QVERIFY(manager->create(ModelNames::PlanTable));
        manager->unregisterCreator(fresh);
        QVERIFY(!manager->create(ModelNames::PlanTable));
    }
};

int main(int argc, char** argv)
{
    Application app(argc, argv);
    TestApplication test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_application.moc"
