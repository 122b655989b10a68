#pragma once

#include <optional>
#include <QByteArray>
#include <vector>

/// A folder that belongs to this user alone (mode 0700, no link), inside one that all users may share. Nobody else can
/// look into it, put anything there or lock what is in it. Any thread.
class BWPrivateFolder {
public:
    /// The first one that is there and can be written to; else a new one. Where another user has taken its name it gets
    /// another one. Nothing if there can be none.
    static std::optional<BWPrivateFolder> make(const QByteArray &parent);
    /// All that are there, for the same home folder: two homes of one user, as a test's beside their own, do not mix.
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
