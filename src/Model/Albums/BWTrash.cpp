// SPDX-License-Identifier: GPL-3.0-or-later
#include "Model/Albums/BWTrash.h"

#include "Model/Albums/BWFileCopy.h"
#include "Model/Thumbnails/BWThumbnailStore.h"
#include "Utils/BWFilePath.h"
#include "Utils/BWLogging.h"
#include "Utils/BWMainQueue.h"

#include <array>
#include <cerrno>
#include <climits>
#include <cstring>
#include <fcntl.h>
#include <gio/gio.h>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

using namespace Qt::StringLiterals;

namespace {

/// Follows a file through changes of its name. Does not open it for reading.
class Mark {
public:
    explicit Mark(const QByteArray &path)
        : m_descriptor(::open(path.constData(), O_PATH | O_NOFOLLOW | O_CLOEXEC)), m_known(false), m_info{}
    {
        m_known = m_descriptor >= 0 && ::fstat(m_descriptor, &m_info) == 0;
    }
    ~Mark()
    {
        if (m_descriptor >= 0)
            ::close(m_descriptor);
    }
    Mark(const Mark &) = delete;
    Mark &operator=(const Mark &) = delete;

    bool isKnown() const { return m_known; }
    const struct stat &info() const { return m_info; }
    QByteArray path() const
    {
        const QByteArray link = "/proc/self/fd/" + QByteArray::number(m_descriptor);
        std::array<char, PATH_MAX> path{};
        const ssize_t length = ::readlink(link.constData(), path.data(), path.size());
        return length > 0 ? QByteArray(path.data(), length) : QByteArray();
    }

private:
    const int m_descriptor;
    bool m_known;
    struct stat m_info;
};

/// The file in which a Trash keeps the particulars of a file in it; empty if the path is in no Trash.
QByteArray infoFile(const QByteArray &trashed)
{
    const qsizetype slash = trashed.lastIndexOf('/');
    const QByteArray folder = trashed.left(slash);
    if (!folder.endsWith("/files"))
        return {};
    return folder.chopped(5) + "info" + trashed.mid(slash) + ".trashinfo";
}

bool exists(const QByteArray &path)
{
    struct stat info;
    return !path.isEmpty() && ::lstat(path.constData(), &info) == 0;
}

} // namespace

bool BWTrashedFile::moveToTrash(const QUrl &file, BWTrashedFile *trashed, QString *error)
{
    const QByteArray path = BWFilePath::native(BWFilePath::normalized(file));
    const Mark mark(path);
    GFile *const target = g_file_new_for_path(path.constData());
    GError *failure = nullptr;
    const bool moved = g_file_trash(target, nullptr, &failure);
    if (failure) {
        if (error)
            *error = QString::fromUtf8(failure->message);
        g_error_free(failure);
    }
    g_object_unref(target);
    if (!moved || !trashed)
        return moved;

    *trashed = {};
    trashed->m_original = path;
    const QByteArray now = mark.isKnown() ? mark.path() : QByteArray();
    if (exists(infoFile(now))) {
        trashed->m_trashed = now;
        trashed->m_device = mark.info().st_dev;
        trashed->m_inode = mark.info().st_ino;
    }
    return true;
}

QUrl BWTrashedFile::original() const
{
    return BWFilePath::url(m_original);
}

QUrl BWTrashedFile::inTrash() const
{
    return m_trashed.isEmpty() ? QUrl() : BWFilePath::url(m_trashed);
}

/// Another file may have taken its name there after the Trash was emptied.
bool BWTrashedFile::isStillThere() const
{
    struct stat info;
    return !m_trashed.isEmpty() && ::lstat(m_trashed.constData(), &info) == 0 && info.st_dev == m_device
        && info.st_ino == m_inode && exists(infoFile(m_trashed));
}

bool BWTrashedFile::restore(QUrl *restored, QString *error) const
{
    if (!isStillThere()) {
        *error = u"it is no longer in the Trash"_s;
        return false;
    }
    QByteArray target;
    bool moved = false;
    int number = 0;
    do {
        target = BWFilePath::numbered(m_original, ++number);
        moved = BWFileCopy::renameWithoutOverwriting(m_trashed, target);
    } while (!moved && errno == EEXIST);
    if (!moved) {
        *error = QString::fromLocal8Bit(std::strerror(errno));
        return false;
    }
    ::unlink(infoFile(m_trashed).constData());
    *restored = BWFilePath::url(target);
    return true;
}

void BWTrash::move(const QList<QUrl> &files, std::function<void(const Moved &)> finished)
{
    m_thread.run([this, owner = m_alive.watch(), files, finished = std::move(finished)] {
        const BWThumbnailStore thumbnails(BWThumbnailStore::defaultFolder());
        Moved result;
        QList<BWTrashedFile> moved;
        for (const QUrl &file : files) {
            BWTrashedFile trashed;
            QString error;
            if (BWTrashedFile::moveToTrash(file, &trashed, &error)) {
                result.files.append(file);
                thumbnails.forget(BWFilePath::native(BWFilePath::normalized(file)));
                if (!trashed.inTrash().isEmpty())
                    moved.append(trashed);
            } else {
                qCWarning(bwModel).noquote() << "Cannot move to the Trash" << file.toDisplayString() << '-' << error;
                result.stayed.append({file, error});
            }
        }
        BWMainQueue::post(owner, [this, moved, result, finished] {
            if (!result.files.isEmpty()) // even if none of them can be put back: an earlier move is not the last
                m_last = moved;
            if (finished)
                finished(result);
        });
    });
}

void BWTrash::undo(std::function<void(const Restored &)> finished)
{
    m_thread.run([owner = m_alive.watch(), files = std::exchange(m_last, {}), finished = std::move(finished)] {
        Restored result;
        for (const BWTrashedFile &file : files) {
            QUrl now;
            QString error;
            if (file.restore(&now, &error)) {
                result.files.append({file.original(), now});
            } else {
                qCWarning(bwModel).noquote() << "Cannot put back" << file.original().toDisplayString() << '-' << error;
                result.failed.append({file.original(), error});
            }
        }
        BWMainQueue::post(owner, [result, finished] {
            if (finished)
                finished(result);
        });
    });
}
