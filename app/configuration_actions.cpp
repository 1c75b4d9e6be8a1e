#include "app/configuration_actions.h"

#include "settings/configuration_export_dialog.h"
#include "settings/configuration_import_dialog.h"

#include <QAction>
#include <QMainWindow>
#include <QPointer>
#include <QStatusBar>

namespace TWB::Host {

ConfigurationActions::ConfigurationActions(QMainWindow* window)
    : QObject(window)
    , m_window(window)
{
    m_export = new QAction(tr("Export configuration…"), this);
    m_import = new QAction(tr("Import configuration…"), this);
    connect(m_export, &QAction::triggered, this,
        &ConfigurationActions::open<TWB::GUI::Settings::ConfigurationExportDialog>);
    connect(m_import, &QAction::triggered, this,
        &ConfigurationActions::open<TWB::GUI::Settings::ConfigurationImportDialog>);
}

ConfigurationActions::~ConfigurationActions() = default;

template <typename Dialog> void ConfigurationActions::open()
{
    QPointer<Dialog> dialog = new Dialog(m_window);
    const int result = dialog->exec();
    if (!dialog)
        return;
    if (result == QDialog::Accepted)
        m_window->statusBar()->showMessage(dialog->resultText(), 15000);
    delete dialog;
}

} // namespace TWB::Host
