// SPDX-License-Identifier: GPL-3.0-or-later
#include "media/BWJpeg.h"
#include "MovieProbe.h"
#include "simulated/picture/BWPictureSource.h"

#include <QDir>
#include <QFile>
#include <QImageWriter>
#include <QPainter>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QTest>
#include <sys/stat.h>

using namespace MovieProbe;
using namespace Qt::StringLiterals;

namespace {

constexpr BWResolution size(160, 120);
constexpr int frames = 12; // of each movie

const QStringList testBars{u"-f"_s, u"lavfi"_s, u"-i"_s, u"testsrc2=size=160x120:rate=25"_s};
const QStringList mjpeg{u"-c:v"_s, u"mjpeg"_s, u"-q:v"_s, u"3"_s};

/// The picture as a camera sends it; null if the source wrote beyond the rows, which are longer than the picture.
QImage drawn(BWPictureSource &source, BWResolution resolution = size, uint64_t index = 0)
{
    const QByteArray padding(24, '\x5a');
    const qsizetype stride = resolution.width() * 2 + padding.size();
    QByteArray pixels(stride * resolution.height(), padding[0]);
    auto *bytes = reinterpret_cast<uint8_t *>(pixels.data());
    source.renderYUYV(index, bytes, int(stride));
    for (qsizetype end = stride; end <= pixels.size(); end += stride) {
        if (!QByteArrayView(pixels).first(end).endsWith(padding))
            return {};
    }
    BWFrameInfo info;
    info.pixelFormat = BWPixelFormat::YUYV;
    info.width = resolution.width();
    info.height = resolution.height();
    info.planes[0] = {bytes, std::size_t(pixels.size()), int(stride)};
    return QImage::fromData(BWJpeg::encode(BWFrame(info, [] {}), 95), "JPEG");
}

QByteArray jpegFrom(BWPictureSource &source, uint64_t index)
{
    std::vector<uint8_t> jpeg;
    const BWPictureSource::KeptBytes own = source.passOn(index, BWPixelFormat::MJPEG);
    if (own.bytes.empty())
        source.renderJPEG(index, jpeg);
    const std::span<const uint8_t> bytes = own.bytes.empty() ? jpeg : own.bytes;
    return {reinterpret_cast<const char *>(bytes.data()), qsizetype(bytes.size())};
}

/// Mean over all pixels and channels.
double difference(const QImage &a, const QImage &b)
{
    double sum = 0;
    for (int y = 0; y < a.height(); ++y) {
        for (int x = 0; x < a.width(); ++x) {
            const QRgb one = a.pixel(x, y);
            const QRgb other = b.pixel(x, y);
            sum += std::abs(qRed(one) - qRed(other)) + std::abs(qGreen(one) - qGreen(other))
                + std::abs(qBlue(one) - qBlue(other));
        }
    }
    return sum / (3.0 * a.width() * a.height());
}

/// Whether the picture has these colours from its left to its right.
bool shows(BWPictureSource &source, const QList<QColor> &colours, uint64_t index = 0)
{
    const QImage image = drawn(source, size, index);
    for (qsizetype i = 0; i < colours.size(); ++i) {
        const double place = 0.02 + 0.96 * double(i) / std::max(1.0, double(colours.size() - 1));
        const QColor seen = image.pixelColor(int(place * 160), 60);
        if (std::abs(seen.red() - colours[i].red()) > 10 || std::abs(seen.green() - colours[i].green()) > 10
            || std::abs(seen.blue() - colours[i].blue()) > 10) {
            qInfo() << seen.name() << "in place of" << colours[i].name() << "at" << i;
            return false;
        }
    }
    return true;
}

/// Equally wide stripes side by side.
QImage striped(QSize imageSize, const QList<QColor> &colours)
{
    QImage image(imageSize, QImage::Format_RGB32);
    QPainter painter(&image);
    for (qsizetype i = 0; i < colours.size(); ++i) {
        const int left = int(i * imageSize.width() / colours.size());
        painter.fillRect(left, 0, imageSize.width(), imageSize.height(), colours[i]);
    }
    return image;
}

QByteArray read(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

bool write(const QString &path, const QByteArray &data)
{
    QFile file(path);
    return file.open(QIODevice::WriteOnly) && file.write(data) == data.size();
}

std::unique_ptr<BWPictureSource> open(const QString &path, BWResolution resolution = size)
{
    QString error;
    auto source = makePictureSource(path, &error);
    if (source)
        source->setResolution(resolution);
    else
        qWarning() << error;
    return source;
}

} // namespace

class TestPictureSources : public QObject {
    Q_OBJECT

