// SPDX-License-Identifier: GPL-3.0-or-later
#include "Model/Measuring/BWMeasurementTable.h"

#include <algorithm>
#include <cmath>
#include <QHash>
#include <QStringList>
#include <utility>

using namespace Qt::StringLiterals;

namespace {

QString escaped(QString cell, QChar separator)
{
    if (cell.contains(separator) || cell.contains(u'"') || cell.contains(u'\n') || cell.contains(u'\r'))
        cell = u'"' + cell.replace(u'"', u"\"\""_s) + u'"';
    return cell;
}

} // namespace

BWMeasurementTable::BWMeasurementTable(const QList<BWMeasurement> &measurements, const BWPictureScale &scale,
                                       Words words)
    : m_words(std::move(words))
{
    QHash<QString, int> numbers; // each kind counts its own
    for (qsizetype i = 0; i < measurements.size(); ++i) {
        const BWMeasurement &one = measurements[i];
        const int number = ++numbers[one.kind];
        const QString name = u"%1 %2"_s.arg(m_words.kind(one.kind)).arg(number);
        for (const BWMeasurement::Result &result : one.results(scale))
            m_rows.append({i, name, m_words.quantity(result.identifier), result.quantity});
    }
    summarize(measurements);
}

void BWMeasurementTable::summarize(const QList<BWMeasurement> &measurements)
{
    QList<std::pair<QString, QString>> keys; // kind and what it tells
    QHash<std::pair<QString, QString>, QList<BWQuantity>> groups;
    for (const Row &row : std::as_const(m_rows)) {
        const std::pair key(measurements[row.measurement].kind, row.what);
        if (!std::isfinite(row.quantity.value))
            continue;
        if (!groups.contains(key))
            keys.append(key);
        groups[key].append(row.quantity);
    }
    for (const auto &key : std::as_const(keys)) {
        const QList<BWQuantity> group = groups.value(key);
        if (group.size() < 2)
            continue;
        const auto less = [](const BWQuantity &a, const BWQuantity &b) { return a.value < b.value; };
        const auto count = static_cast<double>(group.size());
        BWQuantity mean = group.first();
        mean.value = 0;
        double errors = 0;
        for (const BWQuantity &one : group) {
            mean.value += one.value / count;
            errors += one.error * one.error;
        }
        double squares = 0;
        for (const BWQuantity &one : group)
            squares += (one.value - mean.value) * (one.value - mean.value);
        BWQuantity deviation = mean;
        deviation.value = std::sqrt(squares / (count - 1));
        mean.error = deviation.error = std::sqrt(errors) / count;
        m_summaries.append({m_words.kind(key.first), key.second, group.size(), mean,
                            *std::min_element(group.begin(), group.end(), less),
                            *std::max_element(group.begin(), group.end(), less), deviation});
    }
}

QString BWMeasurementTable::toString(Format format, const QLocale &locale) const
{
    const bool isText = format == Format::Text;
    const QChar separator = isText ? u'\t' : format == Format::CsvPoint ? u',' : u';';
    QLocale numbers = isText ? locale : QLocale(format == Format::CsvPoint ? QLocale::C : QLocale::German);
    const QString end = isText ? u"\n"_s : u"\r\n"_s;
    QString text;
    const auto add = [&](QStringList cells) {
        for (QString &cell : cells)
            cell = isText ? cell.replace(u'\t', u' ').replace(u'\n', u' ') : escaped(cell, separator);
        text += cells.join(separator) + end;
    };
    const auto addQuantity = [&](const QString &name, const QString &what, const BWQuantity &quantity) {
        BWQuantity error = quantity;
        error.value = quantity.error;
        const bool isMeasured = std::isfinite(quantity.value);
        const bool hasError = quantity.dimension != BWDimension::Count && isMeasured;
        add({name, what, isMeasured ? BWLengths::number(quantity, numbers) : QString(),
             BWLengths::symbol(quantity.unit, quantity.dimension),
             hasError ? BWLengths::number(error, numbers) : QString()});
    };
    add({m_words.name, m_words.what, m_words.value, m_words.unit, m_words.error});
    for (const Row &row : m_rows)
        addQuantity(row.name, row.what, row.quantity);
    for (const Summary &summary : m_summaries) {
        for (const auto &[word, quantity] :
             {std::pair(m_words.mean, summary.mean), std::pair(m_words.smallest, summary.smallest),
              std::pair(m_words.largest, summary.largest), std::pair(m_words.deviation, summary.deviation)})
            addQuantity(m_words.summary.arg(summary.name, word), summary.what, quantity);
    }
    return text;
}
