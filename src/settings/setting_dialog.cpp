#include "settings/setting_dialog.h"

#include "frame/application.h"
#include "settings/advanced.h"
#include "settings/application.h"
#include "settings/backup.h"
#include "settings/email_settings_page.h"
#include "settings/license_page.h"
#include "settings/network.h"
#include "storages/storages.h"

#include <QDialogButtonBox>
#include <QTabWidget>
#include <QVBoxLayout>

namespace TWB::GUI {

SettingDialog::SettingDialog(QWidget* parent)
    : QDialog(parent, Qt::Sheet)
{
    setWindowTitle(tr("Settings"));
    m_tabs = new QTabWidget(this);
    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Close, this);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::close);
    connect(this, &SettingDialog::ForceClose, this, &QDialog::reject);
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(m_tabs);
    layout->addWidget(buttons);

    // One line a page; the managed edition has no page of its own for the provider's account yet.
    addPage(new Settings::Storages(this));
    addPage(new Settings::Backup(this));
    addPage(new Settings::Network(this));
    addPage(new Settings::Application(this));
    addPage(new Settings::EmailSettingsPage(this));
    addPage(new Settings::Advanced(this));
    if (TWB::GUI::Application::isStandalon())
        addPage(new Settings::LicensePage(this));
    resize(minimumSizeHint());
}

void SettingDialog::addPage(QWidget* page)
{
    m_tabs->addTab(page, page->windowTitle());
    if (page->metaObject()->indexOfSlot("loadSettings()") >= 0)
        connect(this, SIGNAL(meExec()), page, SLOT(loadSettings()));
}

int SettingDialog::exec()
{
    Q_EMIT meExec();
    return QDialog::exec();
}

} // namespace TWB::GUI
