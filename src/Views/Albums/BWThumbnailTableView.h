#pragma once

#include "BWACUDriver/BWClock.h"
#include "Model/Texts/BWLocalizationManagerDelegate.h"

#include <memory>
#include <QList>
#include <QSet>
#include <QTableView>
#include <QUrl>

class BWThumbnailCellPainter;
class BWThumbnailNotice;
class BWThumbnailTableModel;
class BWThumbnailTableViewDataSource;
class BWThumbnailTableViewDelegate;
class BWThumbnailViewMouseEventHandler;
class BWThumbnailWishes;
class QMenu;
struct BWThumbnailDragItem;

/// Files as a grid of thumbnails. It knows nothing of albums: the model delegate knows the elements and does what is
/// asked for, the data source tells what to paint. Which cells are selected is the mouse event handler's; the table's
/// own selection only repeats it for screen readers. GUI thread.
class BWThumbnailTableView : public QTableView, public BWLocalizationManagerDelegate {
    Q_OBJECT

public:
    explicit BWThumbnailTableView(QWidget *parent = nullptr, BWClock &clock = BWClock::system());
    ~BWThumbnailTableView() override;

    /// The element of a cell. The factor stays 2 with any number of columns.
    static constexpr int cellIndex(int row, int column) { return row * 2 + column; }

    /// Neither is owned; both are told before the first reload, and taken away before they go.
    void setModelDelegate(BWThumbnailTableViewDelegate *model) { m_modelDelegate = model; }
    BWThumbnailTableViewDelegate *modelDelegate() const { return m_modelDelegate; }
    void setDataSource(BWThumbnailTableViewDataSource *source) { m_dataSource = source; }
    BWThumbnailTableViewDataSource *dataSource() const { return m_dataSource; }

    void localizeWithManager(BWLocalizationManager &manager) override;
    /// What is to be read where there are no elements, below an icon (see BWIcons).
    void setEmptyNotice(const QString &iconName, const QString &text);

    /// The elements have changed: nothing is selected any more, nothing is pending. The focus stays on its element.
    void reloadData();
    /// Paints those of these elements anew that are to be seen; their thumbnails have become ready.
    void redrawElements(const QList<QUrl> &files);

    QList<QUrl> elements() const;
    int elementCount() const { return static_cast<int>(elements().size()); }
    bool hasElement(const QModelIndex &index) const;
    bool cellIsSelectedAtRow(int row, int column) const;
    /// The present one; a reload makes a new one.
    const std::shared_ptr<BWThumbnailViewMouseEventHandler> &mouseEventHandler() const { return m_handler; }
    QMenu *rightMenu() const { return m_rightMenu; }
    int narrowestColumn() const;
    /// Pixels of the screen that a thumbnail can fill.
    QSize thumbnailPixelSize() const;

    /// The element that the keyboard is at; -1 for none.
    int focusIndex() const;
    void setFocusIndex(int index);
    void popUpMenuAtFocus();

    // What the menu, the keyboard and the handler ask for. Where there is nothing to act on, nothing happens.
    void onSelectAll();
    void onUnselectAll();
    void onSaveAs();
    void onTrash();
    /// Opens the operation indexes; `index` is where it was clicked.
    void performDoubleClickForIndex(int index);
    /// Lets files be dragged out, as copies. Returns when the drag is over.
    virtual void beginDraggingSession(const QList<BWThumbnailDragItem> &items);
    /// Paints the handler's selection, and repeats it to screen readers.
    void showSelection();

    void selectAll() override { onSelectAll(); }

Q_SIGNALS:
    /// Whose thumbnails are wished for, and how large: those to be seen first, then those near. Told anew whenever that
    /// has changed, but not more often than it can be seen.
    void thumbnailsWanted(const QList<QUrl> &inOrder, const QSize &pixelSize);
    /// The handler's selection may be another.
    void selectionShown();

protected:
    bool event(QEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;
    void mouseDoubleClickEvent(QMouseEvent *event) override;
    void mouseReleaseEvent(QMouseEvent *event) override;
    void mouseMoveEvent(QMouseEvent *event) override;
    void contextMenuEvent(QContextMenuEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;
    void showEvent(QShowEvent *event) override;
    void scrollContentsBy(int dx, int dy) override;
    void initViewItemOption(QStyleOptionViewItem *option) const override;
    QItemSelectionModel::SelectionFlags selectionCommand(const QModelIndex &index, const QEvent *event) const override;
    void selectionChanged(const QItemSelection &selected, const QItemSelection &deselected) override;

private:
    void createRightMenu(BWLocalizationManager &manager);
    QSet<QUrl> elementsUnderMenu() const;
    void operateOn(const QSet<QUrl> &files);
    void renewHandler();
    void updateRowHeight();
    void restoreFocus(const QUrl &file, int index);

    BWClock &m_clock;
    BWThumbnailTableViewDelegate *m_modelDelegate = nullptr;
    BWThumbnailTableViewDataSource *m_dataSource = nullptr;
    BWThumbnailTableModel *m_model;
    BWThumbnailNotice *m_notice;
    QMenu *m_rightMenu;
    std::unique_ptr<BWThumbnailCellPainter> m_painter;
    std::unique_ptr<BWThumbnailWishes> m_wishes;
    std::shared_ptr<BWThumbnailViewMouseEventHandler> m_handler;
    bool m_repeatingSelection = false;
};
