// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <memory>
#include <optional>
#include <QByteArray>
#include <QString>
#include <vector>

/// A folder of this user alone (mode 0700, no link), inside one that all users may share. Nobody else can look into it,
/// put anything there or lock what is in it. Any thread.
class BWPrivateFolder {
public:
    /// The first that exists and is writable, else a new one, under another name where another user has taken the usual
    /// one. Nothing if none can be made.
    static std::optional<BWPrivateFolder> make(const QByteArray &parent);
    /// All that exist for the same home folder: two homes of one user, such as a test's and the real one, do not mix.
    static std::vector<BWPrivateFolder> all(const QByteArray &parent);

    BWPrivateFolder(BWPrivateFolder &&other) noexcept;
    ~BWPrivateFolder();

    const QByteArray &path() const { return m_path; }
    /// Open for as long as the object lives.
    int descriptor() const { return m_descriptor; }

private:
    BWPrivateFolder(QByteArray path, int descriptor);
    static std::optional<BWPrivateFolder> open(const QByteArray &path);

    QByteArray m_path;
    int m_descriptor;
};

/// Marks a temporary file as in use by this run of the program, so that no other run takes it for one that a crash left
/// behind. The mark is the kernel's (flock) and ends with the claim or with the process, however that ends.
class BWFileClaim {
public:
    /// Creates the file, for this user alone, if it does not exist. Null if another claim holds it or it cannot be opened.
    static std::shared_ptr<BWFileClaim> create(const QString &path);
    /// Null also if the file does not exist.
    static std::shared_ptr<BWFileClaim> existing(const QString &path);
    /// The same in an open folder.
    static std::shared_ptr<BWFileClaim> existing(int folder, const QByteArray &name);

    /// A path to the file as long as the claim lasts, even after the file was removed.
    QString openFile() const { return QStringLiteral("/proc/self/fd/%1").arg(m_descriptor); }

    ~BWFileClaim();
    BWFileClaim(const BWFileClaim &) = delete;
    BWFileClaim &operator=(const BWFileClaim &) = delete;

    /// The file itself, open for reading and writing, whatever happens to its name.
    int descriptor() const { return m_descriptor; }

private:
    explicit BWFileClaim(int descriptor) : m_descriptor(descriptor) { }
    static std::shared_ptr<BWFileClaim> open(int folder, const QByteArray &path, int flags);

    const int m_descriptor;
};
