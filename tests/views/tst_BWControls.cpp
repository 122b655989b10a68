// SPDX-License-Identifier: GPL-3.0-or-later
#include "Rows.h"
#include "Views/Utils/BWColors.h"
#include "Views/Utils/BWControls.h"
#include "Views/Utils/BWControlStyle.h"
#include "Views/Utils/BWDoubleButton.h"
#include "Views/Utils/BWIcons.h"
#include "Views/Utils/BWLightTabView.h"

#include <array>
#include <functional>
#include <QApplication>
#include <QComboBox>
#include <QLineEdit>
#include <QMouseEvent>
#include <QPainter>
#include <QPushButton>
#include <QScopeGuard>
#include <QScrollArea>
#include <QSlider>
#include <QSpinBox>
#include <QTest>
#include <QVBoxLayout>

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

QImage painted(QColor ground, double ratio, const std::function<void(QPainter &)> &paint)
{
    QImage image(64, 64, QImage::Format_RGB32);
    image.setDevicePixelRatio(ratio);
    image.fill(ground);
    QPainter painter(&image);
    paint(painter);
    return image;
}

/// Of what stands out most.
double contrast(const QImage &image, QColor ground)
{
    double most = 1;
    for (int i = 0; i < image.width() * image.height(); ++i)
        most = qMax(most, BWColors::contrast(image.pixelColor(i % image.width(), i / image.width()), ground));
    return most;
}

} // namespace

