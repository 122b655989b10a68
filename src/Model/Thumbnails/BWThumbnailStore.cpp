// SPDX-License-Identifier: GPL-3.0-or-later
#include "Model/Thumbnails/BWThumbnailStore.h"

#include "BWACUDriver/BWFileBytes.h"
#include "Utils/BWFilePath.h"
#include "Utils/BWLogging.h"
#include "Utils/BWVersion.h"

#include <algorithm>
#include <cerrno>
#include <csetjmp>
#include <cstring>
#include <fcntl.h>
#include <glib.h>
#include <memory>
#include <new>
#include <png.h>
#include <QCryptographicHash>
#include <QFile>
#include <QMap>
#include <QStandardPaths>
#include <QtEndian>
#include <stdlib.h>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>
#include <vector>

namespace {

constexpr int64_t largestEntry = 16 << 20; // bytes; a real one is far below

const QByteArray keyUri("Thumb::URI");
const QByteArray keyModified("Thumb::MTime");
const QByteArray keySize("Thumb::Size");
const QByteArray keyLength("Thumb::Movie::Length");
const QByteArray keySoftware("Software");
const QByteArray ourName("BrimwellPro ");

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

using Texts = QMap<QByteArray, QByteArray>; // Latin-1, by keyword

struct StoredImage {
    QImage image; ///< null if it is damaged or larger than any thumbnail
    Texts texts;
};

[[noreturn]] void onError(png_structp png, png_const_charp)
{
    png_longjmp(png, 1);
}

void onWarning(png_structp, png_const_charp) { }

/// False when libpng has found a fault: then it jumps back into this function, so nothing that needs a destructor may
/// come into being in `calls`.
template <typename Calls>
bool succeeds(png_structp png, const Calls &calls)
{
    if (setjmp(png_jmpbuf(png)) != 0)
        return false;
    calls();
    return true;
}

void appendBytes(png_structp png, png_bytep bytes, std::size_t size)
{
    auto *const written = static_cast<QByteArray *>(png_get_io_ptr(png));
    bool fits = true;
    try {
        written->append(reinterpret_cast<const char *>(bytes), static_cast<qsizetype>(size));
    } catch (const std::bad_alloc &) { // libpng would not free what it has
        fits = false;
    }
    if (!fits)
        png_error(png, "no memory");
}

void takeBytes(png_structp png, png_bytep bytes, std::size_t size)
{
    auto *const rest = static_cast<QByteArrayView *>(png_get_io_ptr(png));
    if (static_cast<std::size_t>(rest->size()) < size)
        png_error(png, "it is cut off");
    std::memcpy(bytes, rest->data(), size);
    *rest = rest->sliced(static_cast<qsizetype>(size));
}

/// Quick rather than small: differences to the pixel on the left compress well enough. The texts stand uncompressed in
/// front of the picture, where every reader finds them. Empty on failure.
QByteArray encode(const QImage &image, Texts texts)
{
    const QImage rgb = image.convertToFormat(QImage::Format_RGB888);
    std::vector<png_text> lines;
    for (auto text = texts.begin(); text != texts.end(); ++text) {
        png_text line{};
        line.compression = PNG_TEXT_COMPRESSION_NONE;
        line.key = const_cast<char *>(text.key().constData());
        line.text = text.value().data();
        line.text_length = static_cast<std::size_t>(text.value().size());
        lines.push_back(line);
    }
    QByteArray bytes;
    png_structp png = png_create_write_struct(PNG_LIBPNG_VER_STRING, nullptr, &onError, &onWarning);
    png_infop info = png ? png_create_info_struct(png) : nullptr;
    const bool done =
        info && !rgb.isNull() && succeeds(png, [&] {
            png_set_write_fn(png, &bytes, &appendBytes, nullptr);
            png_set_IHDR(png, info, static_cast<png_uint_32>(rgb.width()), static_cast<png_uint_32>(rgb.height()), 8,
                         PNG_COLOR_TYPE_RGB, PNG_INTERLACE_NONE, PNG_COMPRESSION_TYPE_DEFAULT, PNG_FILTER_TYPE_DEFAULT);
            png_set_text(png, info, lines.data(), static_cast<int>(lines.size()));
            png_set_filter(png, PNG_FILTER_TYPE_BASE, PNG_FILTER_SUB);
            png_set_compression_level(png, 1);
            png_write_info(png, info);
            for (int y = 0; y < rgb.height(); ++y)
                png_write_row(png, rgb.constScanLine(y));
            png_write_end(png, nullptr);
        });
    png_destroy_write_struct(&png, &info);
    return done ? bytes : QByteArray();
}

/// Whether all chunks lie within the file: libpng clears as much memory as one claims to need before it reads it.
bool chunksFit(QByteArrayView png)
{
    constexpr qsizetype signature = 8;
    constexpr qsizetype around = 12; // length, name, checksum
    qsizetype at = signature;
    while (at + around <= png.size()) {
        const auto length = qFromBigEndian<quint32>(png.data() + at);
        if (length > png.size() - at - around)
            return false;
        at += around + length;
    }
    return true;
}

/// The file may come from anywhere: what is larger than any thumbnail, or whose texts are, is not read.
StoredImage decode(const QByteArray &bytes)
{
    constexpr png_uint_32 mostPixels = 1024; // of a side: the largest size that the desktop knows
    constexpr png_alloc_size_t mostText = 1 << 20; // bytes of a chunk, unpacked
    StoredImage stored;
    if (!chunksFit(bytes))
        return stored;
    QByteArrayView rest(bytes);
    png_structp png = png_create_read_struct(PNG_LIBPNG_VER_STRING, nullptr, &onError, &onWarning);
    png_infop info = png ? png_create_info_struct(png) : nullptr;
    const bool begun = info && succeeds(png, [&] {
                           png_set_user_limits(png, mostPixels, mostPixels);
                           png_set_chunk_malloc_max(png, mostText);
                           png_set_read_fn(png, &rest, &takeBytes);
                           png_read_info(png, info);
                           png_set_expand(png);
                           png_set_scale_16(png);
                           png_set_gray_to_rgb(png);
                           png_set_strip_alpha(png);
                           png_set_interlace_handling(png);
                           png_read_update_info(png, info);
                       });
    if (begun) {
        QImage image(static_cast<int>(png_get_image_width(png, info)),
                     static_cast<int>(png_get_image_height(png, info)), QImage::Format_RGB888);
        std::vector<png_bytep> rows;
        rows.reserve(static_cast<std::size_t>(image.height()));
        for (int y = 0; y < image.height(); ++y)
            rows.push_back(image.scanLine(y));
        const bool done = !image.isNull() && succeeds(png, [&] {
            png_read_image(png, rows.data());
            png_read_end(png, info);
        });
        if (done)
            stored.image = image.convertToFormat(QImage::Format_RGB32);
        png_textp lines = nullptr;
        const int count = png_get_text(png, info, &lines, nullptr);
        for (int i = 0; i < count; ++i)
            stored.texts.insert(lines[i].key, lines[i].text);
    }
    png_destroy_read_struct(&png, &info, nullptr);
    return stored;
}

/// Whether the texts are about that file as it is now. Some programs write fractions of a second.
bool areOf(const Texts &texts, const QByteArray &uri, const BWFileStamp &stamp)
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

/// The path without links; empty if nothing is there.
QByteArray realPath(const QByteArray &path)
{
    const std::unique_ptr<char, decltype(&std::free)> real(::realpath(path.constData(), nullptr), &std::free);
    return QByteArray(real.get());
}

} // namespace

