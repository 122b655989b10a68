#include "Model/Albums/BWAlbum.h"

#include "Model/Albums/BWFileNameOrder.h"
#include "Model/Albums/BWTrash.h"
#include "Utils/BWFilePath.h"
#include "Utils/BWLogging.h"

#include <algorithm>
#include <climits>
#include <QFile>
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

QList<QUrl> filesAmong(const QList<QByteArray> &names, const QUrl &folder, const QByteArray &ending)
{
    std::vector<Entry> entries;
    for (const QByteArray &name : names) {
        // The name ".jpg" is a hidden file without an ending.
        if (name.size() > ending.size() && name.endsWith(ending))
            entries.push_back({name, BWFileNameOrder::key(QFile::decodeName(name.chopped(ending.size())))});
    }
    std::sort(entries.begin(), entries.end(), comesFirst);

    const QByteArray path = BWFilePath::native(folder) + '/';
    QList<QUrl> files;
    files.reserve(static_cast<qsizetype>(entries.size()));
    for (const Entry &entry : entries)
        files.append(BWFilePath::url(path + entry.name));
    return files;
}

} // namespace

BWAlbum::BWAlbum(const QUrl &path, Today today)
    : m_name(QFile::decodeName(BWFilePath::lastComponent(path))),
      m_path(BWFilePath::normalized(path)),
      m_today(today ? std::move(today) : &QDate::currentDate)
{
}

bool BWAlbum::isName(const QString &name)
{
    const QByteArray bytes = QFile::encodeName(name);
    return !bytes.isEmpty() && bytes.size() <= NAME_MAX && !bytes.startsWith('.') && !bytes.contains('/')
        && !bytes.contains('\0');
}

QString BWAlbum::formatToday() const
{
    return m_today().toString(QStringLiteral("yyyyMMdd"));
}

QUrl BWAlbum::nextPathForType(BWMediaType type) const
{
    const QByteArray stem = formatToday().toLatin1() + (type == BWMediaType::Image ? "_image_" : "_video_");
    for (unsigned long counter = 1;; ++counter) {
        const QByteArray number = QByteArray::number(static_cast<qulonglong>(counter)).rightJustified(3, '0');
        QUrl candidate = BWFilePath::entry(m_path, stem + number + endingOf(type));
        if (!BWFilePath::exists(candidate))
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
