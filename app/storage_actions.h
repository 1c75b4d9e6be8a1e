#pragma once

#include <QList>
#include <QObject>
#include <QPointer>
#include <QStringList>
#include <QUuid>

class QAction;
class QMenu;
class QModelIndex;
class QTabWidget;
class QToolBar;
class QTreeView;

namespace TWB::Host {

/// What a user does with the storage accounts tab: add an account (the chooser of back-ends as a menu),
/// edit it, see its details and remove it, from a small tool bar at the tab bar's corner, from the
/// rows' context menu, and by a double-click, which shows the details.
class StorageBrowseView;

class StorageActions final : public QObject
{
    Q_OBJECT
    Q_DISABLE_COPY(StorageActions)
public:
    /// `view` is the tab of `tabs` that lists the accounts; dialogs open over `window`.
    StorageActions(QTreeView* view, QTabWidget* tabs, QWidget* window);
    ~StorageActions() override;

    QAction* addAction() const { return m_add; }
    QAction* editAction() const { return m_edit; }
    QAction* infoAction() const { return m_info; }
    QAction* browseAction() const { return m_browse; }
    QAction* removeAction() const { return m_remove; }
    /// The back-ends offered by Add; null where only a local folder can be added.
    QMenu* addMenu() const { return m_menu; }
    QToolBar* toolBar() const { return m_bar; }
    /// Takes the tool bar away from the tab bar's corner, for a window that shows the actions in a tool
    /// bar of its own; returns the actions to show there.
    QList<QAction*> leaveCorner();

    void add(int type);
    void edit();
    void info();
    void remove();
    /// Opens what the selected account holds; the window stays open beside the console.
    StorageBrowseView* browse();

Q_SIGNALS:
    /// Items chosen in a browse window, for the restore wizard.
    void restoreRequested(const QUuid& storageId, const QStringList& items);

private:
    QModelIndex current() const;
    void updateActions();

    QTreeView* m_view; // not owned
    QTabWidget* m_tabs; // not owned
    QPointer<QWidget> m_window;
    QToolBar* m_bar = nullptr; // owned by the tab widget once set as its corner
    QMenu* m_menu = nullptr; // owned by the tool bar
    QAction* m_add = nullptr; // owned by the tool bar
    QAction* m_edit = nullptr; // owned by the tool bar
    QAction* m_info = nullptr; // owned by the tool bar
    QAction* m_browse = nullptr; // owned by the tool bar
    QAction* m_remove = nullptr; // owned by the tool bar
};

} // namespace TWB::Host
