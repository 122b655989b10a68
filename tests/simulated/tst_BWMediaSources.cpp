#include "MovieProbe.h"
#include "PictureProbe.h"
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

/// Whether the picture has these colours from its left to its right, or from its top to its bottom.
bool shows(BWPictureSource &source, const QList<QColor> &colours, Qt::Orientation direction = Qt::Horizontal,
           uint64_t index = 0)
{
    const QImage image = PictureProbe(source, size, index).image();
    for (qsizetype i = 0; i < colours.size(); ++i) {
        const double place = 0.02 + 0.96 * double(i) / std::max(1.0, double(colours.size() - 1));
        const QColor seen = direction == Qt::Horizontal ? image.pixelColor(int(place * 160), 60)
                                                        : image.pixelColor(80, int(place * 120));
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

class TestMediaSources : public QObject {
    Q_OBJECT

    QTemporaryDir m_folder;

    QString file(const QString &name) const { return m_folder.filePath(name); }

    /// The path of a new movie of moving test bars; empty if there is none.
    QString makeMovie(const QString &name, const QStringList &options) const
    {
        const QStringList count{u"-frames:v"_s, QString::number(frames)};
        return ffmpeg(testBars + count + options + QStringList{file(name)}) ? file(name) : QString();
    }

private Q_SLOTS:
    void photoFillsThePicture_data()
    {
        QTest::addColumn<QSize>("photoSize");
        QTest::addColumn<QString>("name");
        QTest::addColumn<QList<QColor>>("expected");
        const QList<QColor> all{Qt::red, Qt::green, Qt::blue};
        QTest::newRow("wide") << QSize(1000, 300) << u"photo.png"_s << all;
        QTest::newRow("tiny") << QSize(24, 8) << u"photo.png"_s << all;
        QTest::newRow("very wide") << QSize(2000, 300) << u"photo.png"_s << QList<QColor>(3, Qt::green);
        QTest::newRow("wide JPEG") << QSize(2400, 900) << u"photo.jpg"_s << all;
    }

    void photoFillsThePicture()
    {
        QFETCH(QSize, photoSize);
        QFETCH(QString, name);
        QFETCH(QList<QColor>, expected);
        QVERIFY(striped(photoSize, {Qt::red, Qt::green, Qt::blue}).save(file(name), nullptr, 95));
        const auto source = open(file(name));
        QVERIFY(source);
        QVERIFY(shows(*source, expected));
        const QImage image = QImage::fromData(PictureProbe::jpeg(*source, 0), "JPEG");
        QVERIFY(PictureProbe::difference(PictureProbe(*source, size).image(), image) < 4);
    }

    void photoIsTurnedUpright()
    {
        // A JPEG whose orientation tag tells that it has to be turned by a quarter.
        const QString path = file(u"turned.jpg"_s);
        QVERIFY(striped({120, 160}, {Qt::red, Qt::blue}).save(path, nullptr, 95));
        const QByteArray exif = QByteArray::fromHex("ffe10022457869660000" // marker, length, name
                                                    "4d4d002a00000008" // big-endian, directory at 8
                                                    "00010112000300000001"
                                                    "0006000000000000");
        QVERIFY(write(path, read(path).insert(2, exif)));
        const auto source = open(path);
        QVERIFY(source);
        QVERIFY(shows(*source, {Qt::red, Qt::blue}, Qt::Vertical));
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
            QVERIFY(shows(*source, {expected}, Qt::Horizontal, photo * each));
            QVERIFY(shows(*source, {expected}, Qt::Horizontal, photo * each + each - 1));
        }
    }

    void mjpegIsHandedOn()
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
                QCOMPARE(PictureProbe::jpeg(*source, uint64_t(i)), expected[i % frames]);
            // With the controls moved, or at another size, it is another picture.
            source->setControls({.brightness = 0.3});
            const QByteArray brighter = PictureProbe::jpeg(*source, 2 * frames);
            QVERIFY(brighter != expected[0]);
            QCOMPARE(QImage::fromData(brighter, "JPEG").size(), size.dimensions());
            source->setControls({});
            source->setResolution(BWResolution(320, 240));
            QVERIFY(!source->nativeFormat());
            QCOMPARE(QImage::fromData(PictureProbe::jpeg(*source, 2 * frames), "JPEG").size(), QSize(320, 240));
        }
    }

    void yuyvIsHandedOn()
    {
        const QString movie = makeMovie(u"raw.avi"_s, {u"-c:v"_s, u"rawvideo"_s, u"-pix_fmt"_s, u"yuyv422"_s});
        const QList<QByteArray> expected = storedPictures(movie);
        const auto source = open(movie);
        QVERIFY(source);
        QVERIFY(source->nativeFormat() == BWPixelFormat::YUYV);
        for (int i = 0; i < 2 * frames; ++i)
            QCOMPARE(PictureProbe(*source, size, uint64_t(i)).bytes(), expected[i % frames]);

        // What controls make of it at next to nothing is next to the same: decoding shifts neither colours nor range.
        source->setControls({.brightness = 1e-6});
        const auto reference = open(movie);
        const PictureProbe plain(*reference, size, 0);
        source->setResolution(size);
        const PictureProbe tuned(*source, size, 2 * frames);
        QVERIFY2(tuned.differenceTo(plain) < 1, qPrintable(QString::number(tuned.differenceTo(plain))));
    }

    void otherMoviesAreDecoded_data()
    {
        QTest::addColumn<QString>("options");
        QTest::newRow("MPEG-4") << u"-c:v mpeg4 -q:v 2"_s;
        QTest::newRow("RGB") << u"-c:v png"_s;
        QTest::newRow("full range, tagged BT.709")
            << u"-vf scale=out_color_matrix=bt709:out_range=full,format=yuv444p -c:v ffv1 "
               "-colorspace bt709 -color_range pc"_s;
        QTest::newRow("UYVY") << u"-c:v rawvideo -pix_fmt uyvy422"_s;
    }

    void otherMoviesAreDecoded()
    {
        QFETCH(QString, options);
        const QString movie = makeMovie(u"decoded.mkv"_s, options.split(u' '));
        constexpr BWResolution large(320, 240);
        const auto source = open(movie, large);
        QVERIFY(source);
        QVERIFY(!source->nativeFormat());
        for (int index = 0; index < frames; ++index) {
            const PictureProbe picture(*source, large, uint64_t(index));
            if (index != 0 && index != frames - 1)
                continue;
            // How it really looks, twice as large.
            const QString still = file(u"still.png"_s);
            QVERIFY(ffmpeg(testBars
                           + QStringList{u"-vf"_s, u"select=eq(n\\,%1),scale=320:240"_s.arg(index), u"-frames:v"_s,
                                         u"1"_s, still}));
            const double difference = PictureProbe::difference(picture.image(), QImage(still));
            QVERIFY2(difference < 8, qPrintable(QString::number(difference)));
        }
    }

    void gapsAndRestarts()
    {
        const QString movie = makeMovie(u"gaps.avi"_s, mjpeg);
        const QList<QByteArray> expected = storedPictures(movie);
        const auto source = open(movie);
        using Step = std::pair<uint64_t, int>;
        // Wherever the camera begins to count; the same again, a gap, the next round, started anew.
        for (const auto &[index, picture] :
             {Step(100, 0), Step(100, 0), Step(103, 3), Step(103 + frames, 3), Step(0, 0), Step(1, 1)})
            QCOMPARE(PictureProbe::jpeg(*source, index), expected[picture]);
    }

    void damagedMovieFallsBackToWhatIsGood()
    {
        const QString good = makeMovie(u"good.avi"_s, mjpeg);
        const QList<QByteArray> expected = storedPictures(good);
        QByteArray data = read(good);
        const qsizetype fourth = data.indexOf(expected[3]);
        const qsizetype eighth = data.indexOf(expected[7]);
        QVERIFY(fourth > 0 && eighth > fourth);
        data.replace(fourth, 2, "xx"); // one picture is none, and from the eighth on the file is missing
        const QString bad = file(u"bad.avi"_s);
        QVERIFY(write(bad, data.left(eighth + 40)));

        QTest::failOnWarning(QRegularExpression(u"brings no more"_s));
        QTest::ignoreMessage(QtWarningMsg, QRegularExpression(u"bad.avi.*is damaged"_s));
        const auto source = open(bad);
        QVERIFY(source);
        const QList<int> order{0, 1, 2, 4, 5, 6, 0, 1, 2, 4};
        for (qsizetype i = 0; i < order.size(); ++i)
            QCOMPARE(PictureProbe::jpeg(*source, uint64_t(i)), expected[order[i]]);

        // The file loses everything while it is shown.
        QTest::failOnWarning(QRegularExpression(u"is damaged"_s)); // told already
        QVERIFY(QFile::resize(bad, 0));
        QVERIFY(expected.contains(PictureProbe::jpeg(*source, 30)));
    }

    void tellsWhatCannotBeUsed()
    {
        QVERIFY(QDir().mkpath(file(u"folder"_s))); // without photos
        QVERIFY(write(file(u"empty.avi"_s), ""));
        QVERIFY(write(file(u"noise.mov"_s), QByteArray(5000, '\x42')));
        QVERIFY(write(file(u"broken.png"_s), "\x89PNG\r\n\x1a\nand no more"));
        QCOMPARE(mkfifo(qPrintable(file(u"pipe"_s)), 0600), 0); // nobody will ever write into it
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
            QVERIFY(!makePictureSource(file(name))); // without asking why
        }
    }
};

QTEST_GUILESS_MAIN(TestMediaSources)
#include "tst_BWMediaSources.moc"
