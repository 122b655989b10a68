#include "PictureProbe.h"
#include "simulated/picture/BWMakePictureSource.h"

#include <QDir>
#include <QFile>
#include <QPainter>
#include <QProcess>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QTest>

using namespace Qt::StringLiterals;

namespace {

constexpr BWResolution size(160, 120);
constexpr int frames = 12; // of each movie

bool near(QColor a, QColor b)
{
    constexpr int tolerance = 10;
    return std::abs(a.red() - b.red()) <= tolerance && std::abs(a.green() - b.green()) <= tolerance
        && std::abs(a.blue() - b.blue()) <= tolerance;
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

QByteArray jpegOf(BWPictureSource &source, uint64_t index)
{
    std::vector<uint8_t> data;
    source.renderJPEG(index, data);
    return QByteArray(reinterpret_cast<const char *>(data.data()), qsizetype(data.size()));
}

} // namespace

class TestMediaSources : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void photoFillsThePicture_data();
    void photoFillsThePicture();
    void photoIsTurnedUpright();
    void controlsActOnPhotos();
    void folderShowsPhotosInOrder();
    void mjpegIsHandedOn();
    void yuyvIsHandedOn();
    void otherMoviesAreDecoded_data();
    void otherMoviesAreDecoded();
    void gapsAndRestarts();
    void damagedMovieFallsBackToWhatIsGood();
    void tellsWhatCannotBeUsed_data();
    void tellsWhatCannotBeUsed();

private:
    QString file(const QString &name) const { return m_folder.filePath(name); }

    /// Runs ffmpeg with `frames` pictures of moving test bars as input 0.
    bool makeMovie(const QString &name, const QStringList &options)
    {
        QStringList arguments{u"-v"_s,
                              u"error"_s,
                              u"-y"_s,
                              u"-f"_s,
                              u"lavfi"_s,
                              u"-i"_s,
                              u"testsrc2=size=160x120:rate=25"_s,
                              u"-frames:v"_s,
                              QString::number(frames)};
        arguments << options << file(name);
        const int result = QProcess::execute(u"ffmpeg"_s, arguments);
        return result == 0 && QFile::exists(file(name));
    }

