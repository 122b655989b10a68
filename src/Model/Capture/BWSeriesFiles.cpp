// SPDX-License-Identifier: GPL-3.0-or-later
#include "Model/Capture/BWSeriesFiles.h"

#include "Model/Albums/BWAlbum.h"
#include "Utils/BWFilePath.h"

#include <algorithm>

namespace {

constexpr qsizetype mostRanges = 1000; // then a range takes in what lies between its files

bool isDigit(char character)
{
    return character >= '0' && character <= '9';
}

} // namespace

std::optional<std::pair<QByteArray, qint64>> BWSeriesFiles::stemAndNumber(const QUrl &file)
{
    const QByteArray name = BWFilePath::lastComponent(file);
    const qsizetype end = name.lastIndexOf('.');
    qsizetype begin = end;
    while (begin > 0 && isDigit(name.at(begin - 1)))
        --begin;
    const qint64 number = name.mid(begin, end - begin).toLongLong();
    return BWAlbum::numberText(number) == name.mid(begin, end - begin)
        ? std::optional(std::pair(name.left(begin), number))
        : std::nullopt;
}

void BWSeriesFiles::add(const QUrl &file)
{
    const auto parts = stemAndNumber(file);
    if (!parts)
        return;
    const auto &[stem, number] = *parts;
    const bool isOfLast = !m_ranges.isEmpty() && m_ranges.constLast().stem == stem;
    const bool follows = isOfLast && number > m_ranges.constLast().last
        && (number - 1 == m_ranges.constLast().last || m_ranges.size() >= mostRanges);
    if (follows)
        m_ranges.last().last = number;
    else
        m_ranges.append({stem, number, number});
}

QList<QUrl> BWSeriesFiles::among(const QList<QUrl> &files) const
{
    QList<QUrl> result;
    std::copy_if(files.cbegin(), files.cend(), std::back_inserter(result), [this](const QUrl &file) {
        const auto parts = stemAndNumber(file);
        return parts && std::any_of(m_ranges.cbegin(), m_ranges.cend(), [&parts](const Range &range) {
                   return range.stem == parts->first && range.first <= parts->second && parts->second <= range.last;
               });
    });
    return result;
}

QJsonArray BWSeriesFiles::toJson() const
{
    QJsonArray json;
    for (const Range &range : m_ranges)
        json.append(QJsonArray{QString::fromLatin1(range.stem), range.first, range.last});
    return json;
}

BWSeriesFiles BWSeriesFiles::fromJson(const QJsonArray &json)
{
    BWSeriesFiles files;
    for (const QJsonValue value : json) {
        const QJsonArray range = value.toArray();
        const Range read{range.at(0).toString().toLatin1(), range.at(1).toInteger(-1), range.at(2).toInteger(-1)};
        if (0 <= read.first && read.first <= read.last)
            files.m_ranges.append(read);
    }
    return files;
}
