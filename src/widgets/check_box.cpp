#include "widgets/check_box.h"

#include "widgets/button_text_label_p.h"

#include <QLayout>
#include <QStyle>
#include <QStyleOptionButton>
#include <QStylePainter>

namespace TWB::GUI {

namespace {

int labelIndent(const QWidget* button)
{
    return button->style()->pixelMetric(QStyle::PM_IndicatorWidth, nullptr, button)
        + button->style()->pixelMetric(QStyle::PM_CheckBoxLabelSpacing, nullptr, button);
}

} // namespace

CheckBox::CheckBox(QWidget* parent)
    : CheckBox(QString(), parent)
{ }

CheckBox::CheckBox(const QString& text, QWidget* parent)
    : QCheckBox(text, parent)
    , textLabel(new ButtonTextLabel(text, this, labelIndent(this)))
{ }

CheckBox::~CheckBox() = default;

QLabel* CheckBox::label() const
{
    syncLabel();
    return textLabel;
}

void CheckBox::syncLabel() const
{
    // QAbstractButton::setText() is not virtual and sends no event: every reader of the label checks first.
    if (textLabel->text() != text())
        textLabel->setText(text());
}

QSize CheckBox::indicatorSize() const
{
    QStyleOptionButton option;
    initStyleOption(&option);
    option.text.clear();
    return style()->sizeFromContents(QStyle::CT_CheckBox, &option, QSize(0, fontMetrics().height()), this);
}

QSize CheckBox::sizeHint() const
{
    syncLabel();
    const QSize indicator = indicatorSize();
    const QSize content = layout()->sizeHint();
    return QSize(qMax(indicator.width(), content.width()), qMax(indicator.height(), content.height()));
}

QSize CheckBox::minimumSizeHint() const
{
    syncLabel();
    const QSize indicator = indicatorSize();
    const QSize content = layout()->minimumSize();
    return QSize(qMax(indicator.width(), content.width()), qMax(indicator.height(), content.height()));
}

void CheckBox::paintEvent(QPaintEvent*)
{
    syncLabel();
    QStylePainter painter(this);
    QStyleOptionButton option;
    initStyleOption(&option);
    option.text.clear();
    painter.drawControl(QStyle::CE_CheckBox, option);
}

bool CheckBox::hitButton(const QPoint& pos) const
{
    QStyleOptionButton option;
    initStyleOption(&option);
    return option.rect.contains(pos);
}

} // namespace TWB::GUI
