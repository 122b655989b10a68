// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "BWACUDriver/BWClock.h"
#include "Model/Texts/BWLocalizationManager.h"

#include <memory>
#include <QIcon>
#include <QList>
#include <QSet>
#include <QTableView>
#include <QUrl>
#include <QWidget>

class BWThumbnailCellPainter;
class BWThumbnailMenu;
class BWThumbnailTableModel;
class BWThumbnailTableViewDataSource;
class BWThumbnailTableViewDelegate;
class BWThumbnailViewMouseEventHandler;
class BWThumbnailRequests;
struct BWThumbnailDragItem;

/// What an empty grid shows in its middle: an icon and a few words. Ignores the mouse. GUI thread.
class BWThumbnailNotice : public QWidget {
    Q_OBJECT

public:
    explicit BWThumbnailNotice(QWidget *parent);

    void setNotice(const QString &iconName, const QString &text);
    const QString &text() const { return m_text; }

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    QIcon m_icon;
    QString m_text;
};

/// Files as a grid of thumbnails. It knows nothing of albums: the model delegate has the elements and acts on them, the
/// data source has what to paint. The mouse event handler holds the selection; the table's own selection only repeats it
/// for screen readers. GUI thread.
class BWThumbnailTableView : public QTableView, public BWLocalizationManagerDelegate {
    Q_OBJECT

public:
    explicit BWThumbnailTableView(QWidget *parent = nullptr, BWClock &clock = BWClock::system());
    ~BWThumbnailTableView() override;

    /// The element of a cell. The factor is 2 whatever the number of columns.
    static constexpr int cellIndex(int row, int column) { return row * 2 + column; }

    /// Not owned. Set both before the first reload, and null before they are destroyed.
    void setModelDelegate(BWThumbnailTableViewDelegate *model) { m_modelDelegate = model; }
    BWThumbnailTableViewDelegate *modelDelegate() const { return m_modelDelegate; }
    void setDataSource(BWThumbnailTableViewDataSource *source) { m_dataSource = source; }
    BWThumbnailTableViewDataSource *dataSource() const { return m_dataSource; }

    void localizeWithManager(BWLocalizationManager &manager) override;
    /// The text shown while there are no elements, below an icon (see BWIcons).
    void setEmptyNotice(const QString &iconName, const QString &text);

    /// The elements have changed: clears the selection and pending actions. The focus stays on its element.
    void reloadData();
    /// Repaints the visible ones of these elements, whose thumbnails have become ready.
    void redrawElements(const QList<QUrl> &files);

    QList<QUrl> elements() const;
    int elementCount() const { return static_cast<int>(elements().size()); }
    bool hasElement(const QModelIndex &index) const;
    bool cellIsSelectedAtRow(int row, int column) const;
    /// A reload makes a new one.
    const std::shared_ptr<BWThumbnailViewMouseEventHandler> &mouseEventHandler() const { return m_handler; }
    BWThumbnailMenu *rightMenu() const { return m_rightMenu; }
    int narrowestColumn() const;
    /// The size of the largest thumbnail, in screen pixels.
    QSize thumbnailPixelSize() const;

    /// The element with the keyboard focus; -1 for none.
    int focusIndex() const;
    void setFocusIndex(int index);
    void popUpMenuAtFocus();

    // Called by the menu, the keyboard and the handler. Without elements to act on, nothing happens.
    void onSelectAll();
    void onUnselectAll();
    void onSaveAs();
    void onMakeMovie();
    void onCopy();
    void onReveal();
    void onTrash();
    /// The element with the focus, however many are selected.
    void onShowInMainWindow();
    void onCompare();
    void onRename();
    /// Opens the operation indexes; `index` is the clicked one.
    void performDoubleClickForIndex(int index);
    /// Drags files out, as copies. Returns when the drag is over.
    virtual void beginDraggingSession(const QList<BWThumbnailDragItem> &items);
    /// Paints the handler's selection, and repeats it for screen readers.
    void showSelection();

    void selectAll() override { onSelectAll(); }

Q_SIGNALS:
    /// The files whose thumbnails are needed, visible ones first, then those near them, and the size. Emitted at every
    /// change, but at most a few dozen times a second.
    void thumbnailsWanted(const QList<QUrl> &inOrder, const QSize &pixelSize);
    /// The handler's selection may have changed.
    void selectionShown();

protected:
    bool event(QEvent *event) override;
    void changeEvent(QEvent *event) override;
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
    QSet<QUrl> elementsUnderMenu() const;
    void operateOn(const QSet<QUrl> &files);
    void renewHandler();
    void updateRowHeight();
    void updateFrame();
    void restoreFocus(const QUrl &file, int index);

    BWClock &m_clock;
    BWThumbnailTableViewDelegate *m_modelDelegate = nullptr;
    BWThumbnailTableViewDataSource *m_dataSource = nullptr;
    BWThumbnailTableModel *m_model;
    BWThumbnailNotice *m_notice;
    BWThumbnailMenu *m_rightMenu;
    std::unique_ptr<BWThumbnailCellPainter> m_painter;
    std::unique_ptr<BWThumbnailRequests> m_requests;
    std::shared_ptr<BWThumbnailViewMouseEventHandler> m_handler;
    bool m_repeatingSelection = false;
};