    QTemporaryDir m_folder;

    QString file(const QString &name) const { return m_folder.filePath(name); }

    /// The path of a new movie of moving test bars; empty on failure.
    QString makeMovie(const QString &name, const QStringList &options) const
    {
        const QStringList count{u"-frames:v"_s, QString::number(frames)};
        return ffmpeg(testBars + count + options + QStringList{file(name)}) ? file(name) : QString();
    }

private Q_SLOTS:
    void specimenFillsEverySize()
    {
        for (const BWResolution resolution : {BWResolution(1280, 1024), BWResolution(34, 18)}) {
            const QImage picture = drawn(*open({}, resolution), resolution, 180);
            const int grey = qGray(picture.scaled(1, 1, Qt::IgnoreAspectRatio, Qt::SmoothTransformation).pixel(0, 0));
            QVERIFY2(grey > 90 && grey < 210, qPrintable(QString::number(grey)));
        }
    }

    void photoFillsThePicture()
    {
        const QList<QColor> all{Qt::red, Qt::green, Qt::blue};
        const struct {
            const char *name;
            QSize size;
            QList<QColor> expected;
        } rows[] = {{"tiny.png", {24, 8}, all},
                    {"verywide.png", {2000, 300}, QList<QColor>(3, Qt::green)},
                    {"wide.jpg", {2400, 900}, all}};
        for (const auto &row : rows) {
            const QString photo = file(QString::fromLatin1(row.name));
            QVERIFY(striped(row.size, all).save(photo, nullptr, 95));
            const auto source = open(photo);
            QVERIFY2(source && shows(*source, row.expected), row.name);
            const QImage image = QImage::fromData(jpegFrom(*source, 0), "JPEG");
            QVERIFY(difference(drawn(*source), image) < 4);
        }
    }

    void folderShowsPhotosInOrder()
    {
        const QString folder = file(u"photos"_s);
        QVERIFY(QDir().mkpath(folder));
        QVERIFY(striped({160, 120}, {Qt::blue}).save(folder + u"/b.png"_s));
        QVERIFY(striped({80, 90}, {Qt::red}).save(folder + u"/a.jpg"_s, nullptr, 95));
        QVERIFY(write(folder + u"/aa.txt"_s, "no photo"));
        QVERIFY(write(folder + u"/ab.png"_s, "\x89PNG\r\n\x1a\nand no more"));
        QTest::ignoreMessage(QtWarningMsg, QRegularExpression(u"ab.png.*left out"_s));
        const auto source = open(folder);
        QVERIFY(source);
        constexpr uint64_t each = 60;
        for (uint64_t photo = 0; photo < 4; ++photo) {
            const QColor expected = photo % 2 ? Qt::blue : Qt::red;
            QVERIFY(shows(*source, {expected}, photo * each));
            QVERIFY(shows(*source, {expected}, photo * each + each - 1));
        }
    }

    void mjpegIsPassedOn()
    {
        for (const QString &name : {u"handed.avi"_s, u"handed.mov"_s, u"handed.mjpeg"_s}) {
            const QString movie = makeMovie(name, mjpeg);
            const QList<QByteArray> expected = storedPictures(movie);
            QCOMPARE(expected.size(), frames);
            const auto source = open(movie);
            QVERIFY(source);
            QVERIFY(source->nativeFormat() == BWPixelFormat::MJPEG);
            QVERIFY(std::abs(source->frameRate().value_or(0) - 25) < 0.01);
            for (int i = 0; i < 2 * frames; ++i)
                QCOMPARE(jpegFrom(*source, uint64_t(i)), expected[i % frames]);
            // The same again, a gap, the next round, started anew.
            using Step = std::pair<uint64_t, int>;
            for (const auto &[index, picture] :
                 {Step(23, 11), Step(27, 3), Step(27 + frames, 3), Step(0, 0), Step(1, 1)})
                QCOMPARE(jpegFrom(*source, index), expected[picture]);
            // With the controls moved, or at another size, it is another picture.
            source->setControls({.brightness = 0.3});
            const QByteArray brighter = jpegFrom(*source, 2 * frames);
            QVERIFY(brighter != expected[0]);
            QCOMPARE(QImage::fromData(brighter, "JPEG").size(), size.dimensions());
            source->setControls({});
            source->setResolution(BWResolution(320, 240));
            QVERIFY(!source->nativeFormat());
            QCOMPARE(QImage::fromData(jpegFrom(*source, 2 * frames), "JPEG").size(), QSize(320, 240));
        }
    }

