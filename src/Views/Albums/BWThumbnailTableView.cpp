// SPDX-License-Identifier: GPL-3.0-or-later
#include "Views/Albums/BWThumbnailTableView.h"

#include "Model/Texts/BWLocalizationManager.h"
#include "Views/Albums/BWThumbnailCellPainter.h"
#include "Views/Albums/BWThumbnailDrag.h"
#include "Views/Albums/BWThumbnailKeyboard.h"
#include "Views/Albums/BWThumbnailMenu.h"
#include "Views/Albums/BWThumbnailRequests.h"
#include "Views/Albums/BWThumbnailTableModel.h"
#include "Views/Albums/BWThumbnailTableViewDelegate.h"
#include "Views/Albums/BWThumbnailTouch.h"
#include "Views/Albums/BWThumbnailViewMouseEventHandler.h"
#include "Views/Utils/BWColors.h"
#include "Views/Utils/BWIcons.h"

#include <algorithm>
#include <QContextMenuEvent>
#include <QHeaderView>
#include <QPainter>
#include <QScopedValueRollback>
#include <QScrollBar>

using namespace Qt::StringLiterals;

namespace {

constexpr int emptyIconSize = 64;
constexpr int gap = 14;
constexpr int emptyTextMargin = 20;
constexpr int widest = 320; // longer lines are hard to read
constexpr double iconOpacity = 0.45;
constexpr float textOpacity = 0.75F;

} // namespace

BWThumbnailNotice::BWThumbnailNotice(QWidget *parent) : QWidget(parent)
{
    setAttribute(Qt::WA_TransparentForMouseEvents);
}

void BWThumbnailNotice::setNotice(const QString &iconName, const QString &text)
{
    m_icon = iconName.isNull() ? QIcon() : BWIcons::icon(iconName);
    m_text = text;
    update();
}

void BWThumbnailNotice::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    const int textWidth = std::min(widest, width() - 2 * emptyTextMargin);
    const QRect bounds =
        painter.boundingRect(QRect(0, 0, textWidth, height()), Qt::AlignHCenter | Qt::TextWordWrap, m_text);
    const int top = (height() - emptyIconSize - gap - bounds.height()) / 2;
    const bool isHighContrast = BWColors::isHighContrast(palette());
    painter.setOpacity(isHighContrast ? 1 : iconOpacity);
    m_icon.paint(&painter, (width() - emptyIconSize) / 2, top, emptyIconSize, emptyIconSize);
    painter.setOpacity(1);
    QColor colour = palette().color(QPalette::Text);
    colour.setAlphaF(isHighContrast ? 1 : textOpacity);
    painter.setPen(colour);
    painter.drawText(QRect((width() - textWidth) / 2, top + emptyIconSize + gap, textWidth, bounds.height()),
                     Qt::AlignHCenter | Qt::TextWordWrap, m_text);
}

BWThumbnailTableView::BWThumbnailTableView(QWidget *parent, BWClock &clock)
    : QTableView(parent),
      m_clock(clock),
      m_model(new BWThumbnailTableModel(*this)),
      m_notice(new BWThumbnailNotice(viewport())),
      m_rightMenu(new BWThumbnailMenu(*this)),
      m_painter(std::make_unique<BWThumbnailCellPainter>(*this)),
      m_requests(std::make_unique<BWThumbnailRequests>(*this, clock))
{
    renewHandler();
    updateFrame();
    setModel(m_model);
    setItemDelegate(m_painter.get());
    setSelectionMode(ExtendedSelection);
    setSelectionBehavior(SelectItems);
    setEditTriggers(NoEditTriggers);
    setTabKeyNavigation(false);
    setAutoScroll(false); // a click on a partly visible cell must not move it away from the pointer
    setShowGrid(false);
    setVerticalScrollMode(ScrollPerPixel);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    horizontalHeader()->hide();
    horizontalHeader()->setMinimumSectionSize(1);
    horizontalHeader()->setSectionResizeMode(QHeaderView::Stretch);
    verticalHeader()->hide();
    verticalHeader()->setMinimumSectionSize(1);
    verticalHeader()->setSectionResizeMode(QHeaderView::Fixed);
    new BWThumbnailTouch(*this, clock); // a child
}

