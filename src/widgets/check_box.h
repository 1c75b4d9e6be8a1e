#pragma once

#include "twbconsole_export.h"

#include <QCheckBox>

class QLabel;

namespace TWB::GUI {

class ButtonTextLabel;

/// A QCheckBox whose text stands in a separate label beside the indicator: it may wrap or hold
/// rich text, and a click on it still toggles the button.
class TWBCONSOLE_EXPORT CheckBox : public QCheckBox
{
    Q_OBJECT
    Q_DISABLE_COPY(CheckBox)
public:
    explicit CheckBox(QWidget* parent = nullptr);
    explicit CheckBox(const QString& text, QWidget* parent = nullptr);
    ~CheckBox() override;

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
