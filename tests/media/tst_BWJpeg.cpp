// SPDX-License-Identifier: GPL-3.0-or-later
#include "BWACUDriver/BWJpegHeader.h"
#include "BWACUDriver/BWStill.h"
#include "media/BWJpeg.h"
#include "media/BWYuvPlanes.h"
#include "MediaFixture.h"
#include "Rows.h"
#include "TestFrames.h"

#include <cstring>
#include <QImage>
#include <QRegularExpression>
#include <QTest>
#include <sys/mman.h>
#include <thread>
#include <vector>

using namespace MediaFixture;

namespace {

const uint8_t *bytes(const QByteArray &data)
{
    return reinterpret_cast<const uint8_t *>(data.constData());
}

QByteArray completed(const QByteArray &data)
{
    return BWJpeg::withHuffmanTables(bytes(data), size_t(data.size()));
}

QByteArray torn(QByteArray jpeg)
{
    for (qsizetype i = jpeg.size() / 2; i < jpeg.size() / 2 + 400; ++i)
        jpeg[i] = char(i * 37 + 11);
    return jpeg;
}

BWFrame redAndBlue(BWPixelFormat format)
{
    return TestFrames::twoColours(format, {64, 48}, Qt::red, Qt::blue);
}

int distance(QColor a, QColor b)
{
    return std::max({std::abs(a.red() - b.red()), std::abs(a.green() - b.green()), std::abs(a.blue() - b.blue())});
}

} // namespace