BWThumbnailTableView::~BWThumbnailTableView()
{
    m_handler->retire();
}

void BWThumbnailTableView::localizeWithManager(BWLocalizationManager &manager)
{
    m_rightMenu->localizeWithManager(manager);
}

void BWThumbnailTableView::setEmptyNotice(const QString &iconName, const QString &text)
{
    m_notice->setNotice(iconName, text);
    setAccessibleDescription(elementCount() ? QString() : text);
}

void BWThumbnailTableView::reloadData()
{
    const int focus = currentIndex().isValid() ? cellIndex(currentIndex().row(), currentIndex().column()) : -1;
    const QUrl focused = m_model->elementAt(focus); // before the reload: the delegate's list may have changed
    const int scrolled = verticalScrollBar()->value();
    const QSet<QUrl> underMenu = elementsUnderMenu();
    renewHandler();
    m_model->reload();
    operateOn(underMenu);
    updateGeometries();
    verticalScrollBar()->setValue(scrolled);
    updateRowHeight();
    restoreFocus(focused, focus);
    const bool empty = elementCount() == 0;
    m_notice->setVisible(empty);
    setAccessibleDescription(empty ? m_notice->text() : QString());
    m_requests->renew();
}

/// The files on which an open menu acts.
QSet<QUrl> BWThumbnailTableView::elementsUnderMenu() const
{
    QSet<QUrl> files;
    if (m_rightMenu->isVisible()) {
        for (const int index : m_handler->operationIndexes())
            files.insert(m_model->elementAt(index));
    }
    return files;
}

/// An open menu stays open during a reload and must still act on the same files.
void BWThumbnailTableView::operateOn(const QSet<QUrl> &files)
{
    QList<int> indexes;
    const QList<QUrl> now = files.isEmpty() ? QList<QUrl>() : elements();
    for (int index = 0; index < now.size(); ++index) {
        if (files.contains(now[index]))
            indexes.append(index);
    }
    m_handler->setOperationIndexes(indexes);
}

void BWThumbnailTableView::renewHandler()
{
    if (m_handler)
        m_handler->retire();
    m_handler = std::make_shared<BWThumbnailViewMouseEventHandler>(*this, m_clock);
}

void BWThumbnailTableView::restoreFocus(const QUrl &file, int index)
{
    if (file.isEmpty())
        return;
    const QList<QUrl> now = elements();
    const int found = BWThumbnailTableModel::find(now, file, index);
    // If its element is gone, the focus moves to the one in its place.
    setFocusIndex(found >= 0 ? found : std::min(index, static_cast<int>(now.size()) - 1));
}

void BWThumbnailTableView::redrawElements(const QList<QUrl> &files)
{
    const QList<QUrl> now = elements();
    for (const int index : m_requests->visibleIndexes()) {
        if (files.contains(now[index]))
            update(m_model->index(index / 2, index % 2));
    }
}

QList<QUrl> BWThumbnailTableView::elements() const
{
    return m_modelDelegate ? m_modelDelegate->elementsForThumbnailTableView(*this) : QList<QUrl>();
}

bool BWThumbnailTableView::hasElement(const QModelIndex &index) const
{
    return index.isValid() && m_dataSource && cellIndex(index.row(), index.column()) < elementCount();
}

bool BWThumbnailTableView::cellIsSelectedAtRow(int row, int column) const
{
    return m_handler->isSelected(cellIndex(row, column));
}

int BWThumbnailTableView::narrowestColumn() const
{
    return std::min(horizontalHeader()->sectionSize(0), horizontalHeader()->sectionSize(1));
}

QSize BWThumbnailTableView::thumbnailPixelSize() const
{
    const QSize cell(narrowestColumn(), verticalHeader()->defaultSectionSize());
    return BWThumbnailCellGeometry::pictureArea(QRect(QPoint(), cell)).size() * devicePixelRatioF();
}

