// SPDX-License-Identifier: GPL-3.0-or-later
#include "Views/Albums/BWThumbnailTableModel.h"

#include "Views/Albums/BWThumbnailTableView.h"
#include "Views/Albums/BWThumbnailTableViewDelegate.h"

#include <algorithm>
#include <QTextDocument>

using namespace Qt::StringLiterals;

namespace {

/// Escaped if need be: a file's name may be "<b>.jpg".
QString plainToolTip(const QString &text)
{
    return Qt::mightBeRichText(text) ? u"<span>"_s + text.toHtmlEscaped() + u"</span>"_s : text;
}

/// Adds the cells of the elements from `first` to `last`.
void addRun(QItemSelection &selection, const QAbstractItemModel &model, int first, int last)
{
    const int lastColumn = std::min(model.columnCount(), 2) - 1;
    const auto add = [&](int top, int left, int bottom, int right) {
        right = std::min(right, lastColumn);
        if (top <= bottom && left <= right)
            selection.append({model.index(top, left), model.index(bottom, right)});
    };
    if (first % 2 == 1) {
        add(first / 2, 1, first / 2, 1);
        ++first;
    }
    if (first <= last && last % 2 == 0) {
        add(last / 2, 0, last / 2, 0);
        --last;
    }
    if (first < last)
        add(first / 2, 0, last / 2, 1);
}

} // namespace

BWThumbnailTableModel::BWThumbnailTableModel(BWThumbnailTableView &view) : QAbstractTableModel(&view), m_view(view) { }

void BWThumbnailTableModel::reload()
{
    BWThumbnailTableViewDataSource *source = m_view.dataSource();
    const int rows = source ? source->numberOfRowsInTableView(m_view) : 0;
    const int columns = source ? source->numberOfColumnsForView(m_view) : 0;
    beginResetModel();
    m_elements = m_view.elements(); // last: counting its rows makes the source renew its list
    m_rows = rows;
    m_columns = columns;
    endResetModel();
}

int BWThumbnailTableModel::rowCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : m_rows;
}

int BWThumbnailTableModel::columnCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : m_columns;
}

QVariant BWThumbnailTableModel::data(const QModelIndex &index, int role) const
{
    if (!m_view.hasElement(index))
        return {};
    const int element = BWThumbnailTableView::cellIndex(index.row(), index.column());
    switch (role) {
    case Qt::ToolTipRole:
        return plainToolTip(m_view.elements().at(element).fileName());
    case Qt::AccessibleTextRole:
        return m_view.dataSource()->accessibleNameForElementAt(m_view, element);
    default:
        return {};
    }
}

Qt::ItemFlags BWThumbnailTableModel::flags(const QModelIndex &index) const
{
    return m_view.hasElement(index) ? Qt::ItemIsEnabled | Qt::ItemIsSelectable : Qt::NoItemFlags;
}

QItemSelection BWThumbnailTableModel::cellsOf(const QList<int> &ascending) const
{
    QItemSelection selection;
    for (qsizetype begin = 0; begin < ascending.size();) {
        qsizetype end = begin + 1;
        while (end < ascending.size() && ascending[end] == ascending[end - 1] + 1)
            ++end;
        addRun(selection, *this, ascending[begin], ascending[end - 1]);
        begin = end;
    }
    return selection;
}

QSet<int> BWThumbnailTableModel::elementsIn(const QItemSelection &cells)
{
    QSet<int> indexes;
    for (const QModelIndex &index : cells.indexes())
        indexes.insert(BWThumbnailTableView::cellIndex(index.row(), index.column()));
    return indexes;
}

int BWThumbnailTableModel::find(const QList<QUrl> &elements, const QUrl &element, int near, int reach)
{
    const auto isAt = [&](qsizetype index) {
        return index >= 0 && index < elements.size() && elements[index] == element;
    };
    for (qsizetype away = 0; away <= reach && (near >= away || near + away < elements.size()); ++away) {
        for (const qsizetype index : {near + away, near - away}) {
            if (isAt(index))
                return static_cast<int>(index);
        }
    }
    return -1;
}
