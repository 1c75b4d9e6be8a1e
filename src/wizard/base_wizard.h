#pragma once

#include "twbconsole_export.h"

#include <QPointer>
#include <QWizard>

namespace TWB::GUI {

/// A wizard that fits its window to its artwork: the background pixmap in the Mac style,
/// the banner in the modern style, at any screen scale.
class TWBCONSOLE_EXPORT BaseWizard : public QWizard
{
    Q_OBJECT
    Q_DISABLE_COPY(BaseWizard)
public:
    explicit BaseWizard(QWidget* parent = nullptr);

protected:
    void showEvent(QShowEvent* event) override;
    void paintEvent(QPaintEvent* event) override;

private:
    void fitHeader(const QPixmap& banner);

    QPointer<QWidget> headerWidget; // not owned: the wizard's own banner frame
};

} // namespace TWB::GUI
