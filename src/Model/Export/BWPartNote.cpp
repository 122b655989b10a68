#include "Model/Export/BWPartNote.h"

#include "Utils/BWFilePath.h"
#include "Utils/BWLogging.h"
#include "Utils/BWPrivateFolder.h"
#include "Utils/BWUIUtils.h"

#include <array>
#include <climits>
#include <fcntl.h>
#include <QFile>
#include <sys/stat.h>
#include <unistd.h>

using namespace Qt::StringLiterals;

namespace {

const QString prefix = u"export"_s;

/// What tells a file from one that takes its name later; null if it is no regular file or not there. The date at which
/// it was made, as some disks number their files anew each time they are plugged in.
QByteArray identity(int folder, const QByteArray &path, int flags)
{
    struct statx info;
    if (::statx(folder, path.constData(), flags, STATX_TYPE | STATX_INO | STATX_BTIME, &info) != 0
        || !S_ISREG(info.stx_mode))
        return {};
    if ((info.stx_mask & STATX_BTIME) != 0)
        return "made " + QByteArray::number(qlonglong(info.stx_btime.tv_sec)) + '.'
            + QByteArray::number(info.stx_btime.tv_nsec);
    return "number " + QByteArray::number(qulonglong(info.stx_ino));
}

/// Whether the note, which nobody claims, has served its purpose.
bool follow(const QByteArray &note, const QByteArray &folder)
{
    if (note.isEmpty())
        return true; // its program was killed as it began
    const qsizetype line = note.indexOf('\n');
    const QByteArray part = note.mid(line + 1);
    if (part.left(part.lastIndexOf('/') + 1) != folder)
        return false; // which may be on a disk that does not answer
    if (identity(AT_FDCWD, part, AT_SYMLINK_NOFOLLOW) == note.left(line) && ::unlink(part.constData()) == 0)
        qCInfo(bwModel).noquote() << "Removed what an export that was broken off had left:"
                                  << BWFilePath::url(part).toDisplayString();
    return true;
}

} // namespace

BWPartNote::BWPartNote(const QByteArray &part, int descriptor)
    : m_path(BWFilePath::native(BWUIUtils::temporaryPath(prefix, u"part"_s))),
      m_claim(BWFileClaim::create(QFile::decodeName(m_path)))
{
    const QByteArray note = identity(descriptor, {}, AT_EMPTY_PATH) + '\n' + part;
    if (m_claim && ::write(m_claim->descriptor(), note.constData(), std::size_t(note.size())) != note.size())
        m_claim.reset();
}

BWPartNote::~BWPartNote()
{
    ::unlink(m_path.constData());
}

void BWPartNote::clearParts(const QByteArray &folder)
{
    for (const QString &parent : BWUIUtils::temporaryFolders()) {
        for (const BWPrivateFolder &notes : BWPrivateFolder::all(QFile::encodeName(parent))) {
            const auto names = BWFilePath::entries(BWFilePath::url(notes.path())).value_or(QList<QByteArray>());
            for (const QByteArray &name : names) {
                if (!name.startsWith(prefix.toLatin1()) || !name.endsWith(".part"))
                    continue;
                const auto claim = BWFileClaim::existing(notes.descriptor(), name);
                std::array<char, 2 * PATH_MAX> bytes;
                const ssize_t size = claim ? ::pread(claim->descriptor(), bytes.data(), bytes.size(), 0) : -1;
                if (size >= 0 && follow(QByteArray(bytes.data(), size), folder))
                    ::unlinkat(notes.descriptor(), name.constData(), 0);
            }
        }
    }
}
