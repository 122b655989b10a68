#include "Views/Albums/BWThumbnailTableModel.h"

#include "Views/Albums/BWThumbnailTableView.h"
#include "Views/Albums/BWThumbnailTableViewDataSource.h"

#include <QTextDocument>

using namespace Qt::StringLiterals;

namespace {

/// A file may be called "<b>.jpg".
QString plainToolTip(const QString &text)
{
    return Qt::mightBeRichText(text) ? u"<span>"_s + text.toHtmlEscaped() + u"</span>"_s : text;
}

} // namespace

BWThumbnailTableModel::BWThumbnailTableModel(BWThumbnailTableView &view) : QAbstractTableModel(&view), m_view(view) { }

void BWThumbnailTableModel::reload()
{
    BWThumbnailTableViewDataSource *source = m_view.dataSource();
    const int rows = source ? source->numberOfRowsInTableView(m_view) : 0;
    const int columns = source ? source->numberOfColumnsForView(m_view) : 0;
    beginResetModel();
    m_elements = m_view.elements(); // after the source has counted its rows: that is when it looks at the disk
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
