#include "settings/tree_widget.h"

#include <QMimeData>

namespace TWB::GUI::Settings {

TreeWidget::TreeWidget(QWidget* parent)
    : QTreeWidget(parent)
{
    setDragEnabled(true);
    setDragDropMode(QAbstractItemView::DragOnly);
}

QStringList TreeWidget::mimeTypes() const
{
    return {QStringLiteral("text/plain")};
}

QMimeData* TreeWidget::mimeData(const QList<QTreeWidgetItem*> items) const
{
    QStringList texts;
    for (const QTreeWidgetItem* item : items)
        texts << item->text(0);
    auto* data = new QMimeData;
    data->setText(texts.join(QLatin1Char('\n')));
    return data;
}

} // namespace TWB::GUI::Settings
