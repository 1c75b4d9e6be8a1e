#pragma once

#include "twbconsole_export.h"

#include <QObject>
#include <QPixmap>
#include <QSize>
#include <QString>

namespace TWB::GUI {

/// The console's larger artwork: the product mark, the clouds panel and the wizard background.
/// Images are rendered from SVG at the screen's pixel ratio, so they are sharp on every screen.
class TWBCONSOLE_EXPORT ImageManager final
{
    Q_GADGET
public:
    enum Type : int { Logo = 0, CloudsBackground = 1, WizardBackground = 2 };
    Q_ENUM(Type)

    /// The image at the application's device pixel ratio; a null pixmap for an unknown type.
    static QPixmap image(int type);
    /// The image for a given device pixel ratio (at least 1).
    static QPixmap image(int type, qreal devicePixelRatio);
    /// Logical size of the image; an invalid size for an unknown type.
    static QSize imageSize(int type);
    /// Resource path of the artwork, or an empty string.
    static QString path(int type);
};

} // namespace TWB::GUI
