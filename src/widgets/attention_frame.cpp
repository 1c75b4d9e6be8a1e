#include "widgets/attention_frame.h"

#include <QHBoxLayout>
#include <QLabel>

namespace TWB::GUI {

AttentionFrame::AttentionFrame(const QString& message, QWidget* parent)
    : QWidget(parent)
    , label(new QLabel(this))
{
    auto layout = new QHBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    label->setWordWrap(true);
    label->setTextFormat(Qt::RichText);
    layout->addWidget(label);
    connect(this, &AttentionFrame::textChanged, label, &QLabel::setText);
    setMessage(message);
}

AttentionFrame::~AttentionFrame() = default;

QString AttentionFrame::text() const
{
    return label->text();
}

void AttentionFrame::setMessage(const QString& message)
{
    m_message = message;
    Q_EMIT textChanged(QStringLiteral("<small><font color=\"red\"> %1</font>%2</small>")
                           .arg(tr("ATTENTION: "), message.toHtmlEscaped()));
}

} // namespace TWB::GUI
