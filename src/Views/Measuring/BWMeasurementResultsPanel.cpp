// SPDX-License-Identifier: GPL-3.0-or-later
#include "Views/Measuring/BWMeasurementResultsPanel.h"

#include "Model/Export/BWPartFile.h"
#include "Utils/BWUIUtils.h"
#include "Views/Utils/BWFilePanels.h"
#include "Views/Utils/BWViewKeys.h"

#include <cerrno>
#include <cstring>
#include <QClipboard>
#include <QComboBox>
#include <QGuiApplication>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QKeyEvent>
#include <QLabel>
#include <QPushButton>
#include <QScrollBar>
#include <QShortcut>
#include <QSignalBlocker>
#include <QTreeWidget>
#include <QVBoxLayout>
#include <utility>

using namespace Qt::StringLiterals;

namespace {

enum Column { NameColumn, WhatColumn, ValueColumn, ColumnCount };
constexpr int measurementRole = Qt::UserRole;

} // namespace

void BWMeasuringWords::localizeWithManager(BWLocalizationManager &manager)
{
    m_kinds = {{u"length"_s, manager.text(u"measuring"_s, u"kind_length"_s, u"Length"_s)},
               {u"path"_s, manager.text(u"measuring"_s, u"kind_path"_s, u"Path"_s)},
               {u"angle"_s, manager.text(u"measuring"_s, u"kind_angle"_s, u"Angle"_s)},
               {u"circle"_s, manager.text(u"measuring"_s, u"kind_circle"_s, u"Circle through three points"_s)},
               {u"radius"_s, manager.text(u"measuring"_s, u"kind_radius"_s, u"Circle by its radius"_s)},
               {u"polygon"_s, manager.text(u"measuring"_s, u"kind_polygon"_s, u"Polygon"_s)},
               {u"count"_s, manager.text(u"measuring"_s, u"kind_count"_s, u"Count"_s)},
               {u"arrow"_s, manager.text(u"measuring"_s, u"kind_arrow"_s, u"Arrow"_s)}};
    m_quantities = {{u"length"_s, manager.text(u"measuring"_s, u"quantity_length"_s, u"Length"_s)},
                    {u"angle"_s, manager.text(u"measuring"_s, u"quantity_angle"_s, u"Angle"_s)},
                    {u"diameter"_s, manager.text(u"measuring"_s, u"quantity_diameter"_s, u"Diameter"_s)},
                    {u"area"_s, manager.text(u"measuring"_s, u"quantity_area"_s, u"Area"_s)},
                    {u"perimeter"_s, manager.text(u"measuring"_s, u"quantity_perimeter"_s, u"Perimeter"_s)},
                    {u"count"_s, manager.text(u"measuring"_s, u"quantity_count"_s, u"Number"_s)}};
    m_table.name = manager.text(u"measuring"_s, u"table_name"_s, u"Measurement"_s);
    m_table.what = manager.text(u"measuring"_s, u"table_quantity"_s, u"Quantity"_s);
    m_table.value = manager.text(u"measuring"_s, u"table_value"_s, u"Value"_s);
    m_table.unit = manager.text(u"measuring"_s, u"table_unit"_s, u"Unit"_s);
    m_table.error = manager.text(u"measuring"_s, u"table_error"_s, u"Expected error"_s);
    m_table.mean = manager.text(u"measuring"_s, u"table_mean"_s, u"mean"_s);
    m_table.smallest = manager.text(u"measuring"_s, u"table_smallest"_s, u"minimum"_s);
    m_table.largest = manager.text(u"measuring"_s, u"table_largest"_s, u"maximum"_s);
    m_table.deviation = manager.text(u"measuring"_s, u"table_deviation"_s, u"standard deviation"_s);
    m_table.summary = manager.text(u"measuring"_s, u"result"_s, u"%1: %2"_s);
}

BWMeasurementTable::Words BWMeasuringWords::table() const
{
    BWMeasurementTable::Words words = m_table;
    words.kind = [this](const QString &identifier) { return kind(identifier); };
    words.quantity = [this](const QString &identifier) { return quantity(identifier); };
    return words;
}

