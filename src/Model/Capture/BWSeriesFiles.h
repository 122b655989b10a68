// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <optional>
#include <QByteArray>
#include <QJsonArray>
#include <QList>
#include <QUrl>
#include <utility>

/// Which files of an album a series took. An album numbers its files, so that a few numbers tell, however many files there
/// are: a capture of somebody else's between them adds one range.
class BWSeriesFiles {
public:
    /// In the order in which they came into the album.
    void add(const QUrl &file);
    bool isEmpty() const { return m_ranges.isEmpty(); }
    /// Those of the files that are of the series, in their order.
    QList<QUrl> among(const QList<QUrl> &files) const;

    QJsonArray toJson() const;
    /// Leaves out what is no range.
    static BWSeriesFiles fromJson(const QJsonArray &json);

private:
    struct Range {
        QByteArray stem; ///< what stands before the number
        qint64 first = 0;
        qint64 last = 0;
    };
    static std::optional<std::pair<QByteArray, qint64>> stemAndNumber(const QUrl &file);

    QList<Range> m_ranges;
};
