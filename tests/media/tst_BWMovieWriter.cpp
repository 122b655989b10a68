#include "media/BWJpeg.h"
#include "media/BWMovieWriter.h"
#include "MediaFixture.h"

#include <csignal>
#include <QDateTime>
#include <QFile>
#include <QImage>
#include <QJsonArray>
#include <QTemporaryDir>
#include <QTest>
#include <sys/resource.h>

using namespace MediaFixture;
using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

constexpr int width = 160;
constexpr int height = 120;

/// When the frames of a camera with an uneven rate arrive.
constexpr std::chrono::microseconds times[] = {5s,         5s + 33'333us, 5s + 66'667us, 5s + 250ms,
                                               5s + 250ms, 5s + 1'000ms,  5s + 1'033ms,  5s + 1'100ms};

/// Takes the disk away from this process: no file may grow beyond that size.
class SmallDisk {
public:
    explicit SmallDisk(rlim_t bytes)
    {
        std::signal(SIGXFSZ, SIG_IGN);
        getrlimit(RLIMIT_FSIZE, &m_before);
        const rlimit small{bytes, m_before.rlim_max};
        setrlimit(RLIMIT_FSIZE, &small);
    }
    ~SmallDisk() { setrlimit(RLIMIT_FSIZE, &m_before); }

private:
    rlimit m_before{};
};

int framesIn(const QJsonObject &movie)
{
    return movie[u"nb_read_frames"_s].toString().toInt();
}

} // namespace

class TestMovieWriter : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void copiesMjpeg();
    void encodesRawFrames();
    void growingFileCanBePlayed();
    void leavesOutWhatDoesNotFit();
    void keepsWhatIsThereWhenTheDiskIsFull();
    void withoutFramesThereIsNoFile();
    void tellsWhyItCannotBegin();

private:
    QString file(const QString &name) const { return m_folder.filePath(name); }

    QTemporaryDir m_folder;
};

void TestMovieWriter::copiesMjpeg()
{
    const QString path = file(u"copied.mov"_s);
    QList<QByteArray> expected;
    const auto writer = BWMovieWriter::create(path);
    QVERIFY(writer);
    for (size_t i = 0; i < std::size(times); ++i) {
        const QByteArray jpeg = detailedJpeg(width, height, int(i));
        expected << jpeg;
        const QByteArray sent = i % 2 ? withoutHuffmanTables(jpeg) + QByteArray(50, '\0') : jpeg;
        QVERIFY(writer->write(jpegFrame(sent, width, height, times[i])));
    }
    QVERIFY(writer->finish());
    QVERIFY(writer->finish()); // does no harm
    QVERIFY(!writer->write(jpegFrame(expected[0], width, height, 9s)));

    const QJsonObject movie = probe(path);
    QCOMPARE(movie[u"codec_name"_s].toString(), u"mjpeg"_s);
    QCOMPARE(movie[u"width"_s].toInt(), width);
    QCOMPARE(movie[u"height"_s].toInt(), height);
    QCOMPARE(movie[u"color_primaries"_s].toString(), u"bt709"_s);
    QCOMPARE(framesIn(movie), int(std::size(times)));
    const QJsonArray packets = movie[u"packets"_s].toArray();
    for (size_t i = 0; i < std::size(times); ++i) {
        const double expectedTime = std::chrono::duration<double>(times[i] - times[0]).count();
        const double time = packets[qsizetype(i)].toObject()[u"pts_time"_s].toString().toDouble();
        QVERIFY2(std::abs(time - expectedTime) < 0.001, qPrintable(QString::number(time)));
    }
    const double duration = movie[u"duration"_s].toString().toDouble();
    QVERIFY2(duration > 1.1 && duration < 1.2, qPrintable(QString::number(duration))); // the last lasts a frame
    const QString created = movie[u"format"_s][u"tags"_s][u"creation_time"_s].toString();
    QVERIFY(std::abs(QDateTime::fromString(created, Qt::ISODate).secsTo(QDateTime::currentDateTimeUtc())) < 60);

    const QList<QByteArray> stored = storedPictures(path);
    QCOMPARE(stored.size(), expected.size());
    for (qsizetype i = 0; i < stored.size(); ++i) {
        QCOMPARE(withoutHuffmanTables(stored[i]), withoutHuffmanTables(expected[i]));
        QCOMPARE(huffmanTablesOf(stored[i]), huffmanTablesOf(expected[i]));
    }
    QFile plain(path);
    QVERIFY(plain.open(QIODevice::ReadOnly));
    QVERIFY(!plain.readAll().contains("moof"));
    QVERIFY(!QFile::exists(path + u".part"_s));
}

