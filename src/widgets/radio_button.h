#pragma once

#include "twbconsole_export.h"

#include <QRadioButton>

class QLabel;

namespace TWB::GUI {

class ButtonTextLabel;

/// A QRadioButton whose text stands in a separate label beside the indicator: it may wrap or hold
/// rich text, and a click on it still toggles the button.
class TWBCONSOLE_EXPORT RadioButton : public QRadioButton
{
    Q_OBJECT
    Q_DISABLE_COPY(RadioButton)
public:
    explicit RadioButton(QWidget* parent = nullptr);
    explicit RadioButton(const QString& text, QWidget* parent = nullptr);
    ~RadioButton() override;

    /// The label that shows the button's text(); it follows every setText(), through a QAbstractButton*
    /// too, so that button groups and screen readers read the same words.
    QLabel* label() const;

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

protected:
    bool hitButton(const QPoint& pos) const override;
    /// The indicator alone: the label draws the text.
    void paintEvent(QPaintEvent* event) override;

private:
    /// Shows text() in the label when the two differ.
    void syncLabel() const;
    /// The size of the indicator without any text.
    QSize indicatorSize() const;
    ButtonTextLabel* textLabel; // owned as a child
};

} // namespace TWB::GUI
