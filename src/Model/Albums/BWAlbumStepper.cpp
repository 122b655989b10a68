// SPDX-License-Identifier: GPL-3.0-or-later
#include "Model/Albums/BWAlbumStepper.h"

#include <algorithm>
#include <QSet>

void BWAlbumStepper::setFiles(const QList<QUrl> &files)
{
    const QList<QUrl> before = std::exchange(m_files, files);
    const auto at = std::find(before.cbegin(), before.cend(), m_file);
    if (m_file.isEmpty() || at == before.cend() || files.contains(m_file))
        return;
    const QSet<QUrl> now(files.cbegin(), files.cend());
    const auto isThere = [&now](const QUrl &file) { return now.contains(file); };
    if (const auto after = std::find_if(at, before.cend(), isThere); after != before.cend()) {
        m_file = *after;
        return;
    }
    const auto earlier = std::find_if(std::make_reverse_iterator(at), before.crend(), isThere);
    m_file = earlier != before.crend() ? *earlier : QUrl();
}

QUrl BWAlbumStepper::next() const
{
    return m_files.value(m_files.indexOf(m_file) + 1);
}

QUrl BWAlbumStepper::previous() const
{
    return m_files.value(m_files.indexOf(m_file) - 1);
}

std::optional<int> BWAlbumStepper::position() const
{
    const qsizetype index = m_files.indexOf(m_file);
    return index >= 0 ? std::optional(static_cast<int>(index) + 1) : std::nullopt;
}
