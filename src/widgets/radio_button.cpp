#include "widgets/radio_button.h"

#include "widgets/button_text_label_p.h"

#include <QLayout>
#include <QStyle>
#include <QStyleOptionButton>

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
    : QRadioButton(parent)
    , textLabel(new ButtonTextLabel(text, this, labelIndent(this)))
{ }

RadioButton::~RadioButton() = default;

QString RadioButton::text() const
{
    return textLabel->text();
}

void RadioButton::setText(const QString& text)
{
    textLabel->setText(text);
    updateGeometry();
}

QLabel* RadioButton::label() const
{
    return textLabel;
}

QSize RadioButton::sizeHint() const
{
    const QSize indicator = QRadioButton::sizeHint();
    const QSize content = layout()->sizeHint();
    return QSize(qMax(indicator.width(), content.width()), qMax(indicator.height(), content.height()));
}

QSize RadioButton::minimumSizeHint() const
{
    const QSize indicator = QRadioButton::minimumSizeHint();
    const QSize content = layout()->minimumSize();
    return QSize(qMax(indicator.width(), content.width()), qMax(indicator.height(), content.height()));
}

bool RadioButton::hitButton(const QPoint& pos) const
{
    QStyleOptionButton option;
    initStyleOption(&option);
    return option.rect.contains(pos);
}

} // namespace TWB::GUI
