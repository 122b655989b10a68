#include "Views/Utils/BWIcons.h"

#include <QApplication>
#include <QDir>
#include <QTemporaryDir>
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

    QTemporaryDir m_themes;

private Q_SLOTS:
    void initTestCase()
    {
        addTheme(u"breeze"_s, "#202020");
        addTheme(u"breeze-dark"_s, "#f0f0f0");
        QIcon::setThemeSearchPaths({m_themes.path()});
        QApplication::setPalette(paletteOf(Qt::white, Qt::black));
        BWIcons::install(*qApp);
    }

    void oneIconFollowsThePalette_data()
    {
        QTest::addColumn<QString>("name");
        for (const char *name : {"brimwellpro-zoom-in", "brimwellpro-albums", "configure"})
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

private:
    /// An icon theme with one icon, a square in one colour.
    void addTheme(const QString &name, const QByteArray &color)
    {
        const QDir folder(m_themes.path());
        QVERIFY(folder.mkpath(name + u"/22"_s));
        write(folder.filePath(name + u"/index.theme"_s),
              "[Icon Theme]\nName=Test\nDirectories=22\n[22]\nSize=22\nType=Scalable\n");
        write(folder.filePath(name + u"/22/configure.svg"_s),
              "<svg xmlns='http://www.w3.org/2000/svg' viewBox='0 0 22 22'><path fill='" + color
                  + "' d='M2 2h18v18h-18z'/></svg>");
    }

    static void write(const QString &path, const QByteArray &content)
    {
        QFile file(path);
        QVERIFY(file.open(QIODevice::WriteOnly));
        QCOMPARE(file.write(content), content.size());
    }
};

QTEST_MAIN(TestBWIcons)
#include "tst_BWIcons.moc"
