// SPDX-License-Identifier: GPL-3.0-or-later
#include "BWManualClock.h"
#include "Model/Albums/BWStillLoader.h"
#include "Rows.h"
#include "ThumbnailFixture.h"

#include <functional>
#include <QBuffer>
#include <QImageReader>
#include <QImageWriter>
#include <QSignalSpy>
#include <QTest>
#include <sys/fsuid.h>
#include <unistd.h>
#include <utility>

using namespace Qt::StringLiterals;
using Problem = BWAlbumPicture::Problem;

namespace {

QByteArray encoded(const char *format, QImage::Format pixels, QColor colour, bool progressive = false)
{
    QImage image(QSize(64, 48), QImage::Format_ARGB32);
    image.fill(colour);
    QBuffer buffer;
    QImageWriter writer(&buffer, format);
    writer.setProgressiveScanWrite(progressive);
    writer.write(image.convertToFormat(pixels));
    return buffer.data();
}

QByteArray halfOf(const QByteArray &bytes)
{
    return bytes.left(bytes.size() / 2);
}

/// Does something when the next result is on its way, just before it is delivered.
class BeforeDelivery : public QObject {
public:
    explicit BeforeDelivery(std::function<void()> act) : m_act(std::move(act))
    {
        QCoreApplication::instance()->installEventFilter(this);
    }

protected:
    bool eventFilter(QObject *, QEvent *event) override
    {
        if (event->type() == QEvent::User && m_act)
            std::exchange(m_act, {})();
        return false;
    }

private:
    std::function<void()> m_act;
};

} // namespace

