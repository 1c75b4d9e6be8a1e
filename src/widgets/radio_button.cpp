#include "widgets/radio_button.h"

#include "widgets/button_text_label_p.h"

#include <QLayout>
#include <QStyle>
#include <QStyleOptionButton>
#include <QStylePainter>

namespace TWB::GUI {

namespace {

int labelIndent(const QWidget* button)
{
    return button->style()->pixelMetric(QStyle::PM_ExclusiveIndicatorWidth, nullptr, button)
        + button->style()->pixelMetric(QStyle::PM_RadioButtonLabelSpacing, nullptr, button);
}

} // namespace

RadioButton::RadioButton(QWidget* parent)
    : RadioButton(QString(), parent)
{ }

RadioButton::RadioButton(const QString& text, QWidget* parent)
    : QRadioButton(text, parent)
    , textLabel(new ButtonTextLabel(text, this, labelIndent(this)))
{ }

RadioButton::~RadioButton() = default;

QLabel* RadioButton::label() const
{
    syncLabel();
    return textLabel;
}

void RadioButton::syncLabel() const
{
    // QAbstractButton::setText() is not virtual and sends no event: every reader of the label checks first.
    if (textLabel->text() != text())
        textLabel->setText(text());
}

QSize RadioButton::indicatorSize() const
{
    QStyleOptionButton option;
    initStyleOption(&option);
    option.text.clear();
    return style()->sizeFromContents(QStyle::CT_RadioButton, &option, QSize(0, fontMetrics().height()), this);
}

QSize RadioButton::sizeHint() const
{
    syncLabel();
    const QSize indicator = indicatorSize();
    const QSize content = layout()->sizeHint();
    return QSize(qMax(indicator.width(), content.width()), qMax(indicator.height(), content.height()));
}

QSize RadioButton::minimumSizeHint() const
{
    syncLabel();
    const QSize indicator = indicatorSize();
    const QSize content = layout()->minimumSize();
    return QSize(qMax(indicator.width(), content.width()), qMax(indicator.height(), content.height()));
}

void RadioButton::paintEvent(QPaintEvent*)
{
    syncLabel();
    QStylePainter painter(this);
    QStyleOptionButton option;
    initStyleOption(&option);
    option.text.clear();
    painter.drawControl(QStyle::CE_RadioButton, option);
}

bool RadioButton::hitButton(const QPoint& pos) const
{
    QStyleOptionButton option;
    initStyleOption(&option);
    return option.rect.contains(pos);
}

} // namespace TWB::GUI
