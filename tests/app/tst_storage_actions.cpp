// The storage tab's own actions against the real twbd: a folder account added from the chooser menu,
// shown by a double-click, renamed and removed, as a user of twbgui does it.

#include "app/storage_actions.h"
#include "frame/model_manager.h"
#include "frame/model_names.h"
#include "frame/shared_model_creator.h"
#include "platform/cloud/cloud_type.h"
#include "platform/communication/connection_manager.h"
#include "storages/accounts/local.h"
#include "storages/storage_connections_model.h"
#include "storages/storage_connections_sort_model.h"
#include "storages/storages_info.h"
#include "support/modal_answerer.h"
#include "support/modal_driver.h"
#include "support/service_process.h"
#include "support/test_environment.h"

#include <QAction>
#include <QApplication>
#include <QLineEdit>
#include <QMenu>
#include <QMessageBox>
#include <QPushButton>
#include <QSignalSpy>
#include <QTabWidget>
#include <QToolBar>
#include <QTreeView>
#include <QtTest>

#include <memory>

using namespace TWB::GUI;
using TWB::Common::Communication::ConnectionManager;
using TWB::Host::StorageActions;
using TWB::Test::ModalAnswerer;
using TWB::Test::ModalDriver;
using TWB::Test::ServiceProcess;
using TWB::Test::TestEnvironment;

class TestStorageActions : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<TestEnvironment> m_env;
    std::unique_ptr<ServiceProcess> m_service;
    std::unique_ptr<SharedModelCreator<StorageConnectionsModel>> m_creator;

    static QModelIndex rowNamed(QTreeView& view, const QString& name)
    {
        QAbstractItemModel* model = view.model();
        return model->match(model->index(0, 0), Qt::DisplayRole, name, 1, Qt::MatchExactly).value(0);
    }

private Q_SLOTS:
    void initTestCase()
    {
        m_env = std::make_unique<TestEnvironment>();
        m_service = std::make_unique<ServiceProcess>(m_env->socketPath(), m_env->dataDir());
        QVERIFY2(m_service->start(), qPrintable(m_service->output()));
        QVERIFY(ConnectionManager::instance());
        TestEnvironment::speedUpChannel();
        QTRY_VERIFY(ConnectionManager::instance()->isLocalManagmentConnected());
        qputenv("USER", "alice");
        m_creator = std::make_unique<SharedModelCreator<StorageConnectionsModel>>(ModelNames::StorageConnection);
        ModelManager::instance()->registrateCreator(*m_creator);
    }

    void cleanupTestCase()
    {
        if (m_service)
            QVERIFY2(m_service->terminate(), qPrintable(m_service->output()));
    }

    void folderAccountIsAddedShownEditedAndRemoved()
    {
        auto model = ModelManager::instance()->create(ModelNames::StorageConnection);
        QSignalSpy complite(model, &BaseModel::complite);
        QVERIFY(model->init());
        QVERIFY(complite.wait());
        StorageConnectionsSortModel sorted;
        sorted.setSourceModel(model);
        sorted.sort(0);

        QTabWidget tabs;
        auto plans = new QWidget;
        auto view = new QTreeView;
        view->setModel(&sorted);
        tabs.addTab(plans, QStringLiteral("Backup plans"));
        tabs.addTab(view, QStringLiteral("Storage accounts"));
        tabs.resize(720, 320);
        auto actions = new StorageActions(view, &tabs, &tabs);
        tabs.show();

        // The tool bar belongs to the storage tab alone.
        QVERIFY(!actions->toolBar()->isVisible());
        tabs.setCurrentWidget(view);
        QVERIFY(actions->toolBar()->isVisible());
        QVERIFY(actions->addAction()->isEnabled());
        QVERIFY(!actions->editAction()->isEnabled());
        QVERIFY(!actions->removeAction()->isEnabled());

        QAction* folder = nullptr;
        const auto offered = actions->addMenu()->actions();
        for (QAction* action : offered) {
            if (action->data().toInt() == TWL::Cloud::FileSystem)
                folder = action;
        }
        QVERIFY(folder && folder->isEnabled());
        const QString path = m_env->root() + QStringLiteral("/backup disk");
        ModalDriver<Settings::Account::Local::Add> adder([&path](Settings::Account::Local::Add* form) {
            const auto edits = form->findChildren<QLineEdit*>();
            QTest::keyClicks(edits.value(0), QStringLiteral("Backup disk"));
            QTest::keyClicks(edits.value(1), path);
            QTest::mouseClick(form->okButton(), Qt::LeftButton);
        });
        folder->trigger();
        QVERIFY(adder.ran());
        const QModelIndex added = rowNamed(*view, QStringLiteral("Backup disk"));
        QVERIFY(added.isValid());
        QCOMPARE(added.sibling(added.row(), 2).data().toString(), path);

        // A double-click shows the account's settings.
        view->setCurrentIndex(added);
        QVERIFY(actions->editAction()->isEnabled());
        QVERIFY(tabs.grab().save(TestEnvironment::outputDir() + QStringLiteral("/storage_tab_actions.png")));
        QString title;
        QString shownPath;
        ModalDriver<QDialog> shower([&](QDialog* dialog) {
            title = dialog->windowTitle();
            if (auto info = dialog->findChild<Settings::Storages::Info*>())
                shownPath = info->fieldText(QStringLiteral("Path"));
            QVERIFY(dialog->grab().save(TestEnvironment::outputDir() + QStringLiteral("/storage_tab_info.png")));
            dialog->reject();
        });
        const QRect cell = view->visualRect(view->currentIndex());
        // A view takes a double-click only after the press that began it.
        QTest::mouseClick(view->viewport(), Qt::LeftButton, {}, cell.center());
        QTest::mouseDClick(view->viewport(), Qt::LeftButton, {}, cell.center());
        QVERIFY(shower.ran());
        QCOMPARE(title, QStringLiteral("Backup disk"));
        QCOMPARE(shownPath, path);

        ModalDriver<Settings::Account::Local::Add> editor([](Settings::Account::Local::Add* form) {
            QLineEdit* name = form->findChildren<QLineEdit*>().value(0);
            if (!QTest::qWaitFor([name] { return !name->text().isEmpty(); }))
                return form->reject();
            name->selectAll();
            QTest::keyClicks(name, QStringLiteral("Backup disk 2"));
            QTest::mouseClick(form->okButton(), Qt::LeftButton);
        });
        actions->editAction()->trigger();
        QVERIFY(editor.ran());
        QVERIFY(rowNamed(*view, QStringLiteral("Backup disk 2")).isValid());

        view->setCurrentIndex(rowNamed(*view, QStringLiteral("Backup disk 2")));
        ModalAnswerer remover(QMessageBox::Ok);
        actions->removeAction()->trigger();
        QVERIFY(remover.answered());
        QCOMPARE(remover.text(), QStringLiteral("Delete \"Backup disk 2\" account?"));
        QVERIFY(!rowNamed(*view, QStringLiteral("Backup disk 2")).isValid());
        QVERIFY(!actions->removeAction()->isEnabled() || view->currentIndex().isValid());
    }
};

QTEST_MAIN(TestStorageActions)
#include "tst_storage_actions.moc"
