// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <ctime>
#include <memory>
#include <QUrl>
#include <sys/types.h>

/// A file that is being exported, as it was when it was opened. Can be read by several threads at once.
class BWExportSource {
public:
    /// Null, with the reason in `errno`, unless it is a regular file that can be read. Never waits for a pipe.
    static std::shared_ptr<const BWExportSource> open(const QUrl &file);
    ~BWExportSource();
    BWExportSource(const BWExportSource &) = delete;
    BWExportSource &operator=(const BWExportSource &) = delete;

    const QUrl &file() const { return m_file; }
    int descriptor() const { return m_descriptor; }
    /// Bytes.
    qint64 size() const { return m_size; }
    timespec modified() const { return m_modified; }
    mode_t rights() const { return m_rights; }

    /// All of that many bytes. False if there are fewer (`errno` is 0) or they cannot be read.
    bool readAt(qint64 offset, char *bytes, qint64 size) const;
    /// Whether size and date still are what they were.
    bool isUnchanged() const;
    /// Whether that path names this very file; a symbolic link to it does not.
    bool isAt(const QByteArray &nativePath) const;

private:
    BWExportSource(QUrl file, int descriptor);

    const QUrl m_file;
    const int m_descriptor;
    qint64 m_size = 0;
    timespec m_modified{};
    mode_t m_rights = 0;
    std::pair<dev_t, ino_t> m_identity;
};
