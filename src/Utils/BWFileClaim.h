#pragma once

#include <memory>
#include <QString>

/// Marks a temporary file as being in use by this run of the program, so that no other takes it for one that a crash
/// left behind. The mark is the kernel's (flock) and ends with the claim or with the process, however that ends.
class BWFileClaim {
public:
    /// Creates the file, for this user alone, if it is not there. Null if another claim holds it or it cannot be opened.
    static std::shared_ptr<BWFileClaim> create(const QString &path);
    /// Null also if the file does not exist.
    static std::shared_ptr<BWFileClaim> existing(const QString &path);
    /// The same in an open folder.
    static std::shared_ptr<BWFileClaim> existing(int folder, const QByteArray &name);

    /// A path to the file as long as the claim lasts, even when somebody has removed it.
    QString openFile() const { return QStringLiteral("/proc/self/fd/%1").arg(m_descriptor); }

    ~BWFileClaim();
    BWFileClaim(const BWFileClaim &) = delete;
    BWFileClaim &operator=(const BWFileClaim &) = delete;

    /// The file itself, open for reading and writing, whatever becomes of its name.
    int descriptor() const { return m_descriptor; }

private:
    explicit BWFileClaim(int descriptor) : m_descriptor(descriptor) { }
    static std::shared_ptr<BWFileClaim> open(int folder, const QByteArray &path, int flags);

    const int m_descriptor;
};
