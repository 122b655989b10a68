#include "Model/Thumbnails/BWThumbnailStore.h"

#include "Model/Thumbnails/BWThumbnailPng.h"
#include "Utils/BWLogging.h"
#include "Utils/BWVersion.h"

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <glib.h>
#include <memory>
#include <QCryptographicHash>
#include <QFile>
#include <QStandardPaths>
#include <stdlib.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

constexpr int64_t largestEntry = 16 * 1024 * 1024; // bytes; a real one is far below

const QByteArray keyUri("Thumb::URI");
const QByteArray keyModified("Thumb::MTime");
const QByteArray keySize("Thumb::Size");
const QByteArray keyLength("Thumb::Movie::Length");

const char *nameOf(BWThumbnailSize size)
{
    return size == BWThumbnailSize::Normal ? "normal" : size == BWThumbnailSize::Large ? "large" : "x-large";
}

bool isMovie(const QByteArray &path)
{
    return path.toLower().endsWith(".mov");
}

QByteArray nameFor(const QByteArray &uri)
{
    return QCryptographicHash::hash(uri, QCryptographicHash::Md5).toHex() + ".png";
}

/// Whether the texts are about that file as it is now. Some programs write fractions of a second.
bool areOf(const BWThumbnailPng::Texts &texts, const QByteArray &uri, const BWFileStamp &stamp)
{
    const QByteArray modified = texts.value(keyModified).split('.').first();
    const bool sameTime = modified == QByteArray::number(qlonglong(stamp.modified));
    const QByteArray size = texts.value(keySize);
    return texts.value(keyUri) == uri && sameTime && (size.isEmpty() || size.toLongLong() == stamp.size);
}

/// With those above it; another thread or program may be making the same.
bool makeFolder(const QByteArray &folder)
{
    const auto make = [&folder] { return ::mkdir(folder.constData(), S_IRWXU) == 0 || errno == EEXIST; };
    return make() || (errno == ENOENT && makeFolder(folder.left(folder.lastIndexOf('/'))) && make());
}

/// Where links lead to in the end; empty if nothing is there.
QByteArray realPath(const QByteArray &path)
{
    const std::unique_ptr<char, decltype(&std::free)> real(::realpath(path.constData(), nullptr), &std::free);
    return QByteArray(real.get());
}

bool writeAll(int file, const QByteArray &bytes)
{
    qsizetype done = 0;
    while (done < bytes.size()) {
        const ssize_t written = ::write(file, bytes.constData() + done, static_cast<std::size_t>(bytes.size() - done));
        if (written < 0 && errno != EINTR)
            return false;
        done += std::max<ssize_t>(written, 0);
    }
    return true;
}

} // namespace

BWThumbnailStore::BWThumbnailStore(const QByteArray &folder)
    : m_folder(folder), m_failedFolder("fail/brimwellpro-" BW_VERSION)
{
}

QByteArray BWThumbnailStore::defaultFolder()
{
    return QFile::encodeName(QStandardPaths::writableLocation(QStandardPaths::GenericCacheLocation)) + "/thumbnails";
}

QByteArray BWThumbnailStore::uri(const QByteArray &path)
{
    const std::unique_ptr<char, decltype(&g_free)> uri(g_filename_to_uri(path.constData(), nullptr, nullptr), &g_free);
    return QByteArray(uri.get());
}

