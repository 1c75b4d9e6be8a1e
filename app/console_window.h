#pragma once

#include "app/service_launcher.h"

#include <QHash>
#include <QList>
#include <QMainWindow>
#include <QPointer>
#include <QUuid>

class QAction;
class QLabel;
class QPushButton;
class QTabWidget;
class QToolBar;
class QTreeView;

namespace TWB::GUI {
class ApplicationEventController;
class BaseModel;
class PlanControlObject;
} // namespace TWB::GUI

namespace TWB::Info::Plan {
class Base;
} // namespace TWB::Info::Plan

namespace TWB::Host {

class HistoryView;
class DesktopNotifier;
class ConfigurationActions;
class RunProgressDelegate;
class StorageActions;

/// The console's main window: the plan tables with live progress, the storage accounts, the plan
/// controls, and the state of the link to the local service.
class ConsoleWindow final : public QMainWindow
{
    Q_OBJECT
    Q_DISABLE_COPY(ConsoleWindow)
public:
    ConsoleWindow(
        TWB::GUI::ApplicationEventController& controller, ServiceLauncher& launcher, QWidget* parent = nullptr);
    ~ConsoleWindow() override;

    /// The connection text the status bar shows.
    QString connectionText() const;

    QTabWidget* tabs() const { return m_tabs; }
    QTreeView* backupView() const { return m_backupView; }
    QTreeView* restoreView() const { return m_restoreView; }
    /// The storage accounts, when the host registered their model.
    QTreeView* storageView() const { return m_storageView; }
    /// Add, edit, details and remove of the storage accounts; null without the storage tab.
    StorageActions* storageActions() const { return m_storageActions; }
    /// The runs and file operations of the plans, when the host registered their models.
    HistoryView* historyView() const { return m_historyView; }
    DesktopNotifier* desktopNotifier() const { return m_desktopNotifier; }
    /// Export and import of the configuration, in the File menu.
    ConfigurationActions* configurationActions() const { return m_configurationActions; }
    QAction* startAction() const { return m_start; }
    QAction* stopAction() const { return m_stop; }
    QAction* runFullAction() const { return m_runFull; }
    QAction* removeAction() const { return m_remove; }
    QAction* newBackupAction() const { return m_newBackup; }
    QAction* editAction() const { return m_edit; }
    QAction* newRestoreAction() const { return m_newRestore; }
    QAction* restoreAction() const { return m_restore; }
    /// Opens the restore wizard on `items` of the storage account `storage`.
    void restoreFromStorage(const QUuid& storage, const QStringList& items);
    /// Opens the settings dialog; it stands beside the tabs, whichever is in view.
    QAction* settingsAction() const { return m_settings; }
    /// The plan the controls act on: the one selected on the plan tab in view, or none.
    QUuid currentPlan() const { return m_currentPlan; }
    QToolBar* toolBar() const { return m_toolbar; }

    /// The actions the toolbar offers while `tab` is in view; the plan tabs offer the plan actions,
    /// the storage tab none until its owner gives it some. Actions not yet on the toolbar are added.
    void setTabActions(QWidget* tab, const QList<QAction*>& actions);
    QList<QAction*> tabActions(QWidget* tab) const { return m_tabActions.value(tab); }

    /// Puts the window and its columns where the user left them.
    void restoreLayout();
    void saveLayout() const;

protected:
    void closeEvent(QCloseEvent* event) override;

private:
    QTreeView* makePlanView(const QString& modelName);
    QTreeView* makeStorageView();
    void buildActions();
    void showConnection(const QString& text, const QString& detail, const QColor& colour, bool canRetry);
    void onConnected();
    void onDisconnected();
    void onLauncherState(ServiceLauncher::State state);
    void onUpdateStarted();
    void onSelectionChanged(QTreeView* view);
    void onTabChanged();
    void updateToolbar();
    void onStatusChanged(int subType, int status);
    void setServiceAway(bool away);
    void watchRunsForStorages();
    void onRemoveClicked();
    void onNewBackupPlan();
    /// Opens the selected plan in its wizard.
    void onEditPlan();
    void onNewRestorePlan();
    void onRestoreFromPlan();
    /// The selected plan's document, or null after telling the user it is still being read.
    TWB::Info::Plan::Base* currentPlanDocument(const QString& title);
    void onCurrentPlanRemoved(const QUuid& id);
    void onPlanProgress(const QUuid& id);
    void refreshAfterReconnection();

    ServiceLauncher& m_launcher;
    TWB::GUI::PlanControlObject* m_control = nullptr; // owned by parent-child
    DesktopNotifier* m_desktopNotifier = nullptr; // owned by parent-child
    QTabWidget* m_tabs = nullptr; // owned by parent-child
    QTreeView* m_backupView = nullptr; // owned by parent-child
    QTreeView* m_restoreView = nullptr; // owned by parent-child
    QTreeView* m_storageView = nullptr; // owned by parent-child
    StorageActions* m_storageActions = nullptr; // owned by m_storageView
    HistoryView* m_historyView = nullptr; // owned by parent-child
    ConfigurationActions* m_configurationActions = nullptr; // owned by parent-child
    QAction* m_start = nullptr; // owned by parent-child
    QAction* m_stop = nullptr; // owned by parent-child
    QAction* m_runFull = nullptr; // owned by parent-child
    QAction* m_remove = nullptr; // owned by parent-child
    QAction* m_newBackup = nullptr; // owned by parent-child
    QAction* m_edit = nullptr; // owned by parent-child
    QAction* m_newRestore = nullptr; // owned by parent-child
    QAction* m_restore = nullptr; // owned by parent-child
    QAction* m_settings = nullptr; // owned by parent-child
    QToolBar* m_toolbar = nullptr; // owned by parent-child
    QHash<QWidget*, QList<QAction*>> m_tabActions;
    QHash<QAction*, QString> m_toolTips; // each plan action's own tip, while the service answers
    QList<RunProgressDelegate*> m_progressDelegates; // owned by their views
    QHash<QUuid, bool> m_running; // plans seen running, to learn when a run ends
    int m_subType = 0;
    int m_status = 0;
    bool m_away = false;
    QLabel* m_connectionDot = nullptr; // owned by parent-child
    QLabel* m_connectionText = nullptr; // owned by parent-child
    QPushButton* m_retry = nullptr; // owned by parent-child
    QUuid m_currentPlan;
    bool m_wasConnected = false;
    bool m_lostConnection = false;
};

} // namespace TWB::Host
