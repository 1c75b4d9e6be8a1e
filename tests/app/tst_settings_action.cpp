#include "service_fixture.h"

#include "app/console_models.h"
#include "app/console_window.h"
#include "app/service_launcher.h"
#include "frame/application_event_controller.h"
#include "settings/setting_dialog.h"
#include "storages/storages.h"
#include "storages/storages_edit_list.h"

#include <QAbstractItemView>
#include <QListView>
#include <QAction>
#include <QTabWidget>
#include <QtTest>

using namespace TWB::Test;

/// The console window's Settings… button, against the real twbd.
class TestSettingsAction : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void settingsOpenOverTheWindowWithItsAccounts()
    {
        ServiceFixture service;
        RawClient client;
        QVERIFY2(service.startWithConsoles(client), qPrintable(service.process().output()));
        TWB::Host::ConsoleModels models;
        models.start();
        TWB::GUI::ApplicationEventController controller;
        TWB::Host::ServiceLauncher launcher;
        TWB::Host::ConsoleWindow window(controller, launcher);
        controller.init();
        window.show();
        QVERIFY(QTest::qWaitForWindowExposed(&window));

        QStringList tabs;
        int accounts = -1;
        QWidget* parent = nullptr;
        QTimer poll;
        int polls = 0;
        connect(&poll, &QTimer::timeout, this, [&] {
            auto* dialog = qobject_cast<TWB::GUI::SettingDialog*>(QApplication::activeModalWidget());
            if (!dialog)
                return;
            auto* storages = qobject_cast<TWB::GUI::Settings::Storages*>(dialog->tabs()->widget(0));
            QAbstractItemView* list = storages ? storages->list()->view() : nullptr;
            // The accounts come from the shared model, which may still be loading when the dialog opens.
            if (list && list->model()->rowCount() == 0 && ++polls < 100)
                return;
            // One more tick, for the view to lay out the rows it was told of, before the picture.
            if (!parent) {
                parent = dialog->parentWidget();
                return;
            }
            accounts = list ? list->model()->rowCount() : -1;
            for (int tab = 0; tab < dialog->tabs()->count(); ++tab)
                tabs << dialog->tabs()->tabText(tab);
            dialog->grab().save(TestEnvironment::outputDir() + QStringLiteral("/settings_from_console.png"));
            dialog->reject();
        });
        poll.start(50);
        QVERIFY(window.settingsAction());
        window.settingsAction()->trigger();
        QCOMPARE(parent, &window);
        QCOMPARE(tabs.value(0), QStringLiteral("Storage"));
        QCOMPARE(tabs.size(), 7);
        QCOMPARE(accounts, 1);
    }
};

QTEST_MAIN(TestSettingsAction)
#include "tst_settings_action.moc"
