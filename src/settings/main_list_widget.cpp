#include "settings/main_list_widget.h"

#include "settings/list_widget.h"

#include <QAction>
#include <QRadioButton>
#include <QVBoxLayout>

namespace TWB::GUI::Settings {

MainListWidget::MainListWidget(const QString& title, QWidget* parent)
    : QWidget(parent)
{
    radio = new QRadioButton(title, this);
    list = new ListWidget(this);
    list->setContextMenuPolicy(Qt::ActionsContextMenu);
    auto* remove = new QAction(tr("Remove"), list);
    remove->setShortcut(QKeySequence::Delete);
    remove->setShortcutContext(Qt::WidgetShortcut);
    list->addAction(remove);
    connect(remove, &QAction::triggered, this, &MainListWidget::onRemove);
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(radio);
    layout->addWidget(list);
    connect(radio, &QRadioButton::toggled, this, &MainListWidget::setActive);
    setActive(false);
}

void MainListWidget::clear()
{
    list->clear();
}

void MainListWidget::addItem(const QString& text)
{
    list->addItem(text);
}

void MainListWidget::addItems(const QStringList& texts)
{
    list->addItems(texts);
}

int MainListWidget::count() const
{
    return list->count();
}

bool MainListWidget::isActivated() const
{
    return radio->isChecked();
}

QStringList MainListWidget::items() const
{
    QStringList texts;
    for (int row = 0; row < list->count(); ++row)
        texts << list->item(row)->text();
    return texts;
}

void MainListWidget::setActive(bool active)
{
    if (radio->isChecked() != active)
        radio->setChecked(active);
    list->setEnabled(active);
}

void MainListWidget::onRemove()
{
    delete list->takeItem(list->currentRow());
}

} // namespace TWB::GUI::Settings
