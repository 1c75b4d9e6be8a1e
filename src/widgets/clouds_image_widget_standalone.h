#pragma once

#include "twbconsole_export.h"
#include "widgets/clouds_image_widget.h"

class QLabel;

namespace TWB::GUI {

/// The clouds panel of the standalone edition: it names the cloud storages the product is built for.
class TWBCONSOLE_EXPORT CloudsImageWidgetStandalone : public CloudsImageWidget
{
    Q_OBJECT
    Q_DISABLE_COPY(CloudsImageWidgetStandalone)
public:
    explicit CloudsImageWidgetStandalone(QWidget* parent = nullptr);
    ~CloudsImageWidgetStandalone() override;

    QString caption() const;

private:
    QLabel* captionLabel; // owned as a child
};

} // namespace TWB::GUI
