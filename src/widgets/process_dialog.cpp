#include "widgets/process_dialog.h"

#include "widgets/progress_wheel.h"

#include <QDialogButtonBox>
#include <QHBoxLayout>
#include <QVBoxLayout>

namespace TWB::GUI {

ProcessDialog::ProcessDialog(QWidget* parent)
    : QDialog(parent)
    , mainLayout(new QVBoxLayout(this))
    , bottomLayout(new QHBoxLayout)
    , wheel(new ProgressWheel(ProgressWheel::Dialog, this))
{
    mainLayout->setContentsMargins(0, 0, 0, 0);
    mainLayout->setSpacing(0);
    bottomLayout->setContentsMargins(15, 0, 15, 15);
    bottomLayout->addWidget(wheel);
    bottomLayout->addStretch(1);
    mainLayout->addLayout(bottomLayout);
}

ProcessDialog::~ProcessDialog() = default;

void ProcessDialog::setCentralLayout(QLayout* layout)
{
    if (central || !layout)
        return;
    central = layout;
    central->setContentsMargins(15, 15, 15, 15);
    central->setSpacing(9);
    mainLayout->insertLayout(0, central);
}

void ProcessDialog::addDialogButtons(QDialogButtonBox* box)
{
    bottomLayout->addWidget(box);
}

void ProcessDialog::startWaitProcess(bool start)
{
    wheel->animate(start);
}

void ProcessDialog::showWaitProcess(bool wait)
{
    setEnabled(!wait);
    startWaitProcess(wait);
    setCursor(wait ? Qt::WaitCursor : Qt::ArrowCursor);
}

} // namespace TWB::GUI