    void otherMoviesAreDecoded()
    {
        const QString tagged = u"-vf scale=out_color_matrix=bt709:out_range=full,format=yuv444p -c:v ffv1 "
                               "-colorspace bt709 -color_range pc"_s;
        for (const QString &options : {u"-c:v mpeg4 -q:v 2"_s, u"-c:v png"_s, tagged}) {
            constexpr BWResolution large(320, 240);
            const auto source = open(makeMovie(u"decoded.mkv"_s, options.split(u' ')), large);
            QVERIFY(source);
            QVERIFY(!source->nativeFormat());
            for (int index = 0; index < frames - 1; ++index)
                drawn(*source, large, uint64_t(index));
            // How the last one really looks, twice as large.
            const QString still = file(u"still.png"_s);
            QVERIFY(ffmpeg(testBars
                           + QStringList{u"-vf"_s, u"select=eq(n\\,%1),scale=320:240"_s.arg(frames - 1), u"-frames:v"_s,
                                         u"1"_s, still}));
            const double found = difference(drawn(*source, large, frames - 1), QImage(still));
            QVERIFY2(found < 8, qPrintable(options + QString::number(found)));
        }
    }

    void damagedMovieFallsBackToWhatIsGood()
    {
        const QString good = makeMovie(u"good.avi"_s, mjpeg);
        const QList<QByteArray> expected = storedPictures(good);
        QByteArray data = read(good);
        const qsizetype fourth = data.indexOf(expected[3]);
        const qsizetype eighth = data.indexOf(expected[7]);
        QVERIFY(fourth > 0 && eighth > fourth);
        data.replace(fourth, 2, "xx"); // one picture is damaged, and the file ends in the eighth
        const QString bad = file(u"bad.avi"_s);
        QVERIFY(write(bad, data.left(eighth + 40)));

        QTest::failOnWarning(QRegularExpression(u"no more good"_s));
        QTest::ignoreMessage(QtWarningMsg, QRegularExpression(u"bad.avi.*is damaged"_s));
        const auto source = open(bad);
        QVERIFY(source);
        const QList<int> order{0, 1, 2, 4, 5, 6, 0, 1, 2, 4};
        for (qsizetype i = 0; i < order.size(); ++i)
            QCOMPARE(jpegFrom(*source, uint64_t(i)), expected[order[i]]);

        // The file loses everything while it is shown.
        QTest::failOnWarning(QRegularExpression(u"is damaged"_s)); // logged already
        QVERIFY(QFile::resize(bad, 0));
        QVERIFY(expected.contains(jpegFrom(*source, 30)));
    }

    void reportsWhatCannotBeUsed()
    {
        QVERIFY(QDir().mkpath(file(u"folder"_s))); // without photos
        QVERIFY(write(file(u"empty.avi"_s), ""));
        QVERIFY(write(file(u"noise.mov"_s), QByteArray(5000, '\x42')));
        QVERIFY(write(file(u"broken.png"_s), "\x89PNG\r\n\x1a\nand no more"));
        QCOMPARE(mkfifo(qPrintable(file(u"pipe"_s)), 0600), 0); // without a writer
        QImageWriter writer(file(u"huge.jpg"_s));
        writer.setProgressiveScanWrite(true);
        QVERIFY(writer.write(striped({64, 48}, {Qt::red})));
        QByteArray huge = read(file(u"huge.jpg"_s));
        const qsizetype frame = huge.indexOf("\xff\xc2");
        QVERIFY(frame > 0);
        huge.replace(frame + 5, 4, QByteArray::fromHex("75309c40")); // 30,000 rows of 40,000 pixels
        QVERIFY(write(file(u"huge.jpg"_s), huge));
        for (const QString &name : {u"missing.mov"_s, u"folder"_s, u"empty.avi"_s, u"noise.mov"_s, u"broken.png"_s,
                                    u"pipe"_s, u"huge.jpg"_s}) {
            QString error;
            QVERIFY(!makePictureSource(file(name), &error));
            QVERIFY2(error.contains(name), qPrintable(error));
        }
    }
};

QTEST_GUILESS_MAIN(TestPictureSources)
#include "tst_BWPictureSources.moc"
