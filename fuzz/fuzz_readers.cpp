// SPDX-License-Identifier: GPL-3.0-or-later
// Feeds what comes from cameras, files and other programs to its readers;
// --reader=NAME says to which. Small inputs to begin with are in fuzz/seeds.

#include "TestFolder.h"
#include "TestJpeg.h"

#include "BWACUDriver/BWJpegHeader.h"
#include "BWACUDriver/BWMovie.h"
#include "BWACUDriver/BWStill.h"
#include "media/BWJpeg.h"
#include "Model/Albums/BWAlbumManager.h"
#include "Model/Albums/BWStillLoader.h"
#include "Model/Capture/BWSeries.h"
#include "Model/Capture/BWSeriesFile.h"
#include "Model/Capture/BWSnapshotTags.h"
#include "Model/LiveView/BWFrameRenderer.h"
#include "Model/Settings/BWConfigManager.h"
#include "Model/Settings/BWSettingsFile.h"
#include "Model/Thumbnails/BWThumbnailMaker.h"
#include "Model/Thumbnails/BWThumbnailStore.h"
#include "v4l2/finding/BWCameraTable.h"
#include "v4l2/finding/BWVideoNode.h"

#include <cassert>
#include <QCryptographicHash>
#include <QGuiApplication>
#include <QJsonDocument>
#include <QtEndian>
#include <QTimeZone>
#include <sys/mman.h>
#include <zlib.h>

using namespace Qt::StringLiterals;

namespace {

const TestFolder folder;

/// The last bytes choose how the others are read.
struct Input {
    const uint8_t *data;
    size_t size;