int BWThumbnailTableView::focusIndex() const
{
    const QModelIndex current = currentIndex();
    return hasElement(current) ? cellIndex(current.row(), current.column()) : -1;
}

void BWThumbnailTableView::setFocusIndex(int index)
{
    selectionModel()->setCurrentIndex(m_model->index(index / 2, index % 2), QItemSelectionModel::NoUpdate);
}

void BWThumbnailTableView::popUpMenuAtFocus()
{
    if (focusIndex() < 0)
        return;
    scrollTo(currentIndex());
    const QPoint middle = visualRect(currentIndex()).center();
    if (QMenu *menu = m_handler->menuForRightClick(middle))
        menu->popup(viewport()->mapToGlobal(middle));
}

void BWThumbnailTableView::onSelectAll()
{
    m_handler->selectAllCells();
}

void BWThumbnailTableView::onUnselectAll()
{
    m_handler->unselectAllCells();
}

void BWThumbnailTableView::onSaveAs()
{
    if (const auto indexes = m_handler->operationIndexes(); m_modelDelegate && !indexes.isEmpty())
        m_modelDelegate->saveIndexesOfModel(*this, indexes);
}

void BWThumbnailTableView::onMakeMovie()
{
    const auto indexes = m_handler->operationIndexes();
    if (m_modelDelegate && indexes.size() >= m_rightMenu->leastForMovie())
        m_modelDelegate->makeMovieOfIndexesOfModel(*this, indexes);
}

void BWThumbnailTableView::onCopy()
{
    if (const auto indexes = m_handler->operationIndexes(); m_modelDelegate && !indexes.isEmpty())
        m_modelDelegate->copyIndexesOfModel(*this, indexes);
}

void BWThumbnailTableView::onReveal()
{
    if (const auto indexes = m_handler->operationIndexes(); m_modelDelegate && !indexes.isEmpty())
        m_modelDelegate->revealIndexesOfModel(*this, indexes);
}

void BWThumbnailTableView::onTrash()
{
    if (const auto indexes = m_handler->operationIndexes(); m_modelDelegate && !indexes.isEmpty())
        m_modelDelegate->removeIndexesOfModel(*this, indexes);
}

void BWThumbnailTableView::onShowInMainWindow()
{
    if (m_modelDelegate && focusIndex() >= 0)
        m_modelDelegate->showIndexOfModel(*this, focusIndex());
}

void BWThumbnailTableView::onCompare()
{
    if (m_modelDelegate && focusIndex() >= 0)
        m_modelDelegate->compareIndexOfModel(*this, focusIndex());
}

void BWThumbnailTableView::onRename()
{
    if (m_modelDelegate && focusIndex() >= 0)
        m_modelDelegate->renameIndexOfModel(*this, focusIndex());
}

void BWThumbnailTableView::performDoubleClickForIndex(int)
{
    if (const auto indexes = m_handler->operationIndexes(); m_modelDelegate && !indexes.isEmpty())
        m_modelDelegate->openIndexesOfModel(*this, indexes);
}

void BWThumbnailTableView::beginDraggingSession(const QList<BWThumbnailDragItem> &items)
{
    BWThumbnailDrag::run(*this, items);
}

void BWThumbnailTableView::showSelection()
{
    const QScopedValueRollback repeating(m_repeatingSelection, true);
    selectionModel()->select(m_model->cellsOf(m_handler->selectedIndexes()), QItemSelectionModel::ClearAndSelect);
    viewport()->update();
    Q_EMIT selectionShown();
}

void BWThumbnailTableView::selectionChanged(const QItemSelection &selected, const QItemSelection &deselected)
{
    QTableView::selectionChanged(selected, deselected);
    if (m_repeatingSelection || !m_handler)
        return;
    // A screen reader has changed the selection.
    m_handler->adoptSelection(BWThumbnailTableModel::elementsIn(selectionModel()->selection()), m_handler->anchor());
    Q_EMIT selectionShown();
}