std::optional<BWThumbnail> BWThumbnailStore::find(const QByteArray &path, const BWFileStamp &stamp,
                                                  BWThumbnailSize size) const
{
    const QByteArray address = uri(path);
    if (m_folder.isEmpty() || address.isEmpty())
        return std::nullopt;
    const QByteArray name = nameFor(address);
    BWThumbnailPng::Texts texts;
    const auto read = [&](const QByteArray &subfolder) {
        const BWThumbnailFile file(m_folder + '/' + subfolder + '/' + name);
        QByteArray png;
        if (file.isOpen()) {
            const std::optional<BWFileStamp> entry = file.stamp();
            if (entry && entry->size <= largestEntry)
                png = file.head(static_cast<int>(entry->size));
        }
        texts = BWThumbnailPng::texts(png);
        return areOf(texts, address, stamp) ? png : QByteArray();
    };

    for (const BWThumbnailSize stored : BWThumbnailSizes::all) {
        if (stored < size)
            continue;
        const QByteArray png = read(nameOf(stored));
        if (png.isEmpty() || (isMovie(path) && !texts.contains(keyLength)))
            continue;
        BWThumbnail found{BWThumbnail::Kind::Picture, BWThumbnailPng::decode(png), std::nullopt};
        if (found.image.isNull())
            continue;
        if (texts.contains(keyLength))
            found.length = std::chrono::seconds(texts.value(keyLength).toLongLong());
        const QSize fitted = BWThumbnailSizes::fitted(found.image.size(), size);
        if (fitted != found.image.size())
            found.image = found.image.scaled(fitted, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
        return found;
    }
    if (!read(m_failedFolder).isEmpty())
        return BWThumbnail{};
    return std::nullopt;
}

void BWThumbnailStore::keep(const QByteArray &path, const BWFileStamp &stamp, BWThumbnailSize size,
                            const BWThumbnail &thumbnail)
{
    const QByteArray address = uri(path);
    if (m_folder.isEmpty() || address.isEmpty() || isInside(path))
        return;
    BWThumbnailPng::Texts texts{{keyUri, address},
                                {keyModified, QByteArray::number(qlonglong(stamp.modified))},
                                {keySize, QByteArray::number(qlonglong(stamp.size))},
                                {"Software", "BrimwellPro " BW_VERSION},
                                {"Thumb::Mimetype", isMovie(path) ? "video/quicktime" : "image/jpeg"}};
    if (thumbnail.length)
        texts.insert(keyLength, QByteArray::number(qlonglong(thumbnail.length->count())));
    const QByteArray name = nameFor(address);
    if (thumbnail.kind == BWThumbnail::Kind::Picture) {
        write(nameOf(size), name, BWThumbnailPng::encode(thumbnail.image, texts));
    } else {
        QImage dot(1, 1, QImage::Format_RGB32);
        dot.fill(Qt::black);
        write(m_failedFolder, name, BWThumbnailPng::encode(dot, texts));
    }
}

bool BWThumbnailStore::isInside(const QByteArray &path) const
{
    const QByteArray folder = realPath(m_folder);
    return !folder.isEmpty() && realPath(path).startsWith(folder + '/');
}

/// Written beside and renamed, so that nobody ever reads half of it. It is not brought to disk: what is torn by a power
/// cut is found damaged, and made anew.
void BWThumbnailStore::write(const QByteArray &subfolder, const QByteArray &name, const QByteArray &png)
{
    const QByteArray folder = m_folder + '/' + subfolder;
    if (png.isEmpty())
        return;
    if (!makeFolder(folder))
        return logFault(folder, errno);
    QByteArray part = folder + '/' + name + ".XXXXXX";
    const int file = ::mkostemp(part.data(), O_CLOEXEC); // for the owner's eyes only
    if (file < 0)
        return logFault(folder, errno);
    const bool written = writeAll(file, png);
    int error = errno;
    const bool closed = ::close(file) == 0;
    if (written && !closed)
        error = errno;
    if (written && closed && ::rename(part.constData(), (folder + '/' + name).constData()) == 0)
        return;
    if (written && closed)
        error = errno;
    ::unlink(part.constData());
    logFault(folder, error);
}

void BWThumbnailStore::logFault(const QByteArray &what, int error)
{
    if (!m_faultLogged.exchange(true))
        qCWarning(bwModel, "Thumbnails cannot be stored in %s: %s; they are made anew each time", what.constData(),
                  std::strerror(error));
}
