#include "settings/backup.h"

#include "settings/retention_policy.h"

#include <QFormLayout>
#include <QGroupBox>
#include <QVBoxLayout>

namespace TWB::GUI::Settings {

Backup::Backup(QWidget* parent)
    : OptionsPage(tr("Backup"), parent)
{
    auto* group = new QGroupBox(tr("Default retention policy"), this);
    m_retention = new RetentionPolicy(group);
    (new QVBoxLayout(group))->addWidget(m_retention);
    pageLayout()->insertWidget(0, group);

    QFormLayout* power = addGroup(tr("Power"));
    addFlag(power, tr("Run scheduled backups on battery power"), QStringLiteral("BackUpOnBattery"), true);
    addNote(power,
        tr("When this is off, a scheduled backup waits for mains power and stops when the computer "
           "goes on battery."));
}

void Backup::loadSettings()
{
    OptionsPage::loadSettings();
    m_retention->loadSettings();
}

} // namespace TWB::GUI::Settings
