#include "storages/storages_add_container.h"

#include <QDialogButtonBox>
#include <QFormLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QVBoxLayout>

namespace TWB::GUI::Settings {

Storages::AddContainer::AddContainer(QWidget* parent)
    : QDialog(parent)
    , form(new QFormLayout)
    , edit(new QLineEdit(this))
    , note(new QLabel(this))
    , buttons(new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, this))
{
    setWindowTitle(tr("Add New Container"));
    auto layout = new QVBoxLayout(this);
    edit->setMinimumWidth(200);
    form->addRow(tr("Container Name:"), edit);
    layout->addLayout(form);
    note->setWordWrap(true);
    note->hide();
    layout->addWidget(note);
    layout->addWidget(buttons);
    okButton()->setEnabled(false);
    connect(edit, &QLineEdit::textChanged, this, &AddContainer::onDataChanged);
    connect(buttons, &QDialogButtonBox::accepted, this, &AddContainer::onAccept);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
}

Storages::AddContainer::~AddContainer() = default;

QString Storages::AddContainer::name() const
{
    return edit->text().trimmed();
}

QPushButton* Storages::AddContainer::okButton() const
{
    return buttons->button(QDialogButtonBox::Ok);
}

void Storages::AddContainer::setNote(const QString& text)
{
    note->setText(text);
    note->setVisible(!text.isEmpty());
}

void Storages::AddContainer::onDataChanged()
{
    okButton()->setEnabled(!edit->text().trimmed().isEmpty());
}

void Storages::AddContainer::onAccept()
{
    if (okButton()->isEnabled())
        accept();
}

} // namespace TWB::GUI::Settings
