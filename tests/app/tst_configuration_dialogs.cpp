// The configuration export and import dialogs through the real channel and the real twbd: the plan
// list follows the plan model, the passwords must agree, a wrong archive password is shown in the
// dialog, and a right one takes the archive in. Then the console window's Settings… button.

#include "app/console_models.h"
#include "app/console_window.h"
#include "app/service_launcher.h"
#include "frame/application_event_controller.h"
#include "frame/model_manager.h"
#include "frame/model_names.h"
#include "frame/shared_model_creator.h"
#include "plan_samples.h"
#include "plans/plan_table_model.h"
#include "raw_client.h"
#include "service_fixture.h"
#include "settings/configuration_export_dialog.h"
#include "settings/configuration_import_dialog.h"
#include "settings/setting_dialog.h"
#include "storages/storages.h"
#include "storages/storages_edit_list.h"
#include "support/test_environment.h"

#include <QAbstractItemView>
#include <QAction>
#include <QCheckBox>
#include <QFile>
#include <QLineEdit>
#include <QListView>
#include <QPushButton>
#include <QTabWidget>
#include <QTreeWidget>
#include <QtTest>

#include <memory>

using namespace TWB::GUI;
using TWB::GUI::Settings::ConfigurationExportDialog;
using TWB::GUI::Settings::ConfigurationImportDialog;
using TWB::Test::PlanSamples;
using TWB::Test::RawClient;
using TWB::Test::ServiceFixture;
using TWB::Test::TestEnvironment;

class TestConfigurationDialogs : public QObject
{
    Q_OBJECT

private:
    ServiceFixture m_service;
    RawClient m_client;
    std::unique_ptr<SharedModelCreator<PlanTableModel>> m_creator;
    QString m_archive;

    static void save(QWidget& dialog, const QString& name)
    {
        dialog.show();
        QVERIFY(QTest::qWaitForWindowExposed(&dialog));
        QVERIFY(dialog.grab().save(TestEnvironment::outputDir() + QStringLiteral("/%1.png").arg(name)));
    }

private Q_SLOTS:
    void initTestCase()
    {
        qputenv("USER", "alice");
        QVERIFY2(m_service.startWithConsoles(m_client), qPrintable(m_service.process().output()));
        const QUuid account = ServiceFixture::firstAccount(m_client);
        const QUuid plan = QUuid::createUuid();
        QVERIFY(m_client
                    .call(QStringLiteral("PlanUpdate"),
                        {{QStringLiteral("ID"), plan.toString()},
                            {QStringLiteral("planXML"), PlanSamples::backup(plan, QStringLiteral("Photos"), account)}})
                    .success);
        m_creator = std::make_unique<SharedModelCreator<PlanTableModel>>(ModelNames::PlanTable);
        ModelManager::instance()->registrateCreator(*m_creator);
        QVERIFY(ModelManager::instance()->create(ModelNames::PlanTable)->init());
        m_archive = m_service.environment().root() + QStringLiteral("/dialogs.twbconfiguration");
    }

    void pictures()
    {
        ConfigurationExportDialog exporting;
        QTRY_COMPARE(exporting.planList()->topLevelItemCount(), 1);
        QCOMPARE(exporting.planList()->topLevelItem(0)->text(0), QStringLiteral("Photos"));
        exporting.fileEdit()->setText(m_archive);
        exporting.passwordEdit()->setText(QStringLiteral("secret"));
        save(exporting, QStringLiteral("configuration_export"));

        ConfigurationImportDialog importing;
        importing.fileEdit()->setText(m_archive);
        save(importing, QStringLiteral("configuration_import"));
    }

    void exportedArchiveComesBackThroughTheImportDialog()
    {
        ConfigurationExportDialog exporting;
        exporting.show();
        QTRY_COMPARE(exporting.planList()->topLevelItemCount(), 1);
        exporting.fileEdit()->setText(m_archive);
        exporting.passwordEdit()->setText(QStringLiteral("harbour light"));
        exporting.confirmEdit()->setText(QStringLiteral("harbour lights"));
        QVERIFY(!exporting.actionButton()->isEnabled());
        exporting.confirmEdit()->setText(QStringLiteral("harbour light"));
        QVERIFY(exporting.actionButton()->isEnabled());
        exporting.actionButton()->click();
        QTRY_COMPARE_WITH_TIMEOUT(exporting.result(), int(QDialog::Accepted), 20000);
        QVERIFY2(exporting.resultText().startsWith(QStringLiteral("Exported 1 plans and 1 storage accounts")),
            qPrintable(exporting.resultText()));
        QVERIFY(QFile::exists(m_archive));

        ConfigurationImportDialog importing;
        importing.show();
        importing.fileEdit()->setText(m_archive);
        importing.passwordEdit()->setText(QStringLiteral("harbour"));
        importing.actionButton()->click();
        QTRY_COMPARE_WITH_TIMEOUT(
            importing.errorText(), QStringLiteral("The password does not open the configuration archive"), 20000);
        QCOMPARE(importing.result(), int(QDialog::Rejected));
        QVERIFY(importing.actionButton()->isEnabled());

        importing.passwordEdit()->setText(QStringLiteral("harbour light"));
        importing.replaceBox()->setChecked(false);
        importing.actionButton()->click();
        QTRY_COMPARE_WITH_TIMEOUT(importing.result(), int(QDialog::Accepted), 20000);
        QCOMPARE(importing.resultText(),
            QStringLiteral("Imported 0 plans and 0 storage accounts; 2 that exist here were kept"));
    }

    // The console window's Settings… button, on the same service.
    void settingsOpenOverTheWindowWithItsAccounts()
    {
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

QTEST_MAIN(TestConfigurationDialogs)
#include "tst_configuration_dialogs.moc"
