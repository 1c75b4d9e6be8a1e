#include "widgets/check_box.h"

#include "widgets/button_text_label_p.h"

#include <QLayout>
#include <QStyle>
#include <QStyleOptionButton>

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
    : QCheckBox(parent)
    , textLabel(new ButtonTextLabel(text, this, labelIndent(this)))
{ }

CheckBox::~CheckBox() = default;

QString CheckBox::text() const
{
    return textLabel->text();
}

void CheckBox::setText(const QString& text)
{
    textLabel->setText(text);
    updateGeometry();
}

QLabel* CheckBox::label() const
{
    return textLabel;
}

QSize CheckBox::sizeHint() const
{
    const QSize indicator = QCheckBox::sizeHint();
    const QSize content = layout()->sizeHint();
    return QSize(qMax(indicator.width(), content.width()), qMax(indicator.height(), content.height()));
}

QSize CheckBox::minimumSizeHint() const
{
    const QSize indicator = QCheckBox::minimumSizeHint();
    const QSize content = layout()->minimumSize();
    return QSize(qMax(indicator.width(), content.width()), qMax(indicator.height(), content.height()));
}

bool CheckBox::hitButton(const QPoint& pos) const
{
    QStyleOptionButton option;
    initStyleOption(&option);
    return option.rect.contains(pos);
}

} // namespace TWB::GUI
