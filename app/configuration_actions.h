#pragma once

#include <QList>
#include <QObject>

class QAction;
class QMainWindow;

namespace TWB::Host {

/// "Export configuration…" and "Import configuration…": each opens its dialog over the window and
/// tells in the status bar what was done.
class ConfigurationActions final : public QObject
{
    Q_OBJECT
    Q_DISABLE_COPY(ConfigurationActions)
public:
    explicit ConfigurationActions(QMainWindow* window);
    ~ConfigurationActions() override;

    QAction* exportAction() const { return m_export; }
    QAction* importAction() const { return m_import; }
    QList<QAction*> actions() const { return {m_export, m_import}; }

private:
    template <typename Dialog> void open();

    QMainWindow* m_window; // not owned: the parent
    QAction* m_export = nullptr; // owned by parent-child
    QAction* m_import = nullptr; // owned by parent-child
};

} // namespace TWB::Host
