// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <ctime>
#include <QByteArray>
#include <QSet>

class BWPartFile;

/// Writes a ZIP archive of files that are compressed elsewhere, with no folders in it. One thread.
///
/// Entries and archives that old programs can read are made so that they can; those that are too large for them are
/// zip64. Operations that fail return false and leave the reason in error(); after that all do.
class BWZipWriter {
public:
    struct Entry {
        /// What other systems do not allow in a name, or take for a folder or a device, becomes "_". A name that is not
        /// UTF-8 is otherwise written as its bytes, which restores it on Linux.
        QByteArray name;
        std::time_t modified;
        qint64 size; ///< bytes, not compressed
    };

    /// The file, which is created and empty, must outlive the writer.
    explicit BWZipWriter(BWPartFile &file);
    ~BWZipWriter();
    BWZipWriter(const BWZipWriter &) = delete;
    BWZipWriter &operator=(const BWZipWriter &) = delete;

    bool open();
    /// A name that is there already, whatever its case, gets " (2)" before its extension.
    bool beginEntry(const Entry &entry);
    /// A piece of the entry's deflate stream.
    bool write(const QByteArray &deflated);
    /// `checksum` is the CRC-32 of what was compressed.
    bool endEntry(quint32 checksum);
    /// Writes the directory, without which it is not an archive.
    bool close();

    /// An errno; 0 as long as all is well.
    int error() const { return m_error; }

private:
    struct Io; // what minizip calls

    bool check(int status);
    bool writeTrueCount();
    QByteArray freeName(const QByteArray &name);

    BWPartFile &m_file;
    void *m_zip = nullptr; // a zipFile
    qint64 m_position = 0;
    qint64 m_end = 0;
    qint64 m_entrySize = 0;
    int m_error = 0;
    QSet<QString> m_names; // without regard to case
};