BWMeasurementResultsPanel::BWMeasurementResultsPanel(Callbacks callbacks, BWFilePanels &panels,
                                                     BWUserDefaults &defaults, QWidget *cameraWindow)
    : BWUtilityPanel(cameraWindow),
      m_callbacks(std::move(callbacks)),
      m_panels(panels),
      m_rows(new QTreeWidget),
      m_nothing(new QLabel),
      m_formatLabel(new QLabel),
      m_format(new QComboBox),
      m_copy(new QPushButton),
      m_save(new QPushButton)
{
    m_rows->setColumnCount(ColumnCount);
    m_rows->setRootIsDecorated(false);
    m_rows->setUniformRowHeights(true);
    m_rows->setAllColumnsShowFocus(true);
    m_rows->header()->setStretchLastSection(false);
    m_rows->header()->setSectionResizeMode(WhatColumn, QHeaderView::Stretch);
    m_nothing->setAlignment(Qt::AlignCenter);
    m_nothing->setWordWrap(true);
    m_nothing->setMargin(24);
    m_formatLabel->setBuddy(m_format);
    // What the numbers look like says it best.
    m_format->addItem(u"1.25, 1.50"_s, static_cast<int>(BWMeasurementTable::Format::CsvPoint));
    m_format->addItem(u"1,25; 1,50"_s, static_cast<int>(BWMeasurementTable::Format::CsvComma));
    m_format->setCurrentIndex(QLocale().decimalPoint() == u","_s ? 1 : 0);

    auto *buttons = new QHBoxLayout;
    buttons->addWidget(m_formatLabel);
    buttons->addWidget(m_format);
    buttons->addStretch(1);
    buttons->addWidget(m_copy);
    buttons->addWidget(m_save);
    auto *column = new QVBoxLayout(this);
    column->setContentsMargins(12, 12, 12, 12);
    column->addWidget(m_rows, 1);
    column->addWidget(m_nothing, 1);
    column->addLayout(buttons);
    resize(520, 320);
    rememberFrame(u"results"_s, defaults);

    connect(m_copy, &QPushButton::clicked, this, &BWMeasurementResultsPanel::copy);
    connect(m_save, &QPushButton::clicked, this, &BWMeasurementResultsPanel::save);
    connect(new QShortcut(BWViewKeys::copy, this), &QShortcut::activated, this, &BWMeasurementResultsPanel::copy);
    connect(m_rows, &QTreeWidget::currentItemChanged, this, [this](const QTreeWidgetItem *item) {
        if (item && item->data(NameColumn, measurementRole).isValid())
            Q_EMIT measurementChosen(item->data(NameColumn, measurementRole).toLongLong());
    });
    new BWClosingKeys(*this);
}

void BWMeasurementResultsPanel::localizeWithManager(BWLocalizationManager &manager)
{
    m_words.localizeWithManager(manager);
    const QString title = manager.text(u"measuring"_s, u"results_title"_s, u"Results"_s);
    setWindowTitle(title);
    m_rows->setAccessibleName(title);
    const BWMeasurementTable::Words words = m_words.table();
    m_rows->setHeaderLabels({words.name, words.what, words.value});
    m_rows->headerItem()->setTextAlignment(ValueColumn, Qt::AlignRight | Qt::AlignVCenter);
    m_nothing->setText(manager.text(u"measuring"_s, u"results_none"_s, u"Nothing has been measured yet."_s));
    m_formatLabel->setText(manager.text(u"measuring"_s, u"results_format"_s, u"&Numbers in the file:"_s));
    m_copy->setText(manager.text(u"measuring"_s, u"results_copy"_s, u"&Copy"_s));
    m_save->setText(manager.text(u"measuring"_s, u"results_save"_s, u"&Save as CSV..."_s));
    m_saveTitle = manager.text(u"measuring"_s, u"results_save_title"_s, u"Save the results"_s);
    m_saveMessage = manager.text(u"measuring"_s, u"results_save_message"_s, u"Where should the results be saved?"_s);
    m_name = manager.text(u"measuring"_s, u"results_file_name"_s, u"Measurements"_s);
    m_failedTitle = manager.text(u"measuring"_s, u"results_failed_title"_s, u"The results were not saved"_s);
    m_failedMessage = manager.text(u"measuring"_s, u"results_failed_message"_s, u"The file cannot be written:"_s);
    m_isFilled = false;
    reload();
}

BWMeasurementTable BWMeasurementResultsPanel::table() const
{
    return {m_callbacks.measurements(), m_callbacks.scale(), m_words.table()};
}