class TestJpeg : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void recognisesDamage_data()
    {
        const Rows<QByteArray, bool, bool> row; // whether it looks complete, and can be decoded without a complaint
        const QByteArray jpeg = detailedJpeg(320, 240);
        const qsizetype half = jpeg.size() / 2;
        const qsizetype frameHeader = jpeg.indexOf("\xff\xc0");
        QByteArray noFrameHeader = jpeg;
        noFrameHeader.remove(frameHeader, 2 + (uint8_t(jpeg[frameHeader + 2]) << 8 | uint8_t(jpeg[frameHeader + 3])));

        row("whole", jpeg, true, true);
        row("without tables", withoutHuffmanTables(jpeg), true, true);
        row("padded by a large buffer", jpeg + QByteArray(200'000, '\0'), true, true);
        row("torn in the middle", torn(jpeg), true, false);
        QByteArray noQuantization = jpeg;
        noQuantization[noQuantization.indexOf("\xff\xdb") + 3] = 9; // shorter than a table is
        row("torn table", noQuantization, false, false);
        row("second half zero", jpeg.left(half) + QByteArray(half, '\0'), false, false);
        row("end marker missing", jpeg.chopped(2), false, false);
        row("headers only", jpeg.left(jpeg.indexOf("\xff\xda")) + "\xff\xd9", false, false);
        row("no frame header", noFrameHeader, false, false);
        row("only markers", "\xff\xd8\xff\xd9", false, false);
        row("nothing", {}, false, false);
    }

    void recognisesDamage()
    {
        const auto [data, complete, clean] = Rows<QByteArray, bool, bool>::current();
        QCOMPARE(BWJpeg::looksComplete(bytes(data), size_t(data.size())), complete);
        QCOMPARE(BWJpeg::decodesCleanly(bytes(data), size_t(data.size())), clean);
        const QByteArray good = detailedJpeg(320, 240);
        QVERIFY2(BWJpeg::decodesCleanly(bytes(good), size_t(good.size())), "the next one has nothing to do with it");
    }

    void readsOnlyHeaderAndTail()
    {
        // Megabytes that look like one endless header, or like endless padding, are not looked through: who does, crashes.
        constexpr std::size_t size = 64 << 20;
        constexpr std::size_t edge = 1 << 20;
        void *memory = mmap(nullptr, size, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
        QVERIFY(memory != MAP_FAILED && mprotect(static_cast<char *>(memory) + edge, size - 2 * edge, PROT_NONE) == 0);
        const auto *data = static_cast<const uint8_t *>(memory);
        std::memset(memory, 0xff, edge);
        std::memcpy(memory, "\xff\xd8", 2);
        QVERIFY(!BWJpeg::looksComplete(data, size));
        const QByteArray jpeg = detailedJpeg(32, 32);
        std::memcpy(memory, jpeg.constData(), size_t(jpeg.size()));
        QVERIFY(!BWJpeg::looksComplete(data, size));
        munmap(memory, size);
    }

    void insertsMissingTablesAndNothingElse()
    {
        const QByteArray jpeg = detailedJpeg(160, 120);
        const QByteArray bare = withoutHuffmanTables(jpeg);
        QVERIFY(BWJpegHeader(bytes(jpeg), size_t(jpeg.size())).hasHuffmanTables());
        QVERIFY(!BWJpegHeader(bytes(bare), size_t(bare.size())).hasHuffmanTables());

        const QByteArray whole = completed(bare + QByteArray(100, '\0'));
        QCOMPARE(withoutHuffmanTables(whole), bare);
        QCOMPARE(QImage::fromData(whole), QImage::fromData(jpeg));

        QCOMPARE(completed(jpeg + QByteArray(77, '\0')), jpeg);
        for (const QByteArray &other : {jpeg, QByteArray("something else\0\0", 16), QByteArray("")})
            QCOMPARE(completed(other), other);
    }

    void encodesColours()
    {
        constexpr int tolerance = 5; // of 8-bit YUV and quality 95
        const auto check = [](BWPixelFormat format, BWColorMatrix matrix, BWColorRange range, QSize size, QColor left,
                              QColor right) {
            const BWFrame frame = TestFrames::twoColours(format, size, left, right, matrix, range);
            const QByteArray jpeg = BWJpeg::encode(frame, 95);
            BWYuvPlanes planes;
            if (format != BWPixelFormat::GREY && BWYuvConvert::toJpegPlanes(frame.info(), planes)) {
                const BWJpeg::Bytes whole = BWJpeg::compress(planes, 95); // frames are encoded some rows at a time
                QVERIFY(std::equal(whole.begin(), whole.end(), bytes(jpeg), bytes(jpeg) + jpeg.size()));
            }
            const QImage image = QImage::fromData(jpeg, "JPEG");
            QCOMPARE(image.size(), size);
            const auto expected = [&](QColor c) {
                if (format != BWPixelFormat::GREY)
                    return c;
                const auto y = uint8_t(TestFrames::component('Y', c, matrix, BWColorRange::Full));
                return QColor(y, y, y);
            };
            const QColor shownLeft = image.pixelColor(size.width() / 4, size.height() / 2);
            const QColor shownRight = image.pixelColor(size.width() - 1, size.height() - 1);
            QVERIFY2(distance(shownLeft, expected(left)) <= tolerance, qPrintable(shownLeft.name() + left.name()));
            QVERIFY2(distance(shownRight, expected(right)) <= tolerance, qPrintable(shownRight.name() + right.name()));
        };
        using Format = BWPixelFormat;
        for (const Format format :
             {Format::YUYV, Format::UYVY, Format::NV12, Format::YU12, Format::GREY, Format::RGB24, Format::BGR24}) {
            for (const BWColorMatrix matrix : {BWColorMatrix::BT601, BWColorMatrix::BT709}) {
                for (const BWColorRange range : {BWColorRange::Limited, BWColorRange::Full}) {
                    check(format, matrix, range, {64, 48}, Qt::red, Qt::blue);
                    check(format, matrix, range, {67, 45}, Qt::green, Qt::black);
                    check(format, matrix, range, {67, 45}, Qt::white, QColor(225, 165, 140));
                }
            }
        }
    }

    void refusesWhatIsNoRawFrame()
    {
        const BWFrame whole = redAndBlue(BWPixelFormat::NV12);
        BWFrameInfo info = whole.info();
        info.planes[1].size /= 2;
        const BWFrame frames[] = {BWFrame(), jpegFrame(detailedJpeg(64, 48), 64, 48, {}), BWFrame(info, [whole] {})};
        for (const BWFrame &frame : frames) {
            QTest::ignoreMessage(QtWarningMsg, QRegularExpression(QStringLiteral("cannot be encoded")));
            QVERIFY2(BWJpeg::encode(frame, 95).isNull(), qPrintable(QString::number(&frame - frames)));
        }
    }

    void copyHoldsNoBufferOfTheDevice()
    {
        using Format = BWPixelFormat;
        for (const Format format : {Format::YUYV, Format::UYVY, Format::NV12, Format::YU12, Format::GREY, Format::RGB24,
                                    Format::BGR24, Format::XBGR32, Format::MJPEG}) {
            const BWFrame picture = format == Format::MJPEG
                ? jpegFrame(detailedJpeg(64, 48), 64, 48, {})
                : TestFrames::twoColours(format, {67, 45}, Qt::red, Qt::blue, BWColorMatrix::BT709, BWColorRange::Full);
            BWFrameInfo info = picture.info();
            info.sequence = 7;
            bool released = false;
            const BWFrame copy = BWFrame(info, [&released] { released = true; }).copied();
            QVERIFY(released && copy.sequence() == 7 && copy.info().matrix == info.matrix);
            for (int i = 0; i < 3; ++i) {
                const BWPlane &from = picture.plane(i);
                const BWPlane &to = copy.plane(i);
                QVERIFY(to.stride == from.stride && to.size == from.size && (!to.data || to.data != from.data));
                QVERIFY(std::equal(to.data, to.data + to.size, from.data));
            }
            QCOMPARE(BWStill::jpegOf(copy), BWStill::jpegOf(picture));
        }
    }

    void stillIsTheFrameItself()
    {
        const QByteArray jpeg = detailedJpeg(320, 240);
        const auto still = [](const QByteArray &data) { return BWStill::jpegOf(jpegFrame(data, 320, 240, {})); };
        QCOMPARE(still(jpeg + QByteArray(77, '\0')), jpeg);
        QCOMPARE(still(withoutHuffmanTables(jpeg)), completed(withoutHuffmanTables(jpeg)));
        QVERIFY(still(torn(jpeg)).isNull() && BWStill::jpegOf({}).isNull());
    }

    void encodesOnManyThreads()
    {
        const BWFrame frames[] = {redAndBlue(BWPixelFormat::YUYV), redAndBlue(BWPixelFormat::NV12)};
        const QByteArray expected[] = {BWJpeg::encode(frames[0], 90), BWJpeg::encode(frames[1], 90)};
        std::atomic<int> same = 0;
        std::vector<std::jthread> threads;
        for (int thread = 0; thread < 4; ++thread) {
            threads.emplace_back([&] {
                for (int i = 0; i < 50; ++i)
                    same += BWJpeg::encode(frames[i % 2], 90) == expected[i % 2];
            });
        }
        threads.clear();
        QCOMPARE(same, 200);
    }
};

QTEST_GUILESS_MAIN(TestJpeg)
#include "tst_BWJpeg.moc"
