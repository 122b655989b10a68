// SPDX-License-Identifier: GPL-3.0-or-later
#include "Model/Albums/BWAlbum.h"

#include "Model/Albums/BWFileMoves.h"
#include "Model/Albums/BWFileNameOrder.h"
#include "Model/Albums/BWTrash.h"
#include "Utils/BWFilePath.h"
#include "Utils/BWLogging.h"

#include <algorithm>
#include <climits>
#include <map>
#include <mutex>
#include <QFile>
#include <set>
#include <sys/stat.h>
#include <utility>
#include <vector>

namespace {

struct Entry {
    QByteArray name;
    QString key; // for the order
};

/// Highest first; the bytes decide between names that count as the same, so that the order never jumps.
bool comesFirst(const Entry &a, const Entry &b)
{
    const int order = BWFileNameOrder::compareKeys(a.key, b.key);
    return order != 0 ? order > 0 : a.name > b.name;
}

QByteArray endingOf(BWMediaType type)
{
    return type == BWMediaType::Image ? ".jpg" : ".mov";
}

/// The name ".jpg" is a hidden file without an ending.
bool isOf(const QByteArray &name, const QByteArray &ending)
{
    return name.size() > ending.size() && name.endsWith(ending);
}

Entry entryOf(const QByteArray &name, const QByteArray &ending)
{
    return {name, BWFileNameOrder::key(QFile::decodeName(name.chopped(ending.size())))};
}

QList<QUrl> filesAmong(const QList<QByteArray> &names, const QUrl &folder, const QByteArray &ending)
{
    std::vector<Entry> entries;
    for (const QByteArray &name : names) {
        if (isOf(name, ending))
            entries.push_back(entryOf(name, ending));
    }
    std::sort(entries.begin(), entries.end(), comesFirst);

    const QByteArray path = BWFilePath::native(folder) + '/';
    QList<QUrl> files;
    files.reserve(static_cast<qsizetype>(entries.size()));
    for (const Entry &entry : entries)
        files.append(BWFilePath::url(path + entry.name));
    return files;
}

constexpr qint64 manyFiles = 1000; // to try as many names takes about a millisecond

/// When the folder's entries changed last; nothing if it cannot be asked.
std::optional<std::pair<time_t, long>> changeOf(const QUrl &folder)
{
    struct stat info { };
    if (::stat(BWFilePath::native(folder).constData(), &info) != 0)
        return std::nullopt;
    return std::pair(info.st_mtim.tv_sec, info.st_mtim.tv_nsec);
}

} // namespace

/// The lowest free number after each capture, so that the next one need not try all those before it. They hold until
/// the folder changes by somebody else's doing: a number may have become free.
struct BWAlbum::Numbers {
    struct Next {
        QByteArray stem;
        qint64 counter = 1; // the last one found free
    };

    void forget()
    {
        next.clear();
        renamed.clear();
    }
    const std::set<unsigned long> &renamedAfter(const QByteArray &stem, const QUrl &path);

    std::mutex mutex;
    std::optional<std::pair<time_t, long>> folder;
    std::map<BWMediaType, Next> next;
    std::map<QByteArray, std::set<unsigned long>> renamed; // by stem: of files that have got more of a name
};

/// A number stays with its file, whatever else the user calls that.
const std::set<unsigned long> &BWAlbum::Numbers::renamedAfter(const QByteArray &stem, const QUrl &path)
{
    const auto [entry, isNew] = renamed.try_emplace(stem);
    if (isNew) {
        QList<QByteArray> names = BWFilePath::entries(path).value_or(QList<QByteArray>());
        names.removeIf([&stem](const QByteArray &name) { return !name.startsWith(stem) || !name.contains(' '); });
        entry->second = BWCaptureName::numbersAmong(names, stem);
    }
    return entry->second;
}

BWAlbum::BWAlbum(const QUrl &path, Today today)
    : m_name(QFile::decodeName(BWFilePath::lastComponent(path))),
      m_path(BWFilePath::normalized(path)),
      m_today(today ? std::move(today) : &QDate::currentDate),
      m_numbers(std::make_shared<Numbers>())
{
}