bool BWThumbnailTableView::event(QEvent *event)
{
    switch (event->type()) {
    case QEvent::ShortcutOverride:
        // The window may have shortcuts with the same keys.
        if (elementCount() > 0 && BWThumbnailKeyboard::takes(static_cast<const QKeyEvent &>(*event))) {
            event->accept();
            return true;
        }
        break;
    case QEvent::ScreenChangeInternal: // the scale may change
        m_requests->schedule();
        break;
    default:
        break;
    }
    return QTableView::event(event);
}

void BWThumbnailTableView::changeEvent(QEvent *event)
{
    QTableView::changeEvent(event);
    if (event->type() == QEvent::PaletteChange)
        updateFrame();
}

// The handler is held during the call, which may make the grid reload and replace it.

void BWThumbnailTableView::mousePressEvent(QMouseEvent *event)
{
    if (event->button() != Qt::LeftButton)
        return;
    if (const QModelIndex index = indexAt(event->position().toPoint()); hasElement(index))
        setFocusIndex(cellIndex(index.row(), index.column()));
    const auto handler = m_handler;
    if (handler->acceptMouseDown(*event, 1))
        QTableView::mousePressEvent(event);
}

void BWThumbnailTableView::mouseDoubleClickEvent(QMouseEvent *event)
{
    if (event->button() != Qt::LeftButton)
        return;
    const auto handler = m_handler;
    if (handler->acceptMouseDown(*event, 2))
        QTableView::mouseDoubleClickEvent(event);
}

void BWThumbnailTableView::mouseReleaseEvent(QMouseEvent *event)
{
    if (event->button() != Qt::LeftButton)
        return;
    const auto handler = m_handler;
    if (handler->acceptMouseUp(*event))
        QTableView::mouseReleaseEvent(event);
}

void BWThumbnailTableView::mouseMoveEvent(QMouseEvent *)
{
    // QTableView would select and drag.
}

void BWThumbnailTableView::contextMenuEvent(QContextMenuEvent *event)
{
    if (event->reason() == QContextMenuEvent::Keyboard) {
        popUpMenuAtFocus();
        return;
    }
    const QModelIndex index = indexAt(event->pos());
    if (QMenu *menu = m_handler->menuForRightClick(event->pos())) {
        setFocusIndex(cellIndex(index.row(), index.column()));
        menu->popup(event->globalPos());
    }
}

void BWThumbnailTableView::keyPressEvent(QKeyEvent *event)
{
    event->setAccepted(BWThumbnailKeyboard::press(*this, *event));
}

void BWThumbnailTableView::resizeEvent(QResizeEvent *event)
{
    QTableView::resizeEvent(event);
    m_notice->setGeometry(viewport()->rect());
    updateRowHeight();
    m_requests->schedule();
}

void BWThumbnailTableView::showEvent(QShowEvent *event)
{
    QTableView::showEvent(event);
    updateRowHeight();
    m_requests->schedule();
}

void BWThumbnailTableView::scrollContentsBy(int dx, int dy)
{
    QTableView::scrollContentsBy(dx, dy);
    m_requests->scrolled(dy < 0);
}

void BWThumbnailTableView::updateRowHeight()
{
    if (!m_dataSource || model()->rowCount() == 0)
        return;
    const int old = verticalHeader()->defaultSectionSize();
    const int height = std::max(1, m_dataSource->heightOfRow(*this, 0));
    if (height == old)
        return;
    const double top = static_cast<double>(verticalScrollBar()->value()) / old;
    verticalHeader()->setDefaultSectionSize(height);
    updateGeometries();
    verticalScrollBar()->setValue(qRound(top * height)); // keeps the same row at the top
}

/// In high contrast the window has the same colour.
void BWThumbnailTableView::updateFrame()
{
    setFrameShape(BWColors::isHighContrast(palette()) ? QFrame::StyledPanel : QFrame::NoFrame);
}

void BWThumbnailTableView::initViewItemOption(QStyleOptionViewItem *option) const
{
    QTableView::initViewItemOption(option);
    option->showDecorationSelected = false; // the painter shows the selection
}

QItemSelectionModel::SelectionFlags BWThumbnailTableView::selectionCommand(const QModelIndex &, const QEvent *) const
{
    return QItemSelectionModel::NoUpdate;
}
