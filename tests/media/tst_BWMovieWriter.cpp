// SPDX-License-Identifier: GPL-3.0-or-later
#include "BWACUDriver/BWMovie.h"
#include "BWACUDriver/BWMovieWriter.h"
#include "MediaFixture.h"
#include "MovieProbe.h"
#include "SmallDisk.h"
#include "TestFrames.h"

#include <QDateTime>
#include <QFile>
#include <QImage>
#include <QJsonArray>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QtEndian>
#include <QTest>

using namespace MediaFixture;
using namespace MovieProbe;
using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

constexpr int width = 160;
constexpr int height = 120;

/// When the frames of a camera with an uneven rate arrive.
constexpr std::chrono::microseconds times[] = {5s,         5s + 33'333us, 5s + 66'667us, 5s + 250ms,
                                               5s + 250ms, 5s + 1'000ms,  5s + 1'033ms,  5s + 1'100ms};

BWFrame pictureAt(std::chrono::microseconds time, const QByteArray &jpeg)
{
    return jpegFrame(jpeg, width, height, time);
}

BWFrame rawAt(std::chrono::microseconds time, QColor right)
{
    return TestFrames::twoColours(BWPixelFormat::YUYV, {width, height}, Qt::red, right, BWColorMatrix::BT709,
                                  BWColorRange::Limited, time);
}

} // namespace

class TestMovieWriter : public QObject {
    Q_OBJECT

    QTemporaryDir m_folder;
    QString m_path;
    std::unique_ptr<BWMovieWriter> m_writer;

    static void put(const QString &path, const QByteArray &content)
    {
        QFile file(path);
        QVERIFY(file.open(QIODevice::WriteOnly));
        QCOMPARE(file.write(content), content.size());
    }

private Q_SLOTS:
    void init()
    {
        m_path = m_folder.filePath(QString::fromLatin1(QTest::currentTestFunction()) + u".mov"_s);
        m_writer = BWMovieWriter::create(m_path);
        QVERIFY(m_writer);
    }

    void cleanup() { m_writer.reset(); }

    void copiesMjpeg()
    {
        QList<QByteArray> expected;
        for (size_t i = 0; i < std::size(times); ++i) {
            const QByteArray jpeg = detailedJpeg(width, height, int(i));
            expected << jpeg;
            const QByteArray sent = i % 2 ? withoutHuffmanTables(jpeg) + QByteArray(50, '\0') : jpeg;
            QVERIFY(m_writer->write(pictureAt(times[i], sent)));
        }
        QVERIFY(m_writer->finish());
        QVERIFY(m_writer->finish()); // does no harm
        QVERIFY(!m_writer->write(pictureAt(9s, expected[0])));

        const QJsonObject movie = probe(m_path);
        QCOMPARE(movie[u"codec_name"_s].toString(), u"mjpeg"_s);
        QCOMPARE(QSize(movie[u"width"_s].toInt(), movie[u"height"_s].toInt()), QSize(width, height));
        QCOMPARE(movie[u"color_primaries"_s].toString(), u"bt709"_s);
        QCOMPARE(framesIn(m_path), int(std::size(times)));
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

        const QList<QByteArray> stored = storedPictures(m_path);
        QCOMPARE(stored.size(), expected.size());
        for (qsizetype i = 0; i < stored.size(); ++i) {
            QCOMPARE(withoutHuffmanTables(stored[i]), withoutHuffmanTables(expected[i]));
            QCOMPARE(QImage::fromData(stored[i]), QImage::fromData(expected[i]));
        }
        QCOMPARE(completeMovie(m_path), BWMovieCompletion::Plain);
    }

    void completesWhatACrashLeft()
    {
        for (int i = 0; i < 20; ++i)
            QVERIFY(m_writer->write(pictureAt(i * 40ms, detailedJpeg(width, height, i))));
        QFile growing(m_path);
        QVERIFY(growing.open(QIODevice::ReadOnly));
        const QByteArray whole = growing.readAll();
        const qsizetype firstPicture = whole.indexOf("moof");
        QVERIFY(firstPicture > 0);
        QList<qsizetype> ends; // of the pictures
        for (qsizetype next = firstPicture; next > 0; next = whole.indexOf("moof", next + 1))
            ends << next - 4;
        ends.removeFirst();
        ends << whole.size();
        const QString copy = m_folder.filePath(u"left.mov"_s);
        QString error;

        // Cut off anywhere, and with blocks behind it that never reached the disk.
        int most = 0;
        for (qsizetype size = whole.size(); size > firstPicture; size -= whole.size() / 4 + 1) {
            const QByteArray left = whole.left(size);
            const auto pictures = int(std::count_if(ends.begin(), ends.end(), [=](auto end) { return end <= size; }));
            for (const QByteArray &rest : {QByteArray(), QByteArray(5000, '\0')}) {
                put(copy, left + rest);
                QCOMPARE(completeMovie(copy, &error), BWMovieCompletion::Completed);
                QCOMPARE(completeMovie(copy), BWMovieCompletion::Plain);
                QCOMPARE(framesIn(copy), pictures);
                QVERIFY(std::abs(probe(copy)[u"duration"_s].toString().toDouble() - pictures * 0.04) < 0.01);
                QCOMPARE(storedPictures(copy).constLast(), detailedJpeg(width, height, pictures - 1));
            }
            most = std::max(most, pictures);
        }
        QCOMPARE(most, 20);

        // The index was written, the header in front not yet.
        put(copy, whole);
        QCOMPARE(completeMovie(copy), BWMovieCompletion::Completed);
        QFile file(copy);
        QVERIFY(file.open(QIODevice::ReadWrite));
        const qsizetype header = whole.indexOf("moov") - 4;
        QVERIFY(file.seek(header));
        file.write(whole.mid(header, 16));
        file.close();
        QCOMPARE(framesIn(copy), 20);
        QCOMPARE(completeMovie(copy), BWMovieCompletion::Completed);
        QCOMPARE(framesIn(copy), 20);

        // A picture at a time that no movie reaches.
        put(copy, QByteArray(whole).replace(whole.lastIndexOf("tfdt") + 8, 1, "\x7f"));
        QCOMPARE(completeMovie(copy), BWMovieCompletion::Completed);
        QCOMPARE(framesIn(copy), 19);
    }

