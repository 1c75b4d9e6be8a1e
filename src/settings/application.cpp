#include "settings/application.h"

#include "frame/license_restrictions.h"

#include <QFormLayout>
#include <QGroupBox>
#include <QLineEdit>

namespace TWB::GUI::Settings {

Application::Application(QWidget* parent)
    : OptionsPage(tr("Application"), parent)
{
    QFormLayout* notices = addGroup(tr("Plan notices"));
    addText(notices, tr("Default e-mail address:"), QStringLiteral("Notification email"))
        ->setPlaceholderText(tr("name@example.com"));
    addText(notices, tr("Default name:"), QStringLiteral("Notification user name"));
    if (License::LicenseRestrictions::isNotificationsAvailable()) {
        addNote(notices, tr("New plans send their notices here unless you change it in the plan."));
    } else {
        addNote(notices, tr("Your edition does not include e-mail notices."));
        notices->parentWidget()->setEnabled(false);
    }
}

} // namespace TWB::GUI::Settings