/// Pictures of an album as they are shown in full size, from real files.
class TestStillLoader : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init() { m_fixture.emplace(); }

    void filesBecomePictures_data()
    {
        const Rows<QByteArray, QByteArray, Problem, QString> row; // name, content, colour of the first pixel
        const QByteArray jpeg = ThumbnailFixture::jpeg(Qt::red);
        QByteArray claimsTooMuch = jpeg;
        claimsTooMuch.replace(claimsTooMuch.indexOf("\xff\xc0") + 5, 4, QByteArrayLiteral("\xea\x60\xea\x60"));
        QByteArray noise(20'000, '\0');
        std::generate(noise.begin(), noise.end(), [i = 0]() mutable { return char(i++ * 7919 >> 3); });
        row("JPEG", "a.jpg", jpeg, Problem::None, u"red"_s);
        row("progressive", "a.jpg", encoded("jpeg", QImage::Format_RGB32, Qt::red, true), Problem::None, u"red"_s);
        row("grey", "a.jpg", encoded("jpeg", QImage::Format_Grayscale8, Qt::white), Problem::None, u"white"_s);
        row("16 bits", "a.jpg", encoded("png", QImage::Format_RGBX64, Qt::blue), Problem::None, u"blue"_s);
        row("16 bits of grey", "a.jpg", encoded("png", QImage::Format_Grayscale16, Qt::white), Problem::None,
            u"white"_s);
        row("palette", "a.jpg", encoded("png", QImage::Format_Indexed8, Qt::yellow), Problem::None, u"yellow"_s);
        row("transparent", "a.jpg", encoded("png", QImage::Format_ARGB32, Qt::transparent), Problem::None,
            u"#a0a0a4"_s);
        row("truncated", "a.jpg", halfOf(jpeg), Problem::PartlyDamaged, u"red"_s);
        row("truncated, of another kind", "a.jpg", halfOf(encoded("png", QImage::Format_RGB32, Qt::red)),
            Problem::Damaged, {});
        row("only a header", "a.jpg", jpeg.left(20), Problem::Damaged, {});
        row("empty", "a.jpg", "", Problem::Empty, {});
        row("text", "a.jpg", "Dear diary", Problem::NotAPicture, {});
        row("drawing", "a.jpg", "<?xml version='1.0'?><svg xmlns='http://www.w3.org/2000/svg'/>", Problem::NotAPicture,
            {});
        row("noise", "a.jpg", noise, Problem::NotAPicture, {});
        row("noise for a movie", "a.mov", noise, Problem::NoMoviePicture, {});
        row("claims to be huge", "a.jpg", claimsTooMuch, Problem::TooLarge, {});
        row("claims to be huge, of another kind", "a.jpg", "P6 20000 20000 255\n", Problem::TooLarge, {});
        row("picture called a movie", "a.mov", jpeg, Problem::None, u"red"_s);
    }

    void filesBecomePictures()
    {
        const auto [name, content, problem, colour] = Rows<QByteArray, QByteArray, Problem, QString>::current();
        const BWAlbumPicture still = BWStillLoader::read(m_fixture->file(name, content));
        QCOMPARE(still.problem, problem);
        QCOMPARE(still.image.isNull(), colour.isNull());
        QCOMPARE(still.isMovie, problem == Problem::NoMoviePicture);
        if (colour.isNull())
            return;
        QCOMPARE(still.image.format(), QImage::Format_RGB32);
        QCOMPARE(ThumbnailFixture::nameOf(still.image.pixel(0, 0)), colour);
        if (problem == Problem::PartlyDamaged)
            QCOMPARE(ThumbnailFixture::nameOf(still.image.pixel(still.image.rect().bottomRight())), u"#808080"_s);
    }

    void whatIsNoFileHasAProblem()
    {
        QCOMPARE(BWStillLoader::read(m_fixture->url("nothing.jpg")).problem, Problem::Gone);
        QCOMPARE(::symlink("/dev/zero", m_fixture->path("device.jpg").constData()), 0);
        QCOMPARE(BWStillLoader::read(m_fixture->url("device.jpg")).problem, Problem::Unreadable);
        const QUrl secret = m_fixture->file("secret.jpg", ThumbnailFixture::jpeg(Qt::red));
        QVERIFY(QFile::setPermissions(secret.toLocalFile(), {}));
        ::setfsuid(65534); // to root nothing is secret
        const BWAlbumPicture still = BWStillLoader::read(secret);
        ::setfsuid(::geteuid());
        QCOMPARE(still.problem, Problem::Unreadable);
    }

    void picturesAreUpright()
    {
        QImage image(64, 32, QImage::Format_RGB32);
        for (int x = 0; x < image.width(); ++x) {
            for (int y = 0; y < image.height(); ++y)
                image.setPixelColor(x, y, QColor(4 * x, 8 * y, 128));
        }
        QBuffer plain;
        image.save(&plain, "jpg", 100);
        for (int orientation = 1; orientation <= 8; ++orientation) {
            QByteArray jpeg = ThumbnailFixture::withOrientation(plain.data(), orientation);
            const QImage still = BWStillLoader::read(m_fixture->file("a.jpg", jpeg)).image;
            QBuffer source(&jpeg);
            QImageReader reader(&source);
            reader.setAutoTransform(true);
            QCOMPARE(still, reader.read().convertToFormat(QImage::Format_RGB32));
        }
    }

    void movieShowsItsFirstPicture()
    {
        const QString file = QFile::decodeName(m_fixture->path("a.mov"));
        QVERIFY(ThumbnailFixture::run(u"ffmpeg"_s,
                                      {u"-v"_s, u"error"_s, u"-f"_s, u"lavfi"_s, u"-i"_s,
                                       u"color=blue:s=640x480:d=0.2"_s, u"-c:v"_s, u"mjpeg"_s, file}));
        const BWAlbumPicture still = BWStillLoader::read(m_fixture->url("a.mov"));
        QVERIFY(still.isMovie);
        QCOMPARE(still.image.size(), QSize(640, 480));
        QCOMPARE(ThumbnailFixture::nameOf(still.image.pixel(0, 0)), u"blue"_s);
    }

    void onlyTheNewestRequestCounts()
    {
        BWManualClock clock;
        BWStillLoader loader(clock);
        QSignalSpy slow(&loader, &BWStillLoader::takesLong);
        QStringList loaded;
        connect(&loader, &BWStillLoader::loaded, this,
                [&](const BWAlbumPicture &still) { loaded += still.file.fileName(); });
        for (const char *name : {"a.jpg", "b.jpg", "c.jpg"})
            loader.load(m_fixture->file(name, ThumbnailFixture::jpeg(Qt::red)));
        clock.advance(std::chrono::seconds(1)); // the result has not been delivered, whether it is there or not
        QCOMPARE(slow.size(), 1);
        QTRY_COMPARE(loaded, QStringList{u"c.jpg"_s});
        loader.load(m_fixture->url("a.jpg"));
        const BeforeDelivery newer([&] { loader.load(m_fixture->url("b.jpg")); });
        QTRY_VERIFY(loaded.size() > 1);
        clock.advance(std::chrono::seconds(1));
        QCOMPARE(slow.size(), 1);
        QCOMPARE(loaded, QStringList({u"c.jpg"_s, u"b.jpg"_s}));
    }

private:
    std::optional<ThumbnailFixture> m_fixture;
};

QTEST_GUILESS_MAIN(TestStillLoader)
#include "tst_BWStillLoader.moc"
