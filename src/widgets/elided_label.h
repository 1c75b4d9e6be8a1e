#pragma once

#include "twbconsole_export.h"

#include <QLabel>

namespace TWB::GUI {

/// A one-line label that shortens its text with an ellipsis instead of growing its window.
/// With Qt::ElideNone it is a plain QLabel.
class TWBCONSOLE_EXPORT ElidedLabel : public QLabel
{
    Q_OBJECT
    Q_DISABLE_COPY(ElidedLabel)
public:
    explicit ElidedLabel(QWidget* parent = nullptr);
    explicit ElidedLabel(const QString& text, QWidget* parent = nullptr);
    ~ElidedLabel() override;

    Qt::TextElideMode elideMode() const { return mode; }
    void setElideMode(Qt::TextElideMode elideMode);
    /// The text as painted at the present width.
    QString elidedText();

    QSize minimumSizeHint() const override;

protected:
    void cacheElidedText(int width);
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;

private:
    Qt::TextElideMode mode = Qt::ElideRight;
    QString cachedText;
    QString cachedSource;
    int cachedWidth = -1;
};

} // namespace TWB::GUI
