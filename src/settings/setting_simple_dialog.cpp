#include "settings/setting_simple_dialog.h"

#include <QDialogButtonBox>
#include <QVBoxLayout>

namespace TWB::GUI {

SettingSimpleDialog::SettingSimpleDialog(QWidget* parent)
    : QDialog(parent, Qt::Sheet)
{
    layout = new QVBoxLayout(this);
    layout->addStretch(1);
    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Close, this);
    layout->addWidget(buttons);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
}

void SettingSimpleDialog::setWidget(QWidget* page)
{
    if (!page)
        return;
    setWindowTitle(page->windowTitle());
    layout->insertWidget(0, page);
    layout->setSizeConstraint(QLayout::SetFixedSize);
}

} // namespace TWB::GUI
