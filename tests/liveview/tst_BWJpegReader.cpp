// SPDX-License-Identifier: GPL-3.0-or-later
#include "Rows.h"
#include "TestJpeg.h"

#include "Model/LiveView/BWJpegCut.h"
#include "Model/LiveView/BWJpegReader.h"

#include <QtEndian>
#include <QTest>
#include <turbojpeg.h>

namespace {

const uint8_t *bytesOf(const QByteArray &jpeg)
{
    return reinterpret_cast<const uint8_t *>(jpeg.constData());
}

struct Part {
    QRect area;
    int goodRows = -1;
    QImage pixels;
};

Part read(BWJpegReader &reader, const QByteArray &jpeg, int divisor, const QRect &part, bool toTheEnd = false)
{
    if (!reader.open(bytesOf(jpeg), std::size_t(jpeg.size())))
        return {};
    Part result{reader.decodable(part, divisor), 0, {}};
    // Memory behind the rows that must stay as it is.
    QImage target(result.area.width() + 3, result.area.height() + 1, QImage::Format_RGB32);
    target.fill(Qt::magenta);
    result.goodRows = reader.read(result.area, divisor, target.bits(), int(target.bytesPerLine()), toTheEnd);
    for (int y = 0; y < target.height(); ++y)
        for (int x = y < result.area.height() ? result.area.width() : 0; x < target.width(); ++x)
            if (target.pixelColor(x, y) != Qt::magenta)
                return {};
    result.pixels = target.copy(QRect(QPoint(0, 0), result.area.size()));
    return result;
}

/// What TurboJPEG makes of the whole picture.
QImage reference(const QByteArray &jpeg, QSize size)
{
    QImage image(size, QImage::Format_RGB32);
    tjhandle handle = tjInitDecompress();
    tjDecompress2(handle, bytesOf(jpeg), static_cast<unsigned long>(jpeg.size()), image.bits(), size.width(),
                  int(image.bytesPerLine()), size.height(), TJPF_BGRA, TJFLAG_FASTUPSAMPLE);
    tjDestroy(handle);
    return image;
}

int largestDifference(const QImage &a, const QImage &b)
{
    int largest = 0;
    for (qsizetype i = 0; i < a.sizeInBytes(); ++i)
        largest = std::max(largest, std::abs(a.constBits()[i] - b.constBits()[i]));
    return largest;
}

} // namespace

