#pragma once

#include "twbconsole_export.h"

#include <QPointer>
#include <QWidget>

class QMovie;

namespace TWB::GUI {

class ProgressWheelPrivate;

/// A small turning wheel that shows that the console waits for something. It keeps its size while
/// stopped, so that starting it never moves the widgets around it.
class TWBCONSOLE_EXPORT ProgressWheel : public QWidget
{
    Q_OBJECT
    Q_DISABLE_COPY(ProgressWheel)
public:
    /// Where the wheel stands. On this platform every style shows the animated movie; the style
    /// is kept for callers that pick a look by it.
    enum Style : int { Inline = 0, Panel = 1, Dialog = 2 };
    Q_ENUM(Style)

    ProgressWheel(Style style, QWidget* parent = nullptr);
    explicit ProgressWheel(QWidget* parent = nullptr);
    ~ProgressWheel() override;

    Style style() const { return m_style; }
    bool isAnimated() const;

    /// Picks the movie file and its scaled size for the pixel ratio of `widget`'s screen, or of the
    /// application when `widget` is null.
    static void configurateMovie(QMovie* movie, const QWidget* widget);
    /// 16 by 16 pixels at a scale of at most 1.0, otherwise the double-density movie at 32 by 32.
    static void configurateMovie(QMovie* movie, double scale);

public Q_SLOTS:
    void animate(bool on);
    void startAnimate() { animate(true); }
    void stopAnimate() { animate(false); }

private:
    Style m_style;
    QPointer<ProgressWheelPrivate> d; // owned as a child
};

} // namespace TWB::GUI
