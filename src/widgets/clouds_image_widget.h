#pragma once

#include "twbconsole_export.h"

#include <QWidget>

class QSvgRenderer;

namespace TWB::GUI {

/// A panel painted with the sky-and-clouds background, cropped to fill the panel at any size.
class TWBCONSOLE_EXPORT CloudsImageWidget : public QWidget
{
    Q_OBJECT
    Q_DISABLE_COPY(CloudsImageWidget)
public:
    explicit CloudsImageWidget(QWidget* parent = nullptr);
    ~CloudsImageWidget() override;

    QSize sizeHint() const override;

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    QSvgRenderer* background; // owned as a child
};

} // namespace TWB::GUI
