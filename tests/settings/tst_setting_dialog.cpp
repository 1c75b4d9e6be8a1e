#include "service_fixture.h"

#include "platform/logging/twl_debug.h"
#include "platform/settings/default_settings.h"
#include "settings/advanced.h"
#include "settings/main_list_widget.h"
#include "settings/network.h"
#include "settings/setting_dialog.h"
#include "settings/tree_widget.h"

#include <QAction>
#include <QCheckBox>
#include <QDropEvent>
#include <QListWidget>
#include <QMimeData>
#include <QRadioButton>
#include <QScopeGuard>
#include <QSpinBox>
#include <QTabWidget>
#include <QtTest>

#include <memory>

using namespace TWB::GUI;
using namespace TWB::Test;

namespace {

QJsonObject productOptions()
{
    return ServiceFixture::callThroughChannel(QStringLiteral("GetProductOptions"))
        .data.value(QStringLiteral("options"))
        .toObject();
}

bool setOptions(const QJsonObject& options)
{
    return ServiceFixture::callThroughChannel(
        QStringLiteral("SetProductOptions"), {{QStringLiteral("options"), options}})
        .success;
}

template <typename T> T* child(const QWidget& parent, int index = 0)
{
    return parent.findChildren<T*>().value(index);
}

} // namespace

/// The settings dialog, its pages and `DefaultSettings` against the real twbd.
class TestSettingDialog : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<ServiceFixture> m_service;
    std::unique_ptr<RawClient> m_client;

