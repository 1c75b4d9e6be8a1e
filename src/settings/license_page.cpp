#include "settings/license_page.h"

#include "frame/application.h"
#include "frame/license_restrictions.h"

#include <QFormLayout>
#include <QGroupBox>
#include <QLabel>
#include <QVBoxLayout>

namespace TWB::GUI::Settings {

namespace {

QString allowed(bool yes)
{
    return yes ? LicensePage::tr("Included") : LicensePage::tr("Not included");
}

} // namespace

LicensePage::LicensePage(QWidget* parent)
    : QWidget(parent)
{
    setWindowTitle(tr("License"));
    auto* group = new QGroupBox(tr("Your license"), this);
    auto* form = new QFormLayout(group);
    edition = new QLabel(group);
    notices = new QLabel(group);
    actions = new QLabel(group);
    shares = new QLabel(group);
    auto* version = new QLabel(TWB::GUI::Application::buildVersion(), group);
    version->setTextInteractionFlags(Qt::TextSelectableByMouse);
    form->addRow(tr("Edition:"), edition);
    form->addRow(tr("Version:"), version);
    form->addRow(tr("E-mail notices:"), notices);
    form->addRow(tr("Pre- and post-actions:"), actions);
    form->addRow(tr("Network shares in one plan:"), shares);
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(group);
    layout->addStretch(1);
    loadSettings();
}

void LicensePage::loadSettings()
{
    using License::LicenseRestrictions;
    edition->setText(QStringLiteral("<b>%1</b>").arg(LicenseRestrictions::editionTitle().toHtmlEscaped()));
    notices->setText(allowed(LicenseRestrictions::isNotificationsAvailable()));
    actions->setText(allowed(LicenseRestrictions::isPrePostActionsAvailable()));
    const int limit = LicenseRestrictions::shareLimit();
    shares->setText(limit < 0 ? tr("Any number") : QString::number(limit));
}

} // namespace TWB::GUI::Settings
