#include "widgets/section_line.h"

#include <QFrame>
#include <QLabel>
#include <QVBoxLayout>

namespace TWB::GUI {

SectionLine::SectionLine(const QString& title, QWidget* parent)
    : QWidget(parent)
    , label(new QLabel(title, this))
{
    QFont font = label->font();
    font.setPointSizeF(font.pointSizeF() - 1);
    label->setFont(font);
    auto line = new QFrame(this);
    line->setFrameShape(QFrame::HLine);
    line->setFrameShadow(QFrame::Sunken);
    auto layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(4);
    layout->addWidget(label);
    layout->addWidget(line);
}

SectionLine::~SectionLine() = default;

QString SectionLine::title() const
{
    return label->text();
}

} // namespace TWB::GUI
