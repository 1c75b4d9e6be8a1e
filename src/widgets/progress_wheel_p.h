#pragma once

#include <QWidget>

class QLabel;
class QMovie;
class QTimer;

namespace TWB::GUI {

/// The drawing behind a ProgressWheel.
class ProgressWheelPrivate : public QWidget
{
    Q_OBJECT
    Q_DISABLE_COPY(ProgressWheelPrivate)
public:
    using QWidget::QWidget;
    ~ProgressWheelPrivate() override;

    virtual void animate(bool on) = 0;
    virtual bool isAnimated() const = 0;
};

/// Plays the wait movie in a label.
class MovieProgressWheelPrivate final : public ProgressWheelPrivate
{
    Q_OBJECT
    Q_DISABLE_COPY(MovieProgressWheelPrivate)
public:
    explicit MovieProgressWheelPrivate(QWidget* parent);

    void animate(bool on) override;
    bool isAnimated() const override;

private:
    void onFrameChanged();

    QLabel* label; // owned as a child
    QMovie* movie; // owned as a child
    qreal ratio = 1.0;
};

/// The other platform's look: twelve spokes painted in fading grey. Not chosen by ProgressWheel here.
class MacProgressWheelPrivate final : public ProgressWheelPrivate
{
    Q_OBJECT
    Q_DISABLE_COPY(MacProgressWheelPrivate)
public:
    explicit MacProgressWheelPrivate(QWidget* parent);

    void animate(bool on) override;
    bool isAnimated() const override;
    QSize sizeHint() const override { return QSize(16, 16); }

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    QTimer* timer; // owned as a child
    int step = 0;
};

} // namespace TWB::GUI
