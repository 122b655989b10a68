// SPDX-License-Identifier: GPL-3.0-or-later
#include "Views/Measuring/BWCalibrationsDialog.h"

#include "Model/Measuring/BWLength.h"
#include "Model/Texts/BWIsolated.h"
#include "Utils/BWUIUtils.h"
#include "Views/Utils/BWAccessibility.h"
#include "Views/Utils/BWViewKeys.h"

#include <algorithm>
#include <QDialogButtonBox>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QPushButton>
#include <QShortcut>
#include <QSignalBlocker>
#include <QStyle>
#include <QStyledItemDelegate>
#include <QTreeWidget>
#include <QVBoxLayout>
#include <utility>

using namespace Qt::StringLiterals;

namespace {

constexpr int nameRole = Qt::UserRole; // what it is called until another name is accepted

/// Marks of direction are for what shows, not for what is edited.
class NameDelegate : public QStyledItemDelegate {
public:
    using QStyledItemDelegate::QStyledItemDelegate;

    QString displayText(const QVariant &value, const QLocale &locale) const override
    {
        return bwIsolated(QStyledItemDelegate::displayText(value, locale));
    }
};

} // namespace

BWCalibrationsDialog::BWCalibrationsDialog(const BWCalibrations &calibrations, const QString &product,
                                           const QString &productName, QSize picture, Callbacks callbacks,
                                           QWidget *parent)
    : QDialog(parent, Qt::Sheet),
      m_calibrations(calibrations),
      m_product(product),
      m_productName(productName),
      m_picture(picture),
      m_callbacks(std::move(callbacks)),
      m_explanation(new QLabel),
      m_list(new QTreeWidget),
      m_message(new BWAnnouncement),
      m_rename(new QPushButton),
      m_remove(new QPushButton),
      m_buttons(new QDialogButtonBox(QDialogButtonBox::Close))
{
    setWindowModality(Qt::WindowModal);
    m_explanation->setTextFormat(Qt::PlainText);
    m_explanation->setWordWrap(true);
    m_list->setColumnCount(ColumnCount);
    m_list->setItemDelegateForColumn(NameColumn, new NameDelegate(m_list));
    m_list->setRootIsDecorated(false);
    m_list->setUniformRowHeights(true);
    m_list->setAllColumnsShowFocus(true);
    m_list->setEditTriggers(QAbstractItemView::NoEditTriggers);
    m_list->header()->setStretchLastSection(false);
    m_message->setWordWrap(true);
    for (QPushButton *button : {m_rename, m_remove})
        button->setAutoDefault(false); // Enter closes, or ends the editing of a name
    auto *row = new QHBoxLayout;
    row->addWidget(m_rename);
    row->addWidget(m_remove);
    row->addStretch(1);
    row->addWidget(m_buttons);
    auto *column = new QVBoxLayout(this);
    column->setContentsMargins(20, 20, 20, 16);
    column->setSpacing(10);
    column->addWidget(m_explanation);
    column->addWidget(m_list, 1);
    column->addWidget(m_message);
    column->addLayout(row);

    connect(m_list, &QTreeWidget::itemDoubleClicked, this, &BWCalibrationsDialog::beginRename);
    connect(m_list, &QTreeWidget::itemChanged, this, &BWCalibrationsDialog::renamed);
    connect(m_list, &QTreeWidget::currentItemChanged, this, &BWCalibrationsDialog::updateButtons);
    connect(m_rename, &QPushButton::clicked, this, &BWCalibrationsDialog::beginRename);
    connect(m_remove, &QPushButton::clicked, this, &BWCalibrationsDialog::remove);
    connect(m_buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    const auto onKey = [this](const QKeySequence &key, auto react) {
        auto *shortcut = new QShortcut(key, m_list);
        shortcut->setContext(Qt::WidgetShortcut); // not while a name is being edited
        connect(shortcut, &QShortcut::activated, this, react);
    };
    onKey(BWViewKeys::renameCalibration, &BWCalibrationsDialog::beginRename);
    onKey(BWViewKeys::removeCalibration, &BWCalibrationsDialog::remove);
    m_list->setFocus();
}

void BWCalibrationsDialog::localizeWithManager(BWLocalizationManager &manager)
{
    const QString title = manager.text(u"measuring"_s, u"calibrations_title"_s, u"Calibrations"_s);
    setWindowTitle(title);
    m_list->setAccessibleName(title);
    m_explanation->setText(manager.text(u"measuring"_s, u"calibrations_of"_s, u"Product: %1"_s).arg(m_productName));
    m_explanation->setVisible(!m_productName.isEmpty());
    m_list->setHeaderLabels({manager.text(u"measuring"_s, u"calibrations_name"_s, u"Name"_s),
                             manager.text(u"measuring"_s, u"calibrations_width"_s, u"Width of the picture"_s),
                             manager.text(u"measuring"_s, u"table_error"_s, u"Expected error"_s),
                             manager.text(u"measuring"_s, u"calibrations_lines"_s, u"Lines measured"_s)});
    for (int column = WidthColumn; column < ColumnCount; ++column)
        m_list->headerItem()->setTextAlignment(column, Qt::AlignRight | Qt::AlignVCenter);
    m_builtInText = manager.text(u"measuring"_s, u"calibrations_built_in"_s, u"of the product"_s);
    m_inUseText = manager.text(u"measuring"_s, u"calibrations_in_use"_s, u"in use"_s);
    m_nameTaken = manager.text(u"measuring"_s, u"calibrations_name_taken"_s,
                               u"Each calibration needs a name of its own; this one keeps its name."_s);
    m_renamedText = manager.text(u"measuring"_s, u"calibrations_renamed"_s, u"Renamed to “%1”."_s);
    m_removedText = manager.text(u"measuring"_s, u"calibrations_removed"_s, u"“%1” was removed."_s);
    m_noneChosen = manager.text(u"measuring"_s, u"calibrations_none_chosen"_s,
                                u"No calibration is in use now: lengths are in pixels."_s);
    m_removeTitle = manager.text(u"measuring"_s, u"calibrations_remove_title"_s, u"Remove a calibration"_s);
    m_removeMessage = manager.text(u"measuring"_s, u"calibrations_remove_message"_s,
                                   u"Remove “%1” for good? Saved pictures keep their scale."_s);
    m_removeChosenMessage = manager.text(
        u"measuring"_s, u"calibrations_remove_chosen_message"_s,
        u"Remove “%1” for good? It is in use; lengths will be in pixels. Saved pictures keep their scale."_s);
    m_removeOk = manager.text(u"measuring"_s, u"calibrations_remove_ok"_s, u"&Remove"_s);
    m_removeCancel = manager.text(u"measuring"_s, u"calibration_cancel"_s, u"&Cancel"_s);
    m_rename->setText(manager.text(u"measuring"_s, u"calibrations_rename"_s, u"Re&name"_s));
    m_remove->setText(manager.text(u"measuring"_s, u"calibrations_remove"_s, u"&Remove..."_s));
    m_buttons->button(QDialogButtonBox::Close)
        ->setText(manager.text(u"measuring"_s, u"calibrations_close"_s, u"&Close"_s));
    reload(m_calibrations.chosen(m_product).name);
    if (!m_list->topLevelItem(0))
        m_message->announce(manager.text(
            u"measuring"_s, u"calibrations_empty"_s,
            u"There are none yet. Lay a line over something whose length you know, then choose “Calibrate...”."_s));
}

void BWCalibrationsDialog::reload(const QString &current)
{
    const QSignalBlocker blocker(m_list);
    m_list->clear();
    const auto all = m_calibrations.of(m_product);
    for (const BWCalibration &one : all)
        addRow(one);
    for (int i = 0; i < m_list->topLevelItemCount(); ++i) {
        if (i == 0 || m_list->topLevelItem(i)->text(NameColumn) == current)
            m_list->setCurrentItem(m_list->topLevelItem(i));
    }
    fitColumns();
    updateButtons();
}

/// All of them are to be seen; what room is left goes to the names.
void BWCalibrationsDialog::fitColumns()
{
    QHeaderView &header = *m_list->header();
    header.setSectionResizeMode(NameColumn, QHeaderView::Interactive);
    for (int column = 0; column < ColumnCount; ++column) {
        constexpr int gap = 16;
        constexpr int usualName = 150;
        m_list->resizeColumnToContents(column);
        const int width = m_list->columnWidth(column) + gap;
        m_list->setColumnWidth(column, column == NameColumn ? std::max(width, usualName) : width);
    }
    constexpr int widest = 700; // a name can be of any length
    const int frame = 2 * m_list->frameWidth() + style()->pixelMetric(QStyle::PM_ScrollBarExtent);
    m_list->setMinimumWidth(std::min(header.length() + frame, widest));
    header.setSectionResizeMode(NameColumn, QHeaderView::Stretch);
}

void BWCalibrationsDialog::addRow(const BWCalibration &calibration)
{
    const QLocale locale;
    const double millimetres = calibration.widthAt(m_picture);
    const BWLengthUnit unit = m_calibrations.unit().value_or(BWLengths::unitFor(millimetres));
    const double width = millimetres / BWLengths::millimetres(unit);
    const bool isBuiltIn = m_calibrations.isBuiltIn(m_product, calibration.name);
    auto *item = new QTreeWidgetItem(
        m_list,
        {calibration.name,
         BWLengths::text({width, width * calibration.relativeError, BWDimension::Length, unit}, locale),
         calibration.relativeError > 0 ? BWLengths::percent(calibration.relativeError, locale) : u"–"_s,
         isBuiltIn                   ? m_builtInText
             : calibration.lines > 0 ? locale.toString(calibration.lines)
                                     : u"–"_s});
    item->setData(NameColumn, nameRole, calibration.name);
    QStringList others; // of which the keys lead to none
    for (int column = WidthColumn; column < ColumnCount; ++column) {
        item->setTextAlignment(column, Qt::AlignRight | Qt::AlignVCenter);
        item->setData(column, Qt::AccessibleDescriptionRole, calibration.name);
        others << u"%1 %2"_s.arg(m_list->headerItem()->text(column), item->text(column));
    }
    item->setData(NameColumn, Qt::AccessibleDescriptionRole, others.join(u", "_s));
    item->setFlags(Qt::ItemIsEnabled | Qt::ItemIsSelectable);
    if (!isBuiltIn)
        item->setFlags(item->flags() | Qt::ItemIsEditable);
    if (m_calibrations.chosen(m_product).name != calibration.name)
        return;
    QFont bold = m_list->font();
    bold.setBold(true);
    item->setFont(NameColumn, bold);
    item->setToolTip(NameColumn, m_inUseText);
    item->setData(NameColumn, Qt::AccessibleTextRole, u"%1, %2"_s.arg(calibration.name, m_inUseText));
}

void BWCalibrationsDialog::beginRename()
{
    if (m_rename->isEnabled())
        m_list->editItem(m_list->currentItem(), NameColumn);
}

void BWCalibrationsDialog::renamed(QTreeWidgetItem *item)
{
    const QString name = item->data(NameColumn, nameRole).toString();
    const QString newName = item->text(NameColumn).trimmed();
    const bool accepted = name == newName || m_callbacks.rename(name, newName);
    if (name != newName)
        m_message->announce(accepted ? m_renamedText.arg(bwIsolated(newName)) : m_nameTaken);
    // Its editor is still at work on the row.
    QMetaObject::invokeMethod(
        this, [this, current = accepted ? newName : name] { reload(current); }, Qt::QueuedConnection);
}

void BWCalibrationsDialog::remove()
{
    if (!m_remove->isEnabled())
        return;
    const QString name = m_list->currentItem()->data(NameColumn, nameRole).toString();
    const bool isChosen = m_calibrations.chosen(m_product).name == name;
    if (!BWUIUtils::displayChoiceAlert(m_removeTitle,
                                       (isChosen ? m_removeChosenMessage : m_removeMessage).arg(bwIsolated(name)),
                                       m_removeOk, m_removeCancel))
        return;
    m_callbacks.remove(name);
    const QString removed = m_removedText.arg(bwIsolated(name));
    m_message->announce(isChosen ? BWUIUtils::inOneLine(removed, m_noneChosen) : removed);
    reload({});
}

void BWCalibrationsDialog::updateButtons()
{
    const QTreeWidgetItem *item = m_list->currentItem();
    for (QPushButton *button : {m_rename, m_remove})
        button->setEnabled(item && item->flags() & Qt::ItemIsEditable);
}
