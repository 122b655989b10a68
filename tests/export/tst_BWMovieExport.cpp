// SPDX-License-Identifier: GPL-3.0-or-later
#include "BWACUDriver/BWSmallerMovie.h"
#include "Model/Export/BWMovieExport.h"
#include "MovieProbe.h"
#include "Rows.h"
#include "SmallDisk.h"
#include "TestFolder.h"
#include "TestJpeg.h"

#include <QJsonArray>
#include <QRandomGenerator>
#include <QTest>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

using Outcome = BWExportResult::Outcome;
using Problem = BWExportResult::Problem;
using Quality = BWSmallerMovie::Quality;

constexpr int pictures = 30;

/// The times at which the pictures show, rising; in milliseconds.
QList<qint64> timesOf(const QJsonObject &movie)
{
    QList<qint64> times;
    const QJsonArray packets = movie[u"packets"_s].toArray();
    for (const auto &packet : packets) {
        if (packet[u"codec_type"_s].toString() == u"video"_s)
            times << qRound(packet[u"pts_time"_s].toString().toDouble() * 1000);
    }
    std::sort(times.begin(), times.end());
    return times;
}

double lengthOf(const QJsonObject &movie)
{
    return movie[u"format"_s].toObject()[u"duration"_s].toString().toDouble();
}

QSize sizeOf(const QJsonObject &movie)
{
    return {movie[u"width"_s].toInt(), movie[u"height"_s].toInt()};
}

} // namespace

class TestMovieExport : public QObject {
    Q_OBJECT

    std::optional<TestFolder> m_folder;

    /// Thirty pictures in three seconds, or with a pause of two more after ten of them; JPEGs unless `more` says otherwise.
    QUrl makeMovie(const QString &pattern, bool uneven = false, const QStringList &more = {})
    {
        const QString times = uneven ? u",setpts=N+gt(N\\,9)*20"_s : QString();
        QStringList arguments{u"-f"_s, u"lavfi"_s, u"-i"_s, pattern + u":r=10:d=3"_s + times};
        arguments += more;
        arguments += u"-fps_mode passthrough -q:v 2"_s.split(u' ');
        if (!more.contains(u"-c:v"_s))
            arguments += u"-c:v mjpeg -pix_fmt yuvj422p"_s.split(u' ');
        if (!MovieProbe::ffmpeg(arguments << m_folder->path(u"v.mov"_s)))
            qFatal("ffmpeg makes no movie");
        return m_folder->url(u"v.mov"_s);
    }

private Q_SLOTS:
    void init()
    {
        m_folder.emplace();
        m_folder->folder(u"out"_s);
    }