    int choose(int limit) { return size == 0 ? 0 : data[--size] % limit; }
    QByteArray bytes() const { return {reinterpret_cast<const char *>(data), qsizetype(size)}; }
    QString saved(const QString &name = u"input"_s) const { return folder.file(name, bytes()).toLocalFile(); }
    /// In front of memory that cannot be read, as the sanitizers do not look into
    /// libraries.
    std::span<const uint8_t> guarded() const
    {
        constexpr size_t room = 1 << 20;
        static auto *const begin = static_cast<uint8_t *>(
            ::mmap(nullptr, 2 * room, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0));
        static const int fence = ::mprotect(begin + room, room, PROT_NONE);
        assert(fence == 0);
        std::copy_n(data, size, begin + room - size);
        return {begin + room - size, size};
    }
};

/// Half of them raw.
BWFrame frameOf(Input &input)
{
    BWFrameInfo info;
    info.pixelFormat = BWPixelFormat(1 + input.choose(16));
    info.width = 1 + input.choose(80);
    info.height = 1 + input.choose(80);
    const int padding = input.choose(3);
    std::span<const uint8_t> rest = input.guarded();
    if (info.pixelFormat >= BWPixelFormat::XBGR32) {
        info.pixelFormat = BWPixelFormat::MJPEG;
        info.planes[0] = {rest.data(), rest.size(), 0};
        if (const BWJpegHeader header(rest.data(), rest.size()); padding > 0 && header.isWhole() && header.height() > 0)
            std::tie(info.width, info.height) = std::pair(header.width(), header.height());
        return {info, [] {}};
    }
    for (size_t i = 0; i < info.planes.size(); ++i) {
        const int stride = info.planeSizes()[i].rowBytes + padding;
        const size_t size = std::min(rest.size(), size_t(stride) * size_t(info.planeSizes()[i].rows));
        info.planes[i] = {rest.data(), size, stride};
        rest = rest.subspan(size);
    }
    return {info, [] {}};
}

BWRenderRequest requestFor(QSize picture, Input &input)
{
    const QSize viewport(1 + input.choose(200), 1 + input.choose(200));
    BWLiveViewState state;
    state.setCurrentRotation(90 * input.choose(4));
    state.setCurrentFlip(input.choose(4));
    state.setScale((1 + input.choose(48)) / 16.0);
    state.setFitsWindow(input.choose(4) == 0);
    state.adaptTo(picture, viewport);
    return {{picture, state}, viewport, {input.choose(250), input.choose(250)}, 1 + input.choose(3) / 2.0};
}

void readFrame(Input &input)
{
    constexpr QSize size(48, 32);
    const BWRenderRequest first = requestFor(size, input);
    const BWRenderRequest second = requestFor(size, input);
    const BWFrame frame = frameOf(input);
    BWFrameRenderer renderer;
    renderer.setFrame(frame, first);
    renderer.render(first);
    renderer.render(second);
    const QByteArray jpeg = BWStill::jpegOf(frame);
    assert(jpeg.isNull() || BWJpeg::decodesCleanly(reinterpret_cast<const uint8_t *>(jpeg.constData()), jpeg.size()));

    // Whatever came before, a good frame is shown as it is.
    static const BWFrame good = TestJpeg::frame(TestJpeg::encode(TestJpeg::noise(size, 1), {2, 1}), size);
    static const BWRenderRequest plain({size, {}}, size, {}, 1);
    static const auto draw = [](BWFrameRenderer &with) {
        return with.setFrame(good, plain) ? with.render(plain).image.copy() : QImage();
    };
    static BWFrameRenderer fresh;
    static const QImage expected = draw(fresh);
    assert(!expected.isNull() && draw(renderer) == expected);
}

/// Or a movie.
void readPicture(Input &input)
{
    const BWThumbnailSize size = BWThumbnailSizes::all[size_t(input.choose(3))];
    const bool isPatient = input.choose(64) == 0;
    const BWJpegHeader header(input.data, input.size);
    if (int64_t(header.width()) * header.height() > 1 << 20 && !isPatient)
        return;
    BWJpegPicture::turnOf(input.guarded());
    const QString path = input.saved();
    const BWThumbnail thumbnail = BWThumbnailMaker().make(path.toUtf8(), size).thumbnail;
    assert((thumbnail.kind == BWThumbnail::Kind::Picture) != thumbnail.image.isNull());
    assert(std::max(thumbnail.image.width(), thumbnail.image.height()) <= BWThumbnailSizes::pixels(size));
    const BWAlbumPicture still = BWStillLoader::read(QUrl::fromLocalFile(path));
    assert(!still.image.isNull() == (still.problem <= BWAlbumPicture::Problem::PartlyDamaged));
}

void recoverMovie(Input &input)
{
    const QString path = input.saved();
    const bool isCompleted = completeMovie(path) == BWMovieCompletion::Completed;
    assert(isCompleted ? completeMovie(path) == BWMovieCompletion::Plain
                       : TestFolder::read(QUrl::fromLocalFile(path)) == input.bytes());
}

void readJpegMetadata(const QByteArray &jpeg)
{
    const auto read = BWPictureMetadata::from(jpeg);
    if (read.problem != BWPictureProblem::None && read.problem != BWPictureProblem::Partly) {
        assert(read.metadata == BWPictureMetadata()); // refused, and nothing read
        return;
    }
    const auto written = read.metadata.addedTo(jpeg);
    assert(written.problem != BWPictureProblem::None
           || BWPictureMetadata::from(written.jpeg).metadata.measurements == read.metadata.measurements);
    BWSnapshotTags{QDateTime::fromSecsSinceEpoch(0), u"a"_s, u"b"_s, read.metadata, u"4:3"_s}.addedTo(jpeg);
}

/// A whole file, or the XMP in the smallest file with a picture.
void readMetadata(Input &input)
{
    const QByteArray bytes = input.bytes();
    BWJpegPicture::turnOf(input.guarded());
    readJpegMetadata(bytes);
    const qsizetype length = bytes.size() + 29 + 2;
    readJpegMetadata(QByteArray("\xff\xd8\xff\xe1") + char(length >> 8) + char(length)
                     + QByteArray("http://ns.adobe.com/xap/1.0/\0", 29) + bytes
                     + QByteArray("\xff\xc0\0\x0b\x08\0\x1e\0\x28\1\1\x11\0\xff\xda"
                                  "\0\x08\1\1\0\0\x3f\0\0\xff\xd9",
                                  26));
}

void readStoredThumbnail(Input &input)
{
    const BWThumbnailSize wanted = BWThumbnailSizes::all[size_t(input.choose(3))];
    const bool repairs = input.choose(8) != 0;
    QByteArray png = input.bytes();
    // Checksums are mostly put right, or hardly a change would get past them.
    for (qsizetype at = 8; repairs && at + 12 <= png.size();) {
        const auto length = qFromBigEndian<quint32>(png.constData() + at);
        if (length > png.size() - at - 12)
            break;
        const auto *const chunk = reinterpret_cast<const Bytef *>(png.constData() + at + 4);
        qToBigEndian(quint32(crc32(0, chunk, length + 4)), png.data() + at + 8 + length);
        at += 12 + length;
    }
    static const QByteArray name = QCryptographicHash::hash("file:///tmp/a.mov", QCryptographicHash::Md5).toHex();
    folder.file(u"x-large/"_s + QString::fromLatin1(name) + u".png"_s, png);
    const auto found = BWThumbnailStore(folder.path().toUtf8()).find("/tmp/a.mov", {.modified = 1, .size = 2}, wanted);
    assert(!found || std::max(found->image.width(), found->image.height()) <= BWThumbnailSizes::pixels(wanted));
}

/// Every key has the same text.
struct OneText : BWUserDefaults {
    explicit OneText(const QByteArray &bytes) : text(QString::fromUtf8(bytes)) { }
    QString string(const QString &) const override { return text; }
    void setString(const QString &, const QString &) override { }
    QByteArray data(const QString &) const override { return {}; }
    void setData(const QString &, const QByteArray &) override { }
    bool synchronize() override { return true; }
    bool isStored() const override { return true; }
    const QString text;
};

void readSettings(Input &input)
{
    OneText defaults(input.bytes());
    BWConfigManager(defaults).save();
    BWCalibrations calibrations, same;
    calibrations.fromJson(defaults.text);
    const bool isWhole = same.fromJson(calibrations.toJson());
    assert(isWhole && same.toJson() == calibrations.toJson());
    if (!defaults.text.startsWith(u'['))
        return;
    BWAlbumManager albums(defaults, folder.path());
    albums.prepare();
    assert(!albums.albums().isEmpty());
}

void readSettingsFile(Input &input)
{
    static int number = 0; // a file that changes within a moment is not read again
    const QString path = input.saved(u"%1.conf"_s.arg(++number));
    const BWSettingsFile file(path);
    for (const QString &key : {u"text"_s, u"list"_s, u"binary"_s, u"any"_s, u"group/key"_s})
        assert(file.string(key).isNull() || file.data(key).isNull());
    QFile::remove(path);
}

void readSeries(Input &input)
{
    const auto record = BWSeriesFile(input.saved()).read();
    const QDateTime now = QDateTime::fromSecsSinceEpoch(1'800'000'000, QTimeZone::utc());
    if (!record || record->isOver(now))
        return;
    BWSeriesFiles files = record->files;
    files.add(folder.url(u"20260102-019.jpg"_s));
    BWSeries series(BWSeries::Sources{[] { return nullptr; }, [](unsigned) {}});
    series.resume(record->plan, record->saved, record->missed, std::chrono::milliseconds(record->first.msecsTo(now)));
}

void readCameraTable(Input &input)
{
    BWVideoNode node;
    std::tie(node.name, node.driver, node.usbId) = std::tuple(u"USB2.0 Microscope"_s, u"uvcvideo"_s, u"eb1a:2860"_s);
    BWCameraTable::read({input.saved()}).ruleFor(node);
}

void readTexts(Input &input)
{
    BWLocalizationManager texts(input.saved(), {u"de"_s});
    texts.text(u"about_window"_s, u"close_button"_s, u"&Close"_s);
    texts.saveAtPath(folder.path(u"saved"_s));
    BWLocalizationManager again(folder.path(u"saved"_s), {u"de"_s});
    assert(again.strings().size() <= texts.strings().size() && !again.strings().isEmpty());
}

const QHash<QString, void (*)(Input &)> readers{
    {u"frame"_s, readFrame},       {u"picture"_s, readPicture},         {u"movie"_s, readPicture},
    {u"recovery"_s, recoverMovie}, {u"metadata"_s, readMetadata},       {u"stored_thumbnail"_s, readStoredThumbnail},
    {u"settings"_s, readSettings}, {u"series"_s, readSeries},           {u"settings_file"_s, readSettingsFile},
    {u"texts"_s, readTexts},       {u"camera_table"_s, readCameraTable}};
void (*reader)(Input &) = nullptr;

} // namespace

extern "C" int LLVMFuzzerInitialize(int *count, char ***arguments)
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    static const QGuiApplication app(*count, *arguments); // as the program has, for pictures in a settings file
    static const BWStillLoader loader; // limits what a picture may take
    qInstallMessageHandler([](QtMsgType, const QMessageLogContext &, const QString &) {});
    BWMoviePicture::prepare();
    for (const QString &argument : app.arguments())
        reader = readers.value(argument.section(u"--reader="_s, 1), reader);
    assert(reader);
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    Input input{data, size};
    reader(input);
    return 0;
}
