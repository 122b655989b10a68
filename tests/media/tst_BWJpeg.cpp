#include "media/BWJpeg.h"
#include "MediaFixture.h"

#include <QImage>
#include <QTest>
#include <thread>
#include <vector>

using namespace MediaFixture;

namespace {

const uint8_t *bytes(const QByteArray &data)
{
    return reinterpret_cast<const uint8_t *>(data.constData());
}

QByteArray torn(QByteArray jpeg)
{
    for (qsizetype i = jpeg.size() / 2; i < jpeg.size() / 2 + 400; ++i)
        jpeg[i] = char(i * 37 + 11);
    return jpeg;
}

} // namespace

class TestJpeg : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void recognisesDamage_data();
    void recognisesDamage();
    void readsOnlyHeaderAndTail();
    void insertsTheStandardTables();
    void leavesOtherBytesAlone_data();
    void leavesOtherBytesAlone();
    void encodesColours_data();
    void encodesColours();
    void encodesAs422();
    void refusesWhatIsNoRawFrame_data();
    void refusesWhatIsNoRawFrame();
    void encodesOnManyThreads();
};

void TestJpeg::recognisesDamage_data()
{
    QTest::addColumn<QByteArray>("data");
    QTest::addColumn<bool>("complete");
    QTest::addColumn<bool>("clean");

    const QByteArray jpeg = detailedJpeg(320, 240);
    const qsizetype scan = jpeg.indexOf("\xff\xda");
    QByteArray noFrameHeader = jpeg;
    const qsizetype frameHeader = noFrameHeader.indexOf("\xff\xc0");
    noFrameHeader.remove(frameHeader, 2 + (uint8_t(jpeg[frameHeader + 2]) << 8 | uint8_t(jpeg[frameHeader + 3])));

    QTest::newRow("whole") << jpeg << true << true;
    QTest::newRow("without tables") << withoutHuffmanTables(jpeg) << true << true;
    QTest::newRow("padded") << jpeg + QByteArray(3, '\0') << true << true;
    QTest::newRow("padded by a large buffer") << jpeg + QByteArray(200'000, '\0') << true << true;
    QTest::newRow("torn in the middle") << torn(jpeg) << true << false;
    QTest::newRow("second half missing") << jpeg.left(jpeg.size() / 2) << false << false;
    QTest::newRow("second half zero") << jpeg.left(jpeg.size() / 2) + QByteArray(jpeg.size() / 2, '\0') << false
                                      << false;
    QTest::newRow("end marker missing") << jpeg.chopped(2) << false << false;
    QTest::newRow("headers only") << jpeg.left(scan) + "\xff\xd9" << false << false;
    QTest::newRow("cut within a header") << jpeg.left(40) + "\xff\xd9" << false << false;
    QTest::newRow("no frame header") << noFrameHeader << false << false;
    QTest::newRow("begins in the middle") << jpeg.mid(2) << false << false;
    QTest::newRow("only markers") << QByteArray("\xff\xd8\xff\xd9") << false << false;
    QTest::newRow("zeros") << QByteArray(1000, '\0') << false << false;
    QTest::newRow("nothing") << QByteArray() << false << false;
}

void TestJpeg::recognisesDamage()
{
    QFETCH(QByteArray, data);
    QTEST(BWJpeg::looksComplete(bytes(data), size_t(data.size())), "complete");
    QTEST(BWJpeg::decodesCleanly(bytes(data), size_t(data.size())), "clean");
}

void TestJpeg::readsOnlyHeaderAndTail()
{
    // Megabytes that look like one endless header, or like endless padding, are not looked through.
    const QByteArray fill = "\xff\xd8" + QByteArray(64 << 20, '\xff');
    const QByteArray padded = detailedJpeg(32, 32) + QByteArray(64 << 20, '\0');
    QElapsedTimer timer;
    timer.start();
    QVERIFY(!BWJpeg::looksComplete(bytes(fill), size_t(fill.size())));
    QVERIFY(!BWJpeg::looksComplete(bytes(padded), size_t(padded.size())));
    QVERIFY2(timer.elapsed() < 60, "megabytes were scanned");
}

void TestJpeg::insertsTheStandardTables()
{
    const QByteArray jpeg = detailedJpeg(160, 120);
    const QByteArray bare = withoutHuffmanTables(jpeg);
    QVERIFY(BWJpeg::hasHuffmanTables(bytes(jpeg), size_t(jpeg.size())));
    QVERIFY(!BWJpeg::hasHuffmanTables(bytes(bare), size_t(bare.size())));

    const QByteArray padded = bare + QByteArray(100, '\0');
    const QByteArray completed = BWJpeg::withHuffmanTables(bytes(padded), size_t(padded.size()));
    QCOMPARE(huffmanTablesOf(completed), huffmanTablesOf(jpeg)); // those that the encoder's authors wrote down
    QCOMPARE(withoutHuffmanTables(completed), bare);
    QCOMPARE(QImage::fromData(completed), QImage::fromData(jpeg));
}

void TestJpeg::leavesOtherBytesAlone_data()
{
    QTest::addColumn<QByteArray>("data");
    QTest::addColumn<QByteArray>("expected");
    const QByteArray jpeg = detailedJpeg(160, 120);
    QTest::newRow("with tables") << jpeg << jpeg;
    QTest::newRow("with tables, padded") << jpeg + QByteArray(77, '\0') << jpeg;
    QTest::newRow("no JPEG") << QByteArray("something else\0\0", 16) << QByteArray("something else\0\0", 16);
    QTest::newRow("nothing") << QByteArray("") << QByteArray("");
}

void TestJpeg::leavesOtherBytesAlone()
{
    QFETCH(QByteArray, data);
    QTEST(BWJpeg::withHuffmanTables(bytes(data), size_t(data.size())), "expected");
}

void TestJpeg::encodesColours_data()
{
    QTest::addColumn<BWPixelFormat>("format");
    QTest::addColumn<BWColorMatrix>("matrix");
    QTest::addColumn<BWColorRange>("range");
    QTest::addColumn<QSize>("size");

    const std::vector<std::pair<const char *, BWPixelFormat>> formats{{"YUYV", BWPixelFormat::YUYV},
                                                                      {"UYVY", BWPixelFormat::UYVY},
                                                                      {"NV12", BWPixelFormat::NV12},
                                                                      {"YU12", BWPixelFormat::YU12},
                                                                      {"GREY", BWPixelFormat::GREY}};
    for (const auto &[name, format] : formats) {
        for (const BWColorMatrix matrix : {BWColorMatrix::BT601, BWColorMatrix::BT709}) {
            for (const BWColorRange range : {BWColorRange::Limited, BWColorRange::Full}) {
                for (const QSize size : {QSize(64, 48), QSize(67, 45)}) {
                    QTest::addRow("%s %s %s %d", name, matrix == BWColorMatrix::BT601 ? "601" : "709",
                                  range == BWColorRange::Full ? "full" : "limited", size.width())
                        << format << matrix << range << size;
                }
            }
        }
    }
    for (const QSize size : {QSize(64, 48), QSize(67, 45)}) {
        QTest::addRow("RGB24 %d", size.width())
            << BWPixelFormat::RGB24 << BWColorMatrix::BT601 << BWColorRange::Full << size;
        QTest::addRow("BGR24 %d", size.width())
            << BWPixelFormat::BGR24 << BWColorMatrix::BT601 << BWColorRange::Full << size;
    }
}

void TestJpeg::encodesColours()
{
    QFETCH(BWPixelFormat, format);
    QFETCH(BWColorMatrix, matrix);
    QFETCH(BWColorRange, range);
    QFETCH(QSize, size);

    const std::vector<std::pair<QColor, QColor>> pairs{
        {Qt::red, Qt::blue}, {Qt::green, Qt::black}, {Qt::white, QColor(225, 165, 140)}};
    for (auto [left, right] : pairs) {
        const BWFrame frame = twoColourFrame(format, size.width(), size.height(), left, right, matrix, range);
        const QImage image = QImage::fromData(BWJpeg::encode(frame, 95), "JPEG");
        QCOMPARE(image.size(), size);
        if (format == BWPixelFormat::GREY) {
            const auto grey = [&](QColor c) {
                const bool old = matrix == BWColorMatrix::BT601;
                const int y = int(std::lround((old ? 0.299 : 0.2126) * c.red() + (old ? 0.587 : 0.7152) * c.green()
                                              + (old ? 0.114 : 0.0722) * c.blue()));
                return QColor(y, y, y);
            };
            left = grey(left);
            right = grey(right);
        }
        const auto distance = [](QColor a, QColor b) {
            return std::max(
                {std::abs(a.red() - b.red()), std::abs(a.green() - b.green()), std::abs(a.blue() - b.blue())});
        };
        constexpr int tolerance = 5; // of 8-bit YUV and quality 95
        const QColor shownLeft = image.pixelColor(size.width() / 4, size.height() / 2);
        const QColor shownRight = image.pixelColor(size.width() - 1, size.height() - 1);
        QVERIFY2(distance(shownLeft, left) <= tolerance, qPrintable(shownLeft.name() + left.name()));
        QVERIFY2(distance(shownRight, right) <= tolerance, qPrintable(shownRight.name() + right.name()));
    }
}

void TestJpeg::encodesAs422()
{
    const BWFrame frame =
        twoColourFrame(BWPixelFormat::NV12, 64, 48, Qt::red, Qt::blue, BWColorMatrix::BT601, BWColorRange::Limited);
    const QByteArray jpeg = BWJpeg::encode(frame, 95);
    const qsizetype header = jpeg.indexOf("\xff\xc0");
    QCOMPARE(uint8_t(jpeg[header + 11]), uint8_t(0x21)); // luma sampled twice as often across, as often down
    QCOMPARE(uint8_t(jpeg[header + 14]), uint8_t(0x11));
}

void TestJpeg::refusesWhatIsNoRawFrame_data()
{
    QTest::addColumn<BWFrame>("frame");
    const auto damaged = [](BWPixelFormat format, auto damage) {
        const BWFrame whole =
            twoColourFrame(format, 64, 48, Qt::red, Qt::blue, BWColorMatrix::BT601, BWColorRange::Limited);
        BWFrameInfo info = whole.info();
        damage(info);
        return BWFrame(info, [whole] {});
    };
    QTest::newRow("null") << BWFrame();
    QTest::newRow("MJPEG") << jpegFrame(detailedJpeg(64, 48), 64, 48, {});
    QTest::newRow("too short") << damaged(BWPixelFormat::YUYV, [](BWFrameInfo &i) { i.planes[0].size -= 100; });
    QTest::newRow("stride too small") << damaged(BWPixelFormat::YUYV, [](BWFrameInfo &i) { i.planes[0].stride = 64; });
    QTest::newRow("plane missing") << damaged(BWPixelFormat::NV12, [](BWFrameInfo &i) { i.planes[1] = {}; });
    QTest::newRow("chroma short") << damaged(BWPixelFormat::YU12, [](BWFrameInfo &i) { i.planes[2].size /= 2; });
    QTest::newRow("no size") << damaged(BWPixelFormat::GREY, [](BWFrameInfo &i) { i.height = 0; });
}

void TestJpeg::refusesWhatIsNoRawFrame()
{
    QFETCH(BWFrame, frame);
    QTest::ignoreMessage(QtWarningMsg, QRegularExpression(QStringLiteral("cannot be encoded")));
    QVERIFY(BWJpeg::encode(frame, 95).isNull());
}

void TestJpeg::encodesOnManyThreads()
{
    const BWFrame small =
        twoColourFrame(BWPixelFormat::YUYV, 64, 48, Qt::red, Qt::blue, BWColorMatrix::BT601, BWColorRange::Limited);
    const BWFrame large =
        twoColourFrame(BWPixelFormat::NV12, 320, 240, Qt::green, Qt::gray, BWColorMatrix::BT709, BWColorRange::Full);
    const QByteArray smallJpeg = BWJpeg::encode(small, 90);
    const QByteArray largeJpeg = BWJpeg::encode(large, 90);
    std::atomic<int> same = 0;
    std::vector<std::jthread> threads;
    for (int thread = 0; thread < 4; ++thread) {
        threads.emplace_back([&] {
            for (int i = 0; i < 25; ++i)
                same += BWJpeg::encode(small, 90) == smallJpeg && BWJpeg::encode(large, 90) == largeJpeg
                    && BWJpeg::decodesCleanly(bytes(largeJpeg), size_t(largeJpeg.size()));
        });
    }
    threads.clear();
    QCOMPARE(same.load(), 100);
}

QTEST_GUILESS_MAIN(TestJpeg)
#include "tst_BWJpeg.moc"