    void smaller_data()
    {
        const Rows<QString, bool, QStringList, Quality, QSize> row; // the picture, uneven times, more, size
        const QStringList sound = u"-f lavfi -i sine=440:r=44100:d=3 -c:a pcm_s16be"_s.split(u' ');
        row("high", u"testsrc2=s=320x240"_s, false, {}, Quality::High, QSize(320, 240));
        row("odd size, uneven times", u"testsrc2=s=161x121"_s, true, {}, Quality::Medium, QSize(160, 120));
        row("white, with sound", u"color=white:s=320x240"_s, false, sound, Quality::Medium, QSize(320, 240));
        row("a gap in the sound", u"testsrc2=s=160x120"_s, false,
            u"-f lavfi -i sine=440:r=44100:d=3 -af aselect=not(between(t\\,1\\,2)) -c:a alac"_s.split(u' '),
            Quality::Small, QSize(160, 120));
        row("MPEG-4, pictures out of order", u"testsrc2=s=320x240"_s, true,
            u"-c:v mpeg4 -bf 2 -pix_fmt yuv420p"_s.split(u' '), Quality::High, QSize(320, 240));
        row("H.264", u"testsrc2=s=160x120"_s, false, u"-c:v libx264 -pix_fmt yuv420p"_s.split(u' '), Quality::Medium,
            QSize(160, 120));
        row("small", u"testsrc2=s=1602x1200"_s, false, {}, Quality::Small, QSize(1280, 958));
    }
    void smaller()
    {
        const auto [pattern, uneven, more, quality, size] = Rows<QString, bool, QStringList, Quality, QSize>::current();
        const QUrl movie = makeMovie(pattern, uneven, more);
        const QByteArray before = TestFolder::read(movie);
        const QUrl target = m_folder->file(u"out/v.mp4"_s, "old");
        BWExportWatch watch;
        const BWExportResult result = BWMovieExport::makeSmaller(movie, target, quality, watch);
        QCOMPARE(result.reason, QString());
        QCOMPARE(result.leftOut, 0);
        QVERIFY(TestFolder::read(movie) == before);
        const QJsonObject source = MovieProbe::probe(movie.toLocalFile());
        const QJsonObject made = MovieProbe::probe(target.toLocalFile());
        const QMap<QString, QString> kind{{u"codec_name"_s, u"h264"_s},
                                          {u"pix_fmt"_s, u"yuv420p"_s},
                                          {u"color_range"_s, u"tv"_s},
                                          {u"color_space"_s, u"smpte170m"_s}};
        for (auto it = kind.begin(); it != kind.end(); ++it)
            QCOMPARE(made[it.key()].toString(), it.value());
        QCOMPARE(sizeOf(made), size);
        QCOMPARE(made[u"nb_read_frames"_s].toString().toInt(), pictures);
        QCOMPARE(timesOf(made), timesOf(source));
        QVERIFY2(std::abs(lengthOf(made) - lengthOf(source)) < 0.101, qPrintable(QString::number(lengthOf(made))));
        const QByteArray bytes = TestFolder::read(target);
        QVERIFY(bytes.indexOf("moov") < bytes.indexOf("mdat"));
        const bool sounds = more.contains(u"-c:a"_s);
        QCOMPARE(bytes.contains("mp4a"), sounds);
        const qsizetype ofSound = made[u"packets"_s].toArray().size() - pictures;
        QVERIFY2(!sounds || ofSound >= 3 * 44100 / 1024, qPrintable(QString::number(ofSound))); // all the time
        if (pattern.startsWith(u"color"_s)) {
            const QString raw = m_folder->path(u"raw"_s);
            QVERIFY(MovieProbe::ffmpeg(
                {u"-i"_s, target.toLocalFile(), u"-frames:v"_s, u"1"_s, u"-f"_s, u"rawvideo"_s, raw}));
            const int luma = uchar(TestFolder::read(m_folder->url(u"raw"_s)).front());
            QVERIFY2(std::abs(luma - 235) <= 1, qPrintable(QString::number(luma)));
        }
    }

