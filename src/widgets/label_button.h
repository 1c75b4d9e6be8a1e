#pragma once

#include "twbconsole_export.h"

#include <QColor>
#include <QLabel>

namespace TWB::GUI {

/// A text that acts as a link-like button: it takes the hover colour under the pointer and
/// sends clicked() on a mouse release.
class TWBCONSOLE_EXPORT LabelButton : public QLabel
{
    Q_OBJECT
    Q_DISABLE_COPY(LabelButton)
public:
    LabelButton(const QColor& normal, const QColor& hover, QWidget* parent = nullptr);
    ~LabelButton() override;

    QColor normalColor() const { return normal; }
    QColor hoverColor() const { return hover; }

Q_SIGNALS:
    void clicked();

protected:
    void enterEvent(QEvent* event) override;
    void leaveEvent(QEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;

private:
    void setTextColor(const QColor& color);

    const QColor normal;
    const QColor hover;
};

} // namespace TWB::GUI
