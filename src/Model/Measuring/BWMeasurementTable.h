// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Model/Measuring/BWMeasurement.h"

#include <functional>
#include <QList>
#include <QLocale>
#include <QString>

/// What measurements tell, as rows: each with a name and its numbers, and for equal ones their mean, extremes and standard
/// deviation.
class BWMeasurementTable {
public:
    struct Row {
        qsizetype measurement; ///< its place in the list
        QString name; ///< "Length 2"
        QString what; ///< "Area"
        BWQuantity quantity;
    };
    /// Of all rows that measure the same with the same kind; there are at least two.
    struct Summary {
        QString name; ///< "Circle"
        QString what;
        qsizetype count;
        BWQuantity mean;
        BWQuantity smallest;
        BWQuantity largest;
        BWQuantity deviation; ///< standard deviation of the single value
    };
    enum class Format {
        Text, ///< columns separated by tabs, numbers as the locale writes them: for the clipboard
        CsvPoint, ///< RFC 4180: commas between columns, decimal points
        CsvComma, ///< semicolons between columns, decimal commas, as spreadsheets expect it in many countries
    };
    /// The words of the current language for kinds and what they tell, by identifier, and for a table's head.
    struct Words {
        std::function<QString(const QString &kind)> kind;
        std::function<QString(const QString &quantity)> quantity;
        QString name, what, value, unit, error, mean, smallest, largest, deviation;
        QString summary = QStringLiteral("%1: %2"); ///< its name, of the kind's and that of the mean, the smallest, ...
    };

    BWMeasurementTable(const QList<BWMeasurement> &measurements, const BWPictureScale &scale, Words words);

    const QList<Row> &rows() const { return m_rows; }
    const QList<Summary> &summaries() const { return m_summaries; }
    /// The whole table with a head. `locale` matters for Format::Text alone.
    QString toString(Format format, const QLocale &locale) const;

private:
    void summarize(const QList<BWMeasurement> &measurements);

    Words m_words;
    QList<Row> m_rows;
    QList<Summary> m_summaries;
};