BWThumbnailStore::BWThumbnailStore(const QByteArray &folder, int64_t most)
    : m_folder(folder), m_failedFolder("fail/brimwellpro-" BW_VERSION), m_most(most), m_untilTrim(most / 256)
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
                                                  BWThumbnailSize wanted) const
{
    const QByteArray address = uri(path);
    if (m_folder.isEmpty() || address.isEmpty())
        return std::nullopt;
    const QByteArray name = nameFor(address);
    const auto read = [&](const QByteArray &subfolder) {
        const BWThumbnailFile file(m_folder + '/' + subfolder + '/' + name);
        const std::optional<BWFileStamp> entry = file.isOpen() ? file.stamp() : std::nullopt;
        if (!entry || entry->size > largestEntry)
            return StoredImage();
        const StoredImage stored = decode(file.head(static_cast<int>(entry->size)));
        return areOf(stored.texts, address, stamp) ? stored : StoredImage();
    };

    for (const BWThumbnailSize size : BWThumbnailSizes::all) {
        if (size < wanted)
            continue;
        const StoredImage stored = read(nameOf(size));
        if (stored.image.isNull() || (isMovie(path) && !stored.texts.contains(keyLength)))
            continue;
        BWThumbnail found{BWThumbnail::Kind::Picture, stored.image, std::nullopt};
        if (stored.texts.contains(keyLength))
            found.length = std::chrono::seconds(stored.texts.value(keyLength).toLongLong());
        const QSize fitted = BWThumbnailSizes::fitted(found.image.size(), wanted);
        if (fitted != found.image.size())
            found.image = found.image.scaled(fitted, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
        return found;
    }
    if (!read(m_failedFolder).image.isNull())
        return BWThumbnail{};
    return std::nullopt;
}

void BWThumbnailStore::keep(const QByteArray &path, const BWFileStamp &stamp, BWThumbnailSize size,
                            const BWThumbnail &thumbnail)
{
    const QByteArray address = uri(path);
    if (m_folder.isEmpty() || address.isEmpty() || isInside(path))
        return;
    Texts texts{{keyUri, address},
                {keyModified, QByteArray::number(qlonglong(stamp.modified))},
                {keySize, QByteArray::number(qlonglong(stamp.size))},
                {keySoftware, ourName + BW_VERSION},
                {"Thumb::Mimetype", isMovie(path) ? "video/quicktime" : "image/jpeg"}};
    if (thumbnail.length)
        texts.insert(keyLength, QByteArray::number(qlonglong(thumbnail.length->count())));
    const QByteArray name = nameFor(address);
    if (thumbnail.kind == BWThumbnail::Kind::Picture) {
        write(nameOf(size), name, encode(thumbnail.image, texts));
    } else {
        QImage dot(1, 1, QImage::Format_RGB32);
        dot.fill(Qt::black);
        write(m_failedFolder, name, encode(dot, texts));
    }
    // Who deleted the file meanwhile has made us forget it, but perhaps too early.
    struct stat info;
    if (::stat(path.constData(), &info) != 0 && errno == ENOENT)
        forget(path);
}

void BWThumbnailStore::forget(const QByteArray &path) const
{
    const QByteArray address = uri(path);
    if (m_folder.isEmpty() || address.isEmpty())
        return;
    QList<QByteArray> subfolders{m_failedFolder};
    for (const BWThumbnailSize size : BWThumbnailSizes::all)
        subfolders.append(nameOf(size));
    for (const QByteArray &subfolder : subfolders)
        ::unlink((m_folder + '/' + subfolder + '/' + nameFor(address)).constData()); // mostly there is none
}

bool BWThumbnailStore::isInside(const QByteArray &path) const
{
    const QByteArray folder = realPath(m_folder);
    return !folder.isEmpty() && realPath(path).startsWith(folder + '/');
}

/// Written beside and renamed, so that no program ever reads half of it. Not synced: if a power cut tears it, it is
/// found damaged and made again.
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
    const bool written = BWFileBytes::write(file, png.constData(), png.size());
    int error = errno;
    const bool closed = ::close(file) == 0;
    if (written && !closed)
        error = errno;
    if (written && closed && ::rename(part.constData(), (folder + '/' + name).constData()) == 0)
        return countWritten(png.size());
    if (written && closed)
        error = errno;
    ::unlink(part.constData());
    logFault(folder, error);
}