void TestMovieWriter::encodesRawFrames()
{
    const QString path = file(u"encoded.mov"_s);
    const auto writer = BWMovieWriter::create(path);
    QVERIFY(writer);
    for (int i = 0; i < 10; ++i) {
        QVERIFY(writer->write(twoColourFrame(BWPixelFormat::YUYV, width, height, Qt::red, i % 2 ? Qt::blue : Qt::green,
                                             BWColorMatrix::BT709, BWColorRange::Limited, i * 40ms)));
    }
    QVERIFY(writer->finish());
    const QJsonObject movie = probe(path);
    QCOMPARE(movie[u"codec_name"_s].toString(), u"mjpeg"_s);
    QCOMPARE(framesIn(movie), 10);
    QVERIFY(std::abs(movie[u"duration"_s].toString().toDouble() - 0.4) < 0.001);
    const QImage second = QImage::fromData(storedPictures(path).value(1));
    QCOMPARE(second.size(), QSize(width, height));
    QVERIFY(second.pixelColor(10, 10).red() > 245 && second.pixelColor(10, 10).green() < 10);
    QVERIFY(second.pixelColor(width - 10, 10).blue() > 245);
}

void TestMovieWriter::growingFileCanBePlayed()
{
    const QString path = file(u"growing.mov"_s);
    const QString copy = file(u"killed.mov"_s);
    const auto writer = BWMovieWriter::create(path);
    QVERIFY(writer);
    for (int i = 0; i < 20; ++i)
        QVERIFY(writer->write(jpegFrame(detailedJpeg(width, height, i), width, height, i * 33ms)));
    QVERIFY(QFile::copy(path, copy)); // what a killed program would leave behind
    const QJsonObject movie = probe(copy);
    QVERIFY2(framesIn(movie) >= 19, qPrintable(QString::number(framesIn(movie))));
    QCOMPARE(storedPictures(copy).value(18), detailedJpeg(width, height, 18));
}

void TestMovieWriter::leavesOutWhatDoesNotFit()
{
    const QString path = file(u"mixed.mov"_s);
    const auto writer = BWMovieWriter::create(path);
    QVERIFY(writer);
    const QByteArray jpeg = detailedJpeg(width, height);
    QTest::ignoreMessage(QtWarningMsg, QRegularExpression(u"damaged"_s)); // only once
    QVERIFY(!writer->write(jpegFrame(jpeg.left(500), width, height, 0ms)));
    QVERIFY(writer->write(jpegFrame(jpeg, width, height, 10ms)));
    QVERIFY(!writer->write(jpegFrame(detailedJpeg(64, 48), 64, 48, 20ms)));
    QVERIFY(!writer->write(twoColourFrame(BWPixelFormat::YUYV, width, height, Qt::red, Qt::red, BWColorMatrix::BT601,
                                          BWColorRange::Limited, 30ms)));
    QVERIFY(!writer->write(jpegFrame(jpeg.chopped(2), width, height, 40ms)));
    QVERIFY(writer->write(jpegFrame(jpeg, width, height, 50ms)));
    QVERIFY(writer->finish());
    QCOMPARE(framesIn(probe(path)), 2);
}

void TestMovieWriter::keepsWhatIsThereWhenTheDiskIsFull()
{
    const QString path = file(u"full.mov"_s);
    const QByteArray jpeg = detailedJpeg(width, height);
    int written = 0;
    {
        const auto writer = BWMovieWriter::create(path);
        QVERIFY(writer);
        const SmallDisk disk(rlim_t(jpeg.size()) * 10);
        QTest::ignoreMessage(QtWarningMsg, QRegularExpression(u"failed: .File too large"_s));
        while (writer->write(jpegFrame(jpeg, width, height, written * 33ms)) && written < 100)
            ++written;
        QVERIFY(!writer->write(jpegFrame(jpeg, width, height, 10s)));
        QVERIFY(!writer->finish());
    }
    QVERIFY2(written >= 8 && written <= 11, qPrintable(QString::number(written)));
    QVERIFY(framesIn(probe(path)) >= written - 1);
}

void TestMovieWriter::withoutFramesThereIsNoFile()
{
    const QString path = file(u"empty.mov"_s);
    const auto writer = BWMovieWriter::create(path);
    QVERIFY(QFile::exists(path));
    QVERIFY(!writer->finish());
    QVERIFY(!QFile::exists(path));
}

void TestMovieWriter::tellsWhyItCannotBegin()
{
    QString error;
    QVERIFY(!BWMovieWriter::create(file(u"no/such/folder.mov"_s), &error));
    QVERIFY2(error.contains(u"No such file"_s), qPrintable(error));
    QVERIFY(!BWMovieWriter::create(m_folder.path()));
}

QTEST_GUILESS_MAIN(TestMovieWriter)
#include "tst_BWMovieWriter.moc"
