#include "widgets/path_line_widget.h"

#include "widgets/icon_manager.h"

#include <QHBoxLayout>
#include <QPainter>
#include <QStyleOptionFrame>
#include <QToolButton>

namespace TWB::GUI {

namespace {

const QString buttonStyle = QStringLiteral("QToolButton {background-color: transparent; border: 0px}");

} // namespace

PathLineWidget::PathLineWidget(QWidget* parent)
    : QWidget(parent)
    , layout(new QHBoxLayout(this))
{
    layout->setContentsMargins(4, 2, 4, 2);
    layout->setSpacing(2);
    layout->addStretch(1);
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
}

PathLineWidget::~PathLineWidget() = default;

void PathLineWidget::setPath(const QString& path)
{
    const QStringList parts = path.split(QLatin1Char('/'), Qt::SkipEmptyParts);
    removeItems(0);
    QString sofar = path.startsWith(QLatin1Char('/')) ? QStringLiteral("/") : QString();
    for (const QString& part : parts) {
        if (!sofar.isEmpty() && !sofar.endsWith(QLatin1Char('/')))
            sofar += QLatin1Char('/');
        sofar += part;
        addItems(part, sofar);
    }
}

void PathLineWidget::addItems(const QString& name, const QString& path)
{
    Item item;
    item.arrow = new QToolButton(this);
    // The artwork of ":/images/right_arrow.svg", drawn for both pixel densities.
    item.arrow->setIcon(IconManager::icon(IconManager::RightArrow));
    item.arrow->setStyleSheet(buttonStyle);
    item.name = new QToolButton(this);
    item.name->setText(name);
    // By the name's type alone: asking the disk can block the GUI thread on a network mount, and a path
    // of a storage or of another computer is not on this disk at all.
    const bool isFile = !mimeTypes.mimeTypeForFile(name, QMimeDatabase::MatchExtension).isDefault();
    item.name->setIcon(iconProvider.icon(isFile ? QFileIconProvider::File : QFileIconProvider::Folder));
    item.name->setToolTip(path);
    item.name->setToolButtonStyle(Qt::ToolButtonTextBesideIcon);
    item.name->setStyleSheet(buttonStyle);
    // Before the trailing stretch.
    const int at = layout->count() - 1;
    layout->insertWidget(at, item.arrow);
    layout->insertWidget(at + 1, item.name);
    items.append(item);
}

void PathLineWidget::removeItems(int from)
{
    while (items.size() > qMax(0, from)) {
        const Item item = items.takeLast();
        delete item.arrow;
        delete item.name;
    }
}

void PathLineWidget::deleteItem()
{
    removeItems(items.size() - 1);
}

QToolButton* PathLineWidget::item(int index) const
{
    return index >= 0 && index < items.size() ? items.at(index).name : nullptr;
}

QSize PathLineWidget::sizeHint() const
{
    // As tall as a line edit, so that it lines up with the fields of a form: its height by the same measure,
    // without building one on each call.
    QStyleOptionFrame option;
    option.initFrom(this);
    option.lineWidth = style()->pixelMetric(QStyle::PM_DefaultFrameWidth, &option, this);
    option.midLineWidth = 0;
    option.state |= QStyle::State_Sunken;
    const int iconSize = style()->pixelMetric(QStyle::PM_SmallIconSize, nullptr, this);
    const int text = qMax(fontMetrics().height(), qMax(14, iconSize - 2)) + 2;
    const int height = style()->sizeFromContents(QStyle::CT_LineEdit, &option, QSize(0, text), this).height();
    return QSize(QWidget::sizeHint().width(), qMax(height, QWidget::sizeHint().height()));
}

void PathLineWidget::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    QStyleOptionFrame option;
    option.initFrom(this);
    option.lineWidth = style()->pixelMetric(QStyle::PM_DefaultFrameWidth, &option, this);
    option.midLineWidth = 0;
    option.state |= QStyle::State_Sunken | QStyle::State_ReadOnly;
    style()->drawPrimitive(QStyle::PE_PanelLineEdit, &option, &painter, this);
}

} // namespace TWB::GUI
