// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QKeySequence>
#include <QList>

class BWThumbnailTableView;
class QKeyEvent;

/// The keys of a grid of thumbnails. Arrows, Home, End and the page keys move the focus and select its new cell; with
/// Shift they extend the selection, with Ctrl they leave it alone. Keys that act on elements act on the whole selection
/// if it includes the focused cell, otherwise on that cell. GUI thread.
class BWThumbnailKeyboard {
public:
    enum class Command {
        SelectAll,
        Deselect,
        Toggle,
        Open,
        ShowInMainWindow,
        Compare,
        Copy,
        Rename,
        ShowInFileManager,
        Trash,
        SaveAs,
        MakeMovie,
        Menu
    };

    /// All that have a key.
    static QList<Command> commands();
    /// The key that menus and the help name for that command.
    static QKeySequence keyFor(Command command);
    /// Whether a grid with the focus handles that key, even if it is a shortcut of the window.
    static bool takes(const QKeyEvent &event);
    /// False if the key has no effect in the grid's present state.
    static bool press(BWThumbnailTableView &view, const QKeyEvent &event);
};
