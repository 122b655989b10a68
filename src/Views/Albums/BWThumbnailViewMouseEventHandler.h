// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "BWACUDriver/DispatchAfterStrict.h"

#include <chrono>
#include <memory>
#include <QList>
#include <QPoint>
#include <QPointer>
#include <QSet>
#include <QStringList>

class BWThumbnailTableView;
class QMenu;
class QMouseEvent;

/// The selection of a grid of thumbnails and the elements that the next operation acts on, and how the mouse changes
/// both. A click selects 0.3 seconds after the button is released, so that a double click does not; a button held for
/// 0.5 seconds drags. A handler serves one load of the grid: a reload retires it and makes another. GUI thread.
class BWThumbnailViewMouseEventHandler : public std::enable_shared_from_this<BWThumbnailViewMouseEventHandler> {
public:
    explicit BWThumbnailViewMouseEventHandler(BWThumbnailTableView &view, BWClock &clock = BWClock::system());
    ~BWThumbnailViewMouseEventHandler();

    /// Cancels pending actions; later calls have no effect.
    void retire();

    /// Ascending.
    QList<int> selectedIndexes() const;
    bool isSelected(int index) const { return m_selected.contains(index); }
    /// The elements that the next operation (save, trash, open, drag) acts on; ascending.
    QList<int> operationIndexes() const { return m_operationIndexes; }
    void setOperationIndexes(const QList<int> &indexes) { m_operationIndexes = indexes; }
    /// The start of ranges: the last cell that was selected on its own; -1 for none.
    int anchor() const { return m_anchor; }

    /// These do not change the anchor.
    void selectAllCells();
    void unselectAllCells();

    /// Selects the last clicked cell. With `shift` and an anchor, adds all cells between them; otherwise selects only the
    /// cell, or nothing if it is the anchor.
    void updateSelectedStateWithShift(bool shift);
    /// The whole selection if the cell is part of it, else the cell alone.
    void updateOperationIndexesFromIndex(int index);
    /// Whether there is an element in the cell.
    bool indexIsValidForRow(int row, int column) const;

    /// Always false: QTableView must not handle the event, too. `clickCount` is 2 for a double click; a quick third click,
    /// for which Qt reports 1 again, counts as 3.
    bool acceptMouseDown(const QMouseEvent &event, int clickCount);
    bool acceptMouseUp(const QMouseEvent &event);
    /// The menu for the cell at that place, on which its operations will act; null without an element there.
    QMenu *menuForRightClick(QPoint place);

    /// Drags the operation indexes of the cell that was pressed. Returns when the drag is over.
    void performDragForEvent(int index);
    /// Copies the dragged files into the folder, in the background, and returns their names. For other front ends.
    QStringList completeDragOperationAtDestination(const QUrl &folder);

    /// Selects the cell of the last click now, as it can no longer become a double click.
    void performPendingSelection();

    // For the keyboard.

    /// Selects only this cell, which becomes the anchor.
    void selectOnly(int index);
    /// Moves the end of the range that starts at the anchor, or at `from` without an anchor.
    void moveRangeEnd(int from, int to);
    /// Adds the cell to the selection or removes it, and makes it the anchor.
    void toggle(int index);
    /// Takes over a selection made by a screen reader, or by the handler before a reload.
    void adoptSelection(const QSet<int> &indexes, int anchor = -1);

private:
    void addRange(int from, int to);
    int lastIndex() const;
    void redraw();

    QPointer<BWThumbnailTableView> m_view;
    BWClock &m_clock;
    int m_clickCount = -1;
    std::chrono::nanoseconds m_clickTime{0};
    int m_row = -1;
    int m_column = -1;
    QSet<int> m_selected;
    int m_anchor = -1;
    QList<int> m_operationIndexes;
    DispatchAfterStrict::Handle m_pendingSelection;
    DispatchAfterStrict::Handle m_pendingDrag;
    Qt::KeyboardModifiers m_pendingModifiers; // of the click with the pending selection
};
