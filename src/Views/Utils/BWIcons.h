#pragma once

#include <QIcon>

class QGuiApplication;
class QPalette;

/// Icons and images by name. Names that begin with "brimwellpro-" are our own drawings in the colours of the palette,
/// all others come from the desktop's icon theme, and from Breeze where that has none. Icons follow a change of the
/// palette by themselves and are sharp at every scale. GUI thread only.
///
/// Our own: brimwellpro-zoom-in, -zoom-out, -grid, -albums, -snapshot (32 points, to stand beside "record.png"),
/// -plug-in and -which-model (illustrations, 96 points).
class BWIcons {
public:
    /// Picks the variant of the icon theme that fits the palette, now and at every change. Called once at the start.
    static void install(QGuiApplication &application);

    /// An icon by its own or freedesktop name; null when nobody knows the name.
    static QIcon icon(const QString &name);

    /// One of the program's images by file name, such as "record.png", with its sharper variant for high resolutions.
    static QIcon image(const QString &fileName);

    /// The program's own icon in all sizes.
    static QIcon applicationIcon();

    /// Whether the palette writes light on dark.
    static bool isDark(const QPalette &palette);
};