class TestBWControls : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase()
    {
        QApplication::setStyle(u"Fusion"_s);
        setColors(Qt::white, Qt::black);
        QIcon::setThemeSearchPaths({u"/usr/share/icons"_s}); // a desktop would do that
        BWIcons::install(*qApp);
    }

    void mnemonicChoosesAtOnce()
    {
        QWidget window;
        BWRadioButton first(u"&First"_s, &window), second(u"&Second"_s, &window);
        first.setChecked(true);
        window.show();
        QVERIFY(QTest::qWaitForWindowActive(&window));
        QTest::keyClick(&window, Qt::Key_S, Qt::AltModifier);
        QVERIFY(second.isChecked() && second.hasFocus());
    }

    void themesFollowThePalette()
    {
        setColors(Qt::black, Qt::white);
        QCOMPARE(QIcon::fallbackThemeName(), u"breeze-dark"_s);
        setColors(Qt::white, Qt::black);
        QCOMPARE(QIcon::fallbackThemeName(), u"breeze"_s);
        QVERIFY(BWIcons::icon(u"brimwellpro-no-such-icon"_s).isNull());
    }

    void everythingCanBeSeen_data()
    {
        const Rows<QColor, QColor, QColor> row; // window, highlight, disabled text; texts are white
        row("dark, disabled as bright", 0x2a2e32, 0x3daee9, Qt::white);
        row("dark blue on black", Qt::black, Qt::darkBlue, Qt::black);
    }
    void everythingCanBeSeen()
    {
        const auto [window, highlight, disabled] = Rows<QColor, QColor, QColor>::current();
        QPalette palette(window, window);
        palette.setColor(QPalette::Highlight, highlight);
        palette.setColor(QPalette::Disabled, QPalette::WindowText, disabled);
        BWControlStyle(u"Fusion"_s).polish(palette);
        const QScopeGuard before([old = QApplication::palette()] { QApplication::setPalette(old); });
        QApplication::setPalette(palette);
        QVERIFY(BWColors::contrast(palette.color(QPalette::HighlightedText), palette.color(QPalette::Highlight)) > 4.5);
        static const QList<QIcon> icons{BWIcons::icon(u"brimwellpro-snapshot"_s),
                                        BWIcons::icon(u"brimwellpro-freeze"_s), BWIcons::icon(u"edit-undo"_s),
                                        BWIcons::image(u"record.png"_s)}; // they follow
        for (const QIcon &icon : icons) {
            const auto drawn = [&, ground = window](QIcon::Mode mode) {
                return painted(ground, 1, [&](QPainter &painter) { icon.paint(&painter, 0, 0, 32, 32, {}, mode); });
            };
            QVERIFY(contrast(drawn(QIcon::Normal), window) >= 3);
            QVERIFY(contrast(drawn(QIcon::Disabled), window) >= 1.5);
            QVERIFY(drawn(QIcon::Disabled) != drawn(QIcon::Normal));
        }
    }

    /// Yellow with a white sign in it, on a light window.
    void faintIconsKeepTheirDetails()
    {
        setColors(Qt::white, Qt::black);
        const QImage image = painted(Qt::white, 1, [icon = BWIcons::icon(u"dialog-warning"_s)](QPainter &painter) {
            icon.paint(&painter, 0, 0, 64, 64);
        });
        QVERIFY(contrast(image, Qt::white) >= 3);
        int coloured = 0;
        for (int i = 0; i < image.width() * image.height(); ++i)
            coloured += image.pixelColor(i % image.width(), i / image.width()).hsvSaturation() > 128 ? 1 : 0;
        QVERIFY2(coloured > 1000, qPrintable(QString::number(coloured)));
    }

    void focusCanBeSeen_data()
    {
        const Rows<bool, bool> row; // dark, high contrast
        row("light", false, false);
        row("dark", true, false);
        row("black on white", false, true);
        row("white on black", true, true);
    }
    void focusCanBeSeen()
    {
        const auto [dark, most] = Rows<bool, bool>::current();
        const QScopeGuard before([old = QApplication::palette()] {
            QApplication::setStyle(u"Fusion"_s);
            QApplication::setPalette(old);
        });
        QApplication::setStyle(new BWControlStyle(u"Fusion"_s));
        QApplication::setPalette(BWColors::wanted(QPalette(dark ? Qt::white : Qt::black), dark, most).value());
        QWidget window;
        QVBoxLayout column(&window);
        const QList<QWidget *> widgets{new QPushButton(u"button"_s),
                                       new QComboBox,
                                       new QLineEdit,
                                       new QSpinBox,
                                       new QSlider(Qt::Horizontal),
                                       new QScrollArea,
                                       new BWRadioButton(u"one"_s),
                                       new BWDoubleButton};
        for (QWidget *widget : widgets)
            column.addWidget(widget);
        static_cast<QPushButton *>(widgets[0])->setDefault(true);
        window.show();
        QVERIFY(QTest::qWaitForWindowActive(&window));
        QTest::keyClick(&window, Qt::Key_Shift); // who opens a window by a key sees it at once
        for (QWidget *widget : widgets) {
            (widget == widgets[0] ? widgets[1] : widgets[0])->setFocus();
            const QImage without = widget->grab().toImage();
            const QColor frame = without.pixelColor(0, without.height() / 2); // only the focus has its colour
            QVERIFY2(frame.hsvSaturation() < 60, qPrintable(frame.name()));
            widget->setFocus(Qt::TabFocusReason);
            const QImage with = widget->grab().toImage();
            int clear = 0;
            for (int i = 0; i < with.width() * with.height(); ++i) {
                const QPoint at(i % with.width(), i / with.width());
                clear += BWColors::contrast(with.pixelColor(at), without.pixelColor(at)) >= 3 ? 1 : 0;
            }
            QVERIFY2(clear >= 60,
                     qPrintable(u"%1: %2"_s.arg(QLatin1String(widget->metaObject()->className())).arg(clear)));
        }
    }

    /// At a scale of 1.25, and where a widget begins between two pixels.
    void whatIsPaintedLiesOnWholePixels()
    {
        const QIcon icon = BWIcons::icon(u"brimwellpro-grid"_s);
        const QPixmap pixels = icon.pixmap(QSize(22, 22), 1.25); // 28, of which the icon gets 27.5
        const QImage image = painted(Qt::white, 1.25, [&](QPainter &painter) {
            painter.translate(3.3, 5);
            icon.paint(&painter, 0, 0, 22, 22);
        });
        const QImage expected = painted(Qt::white, 1.25, [&](QPainter &painter) {
            painter.scale(0.8, 0.8);
            painter.drawPixmap(QRect(4, 6, 28, 28), pixels);
        });
        QCOMPARE(image, expected);
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
        button.setLayoutDirection(Qt::RightToLeft);
        QCOMPARE(press(3).last(), true); // the halves have changed places
        button.setEnabled(false);
        press(3);
        QCOMPARE(right.size(), 6);
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
            const QPoint corner(qRound(dot.x()), qRound(dot.y()));
            const QColor color = image.pixelColor(corner + QPoint(0, 1));
            const QColor ground = image.pixelColor(corner - QPoint(1, 0));
            const bool green = color.green() > color.red() + 40 && color.green() > color.blue() + 20;
            QVERIFY2(tab == 1 ? green : color.hsvSaturation() < 40, qPrintable(color.name()));
            QVERIFY(BWColors::contrast(color, ground) >= 3);
            const bool isFilled = BWColors::contrast(image.pixelColor(corner + QPoint(1, 1)), ground) >= 3;
            QCOMPARE(isFilled, tab == 1); // also for those who cannot tell the colours
        }
    }
};

QTEST_MAIN(TestBWControls)
#include "tst_BWControls.moc"
