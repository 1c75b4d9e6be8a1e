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

    /// The label's text; hides the button's own, which stays empty.
    QString text() const;
    void setText(const QString& text);
    QLabel* label() const;

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

protected:
    bool hitButton(const QPoint& pos) const override;

private:
    ButtonTextLabel* textLabel; // owned as a child
};

} // namespace TWB::GUI
