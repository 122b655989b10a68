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

/// What is selected in a grid of thumbnails, and which elements the next operation acts on; how the mouse changes
/// both. A click selects 0.3 seconds after the button came up, so that a double click does not; a button held for
/// 0.5 seconds drags. One handler serves one load of the grid: a reload retires it and makes another. GUI thread.
class BWThumbnailViewMouseEventHandler : public std::enable_shared_from_this<BWThumbnailViewMouseEventHandler> {
public:
    explicit BWThumbnailViewMouseEventHandler(BWThumbnailTableView &view, BWClock &clock = BWClock::system());
    ~BWThumbnailViewMouseEventHandler();

    /// Nothing that is pending happens any more, and nothing that is called has an effect.
    void retire();

    /// Ascending.
    QList<int> selectedIndexes() const;
    bool isSelected(int index) const { return m_selected.contains(index); }
    /// What the next operation (save, trash, open, drag) acts on; ascending.
    QList<int> operationIndexes() const { return m_operationIndexes; }
    void setOperationIndexes(const QList<int> &indexes) { m_operationIndexes = indexes; }
    /// Where ranges begin: the last cell that was selected on its own; -1 for none.
    int anchor() const { return m_anchor; }

    /// These leave the anchor alone.
    void selectAllCells();
    void unselectAllCells();

    /// Selects the last accepted cell. With `shift` and an anchor all cells between them are added; otherwise only the
    /// cell is selected, or nothing if it is the anchor.
    void updateSelectedStateWithShift(bool shift);
    /// The whole selection if the cell is part of it, else the cell alone.
    void updateOperationIndexesFromIndex(int index);
    /// Whether there is an element in the cell.
    bool indexIsValidForRow(int row, int column) const;

    /// False always: the table itself has nothing to do with the click. `clickCount` is 2 for a double click; a third
    /// quick one, which comes with 1 again, counts on.
    bool acceptMouseDown(const QMouseEvent &event, int clickCount);
    bool acceptMouseUp(const QMouseEvent &event);
    /// The menu for the cell there, on which its operations will act; null where there is no element.
    QMenu *menuForRightClick(QPoint place);

    /// Drags the operation indexes of the cell that was pressed. Returns when the drag is over.
    void performDragForEvent(int index);
    /// The names under which the dragged files will be in the folder; they are copied in the background.
    QStringList completeDragOperationAtDestination(const QUrl &folder);

    /// What the last click selects, at once: it will not be the first half of a double click any more.
    void performPendingSelection();

    // The keyboard's ways to select.

    /// The cell alone, which becomes the anchor.
    void selectOnly(int index);
    /// Moves the end of the range that begins at the anchor. Without an anchor, it begins at `from`.
    void moveRangeEnd(int from, int to);
    /// Adds the cell to the selection or takes it away, and makes it the anchor.
    void toggle(int index);
    /// What others than this handler selected: assistive technology, or the handler before it.
    void adoptSelection(const QSet<int> &indexes, int anchor = -1);

private:
    void addRange(int from, int to);
    int lastIndex() const;
    void redraw();

    QPointer<BWThumbnailTableView> m_view;
    BWClock &m_clock;
    int m_clickCount = -1;
    std::chrono::nanoseconds m_clicked{0}; // when
    int m_row = -1;
    int m_column = -1;
    QSet<int> m_selected;
    int m_anchor = -1;
    QList<int> m_operationIndexes;
    DispatchAfterStrict::Handle m_pendingSelection;
    DispatchAfterStrict::Handle m_pendingDrag;
    Qt::KeyboardModifiers m_pendingModifiers; // of the click whose selection is pending
};
