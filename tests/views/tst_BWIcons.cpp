#include "Views/Utils/BWIcons.h"

#include <QApplication>
#include <QTest>

using namespace Qt::StringLiterals;

namespace {

QPalette paletteOf(QColor window, QColor text)
{
    QPalette palette;
    palette.setColor(QPalette::Window, window);
    palette.setColor(QPalette::WindowText, text);
    palette.setColor(QPalette::Disabled, QPalette::WindowText, Qt::gray);
    return palette;
}

/// Mean lightness of the opaque pixels; -1 without any.
int lightness(const QIcon &icon, QIcon::Mode mode = QIcon::Normal)
{
    const QImage image = icon.pixmap(QSize(22, 22), 2.0, mode).toImage();
    int sum = 0;
    int count = 0;
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x) {
            if (qAlpha(image.pixel(x, y)) < 250)
                continue;
            sum += image.pixelColor(x, y).lightness();
            ++count;
        }
    }
    return count == 0 ? -1 : sum / count;
}

} // namespace

class TestBWIcons : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase()
    {
        QApplication::setPalette(paletteOf(Qt::white, Qt::black));
        BWIcons::install(*qApp);
    }

    void oneIconFollowsThePalette_data()
    {
        QTest::addColumn<QString>("name");
        for (const char *name : {"brimwellpro-zoom-in", "brimwellpro-albums", "configure", "zoom-in"})
            QTest::newRow(name) << QString::fromLatin1(name);
    }
    void oneIconFollowsThePalette()
    {
        QFETCH(QString, name);
        const QIcon icon = BWIcons::icon(name);
        QApplication::setPalette(paletteOf(Qt::black, Qt::white));
        const int onDark = lightness(icon);
        QApplication::setPalette(paletteOf(Qt::white, Qt::black));
        const int onLight = lightness(icon);
        QVERIFY2(onDark > 180, qPrintable(QString::number(onDark)));
        QVERIFY2(onLight >= 0 && onLight < 80, qPrintable(QString::number(onLight)));
    }

    void disabledIconIsGray()
    {
        QCOMPARE(lightness(BWIcons::icon(u"brimwellpro-zoom-out"_s), QIcon::Disabled), QColor(Qt::gray).lightness());
    }

    void imagesAreSharpAtScaleTwo_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<int>("size");
        QTest::newRow("record") << u"record.png"_s << 32;
        QTest::newRow("stop") << u"stop.png"_s << 32;
        QTest::newRow("cursor") << u"camera_cursor.png"_s << 32;
        QTest::newRow("green dot") << u"green_tab_002.png"_s << 4;
        QTest::newRow("grey dot") << u"gray_tab_002.png"_s << 4;
    }
    void imagesAreSharpAtScaleTwo()
    {
        QFETCH(QString, name);
        QFETCH(int, size);
        for (const int scale : {1, 2})
            QCOMPARE(BWIcons::image(name).pixmap(QSize(size, size), scale).size(), QSize(size, size) * scale);
    }

    void applicationIconHasAllSizes()
    {
        QVERIFY(BWIcons::applicationIcon().availableSizes().contains(QSize(256, 256)));
        QCOMPARE(BWIcons::applicationIcon().pixmap(QSize(48, 48), 1.0).size(), QSize(48, 48));
    }

    void unknownNameIsNull() { QVERIFY(BWIcons::icon(u"brimwellpro-no-such-icon"_s).isNull()); }
};

QTEST_MAIN(TestBWIcons)
#include "tst_BWIcons.moc"