    void leavesForeignFilesAlone()
    {
        QVERIFY(m_writer->write(pictureAt(0ms, detailedJpeg(width, height))));
        QVERIFY(m_writer->write(pictureAt(1ms, detailedJpeg(width, height))));
        QFile begun(m_path);
        QVERIFY(begun.open(QIODevice::ReadOnly));
        const QByteArray movie = begun.readAll();
        constexpr quint32 levels = 50'000;
        QByteArray nested(levels * 8, '\0'); // boxes in boxes
        for (quint32 level = 0; level < levels; ++level) {
            qToBigEndian((levels - level) * 8, nested.data() + level * 8);
            nested.replace(level * 8 + 4, 4, "moov");
        }
        const std::pair<QByteArray, BWMovieCompletion> cases[] = {
            {movie.left(movie.indexOf("moov") - 4) + nested, BWMovieCompletion::Failed},
            {{}, BWMovieCompletion::Failed},
            {QByteArray(3000, 'x'), BWMovieCompletion::Failed},
            {QByteArray(3000, '\0'), BWMovieCompletion::Failed},
            {movie.left(movie.indexOf("trak")), BWMovieCompletion::Failed},
            {QByteArray(movie).replace("stsd", "none"), BWMovieCompletion::Failed},
            {movie.left(movie.indexOf("moof") - 4), BWMovieCompletion::Empty},
        };
        const QString path = m_folder.filePath(u"foreign.mov"_s);
        for (const auto &[content, expected] : cases) {
            put(path, content);
            QCOMPARE(completeMovie(path), expected);
            QFile file(path);
            QVERIFY(file.open(QIODevice::ReadOnly));
            QCOMPARE(file.readAll(), content);
        }
    }

    void leavesOutWhatDoesNotFit()
    {
        const QByteArray jpeg = detailedJpeg(width, height);
        QTest::ignoreMessage(QtWarningMsg, QRegularExpression(u"damaged"_s)); // only once
        QVERIFY(!m_writer->write(pictureAt(0ms, jpeg.left(500))));
        QVERIFY(m_writer->write(pictureAt(10ms, jpeg)));
        QVERIFY(!m_writer->write(jpegFrame(detailedJpeg(64, 48), 64, 48, 20ms)));
        QVERIFY(!m_writer->write(rawAt(30ms, Qt::red)));
        QVERIFY(!m_writer->write(pictureAt(40ms, jpeg.chopped(2))));
        QVERIFY(m_writer->write(pictureAt(50ms, jpeg)));
        QVERIFY(m_writer->finish());
        QCOMPARE(framesIn(m_path), 2);
    }

    void keepsWhatIsThereWhenTheDiskIsFull()
    {
        const QByteArray jpeg = detailedJpeg(width, height);
        int written = 0;
        {
            const SmallDisk disk(rlim_t(jpeg.size()) * 10);
            QTest::ignoreMessage(QtWarningMsg, QRegularExpression(u"failed: .File too large"_s));
            while (m_writer->write(pictureAt(written * 33ms, jpeg)) && written < 100)
                ++written;
            QVERIFY(!m_writer->write(pictureAt(10s, jpeg)));
            QVERIFY(!m_writer->finish());
            m_writer.reset();
        }
        QVERIFY2(written >= 8 && written <= 11, qPrintable(QString::number(written)));
        QVERIFY(framesIn(m_path) >= written - 1);
    }

    void withoutPicturesThereIsNoFile_data()
    {
        QTest::addColumn<int>("offered");
        QTest::newRow("no frame") << 0;
        QTest::newRow("one that the full disk refuses") << 1;
    }

    void withoutPicturesThereIsNoFile()
    {
        QFETCH(int, offered);
        QVERIFY(QFile::exists(m_path));
        const SmallDisk disk(1000);
        if (offered > 0)
            QTest::ignoreMessage(QtWarningMsg, QRegularExpression(u"failed: .File too large"_s));
        for (int i = 0; i < offered; ++i)
            m_writer->write(pictureAt(i * 33ms, detailedJpeg(width, height)));
        QVERIFY(!m_writer->finish());
        QVERIFY(m_writer->isEmpty());
        QVERIFY(!QFile::exists(m_path));
    }
};

QTEST_GUILESS_MAIN(TestMovieWriter)
#include "tst_BWMovieWriter.moc"
