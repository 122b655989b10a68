#include "Views/Utils/BWIcons.h"

#include <QApplication>
#include <QTest>

using namespace Qt::StringLiterals;

namespace {

void setColors(QColor window, QColor text)
{
    QPalette palette;
    palette.setColor(QPalette::Window, window);
    palette.setColor(QPalette::WindowText, text);
    palette.setColor(QPalette::Disabled, QPalette::WindowText, Qt::gray);
    QApplication::setPalette(palette);
}

/// Mean lightness of the opaque pixels; -1 without any.
int lightness(const QIcon &icon, QIcon::Mode mode = QIcon::Normal)
{
    const QImage image = icon.pixmap(QSize(22, 22), 2.0, mode).toImage();
    int sum = 0;
    int count = 0;
    for (int i = 0; i < image.width() * image.height(); ++i) {
        const QColor color = image.pixelColor(i % image.width(), i / image.width());
        sum += color.alpha() < 250 ? 0 : color.lightness();
        count += color.alpha() < 250 ? 0 : 1;
    }
    return count == 0 ? -1 : sum / count;
}

} // namespace

class TestBWIcons : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase()
    {
        setColors(Qt::white, Qt::black);
        BWIcons::install(*qApp);
    }

    void iconsFollowThePalette()
    {
        const QIcon icon = BWIcons::icon(u"brimwellpro-zoom-in"_s);
        setColors(Qt::black, Qt::white);
        QVERIFY(lightness(icon) > 180);
        QCOMPARE(QIcon::fallbackThemeName(), u"breeze-dark"_s);
        setColors(Qt::white, Qt::black);
        QVERIFY(lightness(icon) >= 0 && lightness(icon) < 80);
        QCOMPARE(QIcon::fallbackThemeName(), u"breeze"_s);
        QCOMPARE(lightness(BWIcons::icon(u"brimwellpro-zoom-out"_s), QIcon::Disabled), QColor(Qt::gray).lightness());
        QVERIFY(BWIcons::icon(u"brimwellpro-no-such-icon"_s).isNull());
    }

    void imagesAreSharpAtScaleTwo()
    {
        for (const QString &name :
             {u"record.png"_s, u"stop.png"_s, u"camera_cursor.png"_s, u"green_tab_002.png"_s, u"gray_tab_002.png"_s}) {
            const QSize size = name.contains(u"tab"_s) ? QSize(4, 4) : QSize(32, 32);
            QCOMPARE(BWIcons::image(name).pixmap(size, 1).size(), size);
            QCOMPARE(BWIcons::image(name).pixmap(size, 2).size(), size * 2);
        }
        QVERIFY(BWIcons::applicationIcon().availableSizes().contains(QSize(256, 256)));
        QCOMPARE(BWIcons::applicationIcon().pixmap(QSize(48, 48), 1.0).size(), QSize(48, 48));
    }
};

QTEST_MAIN(TestBWIcons)
#include "tst_BWIcons.moc"