    void smallerFails_data()
    {
        const Rows<Problem, int> row; // how many percent of the source are there
        row("full disk", Problem::TargetTooLarge, 100);
        row("gone", Problem::SourceGone, 0);
        row("without its index", Problem::NoPictures, 60);
        row("itself", Problem::TargetIsSource, 100);
        row("changed meanwhile", Problem::SourceChanged, 100);
    }
    void smallerFails()
    {
        const auto [problem, percent] = Rows<Problem, int>::current();
        const QByteArray what = QTest::currentDataTag();
        const QUrl movie = makeMovie(u"testsrc2=s=640x480"_s);
        const QUrl target = what == "itself" ? movie : m_folder->file(u"out/v.mp4"_s, "old");
        const QByteArray before = TestFolder::read(target);
        const QByteArray whole = TestFolder::read(movie);
        QVERIFY(QFile::resize(movie.toLocalFile(), whole.size() * percent / 100));
        if (percent == 0)
            QVERIFY(QFile::remove(movie.toLocalFile()));
        BWExportWatch watch([&](qint64, qint64) {
            if (what.startsWith("changed"))
                TestFolder::write(movie, whole + "x");
        });
        BWExportResult result;
        {
            const SmallDisk disk(what == "full disk" ? 30'000 : RLIM_INFINITY);
            result = BWMovieExport::makeSmaller(movie, target, Quality::High, watch);
        }
        QCOMPARE(result.problem, problem);
        QVERIFY(!result.reason.isNull());
        QVERIFY(TestFolder::read(target) == before);
        QCOMPARE(TestFolder::count(m_folder->path(u"out"_s)), what == "itself" ? 0 : 1);
    }

    void noEncoderAndASpoiltMovie()
    {
        QFile movie(makeMovie(u"testsrc2=s=160x120"_s).toLocalFile());
        QFile target(m_folder->path(u"out/v.mp4"_s));
        QVERIFY(movie.open(QIODevice::ReadOnly) && target.open(QIODevice::ReadWrite));
        const auto make = [&](const QByteArray &encoder) {
            return BWSmallerMovie::make(movie.handle(), target.handle(), {.encoders = {encoder}}, [&](double done) {
                return done < 0.98 || target.resize(20'000); // it is written, but not checked yet
            });
        };
        QVERIFY(make("none").end == BWSmallerMovie::End::NoEncoder);
        QVERIFY(make("libx264").end == BWSmallerMovie::End::Failed);
    }

    /// What can be read of a movie with its index in front is saved, and the user is told of the rest.
    void cutOff()
    {
        const QUrl movie = makeMovie(u"testsrc2=s=160x120"_s, false, {u"-movflags"_s, u"faststart"_s});
        QVERIFY(QFile::resize(movie.toLocalFile(), QFile(movie.toLocalFile()).size() * 6 / 10));
        BWExportWatch watch;
        const QUrl target = m_folder->url(u"out/v.mp4"_s);
        const BWExportResult result = BWMovieExport::makeSmaller(movie, target, Quality::Medium, watch);
        QCOMPARE(result.outcome, Outcome::Done);
        const int frames = MovieProbe::framesIn(target.toLocalFile());
        QVERIFY(frames > 10 && frames < 25);
        QCOMPARE(result.leftOut, pictures - frames);
    }

    void cancelledAtAnyMoment()
    {
        const quint32 seed = qEnvironmentVariableIsSet("BW_SEED") ? qEnvironmentVariableIntValue("BW_SEED")
                                                                  : QRandomGenerator::global()->generate();
        qInfo("BW_SEED=%u", seed);
        QRandomGenerator random(seed);
        const QUrl movie = makeMovie(u"testsrc2=s=320x240"_s);
        QFile source(movie.toLocalFile());
        QFile made(m_folder->path(u"made"_s));
        QVERIFY(source.open(QIODevice::ReadOnly) && made.open(QIODevice::ReadWrite));
        int asked = 0;
        const auto make = [&](int stop) {
            asked = 0;
            return BWSmallerMovie::make(source.handle(), made.handle(), {}, [&](double) { return asked++ < stop; }).end;
        };
        QVERIFY(make(INT_MAX) == BWSmallerMovie::End::Done);
        for (int attempt = 0, all = asked; attempt < 12; ++attempt) {
            const int stop = random.bounded(all);
            QVERIFY2(make(stop) == BWSmallerMovie::End::Cancelled, qPrintable(u"at %1 of %2"_s.arg(stop).arg(all)));
            QCOMPARE(asked, stop + 1); // no work follows
        }
        BWExportWatch watch;
        watch.cancel();
        const QUrl target = m_folder->file(u"out/v.mp4"_s, "old");
        QCOMPARE(BWMovieExport::makeSmaller(movie, target, Quality::Medium, watch).outcome, Outcome::Cancelled);
        QCOMPARE(TestFolder::read(target), "old");
        QCOMPARE(TestFolder::count(m_folder->path(u"out"_s)), 1);
    }

    void joined_data()
    {
        // For each picture its size in tens of pixels: 4 is 40x30; t: turned on its side, p: progressive, x: cut off, -: gone
        const Rows<QString, int, QSize, QString>
            row; // pictures a second, size, what becomes of them: copied or encoded
        row("alike", u"4 4 4 4"_s, 4, QSize(40, 30), u"cccc"_s);
        row("most have the size", u"4 8 4"_s, 60, QSize(40, 30), u"cec"_s);
        row("as many, the larger one", u"4 8"_s, 1, QSize(80, 60), u"ec"_s);
        row("progressive", u"4 4p 4"_s, 7, QSize(40, 30), u"cec"_s);
        row("turned", u"4t 4t"_s, 2, QSize(30, 40), u"ee"_s);
        row("damaged", u"4 4x 4 - 4"_s, 3, QSize(40, 30), u"c.c.c"_s);
    }
    void joined()
    {
        const auto [kinds, rate, size, wanted] = Rows<QString, int, QSize, QString>::current();
        QList<QUrl> files;
        QList<QByteArray> written;
        const QStringList all = kinds.split(u' ');
        for (const QString &kind : all) {
            const int width = std::max(1, kind.left(1).toInt()) * 10;
            QByteArray jpeg = TestJpeg::encode(TestJpeg::noise({width, width * 3 / 4}, unsigned(files.size())),
                                               {.horizontal = 2, .progressive = kind.contains(u'p')});
            const QByteArray exif("Exif\0\0MM\0*\0\0\0\x08\0\x01\x01\x12\0\x03\0\0\0\x01\0\x06\0\0\0\0\0\0", 32);
            written << jpeg;
            if (kind.contains(u't'))
                jpeg.insert(2, QByteArray("\xff\xe1\0\x22", 4) + exif);
            if (kind.contains(u'x'))
                jpeg.chop(40);
            const QString name = u"b%1.jpg"_s.arg(files.size() + 8); // b9 comes before b10
            files.prepend(kind == u"-"_s ? m_folder->url(name) : m_folder->file(name, jpeg));
        }
        BWExportWatch watch;
        const QUrl target = m_folder->file(u"out/j.mov"_s, "old");
        const BWExportResult result = BWMovieExport::joinPictures(BWMovieExport::inOrder(files), rate, target, watch);
        QCOMPARE(result.reason, QString());
        QCOMPARE(result.leftOut, int(wanted.count(u'.')));
        const QJsonObject movie = MovieProbe::probe(target.toLocalFile());
        const int count = int(wanted.size()) - result.leftOut;
        QCOMPARE(sizeOf(movie), size);
        QCOMPARE(movie[u"nb_read_frames"_s].toString().toInt(), count);
        QVERIFY(std::abs(lengthOf(movie) - double(count) / rate) < 0.001);
        const QList<QByteArray> stored = MovieProbe::storedPictures(target.toLocalFile());
        qsizetype next = 0;
        for (qsizetype i = 0; i < wanted.size(); ++i) {
            if (wanted[i] == u'.')
                continue;
            QCOMPARE(stored[next] == written[i], wanted[i] == u'c');
            ++next;
        }
        QCOMPARE(TestFolder::count(m_folder->path(u"out"_s)), 1);
    }

    void joiningFails()
    {
        const QUrl good = m_folder->file(u"a.jpg"_s, TestJpeg::encode(TestJpeg::noise({200, 200}, 1)));
        const QUrl target = m_folder->file(u"out/j.mov"_s, "old");
        BWExportWatch watch;
        const auto problem = [&](const QList<QUrl> &files, const QUrl &to) {
            return BWMovieExport::joinPictures(files, 10, to, watch).problem;
        };
        QCOMPARE(problem({m_folder->file(u"b.jpg"_s, "text"), m_folder->url(u"gone"_s)}, target), Problem::NoPictures);
        QCOMPARE(problem({good, good}, good), Problem::TargetIsSource);
        {
            const SmallDisk disk(20'000);
            QCOMPARE(problem({good, good, good}, target), Problem::TargetFull);
        }
        watch.cancel();
        QCOMPARE(BWMovieExport::joinPictures({good, good}, 10, target, watch).outcome, Outcome::Cancelled);
        QCOMPARE(TestFolder::read(target), "old");
        QCOMPARE(TestFolder::count(m_folder->path(u"out"_s)), 1);
    }

    void timeLeft()
    {
        BWTimeLeft left;
        QVERIFY(!left.add(100s, 0));
        QVERIFY(!left.add(102s, 0.5)); // too soon
        QVERIFY(!left.add(104s, 0.001));
        QCOMPARE(left.add(110s, 0.1)->count(), 90);
        QCOMPARE(left.add(110s, 0.02)->count(), 480);
        QCOMPARE(left.add(110s, 0.999)->count(), 10);
        QVERIFY(!left.add(120s, 1));
    }
};

QTEST_GUILESS_MAIN(TestMovieExport)
#include "tst_BWMovieExport.moc"
