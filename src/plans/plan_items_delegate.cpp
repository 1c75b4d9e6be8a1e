#include "plans/plan_items_delegate.h"

#include <QApplication>
#include <QPainter>
#include <QTextDocument>

namespace TWB::GUI {

namespace {

void prepare(QTextDocument& document, const QStyleOptionViewItem& option, const QModelIndex& index)
{
    document.setDefaultFont(option.font);
    document.setDocumentMargin(2);
    document.setHtml(PlanItemsDelegate::toText(index.data(Qt::DisplayRole), option.locale));
}

} // namespace

PlanItemsDelegate::PlanItemsDelegate(QObject* parent)
    : QStyledItemDelegate(parent)
{ }

PlanItemsDelegate::~PlanItemsDelegate() = default;

QString PlanItemsDelegate::displayText(const QVariant& value, const QLocale& locale) const
{
    return toText(value, locale);
}

QString PlanItemsDelegate::toText(const QVariant& value, const QLocale&)
{
    static const QString shares = QStringLiteral("/TWB_SHARES/");
    static const QString volumes = QStringLiteral("/TWB_VOLUMES/");
    QString html = QStringLiteral("<table>");
    for (QString item : value.toStringList()) {
        if (item.startsWith(shares))
            item.remove(0, shares.size());
        else if (item.startsWith(volumes))
            item.remove(0, volumes.size());
        // "</tb</tr>" is the established form of this text; QTextDocument tolerates it.
        html += QStringLiteral("<tr><td>") + item.toHtmlEscaped() + QStringLiteral("</tb</tr>");
    }
    html += QStringLiteral("</table>");
    return html;
}

void PlanItemsDelegate::paint(QPainter* painter, const QStyleOptionViewItem& option, const QModelIndex& index) const
{
    QStyleOptionViewItem background(option);
    initStyleOption(&background, index);
    background.text.clear();
    // The selection and the row background come from the style; the text is the document's.
    const QWidget* widget = option.widget;
    QStyle* style = widget ? widget->style() : QApplication::style();
    style->drawControl(QStyle::CE_ItemViewItem, &background, painter, widget);

    QTextDocument document;
    prepare(document, option, index);
    painter->save();
    painter->translate(option.rect.topLeft());
    // A short list stands in the middle of a row that other columns made taller.
    const qreal spare = option.rect.height() - document.size().height();
    if (spare > 0)
        painter->translate(0, spare / 2);
    document.drawContents(
        painter, QRectF(0, 0, option.rect.width(), qMin<qreal>(option.rect.height(), document.size().height())));
    painter->restore();
}

QSize PlanItemsDelegate::sizeHint(const QStyleOptionViewItem& option, const QModelIndex& index) const
{
    QTextDocument document;
    prepare(document, option, index);
    document.setTextWidth(document.idealWidth());
    return document.size().toSize();
}

} // namespace TWB::GUI