private Q_SLOTS:
    void initTestCase()
    {
        m_service = std::make_unique<ServiceFixture>();
        m_client = std::make_unique<RawClient>();
        QVERIFY2(m_service->startWithConsoles(*m_client), qPrintable(m_service->process().output()));
    }

    void everyKeyRoundTripsThroughTheService_data()
    {
        QTest::addColumn<QString>("key");
        QTest::addColumn<QString>("value");
        QTest::addColumn<QString>("unfit");
        const QString big = QString::number(129LL * 1024 * 1024);
        const QList<QStringList> rows = {{"MultiThread threads count", "12", "101"},
            {"DefaultChunkSize", "16777216", big}, {"MultiThread memory usage", "524288000", "1024"},
            {"Glacier queue size", "500", "99"}, {"Logs Rotate TimeOut", "7", "-1"},
            {"LogPath", m_service->environment().root() + "/logs", "logs"}, {"Cloud Bandwidth", "250", "0"},
            {"Local Bandwidth", "999999", "1000000"}, {"RetryAttempts", "5", "0"},
            {"RetryInterval", "3000", "2147483648"}, {"IgnoreSSL", "true", "yes"}, {"WebAccessEnabled", "false", "1"},
            {"WebAccessUseHttps", "true", "on"}, {"WebAccessPort", "8080", "65536"},
            {"WebAccessHttpsPort", "8443", "0"}, {"MasterPassword", "s3cret word", "s3cret\nword"},
            {"BackupSymlink", "skip", "follow"}, {"RetentionUseBackupDate", "false", "no"},
            {"RetentionNumberOfVersions", "3", "x"}, {"RetentionDeleteLastVersion", "true", "maybe"},
            {"SerializationSupportRetentionTime", "30", "-30"}, {"Notification email", "ann@example.org", "ann"},
            {"Notification user name", "Ann Lee", "a\nb"}, {"BackUpOnBattery", "false", "never"},
            {"ProxyHost", "proxy.example.org", "proxy host"}, {"ProxyPort", "3128", "70000"}};
        for (const QStringList& row : rows)
            QTest::newRow(qPrintable(row[0])) << row[0] << row[1] << row[2];
    }

    void everyKeyRoundTripsThroughTheService()
    {
        QFETCH(QString, key);
        QFETCH(QString, value);
        QFETCH(QString, unfit);
        const QPointer<TWB::DefaultSettings> settings = TWB::DefaultSettings::instance();
        QSignalSpy saved(settings, &TWB::DefaultSettings::saved);
        QSignalSpy failed(settings, &TWB::DefaultSettings::error);
        QSignalSpy loaded(settings, &TWB::DefaultSettings::loaded);
        settings->setValue(key, value);
        QVERIFY(saved.wait());
        QCOMPARE(saved.first().first().toString(), key);
        QCOMPARE(productOptions().value(key).toString(), value);

        // The service refuses an unfit value with a sentence naming the option, and keeps the stored one.
        settings->setValue(key, unfit);
        QVERIFY(failed.wait());
        QVERIFY2(failed.first().first().toString().contains(key), qPrintable(failed.first().first().toString()));
        QVERIFY(!failed.first().first().toString().contains(QLatin1String("s3cret")));
        QCOMPARE(productOptions().value(key).toString(), value);
        settings->load();
        QVERIFY(loaded.wait());
        QCOMPARE(settings->value(key), value);
        QCOMPARE(settings->items().value(key)->value(), value);
    }

    void consoleLogFollowsTheServiceOptions()
    {
        QVERIFY(TWL::TwlDebug::installLogFile(QStringLiteral("twbgui")));
        auto putBack = qScopeGuard([] {
            TWL::TwlDebug::removeLogFile();
            TWL::TwlDebug::setLogDirectory(QString());
        });
        const QString folder = m_service->environment().root() + QStringLiteral("/console-logs");
        const QDateTime fiveDaysAgo = QDateTime::currentDateTime().addDays(-5);
        const QString old = folder + QStringLiteral("/twbgui-%1.log").arg(fiveDaysAgo.date().toString(Qt::ISODate));
        TestEnvironment::writeFile(old, "an old day\n", fiveDaysAgo);

        const QPointer<TWB::DefaultSettings> settings = TWB::DefaultSettings::instance();
        settings->followLogOptions();
        settings->setLogPath(folder);
        settings->setLogsRotateTimeout(QStringLiteral("2"));
        QTRY_VERIFY2(TWL::TwlDebug::logFilePath().startsWith(folder + QStringLiteral("/twbgui-")),
            qPrintable(TWL::TwlDebug::logFilePath()));
        QTRY_VERIFY(!QFile::exists(old));
        TWL::TwlDebug("TWB").info() << "console_marker";
        QFile log(TWL::TwlDebug::logFilePath());
        QVERIFY(log.open(QIODevice::ReadOnly));
        QVERIFY(log.readAll().contains("console_marker"));
    }

    void missingKeyShowsTheMinimumAndChunksRoundDown()
    {
        QVERIFY(setOptions({{QStringLiteral("MultiThread threads count"), QString()},
            {QStringLiteral("MultiThread memory usage"), QString()},
            {QStringLiteral("DefaultChunkSize"), QString::number(10 * 1024 * 1024 + 512 * 1024)}}));
        Settings::Advanced page;
        QSignalSpy loaded(&page, &Settings::Advanced::loaded);
        page.loadSettings();
        QVERIFY(loaded.wait());
        QCOMPARE(child<QSpinBox>(page, 0)->value(), 1);
        QCOMPARE(child<QSpinBox>(page, 1)->value(), 10);
        QCOMPARE(child<QSpinBox>(page, 2)->value(), 100);
        // Showing the values sent nothing back.
        QCOMPARE(productOptions().value(QStringLiteral("MultiThread threads count")).toString(), QString());

        child<QSpinBox>(page, 1)->setValue(64);
        QTRY_COMPARE(productOptions().value(QStringLiteral("DefaultChunkSize")).toString(), QStringLiteral("67108864"));
    }

    void networkPageSetsAndClearsALimit()
    {
        Settings::Network page;
        QSignalSpy loaded(&page, &Settings::Network::loaded);
        page.loadSettings();
        QVERIFY(loaded.wait());
        auto* limitCloud = child<QCheckBox>(page, 0);
        auto* cloudSpeed = child<QSpinBox>(page, 0);
        QCOMPARE(limitCloud->text(), QStringLiteral("Limit the speed with cloud storage to"));
        limitCloud->setChecked(false);
        QVERIFY(!cloudSpeed->isEnabled());
        limitCloud->setChecked(true);
        QVERIFY(cloudSpeed->isEnabled());
        cloudSpeed->setValue(640);
        QTRY_COMPARE(productOptions().value(QStringLiteral("Cloud Bandwidth")).toString(), QStringLiteral("640"));
        limitCloud->setChecked(false);
        QTRY_COMPARE(productOptions().value(QStringLiteral("Cloud Bandwidth")).toString(), QString());
    }

    void filterListTakesEachTextOnceAndRemovesIt()
    {
        Settings::TreeWidget tree;
        tree.addTopLevelItem(new QTreeWidgetItem(QStringList {QStringLiteral("192.168.1.0/24")}));
        std::unique_ptr<QMimeData> data(tree.mimeData({tree.topLevelItem(0)}));
        QCOMPARE(data->text(), QStringLiteral("192.168.1.0/24"));

        Settings::MainListWidget list(QStringLiteral("Use only these networks"));
        QVERIFY(!list.isActivated());
        list.radioButton()->setChecked(true);
        QVERIFY(list.isActivated());
        auto* view = child<QListWidget>(list);
        QVERIFY(view->isEnabled());
        list.show();
        QVERIFY(QTest::qWaitForWindowExposed(&list));
        for (int drop = 0; drop < 2; ++drop) {
            QDragEnterEvent enter(QPoint(5, 5), Qt::CopyAction, data.get(), Qt::LeftButton, Qt::NoModifier);
            QApplication::sendEvent(view->viewport(), &enter);
            QCOMPARE(enter.isAccepted(), drop == 0);
            QDropEvent event(QPointF(5, 5), Qt::CopyAction, data.get(), Qt::LeftButton, Qt::NoModifier);
            QApplication::sendEvent(view->viewport(), &event);
            QCOMPARE(event.isAccepted(), drop == 0);
        }
        QCOMPARE(list.items(), QStringList {QStringLiteral("192.168.1.0/24")});
        QCOMPARE(view->currentRow(), 0);
        view->actions().first()->trigger();
        QCOMPARE(list.count(), 0);
    }

    void dialogPictures()
    {
        SettingDialog dialog;
        QCOMPARE(dialog.windowTitle(), QStringLiteral("Settings"));
        QStringList titles;
        for (int tab = 0; tab < dialog.tabs()->count(); ++tab)
            titles << dialog.tabs()->tabText(tab);
        QCOMPARE(titles,
            QStringList({"Storage", "Backup", "Network", "Application", "Notifications", "Advanced", "License"}));
        QSignalSpy loaded(TWB::DefaultSettings::instance(), &TWB::DefaultSettings::loaded);
        // exec() would block: the pages reload on meExec, which a user's opening raises first.
        Q_EMIT dialog.meExec();
        QVERIFY(loaded.wait());
        dialog.show();
        QVERIFY(QTest::qWaitForWindowExposed(&dialog));
        for (int tab = 0; tab < dialog.tabs()->count(); ++tab) {
            dialog.tabs()->setCurrentIndex(tab);
            QWidget* page = dialog.tabs()->widget(tab);
            QTRY_VERIFY(
                page->findChildren<QWidget*>().isEmpty() || page->findChildren<QWidget*>().first()->isEnabled());
            QVERIFY(dialog.grab().save(
                TestEnvironment::outputDir() + QStringLiteral("/settings_%1.png").arg(titles[tab].toLower())));
        }
    }
};

QTEST_MAIN(TestSettingDialog)
#include "tst_setting_dialog.moc"
