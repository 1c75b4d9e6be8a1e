#include "settings/list_widget.h"

#include <QDragEnterEvent>
#include <QMimeData>

namespace TWB::GUI::Settings {

ListWidget::ListWidget(QWidget* parent)
    : QListWidget(parent)
{
    setDragDropMode(QAbstractItemView::DropOnly);
    viewport()->setAcceptDrops(true);
    setDropIndicatorShown(true);
}

bool ListWidget::accepts(const QMimeData* data) const
{
    return data && data->hasFormat(QStringLiteral("text/plain")) && findItems(data->text(), Qt::MatchExactly).isEmpty();
}

void ListWidget::dragEnterEvent(QDragEnterEvent* event)
{
    if (accepts(event->mimeData()))
        event->acceptProposedAction();
    else
        event->ignore();
}

void ListWidget::dragMoveEvent(QDragMoveEvent* event)
{
    if (accepts(event->mimeData()))
        event->acceptProposedAction();
    else
        event->ignore();
}

void ListWidget::dropEvent(QDropEvent* event)
{
    if (!accepts(event->mimeData())) {
        event->ignore();
        return;
    }
    addItem(event->mimeData()->text());
    setCurrentRow(count() - 1);
    setFocus();
    event->acceptProposedAction();
}

} // namespace TWB::GUI::Settings