    /// The packets of a movie, as ffmpeg copies them.
    QList<QByteArray> packets(const QString &name)
    {
        const QTemporaryDir parts;
        QProcess::execute(u"ffmpeg"_s,
                          {u"-v"_s, u"error"_s, u"-i"_s, file(name), u"-c"_s, u"copy"_s, u"-f"_s, u"image2"_s,
                           parts.filePath(u"%03d.bin"_s)});
        QList<QByteArray> list;
        for (const QString &part : QDir(parts.path()).entryList(QDir::Files, QDir::Name)) {
            QFile data(parts.filePath(part));
            if (data.open(QIODevice::ReadOnly))
                list << data.readAll();
        }
        return list;
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

    QTemporaryDir m_folder;
};

void TestMediaSources::photoFillsThePicture_data()
{
    QTest::addColumn<QSize>("photoSize");
    QTest::addColumn<QString>("kind");
    QTest::addColumn<bool>("sides"); // whether the outer stripes are still to be seen
    QTest::newRow("same size") << QSize(160, 120) << u"png"_s << true;
    QTest::newRow("wide") << QSize(1000, 300) << u"png"_s << true;
    QTest::newRow("tiny") << QSize(24, 8) << u"png"_s << true;
    QTest::newRow("very wide") << QSize(2000, 300) << u"png"_s << false;
    QTest::newRow("wide JPEG") << QSize(2400, 900) << u"jpg"_s << true;
}

void TestMediaSources::photoFillsThePicture()
{
    QFETCH(QSize, photoSize);
    QFETCH(QString, kind);
    QFETCH(bool, sides);
    const QString path = file(u"photo."_s + kind);
    QVERIFY(striped(photoSize, {Qt::red, Qt::green, Qt::blue}).save(path, nullptr, 95));
    const auto source = open(path);
    QVERIFY(source);
    const PictureProbe picture(*source, size, 0);
    QVERIFY(near(picture.colourAt(80, 60), Qt::green)); // cropped at its middle
    const QColor left = picture.colourAt(2, 60);
    const QColor right = picture.colourAt(157, 60);
    QVERIFY2(near(left, sides ? Qt::red : Qt::green), qPrintable(left.name()));
    QVERIFY2(near(right, sides ? Qt::blue : Qt::green), qPrintable(right.name()));
    QVERIFY(near(PictureProbe::jpeg(*source, 0).pixelColor(80, 60), Qt::green));
}

void TestMediaSources::photoIsTurnedUpright()
{
    // A JPEG whose orientation tag tells that it has to be turned by a quarter.
    const QString path = file(u"turned.jpg"_s);
    QVERIFY(striped({120, 160}, {Qt::red, Qt::blue}).save(path, nullptr, 95));
    QFile photo(path);
    QVERIFY(photo.open(QIODevice::ReadWrite));
    QByteArray data = photo.readAll();
    const QByteArray exif = QByteArray::fromHex("ffe10022457869660000" // marker, length, name
                                                "4d4d002a00000008" // big-endian, directory at 8
                                                "0001"
                                                "0112"
                                                "0003"
                                                "00000001"
                                                "00060000"
                                                "00000000");
    data.insert(2, exif);
    photo.seek(0);
    photo.write(data);
    photo.close();
    const auto source = open(path);
    QVERIFY(source);
    const PictureProbe picture(*source, size, 0);
    QVERIFY2(near(picture.colourAt(80, 5), Qt::red), qPrintable(picture.colourAt(80, 5).name()));
    QVERIFY2(near(picture.colourAt(80, 115), Qt::blue), qPrintable(picture.colourAt(80, 115).name()));
}

void TestMediaSources::controlsActOnPhotos()
{
    const QString path = file(u"grey.png"_s);
    QVERIFY(striped({160, 120}, {QColor(80, 80, 80), QColor(150, 150, 150)}).save(path));
    const auto source = open(path);
    const double before = PictureProbe(*source, size, 0).meanLuma();
    source->setControls({.exposure = 0.5});
    QVERIFY(PictureProbe(*source, size, 1).meanLuma() > before * 1.2);
    source->setControls({});
    QCOMPARE(PictureProbe(*source, size, 2).meanLuma(), before);
}

void TestMediaSources::folderShowsPhotosInOrder()
{
    const QString folder = file(u"photos"_s);
    QVERIFY(QDir().mkpath(folder));
    QVERIFY(striped({160, 120}, {Qt::blue}).save(folder + u"/b.png"_s));
    QVERIFY(striped({80, 90}, {Qt::red}).save(folder + u"/a.jpg"_s, nullptr, 95));
    QFile other(folder + u"/aa.txt"_s);
    QVERIFY(other.open(QIODevice::WriteOnly) && other.write("no photo") > 0);
    QFile broken(folder + u"/ab.png"_s);
    QVERIFY(broken.open(QIODevice::WriteOnly) && broken.write("\x89PNG\r\n\x1a\nand no more") > 0);
    broken.close();
    QTest::ignoreMessage(QtWarningMsg, QRegularExpression(u"ab.png.*left out"_s));
    const auto source = open(folder);
    QVERIFY(source);
    constexpr uint64_t each = 60;
    const QList<QColor> expected{Qt::red, Qt::blue, Qt::red, Qt::blue};
    for (qsizetype i = 0; i < expected.size(); ++i) {
        QVERIFY(near(PictureProbe(*source, size, uint64_t(i) * each).colourAt(80, 60), expected[i]));
        QVERIFY(near(PictureProbe(*source, size, uint64_t(i) * each + each - 1).colourAt(80, 60), expected[i]));
    }
}

void TestMediaSources::mjpegIsHandedOn()
{
    for (const QString &name : {u"handed.avi"_s, u"handed.mov"_s, u"handed.mjpeg"_s}) {
        QVERIFY(makeMovie(name, {u"-c:v"_s, u"mjpeg"_s, u"-q:v"_s, u"3"_s}));
        const QList<QByteArray> expected = packets(name);
        QCOMPARE(expected.size(), frames);
        const auto source = open(file(name));
        QVERIFY(source);
        QVERIFY(source->nativeFormat() == BWPixelFormat::MJPEG);
        QVERIFY(std::abs(source->frameRate().value_or(0) - 25) < 0.01);
        for (int round = 0; round < 2; ++round) {
            for (int i = 0; i < frames; ++i)
                QCOMPARE(jpegOf(*source, uint64_t(round * frames + i)), expected[i]);
        }
        // With the controls moved, or at another size, it is another picture.
        source->setControls({.brightness = 0.3});
        QVERIFY(jpegOf(*source, 2 * frames) != expected[0]);
        QVERIFY(PictureProbe::jpeg(*source, 2 * frames).size() == size.dimensions());
        source->setControls({});
        source->setResolution(BWResolution(320, 240));
        QVERIFY(!source->nativeFormat());
        QCOMPARE(PictureProbe::jpeg(*source, 2 * frames).size(), QSize(320, 240));
    }
}

void TestMediaSources::yuyvIsHandedOn()
{
    QVERIFY(makeMovie(u"raw.avi"_s, {u"-c:v"_s, u"rawvideo"_s, u"-pix_fmt"_s, u"yuyv422"_s}));
    const QList<QByteArray> expected = packets(u"raw.avi"_s);
    const auto source = open(file(u"raw.avi"_s));
    QVERIFY(source);
    QVERIFY(source->nativeFormat() == BWPixelFormat::YUYV);
    for (int i = 0; i < 2 * frames; ++i)
        QCOMPARE(PictureProbe(*source, size, uint64_t(i)).bytes(), expected[i % frames]);

    // What controls make of it at next to nothing is next to the same: decoding shifts neither colours nor range.
    source->setControls({.brightness = 1e-6});
    const auto reference = open(file(u"raw.avi"_s));
    const PictureProbe plain(*reference, size, 0);
    source->setResolution(size);
    const PictureProbe tuned(*source, size, 2 * frames);
    QVERIFY2(tuned.differenceTo(plain) < 1, qPrintable(QString::number(tuned.differenceTo(plain))));
}

void TestMediaSources::otherMoviesAreDecoded_data()
{
    QTest::addColumn<QStringList>("options");
    QTest::newRow("MPEG-4") << QStringList{u"-c:v"_s, u"mpeg4"_s, u"-q:v"_s, u"2"_s};
    QTest::newRow("RGB") << QStringList{u"-c:v"_s, u"png"_s};
    QTest::newRow("full range, tagged BT.709")
        << QStringList{u"-vf"_s,          u"scale=out_color_matrix=bt709:out_range=full,format=yuv444p"_s,
                       u"-c:v"_s,         u"ffv1"_s,
                       u"-colorspace"_s,  u"bt709"_s,
                       u"-color_range"_s, u"pc"_s};
    QTest::newRow("UYVY") << QStringList{u"-c:v"_s, u"rawvideo"_s, u"-pix_fmt"_s, u"uyvy422"_s};
}

void TestMediaSources::otherMoviesAreDecoded()
{
    QFETCH(QStringList, options);
    const QString name = u"decoded.mkv"_s;
    QVERIFY(makeMovie(name, options));
    // How the first and the last picture really look, twice as large.
    for (const int index : {0, frames - 1}) {
        const QString still = file(u"still.png"_s);
        QCOMPARE(QProcess::execute(u"ffmpeg"_s,
                                   {u"-v"_s, u"error"_s, u"-y"_s, u"-f"_s, u"lavfi"_s, u"-i"_s,
                                    u"testsrc2=size=160x120:rate=25"_s, u"-vf"_s,
                                    u"select=eq(n\\,%1),scale=320:240"_s.arg(index), u"-frames:v"_s, u"1"_s, still}),
                 0);
        const QImage expected(still);
        const auto source = open(file(name), BWResolution(320, 240));
        QVERIFY(source);
        QVERIFY(!source->nativeFormat());
        for (int i = 0; i < index; ++i)
            PictureProbe(*source, BWResolution(320, 240), uint64_t(i));
        const PictureProbe picture(*source, BWResolution(320, 240), uint64_t(index));
        double difference = 0;
        for (int y = 0; y < 240; ++y) {
            for (int x = 0; x < 320; ++x) {
                const QColor a = picture.colourAt(x, y);
                const QColor b = expected.pixelColor(x, y);
                difference +=
                    std::abs(a.red() - b.red()) + std::abs(a.green() - b.green()) + std::abs(a.blue() - b.blue());
            }
        }
        difference /= 320 * 240 * 3;
        QVERIFY2(difference < 8, qPrintable(QString::number(difference)));
    }
}

void TestMediaSources::gapsAndRestarts()
{
    QVERIFY(makeMovie(u"gaps.avi"_s, {u"-c:v"_s, u"mjpeg"_s}));
    const QList<QByteArray> expected = packets(u"gaps.avi"_s);
    const auto source = open(file(u"gaps.avi"_s));
    QCOMPARE(jpegOf(*source, 100), expected[0]); // wherever the camera begins to count
    QCOMPARE(jpegOf(*source, 100), expected[0]);
    QCOMPARE(jpegOf(*source, 103), expected[3]);
    QCOMPARE(jpegOf(*source, 103 + frames), expected[3]);
    QCOMPARE(jpegOf(*source, 0), expected[0]); // started anew
    QCOMPARE(jpegOf(*source, 1), expected[1]);
}

void TestMediaSources::damagedMovieFallsBackToWhatIsGood()
{
    QVERIFY(makeMovie(u"good.avi"_s, {u"-c:v"_s, u"mjpeg"_s}));
    const QList<QByteArray> expected = packets(u"good.avi"_s);
    QFile good(file(u"good.avi"_s));
    QVERIFY(good.open(QIODevice::ReadOnly));
    QByteArray data = good.readAll();
    const qsizetype fourth = data.indexOf(expected[3]);
    const qsizetype eighth = data.indexOf(expected[7]);
    QVERIFY(fourth > 0 && eighth > fourth);
    data.replace(fourth, 2, "xx"); // one picture is none, and from the eighth on the file is missing
    QFile bad(file(u"bad.avi"_s));
    QVERIFY(bad.open(QIODevice::WriteOnly) && bad.write(data.left(eighth + 40)) > 0);
    bad.close();

    QTest::failOnWarning(QRegularExpression(u"brings no more"_s));
    QTest::ignoreMessage(QtWarningMsg, QRegularExpression(u"bad.avi.*is damaged"_s));
    const auto source = open(file(u"bad.avi"_s));
    QVERIFY(source);
    const QList<int> order{0, 1, 2, 4, 5, 6, 0, 1, 2, 4};
    for (qsizetype i = 0; i < order.size(); ++i)
        QCOMPARE(jpegOf(*source, uint64_t(i)), expected[order[i]]);

    // The file loses everything while it is shown.
    QTest::failOnWarning(QRegularExpression(u"is damaged"_s)); // told already
    QVERIFY(bad.resize(0));
    const QByteArray last = jpegOf(*source, 30);
    QVERIFY(expected.contains(last));
}

void TestMediaSources::tellsWhatCannotBeUsed_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QByteArray>("content");
    QTest::newRow("missing") << u"missing.mov"_s << QByteArray();
    QTest::newRow("empty file") << u"empty.avi"_s << QByteArray("");
    QTest::newRow("noise") << u"noise.mov"_s << QByteArray(5000, '\x42');
    QTest::newRow("broken photo") << u"broken.png"_s << QByteArray("\x89PNG\r\n\x1a\nand no more");
    QTest::newRow("folder without photos") << u"folder"_s << QByteArray();
}

void TestMediaSources::tellsWhatCannotBeUsed()
{
    QFETCH(QString, name);
    QFETCH(QByteArray, content);
    const QString path = file(name);
    if (name == u"folder"_s) {
        QVERIFY(QDir().mkpath(path));
    } else if (!content.isNull()) {
        QFile made(path);
        QVERIFY(made.open(QIODevice::WriteOnly) && made.write(content) == content.size());
    }
    QString error;
    QVERIFY(!makePictureSource(path, &error));
    QVERIFY2(error.contains(name), qPrintable(error));
    QVERIFY(!makePictureSource(path)); // without asking why
}

QTEST_GUILESS_MAIN(TestMediaSources)
#include "tst_BWMediaSources.moc"