void BWMeasurementResultsPanel::reload()
{
    // It is asked to at every move of the picture.
    const QList<BWMeasurement> measurements = m_callbacks.measurements();
    const BWPictureScale scale = m_callbacks.scale();
    if (m_isFilled && measurements == m_measurements && scale == m_scale)
        return;
    m_measurements = measurements;
    m_scale = scale;
    m_isFilled = true;
    fill();
}

/// Leaves the reader where he is; what is new comes into view.
void BWMeasurementResultsPanel::fill()
{
    const BWMeasurementTable results = table();
    const QLocale locale;
    QFont italic = m_rows->font();
    italic.setItalic(true);
    QList<QTreeWidgetItem *> items;
    const auto add = [&](const QString &name, const QString &what, const BWQuantity &quantity) {
        auto *item = new QTreeWidgetItem({name, what, BWLengths::text(quantity, locale)});
        item->setTextAlignment(ValueColumn, Qt::AlignRight | Qt::AlignVCenter);
        // The keys go from row to row: the first cell tells a screen reader all of it, each other one whose it is.
        item->setData(NameColumn, Qt::AccessibleDescriptionRole, u"%1 %2"_s.arg(what, item->text(ValueColumn)));
        for (const int column : {WhatColumn, ValueColumn})
            item->setData(column, Qt::AccessibleDescriptionRole, name);
        items.append(item);
        return item;
    };
    for (const BWMeasurementTable::Row &row : results.rows())
        add(row.name, row.what, row.quantity)->setData(NameColumn, measurementRole, row.measurement);
    const BWMeasurementTable::Words words = m_words.table();
    for (const BWMeasurementTable::Summary &summary : results.summaries()) {
        for (const auto &[word, quantity] :
             {std::pair(words.mean, summary.mean), std::pair(words.smallest, summary.smallest),
              std::pair(words.largest, summary.largest), std::pair(words.deviation, summary.deviation)}) {
            QTreeWidgetItem *item = add(words.summary.arg(summary.name, word), summary.what, quantity);
            for (int column = 0; column < ColumnCount; ++column)
                item->setFont(column, italic);
        }
    }
    {
        const QSignalBlocker blocker(m_rows); // nobody has chosen a row
        const int current = m_rows->indexOfTopLevelItem(m_rows->currentItem());
        const int scrolled = m_rows->verticalScrollBar()->value();
        m_rows->clear();
        m_rows->addTopLevelItems(items);
        m_rows->setCurrentItem(items.value(current));
        m_rows->doItemsLayout();
        for (const int column : {NameColumn, ValueColumn}) {
            constexpr int gap = 12;
            m_rows->resizeColumnToContents(column);
            m_rows->setColumnWidth(column, m_rows->columnWidth(column) + gap);
        }
        m_rows->verticalScrollBar()->setValue(scrolled);
        const auto measured = static_cast<int>(results.rows().size());
        if (measured > std::exchange(m_measured, measured))
            m_rows->scrollToItem(items[measured - 1]);
    }
    const bool isEmpty = results.rows().isEmpty();
    m_rows->setVisible(!isEmpty);
    m_nothing->setVisible(isEmpty);
    for (QWidget *control : std::initializer_list<QWidget *>{m_copy, m_save, m_format})
        control->setEnabled(!isEmpty);
}

void BWMeasurementResultsPanel::copy() const
{
    const BWMeasurementTable results = table();
    if (!results.rows().isEmpty())
        QGuiApplication::clipboard()->setText(results.toString(BWMeasurementTable::Format::Text, QLocale()));
}

void BWMeasurementResultsPanel::save()
{
    m_panels.save(this, {m_saveTitle, m_saveMessage, u"csv"_s, m_callbacks.folder, m_name + u".csv"_s},
                  [this](const QUrl &file) { write(file); });
}

/// A few kilobytes, written at once.
void BWMeasurementResultsPanel::write(const QUrl &file)
{
    const auto format = static_cast<BWMeasurementTable::Format>(m_format->currentData().toInt());
    const QByteArray text =
        "\xEF\xBB\xBF" + table().toString(format, QLocale()).toUtf8(); // spreadsheets guess otherwise
    BWPartFile part(file);
    if (!part.create() || !part.writeAt(0, text.constData(), text.size()) || !part.complete())
        BWUIUtils::displayOKAlertOver(
            *this, m_failedTitle, BWUIUtils::inOneLine(m_failedMessage, QString::fromLocal8Bit(std::strerror(errno))));
}
