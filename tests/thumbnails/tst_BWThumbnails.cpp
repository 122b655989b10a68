// SPDX-License-Identifier: GPL-3.0-or-later
#include "Rows.h"
#include "ThumbnailFixture.h"

#include <fcntl.h>
#include <QBuffer>
#include <QImageReader>
#include <QTest>
#include <sys/fsuid.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

using namespace Qt::StringLiterals;

class TestThumbnails : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init() { m_fixture.emplace(); }
    void cleanup() { m_fixture.reset(); }

    /// The first one, as the others take more.
    void hugePicturesTakeLittleMemory()
    {
        const QByteArray path = m_fixture->path("huge.jpg");
        QVERIFY(ThumbnailFixture::run(u"ffmpeg"_s,
                                      {u"-v"_s, u"error"_s, u"-f"_s, u"lavfi"_s, u"-i"_s, u"color=red:s=11600x8700"_s,
                                       u"-frames:v"_s, u"1"_s, QFile::decodeName(path)}));
        const auto peak = [] {
            rusage used{};
            ::getrusage(RUSAGE_SELF, &used);
            return used.ru_maxrss; // KiB
        };
        const long before = peak();
        QCOMPARE(m_fixture->make(m_fixture->url("huge.jpg"), 500), u"red"_s);
        const long grown = peak() - before;
        QVERIFY2(grown < 48 * 1024, qPrintable(QString::number(grown)));
    }

    void picturesAreFittedAndUpright_data()
    {
        const Rows<QSize, int, QSize> row;
        row("small cells", {2592, 1944}, 100, {128, 96});
        row("larger cells", {2592, 1944}, 129, {256, 192});
        row("huge cells", {1944, 2592}, 2000, {375, 500});
        row("never enlarged", {100, 80}, 500, {100, 80});
        row("a line", {6000, 100}, 500, {500, 8});
        row("a thin line", {4096, 48}, 100, {128, 1});
    }

    void picturesAreFittedAndUpright()
    {
        const auto [size, pixels, expected] = Rows<QSize, int, QSize>::current();
        QImage image(size, QImage::Format_RGB32);
        for (int y = 0; y < size.height(); ++y) {
            for (int x = 0; x < size.width(); ++x)
                image.setPixelColor(x, y, QColor(x * 255 / size.width(), y * 255 / size.height(), 40));
        }
        QBuffer plain;
        image.save(&plain, "jpg", 95);
        for (int orientation = 1; orientation <= 8; ++orientation) {
            const QByteArray jpeg = ThumbnailFixture::withOrientation(plain.data(), orientation);
            const QUrl file = m_fixture->file("turned" + QByteArray::number(orientation) + ".jpg", jpeg);
            m_fixture->make(QList{file}, pixels);
            const QImage made = m_fixture->thumbnails().thumbnail(file)->image;
            QCOMPARE(made.size(), orientation < 5 ? expected : expected.transposed());

            QBuffer source;
            source.setData(jpeg);
            QImageReader reader(&source);
            reader.setAutoTransform(true);
            const QImage reference = reader.read().scaled(made.size(), Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
            for (const QPoint point : {made.rect().topLeft(), made.rect().bottomRight(), made.rect().center()}) {
                const QColor got = made.pixelColor(point);
                const QColor wanted = reference.pixelColor(point);
                const int worst = std::max({std::abs(got.red() - wanted.red()), std::abs(got.green() - wanted.green()),
                                            std::abs(got.blue() - wanted.blue())});
                QVERIFY2(worst < 12, qPrintable(u"%1 %2"_s.arg(got.name(), wanted.name())));
            }
        }
    }

    void moviesShowTheirFirstPictureAndLength_data()
    {
        const Rows<QString, QSize> row; // the codec's options for ffmpeg
        row("MJPEG", u"-c:v mjpeg -pix_fmt yuvj422p"_s, {256, 192});
        row("raw", u"-c:v rawvideo -pix_fmt yuyv422"_s, {256, 192});
        row("pictures out of order", u"-c:v libx264 -bf 2 -pix_fmt yuv420p"_s, {256, 192});
        row("wide pixels", u"-c:v mpeg4 -vf setsar=2"_s, {256, 96});
        row("turned", u"-c:v mpeg4"_s, {192, 256});
    }

    void moviesShowTheirFirstPictureAndLength()
    {
        const auto [codec, expected] = Rows<QString, QSize>::current();
        const auto make = [](const QStringList &arguments) {
            return ThumbnailFixture::run(u"ffmpeg"_s, QStringList{u"-v"_s, u"error"_s} + arguments);
        };
        const QString original = QFile::decodeName(m_fixture->path("original.mov"));
        const QString inputs = u"color=red:s=640x480:r=10:d=0.1[a];color=blue:s=640x480:r=10:d=2.9[b];[a][b]concat"_s;
        QVERIFY(make(QStringList{u"-f"_s, u"lavfi"_s, u"-i"_s, inputs} + codec.split(u' ') + QStringList{original}));
        const QString movie = QFile::decodeName(m_fixture->path("movie.mov"));
        QVERIFY(make({u"-i"_s, original, u"-c"_s, u"copy"_s, movie}));
        if (expected.width() < expected.height())
            QVERIFY(
                ThumbnailFixture::run(u"exiftool"_s, {u"-q"_s, u"-overwrite_original"_s, u"-Rotation=90"_s, movie}));
        const QUrl file = m_fixture->url("movie.mov");
        for (const char *start : {"made", "from the shared folder"}) {
            m_fixture->restart();
            QCOMPARE(m_fixture->make(file), u"red"_s);
            const std::optional<BWThumbnail> thumbnail = m_fixture->thumbnails().thumbnail(file);
            QCOMPARE(thumbnail->image.size(), expected);
            QVERIFY2(thumbnail->length == std::chrono::seconds(3), start);
        }
    }

    void badFilesBlockNothing()
    {
        const QByteArray good = ThumbnailFixture::jpeg(Qt::red);
        QByteArray damaged = ThumbnailFixture::jpeg(Qt::red, {1000, 1000});
        damaged.replace(damaged.size() / 2, 8, QByteArrayLiteral("\xff\xd7\x12\x34\xff\xc0\x00\x00"));
        QByteArray huge = good;
        const qsizetype frame = huge.indexOf("\xff\xc0");
        huge.replace(frame + 5, 4, QByteArrayLiteral("\xff\x00\xff\x00"));
        QBuffer png;
        QImage(20, 20, QImage::Format_RGB32).save(&png, "png");
        QByteArray unfinished(QByteArrayLiteral("\0\0\0\x14"
                                                "ftypqt  \0\0\0\0qt  \0\0\xff\xff"
                                                "mdat"));
        unfinished += QByteArray(50'000, 'x');
        const QList<QUrl> bad{m_fixture->file("empty.jpg", ""),
                              m_fixture->file("text.jpg", "Dear diary"),
                              m_fixture->file("png.jpg", png.data()),
                              m_fixture->file("half.jpg", good.left(good.size() / 2)),
                              m_fixture->file("damaged.jpg", damaged),
                              m_fixture->file("huge.jpg", huge),
                              m_fixture->file("empty.mov", ""),
                              m_fixture->file("unfinished.mov", unfinished),
                              m_fixture->file("playlist.mov", "ffconcat version 1.0\nfile 'good.mov'\n"),
                              m_fixture->file("secret.jpg", good),
                              m_fixture->url("pipe.jpg"),
                              m_fixture->url("device.jpg"),
                              m_fixture->url("folder.jpg"),
                              m_fixture->url("loop.jpg"),
                              m_fixture->url("nothing.jpg")};
        QCOMPARE(::chmod(m_fixture->path("secret.jpg").constData(), 0), 0);
        QCOMPARE(::mkfifo(m_fixture->path("pipe.jpg").constData(), 0644), 0);
        QCOMPARE(::symlink("/dev/zero", m_fixture->path("device.jpg").constData()), 0);
        QCOMPARE(::mkdir(m_fixture->path("folder.jpg").constData(), 0755), 0);
        QCOMPARE(::symlink("loop.jpg", m_fixture->path("loop.jpg").constData()), 0);
        QList<QUrl> all = bad;
        all.append(m_fixture->file("good.jpg", good));

        ::setfsuid(65534); // to root nothing is secret; the workers' threads are ours
        m_fixture->make(all);
        ::setfsuid(::geteuid());
        for (const QUrl &file : bad)
            QVERIFY2(m_fixture->shown(file) == u"impossible"_s, qPrintable(file.toString()));
        QCOMPARE(m_fixture->shown(all.last()), u"red"_s);
        QCOMPARE(m_fixture->reported().size(), all.size());
    }

    void changesAreSeen()
    {
        m_fixture->options().lookAgainAfter = std::chrono::milliseconds(0);
        m_fixture->restart();
        const QByteArray red = ThumbnailFixture::jpeg(Qt::red);
        const QUrl file = m_fixture->file("picture.jpg", red.left(red.size() / 2), true);
        const QUrl other = m_fixture->file("other.jpg", red);
        m_fixture->make({file, other});
        QCOMPARE(m_fixture->shown(file), u"impossible"_s);
        // The rest of the file arrives; without another request.
        m_fixture->file("picture.jpg", red, true);
        QTRY_COMPARE(m_fixture->shown(file), u"red"_s);
        QCOMPARE(m_fixture->reported().count(file), 2);

        m_fixture->file("picture.jpg", ThumbnailFixture::jpeg(Qt::blue));
        QCOMPARE(m_fixture->make(file), u"blue"_s);
        QVERIFY(QFile::remove(file.toLocalFile()));
        QCOMPARE(m_fixture->make(file), u"impossible"_s);
        m_fixture->make(other);
        QCOMPARE(m_fixture->reported().count(other), 1); // looked at again, but the same
    }

    /// One that is found half written a little later than another must not wait for a request.
    void allThatArriveAreSeen()
    {
        m_fixture->options().lookAgainAfter = std::chrono::milliseconds(400);
        m_fixture->restart();
        const QByteArray red = ThumbnailFixture::jpeg(Qt::red);
        QList<QUrl> files;
        for (const char *name : {"early.jpg", "late.jpg"}) {
            files.append(m_fixture->file(name, red.left(red.size() / 2), true));
            m_fixture->make(files);
            QCOMPARE(m_fixture->shown(files.last()), u"impossible"_s);
            QTest::qWait(200);
        }
        for (const char *name : {"early.jpg", "late.jpg"})
            m_fixture->file(name, red, true);
        for (const QUrl &file : files)
            QTRY_COMPARE(m_fixture->shown(file), u"red"_s);
    }

    /// What is saved moments after a look is too early for another one, whenever the next look is due for other files.
    void lastChangeIsSeen()
    {
        m_fixture->options().lookAgainAfter = std::chrono::milliseconds(1000);
        m_fixture->restart();
        const QUrl file = m_fixture->file("picture.jpg", ThumbnailFixture::jpeg(Qt::red));
        for (const int wait : {800, 300, 0}) { // the second request is too early, too, the third one is not
            QCOMPARE(m_fixture->make(file), u"red"_s);
            QTest::qWait(wait);
        }
        m_fixture->file("picture.jpg", ThumbnailFixture::jpeg(Qt::blue), true);
        m_fixture->make(file);
        QTRY_COMPARE(m_fixture->shown(file), u"blue"_s);
    }

    void memoryIsBounded()
    {
        m_fixture->options().memory = 2'000'000;
        m_fixture->restart();
        QList<QUrl> files;
        for (int i = 0; i < 40; ++i)
            files.append(m_fixture->file(QByteArray::number(i) + ".jpg", ThumbnailFixture::jpeg(Qt::red)));
        m_fixture->make(files.mid(20), 256);
        m_fixture->make(files, 256); // 40 x 196,608 bytes
        qint64 bytes = 0;
        for (const QUrl &file : files) {
            const std::optional<BWThumbnail> thumbnail = m_fixture->thumbnails().thumbnail(file);
            bytes += thumbnail ? thumbnail->image.sizeInBytes() : 0;
        }
        QVERIFY2(bytes > 1'000'000 && bytes < 2'000'000, qPrintable(QString::number(bytes)));
        for (int i = 0; i < 5; ++i)
            QCOMPARE(m_fixture->shown(files.at(i)), u"red"_s);
    }

private:
    std::optional<ThumbnailFixture> m_fixture;
};

QTEST_GUILESS_MAIN(TestThumbnails)
#include "tst_BWThumbnails.moc"
