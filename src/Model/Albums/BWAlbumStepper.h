// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <optional>
#include <QList>
#include <QUrl>

/// Steps through the files of an album, one of which is the current one. Keeps its place when files come and go.
class BWAlbumStepper {
public:
    /// What the album holds now, in its order. If the current file is no longer there, the next one that still is becomes
    /// current, else the previous one, else none. One that has not been there yet, such as a new capture, stays current.
    void setFiles(const QList<QUrl> &files);

    /// An empty URL for none.
    void setFile(const QUrl &file) { m_file = file; }
    const QUrl &file() const { return m_file; }

    /// Empty at the end. From a file that the album does not list, the next one is the first.
    QUrl next() const;
    QUrl previous() const;

    /// The place of the current file, from 1; nothing if the album does not list it.
    std::optional<int> position() const;
    int count() const { return static_cast<int>(m_files.size()); }

private:
    QList<QUrl> m_files;
    QUrl m_file;
};
