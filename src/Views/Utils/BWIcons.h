// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QIcon>

class QGuiApplication;

/// Icons and images by name. Names that begin with "brimwellpro-" are our own drawings in the colours of the palette;
/// all others come from the desktop's icon theme, or from Breeze if the theme has none. Icons follow a change of the
/// palette, can be told from the window and from disabled ones in each, and are sharp at every scale. GUI thread.
///
/// Our own: brimwellpro-zoom-in, -zoom-out, -grid, -freeze, -albums, -snapshot (32 points, to stand beside "record.png"),
/// -plug-in and -which-model (illustrations, 96 points), -select, -scale-bar, -results, -delete, -close, and one for each
/// kind of measurement.
class BWIcons {
public:
    /// Picks the variant of the icon theme that fits the palette, now and at every change. Call it once, at the start.
    static void install(QGuiApplication &application);

    /// An icon by our own or a freedesktop name; null for an unknown name.
    static QIcon icon(const QString &name);

    /// One of the program's images by file name, such as "record.png", with its sharper variant for high resolutions.
    static QIcon image(const QString &fileName);

    /// An icon's shape in another colour. `size` in points, of which each has `ratio` pixels.
    static QPixmap tinted(const QIcon &icon, const QSize &size, double ratio, const QColor &color);

    /// The program's own icon in all sizes.
    static QIcon applicationIcon();
};
