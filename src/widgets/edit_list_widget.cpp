#include "widgets/edit_list_widget.h"

#include "widgets/icon_manager.h"

#include <QHBoxLayout>
#include <QItemSelectionModel>
#include <QListView>
#include <QPainter>
#include <QToolButton>
#include <QVBoxLayout>

namespace TWB::GUI {

namespace {

const QColor frameColor(159, 159, 159);

QFrame* rule(QFrame::Shape shape, QWidget* parent)
{
    auto line = new QFrame(parent);
    line->setFrameShape(shape);
    line->setFrameShadow(QFrame::Plain);
    QPalette palette = line->palette();
    palette.setColor(QPalette::WindowText, frameColor);
    line->setPalette(palette);
    return line;
}

} // namespace

EditListWidget::Delegate::Delegate(QObject* parent)
    : QStyledItemDelegate(parent)
{ }

void EditListWidget::Delegate::paint(
    QPainter* painter, const QStyleOptionViewItem& option, const QModelIndex& index) const
{
    QStyleOptionViewItem row(option);
    // The list is narrow and scrolls only up and down: a long name is elided at the view's edge.
    if (auto view = qobject_cast<const QAbstractItemView*>(option.widget))
        row.rect.setRight(qMin(row.rect.right(), view->viewport()->width() - 1));
    QStyledItemDelegate::paint(painter, row, index);
    painter->save();
    painter->setPen(QColor(226, 226, 226));
    painter->drawLine(row.rect.bottomLeft(), QPoint(option.rect.right(), row.rect.bottom()));
    painter->restore();
}

QSize EditListWidget::Delegate::sizeHint(const QStyleOptionViewItem& option, const QModelIndex& index) const
{
    QSize size = QStyledItemDelegate::sizeHint(option, index);
    size.setHeight(qMax(size.height() + 8, 26));
    return size;
}

EditListWidget::EditListWidget(bool readOnly, QWidget* parent)
    : QFrame(parent)
    , readOnly(readOnly)
    , list(new QListView(this))
    , buttonLayout(new QHBoxLayout)
{
    setFixedWidth(210);
    auto layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    list->setFrameShape(QFrame::NoFrame);
    list->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    list->setTextElideMode(Qt::ElideRight);
    layout->addWidget(list);
    layout->addWidget(rule(QFrame::HLine, this));
    buttonLayout->setContentsMargins(0, 0, 0, 0);
    buttonLayout->setSpacing(0);
    // A lone stretch first, so that buttons inserted before it line up to the left.
    buttonLayout->addStretch(1);
    layout->addLayout(buttonLayout);

    if (!readOnly) {
        add = addButton(IconManager::icon(IconManager::Add), QString());
        remove = addButton(IconManager::icon(IconManager::Remove), QString());
        remove->setEnabled(false);
        connect(add, &QToolButton::clicked, this, &EditListWidget::onAddClicked);
        connect(remove, &QToolButton::clicked, this, &EditListWidget::onRemoveClicked);
    }

    setFrameStyle(QFrame::Box | QFrame::Plain);
    setAutoFillBackground(true);
    QPalette palette = this->palette();
    palette.setColor(QPalette::WindowText, frameColor);
    setPalette(palette);
}

EditListWidget::~EditListWidget() = default;

QToolButton* EditListWidget::addButton(const QIcon& icon, const QString& text)
{
    auto button = new QToolButton(this);
    button->setIcon(icon);
    button->setText(text);
    button->setAutoRaise(true);
    button->setToolButtonStyle(text.isEmpty() ? Qt::ToolButtonIconOnly : Qt::ToolButtonTextBesideIcon);
    const int last = buttonLayout->count() - 1;
    buttonLayout->insertWidget(last, button);
    buttonLayout->insertWidget(last + 1, rule(QFrame::VLine, this));
    return button;
}

void EditListWidget::setModel(QAbstractItemModel* model, int column)
{
    list->setModel(model);
    list->setModelColumn(column);
    if (auto selection = list->selectionModel())
        connect(selection, &QItemSelectionModel::selectionChanged, this, &EditListWidget::onSelectionChanged);
    if (!dynamic_cast<Delegate*>(list->itemDelegate()))
        list->setItemDelegate(new Delegate(list));
}

void EditListWidget::onSetCurrentItem(const QModelIndex& index)
{
    if (remove)
        remove->setEnabled(index.isValid());
}

void EditListWidget::onAddClicked() { }

void EditListWidget::onRemoveClicked() { }

void EditListWidget::onSelectionChanged()
{
    const QModelIndexList selected
        = list->selectionModel() ? list->selectionModel()->selectedIndexes() : QModelIndexList();
    onSetCurrentItem(selected.isEmpty() ? QModelIndex() : selected.first());
}

} // namespace TWB::GUI
