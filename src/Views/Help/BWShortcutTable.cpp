#include "Views/Help/BWShortcutTable.h"

#include "Views/Help/BWKeyCaps.h"

#include <QGridLayout>
#include <QLabel>

namespace {

constexpr int columnSpacing = 40;
constexpr int keySpacing = 16;
constexpr int rowSpacing = 2;
constexpr int sectionSpacing = 8;

QLabel *plainLabel(const QString &text)
{
    auto *label = new QLabel(text);
    label->setTextFormat(Qt::PlainText);
    return label;
}

} // namespace

BWShortcutTable::BWShortcutTable(QWidget *parent) : QWidget(parent)
{
    auto *columns = new QHBoxLayout(this);
    columns->setContentsMargins(0, 0, 0, 0);
    columns->setSpacing(columnSpacing);
}

void BWShortcutTable::setSections(const QList<BWShortcutSection> &sections, int room)
{
    fill(sections, 2);
    if (sizeHint().width() > room)
        fill(sections, 1);
}

void BWShortcutTable::fill(const QList<BWShortcutSection> &sections, int columns)
{
    const auto old = findChildren<QWidget *>(QString(), Qt::FindDirectChildrenOnly);
    qDeleteAll(old);

    qsizetype rows = 0;
    for (const BWShortcutSection &section : sections)
        rows += section.shortcuts.size() + 1;
    qsizetype used = 0;
    QGridLayout *column = nullptr;
    for (const BWShortcutSection &section : sections) {
        // The second column begins with the section whose middle lies beyond the middle of all.
        const bool inSecondColumn = used > 0 && 2 * used + section.shortcuts.size() + 1 > rows;
        if (!column || (inSecondColumn && layout()->count() < columns)) {
            auto *widget = new QWidget;
            column = new QGridLayout(widget);
            column->setContentsMargins(0, 0, 0, 0);
            column->setHorizontalSpacing(keySpacing);
            column->setVerticalSpacing(rowSpacing);
            column->setColumnStretch(0, 1);
            static_cast<QHBoxLayout *>(layout())->addWidget(widget, 1, Qt::AlignTop);
        }
        addSection(*column, section);
        used += section.shortcuts.size() + 1;
    }
    // In a window that is already shown they would have no size until the event loop shows them.
    const auto made = findChildren<QWidget *>();
    for (QWidget *widget : made)
        widget->show();
}

void BWShortcutTable::addSection(QGridLayout &column, const BWShortcutSection &section)
{
    int row = column.rowCount();
    if (column.count() > 0)
        column.setRowMinimumHeight(row++, sectionSpacing);
    if (!section.title.isNull()) {
        QLabel *title = plainLabel(section.title);
        QFont bold = title->font();
        bold.setWeight(QFont::Bold);
        title->setFont(bold);
        column.addWidget(title, row++, 0, 1, 2);
    }
    for (const BWShortcutSection::Shortcut &shortcut : section.shortcuts) {
        column.addWidget(plainLabel(shortcut.name), row, 0);
        column.addWidget(new BWKeyCaps(shortcut.keys), row++, 1, Qt::AlignRight);
    }
}
