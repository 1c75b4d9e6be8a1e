#include "widgets/progress_wheel.h"
#include "widgets/progress_wheel_p.h"

#include <QGuiApplication>
#include <QHBoxLayout>
#include <QLabel>
#include <QMovie>
#include <QPainter>
#include <QTimer>

namespace TWB::GUI {

ProgressWheelPrivate::~ProgressWheelPrivate() = default;

MovieProgressWheelPrivate::MovieProgressWheelPrivate(QWidget* parent)
    : ProgressWheelPrivate(parent)
    , label(new QLabel(this))
    , movie(new QMovie(this))
{
    ProgressWheel::configurateMovie(movie, parent);
    // The double-density frames are shown at half their pixel size, so the wheel is 16 logical pixels
    // on every screen and never rescaled.
    ratio = movie->scaledSize().width() / 16.0;
    auto layout = new QHBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(label);
    label->setFixedSize(16, 16);
    label->hide();
    setFixedSize(16, 16);
    connect(movie, &QMovie::frameChanged, this, &MovieProgressWheelPrivate::onFrameChanged);
}

void MovieProgressWheelPrivate::animate(bool on)
{
    if (on) {
        movie->start();
        label->show();
    } else {
        label->hide();
        movie->stop();
    }
}

bool MovieProgressWheelPrivate::isAnimated() const
{
    return movie->state() == QMovie::Running;
}

void MovieProgressWheelPrivate::onFrameChanged()
{
    QPixmap frame = movie->currentPixmap();
    frame.setDevicePixelRatio(ratio);
    label->setPixmap(frame);
}

MacProgressWheelPrivate::MacProgressWheelPrivate(QWidget* parent)
    : ProgressWheelPrivate(parent)
    , timer(new QTimer(this))
{
    setFixedSize(16, 16);
    timer->setInterval(80);
    connect(timer, &QTimer::timeout, this, [this] {
        step = (step + 1) % 12;
        update();
    });
}

void MacProgressWheelPrivate::animate(bool on)
{
    if (on)
        timer->start();
    else
        timer->stop();
    update();
}

bool MacProgressWheelPrivate::isAnimated() const
{
    return timer->isActive();
}

void MacProgressWheelPrivate::paintEvent(QPaintEvent*)
{
    if (!timer->isActive())
        return;
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.translate(width() / 2.0, height() / 2.0);
    const qreal outer = qMin(width(), height()) / 2.0;
    for (int i = 0; i < 12; ++i) {
        const int age = (step - i + 12) % 12;
        QColor color = palette().color(QPalette::WindowText);
        color.setAlphaF(1.0 - age / 13.0);
        painter.setPen(QPen(color, outer / 4.0, Qt::SolidLine, Qt::RoundCap));
        painter.save();
        painter.rotate(i * 30.0);
        painter.drawLine(QPointF(0, -outer * 0.45), QPointF(0, -outer * 0.85));
        painter.restore();
    }
}

ProgressWheel::ProgressWheel(Style style, QWidget* parent)
    : QWidget(parent)
    , m_style(style)
{
    auto layout = new QHBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    d = new MovieProgressWheelPrivate(this);
    layout->addWidget(d);
    setFixedSize(d->size());
}

ProgressWheel::ProgressWheel(QWidget* parent)
    : ProgressWheel(Inline, parent)
{ }

ProgressWheel::~ProgressWheel() = default;

bool ProgressWheel::isAnimated() const
{
    return d && d->isAnimated();
}

void ProgressWheel::animate(bool on)
{
    if (d)
        d->animate(on);
}

void ProgressWheel::configurateMovie(QMovie* movie, const QWidget* widget)
{
    const double scale = widget ? widget->devicePixelRatioF() : (qApp ? qApp->devicePixelRatio() : 1.0);
    configurateMovie(movie, scale);
}

void ProgressWheel::configurateMovie(QMovie* movie, double scale)
{
    if (!movie)
        return;
    if (scale <= 1.0) {
        movie->setFileName(QStringLiteral("://images/process32.gif"));
        movie->setScaledSize(QSize(16, 16));
    } else {
        movie->setFileName(QStringLiteral("://images/process32@2x.gif"));
        movie->setScaledSize(QSize(32, 32));
    }
    movie->setSpeed(200);
}

} // namespace TWB::GUI
