#pragma once

#include "twbconsole_export.h"

#include <QFileIconProvider>
#include <QHash>
#include <QIcon>

namespace TWB::GUI {

/// Icons of the file trees. Icons come from the style by kind, never from the disk, so painting a tree
/// does not stat files on the GUI thread; a hung mount cannot freeze a view.
class TWBCONSOLE_EXPORT IconProvider : public QFileIconProvider
{
public:
    /// The badge drawn over symbolic links.
    static const QString TwlSymlinkIconPath;
    /// The badge of a platform with its own link overlay; unused on Linux.
    static const QString SystemSymlinkIconPath;

    IconProvider();
    ~IconProvider() override;

    /// The style's icon of a kind: a file, a hard disk, a folder, a network drive or the computer.
    QIcon icon(IconType type) const override;
    /// A folder or file icon by what `info` is, with the link badge for a symbolic link.
    QIcon icon(const QFileInfo& info) const override;
    /// The same from what the tree already knows, with no disk access.
    QIcon icon(IconType type, bool symlink) const;

    /// Paints the link badge over each size the icon has.
    static void drawSymlinkIconOnTop(QIcon& icon);
    static QIcon symlinkIcon();

private:
    mutable QHash<int, QIcon> cache;
};

} // namespace TWB::GUI
