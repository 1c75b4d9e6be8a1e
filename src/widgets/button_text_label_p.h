#pragma once

#include <QLabel>

class QAbstractButton;

namespace TWB::GUI {

/// The text of a CheckBox or RadioButton, in a label of its own beside the indicator, so that it can
/// wrap and carry rich text. A left click released on the label clicks the button.
class ButtonTextLabel final : public QLabel
{
    Q_OBJECT
    Q_DISABLE_COPY(ButtonTextLabel)
public:
    /// Lays the label out inside `button`, `indent` pixels from its left edge.
    ButtonTextLabel(const QString& text, QAbstractButton* button, int indent);

    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    QAbstractButton* button; // not owned: the parent
};

} // namespace TWB::GUI