class TestJpegReader : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void parts_data()
    {
        const Rows<QSize, TestJpeg::Options> row;
        const QSize odd(211, 157);
        row("4:2:0", odd, {2, 2});
        row("4:2:2", odd, {2, 1});
        row("4:4:4", odd, {1, 1});
        row("4:4:0", odd, {1, 2});
        row("4:1:1", odd, {4, 1});
        row("grey", odd, {1, 1, true});
        row("grey with needless factors", odd, {2, 2, true});
        row("restart markers", odd, {2, 1, false, 1});
        row("progressive", odd, {2, 2, false, 0, true});
        row("no Huffman tables", odd, {2, 1, false, 0, false, false});
        row("whole blocks", {192, 160}, {2, 2});
        row("one column into a block", {129, 97}, {2, 2});
        row("as narrow as two pixels", {2, 150}, {2, 1});
        row("smaller than a block", {5, 3}, {2, 2});
        row("one pixel", {1, 1}, {2, 2});
    }
    void parts()
    {
        const auto [size, options] = Rows<QSize, TestJpeg::Options>::current();
        const QByteArray jpeg = TestJpeg::encode(TestJpeg::noise(size, 1), options);
        std::mt19937 random(2);
        BWJpegReader reader;
        for (const int divisor : {1, 2, 4, 8}) {
            QVERIFY(reader.open(bytesOf(jpeg), std::size_t(jpeg.size())));
            const QRect all(QPoint(0, 0), reader.size(divisor));
            const Part whole = read(reader, jpeg, divisor, all);
            QCOMPARE(whole.area, all);
            QCOMPARE(whole.goodRows, all.height());
            QVERIFY(largestDifference(whole.pixels, reference(jpeg, all.size())) <= 1);
            for (int i = 0; i < 60; ++i) {
                const auto place = [&](int length) { return int(random() % unsigned(length)); };
                QRect part(place(all.width()), place(all.height()), 1 + place(90), 1 + place(70));
                if (i < 16) // along the edges
                    part.moveTo(i % 4 < 2 ? i % 4 : all.right() - i % 2, i / 4 < 2 ? i / 4 : all.bottom() - i / 4 % 2);
                part &= all;
                if (part.isEmpty()) // in a picture of a few pixels
                    continue;
                const Part found = read(reader, jpeg, divisor, part, i % 2 == 0);
                QVERIFY(found.area.contains(part) && all.contains(found.area));
                QCOMPARE(found.goodRows, found.area.height());
                QVERIFY2(found.pixels == whole.pixels.copy(found.area),
                         qPrintable(QString::asprintf("1/%d, part %d", divisor, i)));
            }
        }
    }

    void cut_data()
    {
        const Rows<TestJpeg::Options, bool> row;
        row("4:2:0", {2, 2}, true);
        row("4:4:4", {1, 1}, true);
        row("grey", {1, 1, true}, true);
        row("no Huffman tables", {2, 1, false, 0, false, false}, true);
        row("grey with needless factors", {2, 2, true}, false);
        row("restart markers", {2, 1, false, 1}, false);
        row("progressive", {2, 2, false, 0, true}, false);
    }
    void cut() // what costs little, and not only looks right
    {
        const auto [options, possible] = Rows<TestJpeg::Options, bool>::current();
        QByteArray jpeg = TestJpeg::encode(TestJpeg::noise({200, 160}, 1), options);
        BWJpegCut cut;
        const auto make = [&](int rows, bool checked) {
            jpeg_decompress_struct info{};
            jpeg_error_mgr errors{};
            info.err = jpeg_std_error(&errors);
            jpeg_create_decompress(&info);
            jpeg_mem_src(&info, bytesOf(jpeg), static_cast<unsigned long>(jpeg.size()));
            jpeg_read_header(&info, TRUE);
            const bool made = cut.make(info, bytesOf(jpeg), std::size_t(jpeg.size()), rows, checked);
            jpeg_destroy_decompress(&info);
            return made;
        };
        QCOMPARE(make(3, false), possible);
        QCOMPARE(make(3, true), possible);
        QVERIFY(!make(0, false) && !make(20, false));
        if (possible
            && options.huffmanTables) { // whose DC table has a length that does not occur in a picture of 8 bits
            const qsizetype longest = jpeg.indexOf("\xff\xc4") + 32;
            const char before = std::exchange(jpeg[longest], 12);
            QVERIFY(!make(3, false));
            jpeg[longest] = before;
        }
        jpeg.insert(jpeg.size() - 2, "xx");
        QVERIFY(!make(3, true));
        jpeg.truncate(jpeg.size() / 2);
        QCOMPARE(make(3, false), possible);
        QVERIFY(!make(3, true) && !make(15 / options.vertical, false));
    }

    void damagedBits() // whatever they look like, a part shows what the whole picture does
    {
        const QSize size(160, 160);
        const QByteArray jpeg = TestJpeg::encode(TestJpeg::noise(size, 1), {2, 1});
        const auto seed = std::random_device()();
        std::mt19937 random(seed);
        BWJpegReader reader;
        for (int i = 0; i < 300; ++i) {
            QByteArray damaged = jpeg;
            const auto place = qsizetype(700 + random() % unsigned(jpeg.size() - 700));
            damaged[place] = static_cast<char>(damaged[place] ^ 1 << random() % 8);
            const int top = int(random() % 140);
            const Part whole = read(reader, damaged, 1, {0, 0, 160, 160});
            const Part part = read(reader, damaged, 1, {40, top, 60, 20}, i % 2 == 0);
            const int rows = std::min(part.goodRows, whole.goodRows - part.area.y());
            const QRect seen(part.area.x(), part.area.y(), part.area.width(), rows);
            QVERIFY2(rows <= 0 || part.pixels.copy(0, 0, seen.width(), rows) == whole.pixels.copy(seen),
                     qPrintable(QString::asprintf("seed %u, round %d", unsigned(seed), i)));
        }
    }

    void claimedSizes_data()
    {
        const Rows<QSize, bool, bool> row; // progressive, accepted
        row("large", {12'000, 8'000}, false, true);
        row("too large", {12'000, 9'000}, false, false);
        row("too long to be scaled", {32'768, 8}, false, false);
        row("too large to be held in memory", {8'000, 5'000}, true, false);
    }
    void claimedSizes()
    {
        const auto [size, progressive, accepted] = Rows<QSize, bool, bool>::current();
        QByteArray jpeg = TestJpeg::encode(TestJpeg::noise({8, 8}, 1), {1, 1, false, 0, progressive});
        const qsizetype header = jpeg.indexOf(progressive ? "\xff\xc2" : "\xff\xc0");
        qToBigEndian(quint16(size.height()), jpeg.data() + header + 5);
        qToBigEndian(quint16(size.width()), jpeg.data() + header + 7);
        QCOMPARE(BWJpegReader().open(bytesOf(jpeg), std::size_t(jpeg.size())), accepted);
    }

    void damage()
    {
        const QSize size(160, 160);
        const QByteArray jpeg = TestJpeg::encode(TestJpeg::noise(size, 1), {2, 2});
        BWJpegReader reader;
        const QImage good = read(reader, jpeg, 1, {0, 0, 160, 160}).pixels;
        const QByteArray torn = jpeg.first(jpeg.size() / 2);
        QCOMPARE(read(reader, torn, 1, {0, 0, 160, 60}).goodRows, 64); // it lies below
        QCOMPARE(read(reader, torn, 1, {0, 0, 160, 60}, true).goodRows, 0);
        const Part within = read(reader, torn, 1, {0, 0, 160, 120});
        QVERIFY(within.goodRows >= 60 && within.goodRows < 120);
        QCOMPARE(within.pixels.copy(0, 0, 160, within.goodRows), good.copy(0, 0, 160, within.goodRows));
        QCOMPARE(within.pixels.pixelColor(80, within.goodRows), QColor(128, 128, 128));
        QCOMPARE(read(reader, torn, 1, {0, 128, 160, 20}).goodRows, 0); // it lies above
        const QByteArray longer = QByteArray(jpeg).insert(jpeg.size() - 2, QByteArray(40, 'x'));
        QCOMPARE(read(reader, longer, 1, {0, 0, 160, 60}).goodRows, 64); // which shows only at the end
        QCOMPARE(read(reader, longer, 1, {0, 0, 160, 60}, true).goodRows, 0);
        QCOMPARE(read(reader, longer, 1, {0, 90, 160, 70}).goodRows, 0);
        QCOMPARE(read(reader, jpeg.first(100), 1, {0, 0, 160, 160}).goodRows, -1);
        QCOMPARE(read(reader, jpeg, 1, {0, 0, 160, 160}).pixels, good); // nothing of that is left
    }
};

QTEST_APPLESS_MAIN(TestJpegReader)
#include "tst_BWJpegReader.moc"