/// Not at each, as it takes a look at all that is there; once in the first minutes, as few runs store much.
void BWThumbnailStore::countWritten(int64_t bytes)
{
    const int64_t before = m_untilTrim.fetch_sub(bytes);
    if (before <= 0 || before > bytes)
        return;
    trim();
    m_untilTrim = m_most / 16;
}

void BWThumbnailStore::trim() const
{
    std::vector<std::pair<BWFileStamp, QByteArray>> entries;
    int64_t total = 0;
    for (const BWThumbnailSize size : BWThumbnailSizes::all) {
        const QByteArray folder = m_folder + '/' + nameOf(size) + '/';
        const auto names = BWFilePath::entries(BWFilePath::url(folder)).value_or(QList<QByteArray>());
        for (const QByteArray &name : names) {
            if (const auto stamp = BWThumbnailFile::stampOf(folder + name)) {
                entries.emplace_back(*stamp, folder + name);
                total += stamp->size;
            }
        }
    }
    if (total <= m_most)
        return;
    std::sort(entries.begin(), entries.end(), [](const auto &a, const auto &b) { // the oldest first
        return std::pair(a.first.modified, a.first.modifiedNanoseconds)
            < std::pair(b.first.modified, b.first.modifiedNanoseconds);
    });
    int removed = 0;
    for (const auto &[stamp, path] : entries) {
        if (total <= m_most / 4 * 3)
            break;
        constexpr int textBytes = 4096; // our texts stand in front of the picture
        if (BWThumbnailFile(path).head(textBytes).contains(keySoftware + '\0' + ourName)
            && ::unlink(path.constData()) == 0) {
            total -= stamp.size;
            ++removed;
        }
    }
    qCInfo(bwModel, "Thumbnails: %d of ours removed, %lld MB are left", removed,
           static_cast<long long>(total / 1'000'000));
}

void BWThumbnailStore::logFault(const QByteArray &what, int error)
{
    if (!m_faultLogged.exchange(true))
        qCWarning(bwModel, "Thumbnails cannot be stored in %s: %s; they are made again each time", what.constData(),
                  std::strerror(error));
}