bool BWAlbum::isName(const QString &name)
{
    const QByteArray bytes = QFile::encodeName(name);
    return !bytes.isEmpty() && bytes.size() <= NAME_MAX && !bytes.startsWith('.') && !bytes.contains('/')
        && !bytes.contains('\0');
}

QByteArray BWAlbum::numberText(qint64 number)
{
    return QByteArray::number(number).rightJustified(3, '0');
}

QString BWAlbum::formatToday() const
{
    return m_today().toString(QStringLiteral("yyyyMMdd"));
}

QUrl BWAlbum::nextPathForType(BWMediaType type) const
{
    const QByteArray stem = formatToday().toLatin1() + (type == BWMediaType::Image ? "_image_" : "_video_");
    const std::lock_guard lock(m_numbers->mutex);
    if (!m_numbers->folder || m_numbers->folder != changeOf(m_path))
        m_numbers->forget();
    Numbers::Next &next = m_numbers->next[type];
    if (next.stem != stem || next.counter < manyFiles)
        next = {stem};
    const std::set<unsigned long> &renamed = m_numbers->renamedAfter(stem, m_path);
    for (qint64 &counter = next.counter;; ++counter) {
        QUrl candidate = BWFilePath::entry(m_path, stem + numberText(counter) + endingOf(type));
        if (!renamed.contains(static_cast<unsigned long>(counter)) && !BWFilePath::exists(candidate))
            return candidate;
    }
}

bool BWAlbum::addFile(const QUrl &file, BWMediaType type, QUrl *added, const Progress &progress) const
{
    QString error;
    const QUrl target = BWFileCopy::shareUnderFreeName(
        file, [this, type] { return nextPathForType(type); }, &error, progress);
    if (target.isEmpty()) {
        qCWarning(bwModel).noquote() << "Cannot add" << file.toDisplayString() << "to album" << m_path.toDisplayString()
                                     << "-" << error;
        return false;
    }
    if (added)
        *added = target;
    const std::lock_guard lock(m_numbers->mutex);
    m_numbers->folder = changeOf(m_path);
    return true;
}

void BWAlbum::removeFile(const QUrl &file, BWMediaType type) const
{
    Q_UNUSED(type)
    QString error;
    if (!BWTrashedFile::moveToTrash(file, nullptr, &error))
        qCWarning(bwModel).noquote() << "Cannot move to the Trash:" << file.toDisplayString() << "-" << error;
}

std::optional<QList<QUrl>> BWAlbum::contentsForType(BWMediaType type) const
{
    if (type != BWMediaType::Image && type != BWMediaType::Video)
        return std::nullopt;
    const std::optional<QList<QByteArray>> names = BWFilePath::entries(m_path);
    return names ? std::optional(filesAmong(*names, m_path, endingOf(type))) : std::nullopt;
}

std::optional<BWAlbum::Contents> BWAlbum::contents() const
{
    const std::optional<QList<QByteArray>> names = BWFilePath::entries(m_path);
    if (!names)
        return std::nullopt;
    return Contents{filesAmong(*names, m_path, endingOf(BWMediaType::Image)),
                    filesAmong(*names, m_path, endingOf(BWMediaType::Video))};
}

bool BWAlbum::follow(Contents &contents, const QByteArray &name, bool isThere) const
{
    for (const auto &[type, files] :
         {std::pair(BWMediaType::Image, &contents.images), std::pair(BWMediaType::Video, &contents.videos)}) {
        const QByteArray ending = endingOf(type);
        if (!isOf(name, ending))
            continue;
        const Entry entry = entryOf(name, ending);
        const auto at =
            std::lower_bound(files->cbegin(), files->cend(), entry, [&ending](const QUrl &file, const Entry &e) {
                return comesFirst(entryOf(BWFilePath::lastComponent(file), ending), e);
            });
        const bool wasThere = at != files->cend() && BWFilePath::lastComponent(*at) == name;
        if (wasThere == isThere)
            return false;
        if (isThere)
            files->insert(at - files->cbegin(), BWFilePath::entry(m_path, name));
        else
            files->removeAt(at - files->cbegin());
        return true;
    }
    return false;
}
