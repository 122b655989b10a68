// SPDX-License-Identifier: GPL-3.0-or-later
#include "Views/Utils/BWControls.h"
#include "Views/Utils/BWDoubleButton.h"
#include "Views/Utils/BWIcons.h"
#include "Views/Utils/BWLightTabView.h"

#include <array>
#include <QApplication>
#include <QMouseEvent>
#include <QTest>

using namespace Qt::StringLiterals;

namespace {

QFont fontOfSize(double points)
{
    QFont font;
    font.setPointSizeF(points);
    return font;
}

void setColors(QColor window, QColor text)
{
    QPalette palette(Qt::lightGray);
    palette.setColor(QPalette::Window, window);
    palette.setColor(QPalette::WindowText, text);
    palette.setColor(QPalette::Disabled, QPalette::WindowText, Qt::gray);
    QApplication::setPalette(palette);
}

/// Of all that is drawn; -1 without any.
int lightness(const QIcon &icon, QIcon::Mode mode = QIcon::Normal)
{
    const QImage image = icon.pixmap(QSize(22, 22), 2.0, mode).toImage();
    const QColor mean = image.scaled(1, 1, Qt::IgnoreAspectRatio, Qt::SmoothTransformation).pixelColor(0, 0);
    return mean.alpha() == 0 ? -1 : mean.lightness();
}

} // namespace

class TestBWControls : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase()
    {
        QApplication::setStyle(u"Fusion"_s);
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
        const int disabled = lightness(BWIcons::icon(u"brimwellpro-zoom-out"_s), QIcon::Disabled);
        QVERIFY2(qAbs(disabled - QColor(Qt::gray).lightness()) < 8, qPrintable(QString::number(disabled)));
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

    void pressesOnIconsAndTextReachTheButton()
    {
        BWDoubleButton button;
        button.setWidestText(u"200%"_s);
        button.setText(u"200%"_s);
        const QSize widest = button.sizeHint();
        button.setText(u"50%"_s);
        QCOMPARE(button.sizeHint(), widest); // a shorter text moves nothing
        button.show();
        QVERIFY(QTest::qWaitForWindowExposed(&button));
        QList<bool> right;
        connect(&button, &BWDoubleButton::triggered, this,
                [&right](BWDoubleButton *sender) { right << sender->lastRight(); });
        const int middle = button.width() / 2;
        const auto press = [&](int x, Qt::MouseButton mouse = Qt::LeftButton) { // too far apart for a double click
            QTest::mousePress(button.windowHandle(), mouse, {}, QPoint(x, button.height() / 2));
            const QList<bool> seen = right; // already at the press
            QTest::mouseRelease(button.windowHandle(), mouse, {}, QPoint(x, button.height() / 2));
            return seen;
        };
        press(3);
        press(middle + 5);
        press(middle - 5);
        QCOMPARE(press(button.width() - 3), QList<bool>({false, true, false, true}));
        press(3, Qt::RightButton);
        QCOMPARE(right.size(), 4);
        QMouseEvent second(QEvent::MouseButtonDblClick, QPointF(3, 3), button.mapToGlobal(QPointF(3, 3)),
                           Qt::LeftButton, Qt::LeftButton, Qt::NoModifier);
        QCoreApplication::sendEvent(&button, &second);
        QCOMPARE(right.size(), 5); // two fast presses are two steps
        button.setEnabled(false);
        press(3);
        QCOMPARE(right.size(), 5);
    }

    void keyboard()
    {
        BWDoubleButton button;
        button.show();
        button.activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(&button));
        button.setFocus();
        QString acted;
        connect(&button, &BWDoubleButton::triggered, this, [&] { acted += button.lastRight() ? u'R' : u'L'; });
        for (const Qt::Key key :
             {Qt::Key_Space, Qt::Key_Right, Qt::Key_Return, Qt::Key_Left, Qt::Key_Tab, Qt::Key_Enter})
            QTest::keyClick(QApplication::focusWidget(), key);
        QCOMPARE(acted, u"LRR"_s);
    }

    void labelShrinksToFit()
    {
        const QString text = u"Gegenlichtkompensation"_s;
        const QFontMetrics metrics(fontOfSize(16));
        const double wanted = metrics.horizontalAdvance(text);
        const double line = metrics.height();
        BWResizingTextField field;
        field.setStringValue(text);
        field.show();
        // of what the text wants in its own size: width, height; the smallest and the largest font that will do
        for (const auto &[own, width, height, least, most] :
             std::initializer_list<std::array<double, 5>>{{16, 0.9, 12 / line, 11, 15.9}, // one line in every size
                                                          {16, 0.2, 12 / line, 10, 10},
                                                          {16, 0.9, 1.2, 10, 15.9},
                                                          {16, 0.6, 2.1, 16, 16}, // two lines
                                                          {8, 0.6, 2.1, 8, 8}, // small by choice
                                                          {16, 2, 12 / line, 16, 16}}) {
            field.setFont(fontOfSize(own));
            field.resize(qRound(wanted * width), qRound(line * height));
            const double size = field.font().pointSizeF();
            QVERIFY2(size >= least && size <= most, qPrintable(QString::number(size)));
            QVERIFY(width < 0.9 || field.fontMetrics().horizontalAdvance(text) <= field.width());
        }
    }

    void buttonShrinksToFit()
    {
        BWResizingButton button;
        button.setFont(fontOfSize(18));
        button.setTitle(u"Werkseinstellungen"_s);
        button.show();
        const QSize wanted = button.sizeHint();
        button.resize(wanted.width() * 3 / 4, wanted.height() * 3); // height does not help a title
        QVERIFY(button.font().pointSizeF() < 18);
        QCOMPARE(button.sizeHint(), wanted); // the hint does not shrink along with the font
        button.resize(10, wanted.height());
        QCOMPARE(button.font().pointSizeF(), 10.0);
    }

    void dotMarksTheSelectedTab()
    {
        QCOMPARE(BWLightTabItem::dotRect(QRectF(50, 10, 40, 17)), QRectF(43, 17.5, 4, 4));

        BWLightTabBar bar;
        bar.addTab(u"Images"_s);
        bar.addTab(u"Videos"_s);
        bar.resize(bar.sizeHint());
        bar.setCurrentIndex(1);
        const QImage image = bar.grab().toImage();
        for (const int tab : {0, 1}) {
            const QRectF dot = BWLightTabItem::dotRect(bar.labelRect(tab));
            const QColor color = image.pixelColor(dot.center().toPoint());
            const bool green = color.green() > color.red() + 60 && color.green() > color.blue() + 30;
            const bool gray = color.hsvSaturation() < 40 && color.value() < 200;
            QVERIFY2(tab == 1 ? green : gray, qPrintable(color.name()));
        }
    }
};

QTEST_MAIN(TestBWControls)
#include "tst_BWControls.moc"
