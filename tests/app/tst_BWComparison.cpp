// SPDX-License-Identifier: GPL-3.0-or-later
#include "App/LiveView/BWComparison.h"
#include "App/LiveView/BWLiveViewController.h"
#include "App/LiveView/BWSceneController.h"
#include "Model/Albums/BWAlbumContents.h"
#include "Model/Export/BWPictureExport.h"
#include "Model/Products/BWProductInUse.h"
#include "Model/Settings/BWConfigManager.h"
#include "Model/Settings/BWSettingsFile.h"
#include "Rows.h"
#include "TestFolder.h"
#include "TouchScreen.h"
#include "Utils/BWUIUtils.h"
#include "Views/MainWindow/BWCenteringClipView.h"
#include "Views/MainWindow/BWComparisonStrip.h"
#include "Views/MainWindow/BWControlBar.h"
#include "Views/MainWindow/BWMainMenu.h"
#include "Views/MainWindow/BWMainWindow.h"
#include "Views/MainWindow/BWPictureCaption.h"
#include "Views/MainWindow/BWStatusLine.h"
#include "Views/Utils/BWDoubleButton.h"
#include "Views/Utils/BWFilePanels.h"
#include "WidgetSearch.h"

#include <QAction>
#include <QNativeGestureEvent>
#include <QPainter>
#include <QSignalSpy>
#include <QSlider>
#include <QStyleHints>
#include <QTest>
#include <QWheelEvent>
#include <QWindow>

using namespace Qt::StringLiterals;
using Mode = BWScene::Mode;

namespace {

constexpr QColor mainColor(200, 60, 40);
constexpr QColor albumColor(20, 80, 180);
constexpr QColor markColor(250, 250, 120);

/// Of one colour, with a mark a quarter as wide and high whose corner lies at a quarter of both.
QImage marked(QSize size, QColor color)
{
    QImage image(size, QImage::Format_RGB32);
    image.fill(color);
    QPainter(&image).fillRect(QRect(QPoint(size.width() / 4, size.height() / 4), size / 4), markColor);
    return image;
}

QColor mixed(double share)
{
    const auto mix = [share](int main, int album) { return qRound(main * (1 - share) + album * share); };
    return {mix(200, 20), mix(60, 80), mix(40, 180)};
}

bool isLike(QColor a, QColor b, int tolerance = 2)
{
    return std::abs(a.red() - b.red()) <= tolerance && std::abs(a.green() - b.green()) <= tolerance
        && std::abs(a.blue() - b.blue()) <= tolerance;
}

bool isNear(QPointF a, QPointF b, double tolerance = 1.5)
{
    return std::abs(a.x() - b.x()) <= tolerance && std::abs(a.y() - b.y()) <= tolerance;
}

/// Where the mark is in that part of an image, from its corner.
QRect markIn(const QImage &image, const QRect &part)
{
    QRect bounds;
    for (int y = part.top(); y <= part.bottom(); ++y) {
        for (int x = part.left(); x <= part.right(); ++x) {
            if (isLike(image.pixelColor(x, y), markColor, 12) && !bounds.contains(x, y))
                bounds |= QRect(x, y, 1, 1);
        }
    }
    return bounds.translated(-part.topLeft());
}

/// The real window with still pictures of known colours, and an album on the disk. Saves where `target` is.
struct Bench : private BWFilePanels, private BWAlertPresenter {
    Bench()
    {
        QDir().mkpath(QFileInfo(inAlbum(1)).path());
        for (const int i : {1, 2, 3})
            marked(i == 3 ? QSize(640, 480) : QSize(320, 240), albumColor).save(inAlbum(i));
        BWUIUtils::setAlertPresenter(this);
        albums.prepare();
        contents.follow();
        window.localizeWithManager(texts);
        window.resize(1007, 800);
        window.show();
        window.activateWindow();
        view.setStep([this](bool right) { return comparison->step(right); });
        scene.showFrozen(BWSceneController::frameOf(marked({320, 240}, mainColor)));
        QTRY_COMPARE(contents.files(BWMediaType::Image).size(), 3);
    }
    ~Bench() override { BWUIUtils::setAlertPresenter(nullptr); }

    QString inAlbum(int number) const
    {
        return folder.path(u"BrimwellPro/Default Album/20260101_image_00%1.jpg"_s.arg(number));
    }
    void compare(int number)
    {
        comparison->compareWith(QUrl::fromLocalFile(inAlbum(number)));
        QTRY_VERIFY(scene.hasReference());
    }
    bool hasCaption(const QString &text) const
    {
        const auto pills = view.viewport()->findChildren<BWStatusPill *>();
        return std::any_of(pills.begin(), pills.end(),
                           [&](auto *pill) { return pill->isVisible() && pill->text().startsWith(text); });
    }
    QString zoomText() const { return window.controlBar().findChild<BWDoubleButton *>()->text(); }
    void zoomIn(int times)
    {
        for (int i = 0; i < times; ++i)
            liveView.zoomIn();
    }
    void drag(QPoint distance) const
    {
        const QPoint from = view.viewport()->rect().center() + QPoint(80, 0);
        QTest::mousePress(view.viewport(), Qt::MiddleButton, {}, from);
        QTest::mouseMove(view.viewport(), from + distance);
        QTest::mouseRelease(view.viewport(), Qt::MiddleButton, {}, from + distance);
    }
    void press(Qt::Key key, Qt::KeyboardModifiers modifiers = {}) const { QTest::keyClick(&view, key, modifiers); }

    /// What the view shows, once both pictures have been drawn as they are to be shown now.
    QImage settled() const
    {
        QImage last;
        for (int same = 0; same < 4;) {
            QTest::qWait(10);
            const QImage image = view.viewport()->grab().toImage();
            same = image == last ? same + 1 : 0;
            last = image;
        }
        return last;
    }
    /// Where the middles of both marks are, side by side, each in points of its own area.
    std::pair<QPointF, QPointF> marks() const
    {
        const QImage screen = settled();
        const double ratio = screen.devicePixelRatio();
        const QSize size = view.viewport()->size();
        const auto in = [&](const QRect &area) {
            return QRectF(markIn(screen, QRect(area.topLeft() * ratio, area.size() * ratio))).center() / ratio;
        };
        return {in(liveView.scene().mainArea(size)), in(liveView.scene().referenceArea(size))};
    }

    void save(QWidget *, const Save &panel, Chosen chosen) override
    {
        proposed = panel.name;
        chosen(target);
    }
    void chooseFile(QWidget *, const File &, Chosen) override { }
    void chooseFolder(QWidget *, const Folder &, Chosen) override { }
    void presentOK(const QString &title, const QString &) override { said << title; }
    bool presentOKCancel(const QString &, const QString &) override { return false; }
    bool presentChoice(const QString &, const QString &, const QString &, const QString &) override { return false; }

    TestFolder folder;
    BWSettingsFile defaults{folder.path(u"settings.conf"_s)};
    BWConfigManager config{defaults};
    BWProductInUse product{config};
    BWAlbumManager albums{defaults, folder.path()};
    BWAlbumContents contents{albums};
    BWLocalizationManager texts{QString(), {u"en"_s}};
    BWLiveRenderer live;
    BWMainWindow window{live};
    BWCenteringClipView &view = window.centeringClipView();
    const BWMainMenu &menu = window.menu();
    BWLiveViewController liveView{window, live, product};
    BWSceneController scene{window, liveView, live};
    QUrl lookedAt, target;
    QStringList said;
    QString proposed;
    std::unique_ptr<BWComparison> comparison = std::make_unique<BWComparison>(
        window, scene, liveView, contents, texts,
        BWComparison::Callbacks{[this] { return lookedAt; },
                                [this] { return contents.files(BWMediaType::Image).value(0); },
                                [this](const QString &text) { said << text; }, *this});
};

} // namespace

class TestBWComparison : public QObject {
    Q_OBJECT

    static void touch(const Bench &bench, const QString &steps, QPoint middle)
    {
        QWindow *window = bench.window.windowHandle();
        const auto inWindow = [&](QPoint at) { return bench.view.viewport()->mapTo(&bench.window, at); };
        const auto pointIn = [](const QString &text) {
            return QPoint(text.section(u',', 0, 0).toInt(), text.section(u',', 1).toInt());
        };
        const auto gesture = [&](Qt::NativeGestureType type, double value, QPointF distance) {
            QNativeGestureEvent event(type, QPointingDevice::primaryPointingDevice(), 2, inWindow(middle),
                                      inWindow(middle), window->mapToGlobal(inWindow(middle)), value, distance);
            QCoreApplication::sendEvent(window, &event);
        };
        gesture(Qt::BeginNativeGesture, 0, {});
        TouchScreen screen(*bench.view.viewport());
        for (const QString &step : steps.split(u' ')) {
            const QString rest = step.mid(1);
            if (step[0] == u'w') {
                QWheelEvent event(middle, inWindow(middle), {}, {0, rest.toInt()}, {}, Qt::ControlModifier,
                                  Qt::NoScrollPhase, false);
                QCoreApplication::sendEvent(bench.view.viewport(), &event);
                continue;
            }
            if (step[0] == u'z' || step[0] == u'p') {
                gesture(step[0] == u'z' ? Qt::ZoomNativeGesture : Qt::PanNativeGesture, rest.toDouble(), pointIn(rest));
                continue;
            }
            screen.touch(step);
        }
        gesture(Qt::EndNativeGesture, 0, {});
    }

private Q_SLOTS:
    void picturesOnTheScreen_data()
    {
        const Rows<Mode, double> row;
        row("side by side", Mode::SideBySide, 0.0);
        row("faint", Mode::Overlay, 0.35);
        row("all of it", Mode::Overlay, 1.0);
        row("line", Mode::Divider, 0.437);
    }
    void picturesOnTheScreen()
    {
        const auto [mode, share] = Rows<Mode, double>::current();
        Bench bench;
        bench.compare(3);
        bench.comparison->setMode(mode);
        bench.comparison->setShare(share);
        for (QWidget *child : bench.view.viewport()->findChildren<QWidget *>()) // the line covers where they meet
            child->hide();
        const QImage screen = bench.settled();
        const double ratio = screen.devicePixelRatio();
        const int width = bench.view.viewport()->width();
        const int y = screen.height() / 2 + int(100 * ratio); // below the marks
        const auto has = [&](int from, int to, QColor color) { // in points
            int x = int(from * ratio);
            while (x < to * ratio && isLike(screen.pixelColor(x, y), color))
                ++x;
            return x == int(to * ratio);
        };
        const int left = width / 2 - 158; // of pictures that are 320 points wide
        const int right = width / 2 + 158;
        const int line = qRound(share * width);
        const int quarter = (width - BWScene::gap) / 4;
        if (mode == Mode::Overlay)
            QVERIFY(has(left, right, mixed(share)));
        else if (mode == Mode::Divider)
            QVERIFY(has(left, line, mainColor) && has(line, right, albumColor));
        else
            QVERIFY(has(quarter - 158, quarter + 158, mainColor)
                    && has(width - quarter - 158, width - quarter + 158, albumColor));
    }

    void linkedPicturesMoveAsOne_data()
    {
        const Rows<int, int, QPointF> row; // turn and mirror of the album's picture, and where its mark is then
        row("upright", 0, 0, {-80, -60});
        row("turned", 90, 0, {-60, 80});
        row("mirrored", 0, 1, {80, -60});
        row("both", 180, 2, {80, -60});
    }
    void linkedPicturesMoveAsOne()
    {
        const auto [turn, flip, mark] = Rows<int, int, QPointF>::current();
        Bench bench;
        bench.compare(3); // which has more pixels
        bench.comparison->setLinked(false);
        bench.liveView.onRotate(QString::number(turn));
        bench.liveView.onFlip(flip);
        bench.comparison->setLinked(true);
        bench.zoomIn(10);
        bench.drag({-60, -40});
        const BWPicturePlace place =
            bench.liveView.scene().mainPlace(bench.view.viewport()->size(), bench.view.scrollPosition());
        QCOMPARE(place.width, 640.0);
        const auto [inMain, inReference] = bench.marks();
        QVERIFY(isNear(inMain, place.middle + QPointF(-80, -60)));
        QVERIFY(isNear(inReference, place.middle + mark));
        QCOMPARE(bench.liveView.state().currentRotation(), 0);
    }

    void alignmentIsKept()
    {
        Bench bench;
        bench.compare(3);
        bench.press(Qt::Key_K, Qt::ControlModifier);
        const auto before = bench.marks();
        QCOMPARE(bench.zoomText(), u"50%"_s); // twice as many pixels
        bench.drag({31, 17});
        bench.press(Qt::Key_Left);
        bench.press(Qt::Key_Up, Qt::ShiftModifier);
        bench.zoomIn(5);
        QCOMPARE(bench.zoomText(), u"55%"_s);
        const auto aligned = bench.marks();
        QCOMPARE(aligned.first, before.first);
        const QPointF apart = QPointF(30, 7) * 1.1 + QPointF(-40, -30) * 0.1;
        QVERIFY(isNear(aligned.second, before.second + apart));
        bench.menu.linkPictures->trigger();
        QCOMPARE(bench.zoomText(), u"100%"_s);
        bench.zoomIn(10);
        const auto larger = bench.marks();
        QVERIFY(isNear(larger.second - larger.first, apart * 2));
        bench.comparison->setMode(Mode::Overlay); // nor do another picture and mode change it
        bench.press(Qt::Key_Right);
        QTRY_VERIFY(bench.hasCaption(u"20260101_image_002.jpg"_s));
        bench.comparison->setMode(Mode::SideBySide);
        QVERIFY(isNear(bench.marks().second, larger.second));
    }

    void fingers_data()
    {
        // Fingers a and b go to places in the viewport, or off. On a touchpad, z zooms and p moves; w is a wheel.
        const Rows<QString, QString, QPoint, QPoint, double, int>
            row; // where their middle begins and ends; factor; clicks
        const QPoint from(400, 300);
        row("tap", u""_s, u"a400,300 a404,303 a-"_s, from, from, 1, 1);
        row("drag", u""_s, u"a400,300 a440,330 a-"_s, from, {440, 330}, 1, 0);
        row("drag there and back", u""_s, u"a400,300 a440,330 a400,300 a-"_s, from, from, 1, 0);
        row("a first finger that goes first", u""_s, u"a400,300 b460,300 a- a400,300 b- a-"_s, from, from, 1, 0);
        row("two fingers", u""_s, u"a350,300+b450,300 a370,310+b470,310 a380,320+b480,320 a- b-"_s, from, {430, 320}, 1,
            0);
        row("pinch", u""_s, u"a380,300 b420,300 a376,302+b428,302 a370,305+b440,305 b- a-"_s, from, {405, 305}, 1.75,
            0);
        row("pinch, and on with one", u""_s, u"a350,300+b450,300 a300,300+b500,300 b- a280,310 a-"_s, from, {380, 310},
            2, 0);
        row("fitted", u"fit"_s, u"a300,300+b500,300 a200,300+b600,300 a- b-"_s, from, from, 2, 0);
        row("full screen", u"full screen"_s, u"a350,300+b450,300 a310,320+b490,320 a- b-"_s, from, {400, 320}, 1.8, 0);
        row("linked", u"linked"_s, u"a180,300+b220,300 a170,310+b230,310 a- b-"_s, {200, 300}, {200, 310}, 1.5, 0);
        row("not linked", u"unlinked"_s, u"a680,300+b720,300 a670,310+b730,310 a- b-"_s, {700, 300}, {700, 310}, 1.5,
            0);
        row("not linked, one finger", u"unlinked"_s, u"a700,300 a730,340 a-"_s, {700, 300}, {730, 340}, 1, 0);
        row("wheel", u""_s, u"w120 w240 w-120"_s, from, from, 1.2, 0);
        row("touchpad", u""_s, u"z0.5 z0.5 p40,-20 z-0.5"_s, from, {430, 285}, 1.5, 0);
    }
    /// What lay under their middle still does.
    void fingers()
    {
        const auto [shown, steps, from, to, factor, clicks] =
            Rows<QString, QString, QPoint, QPoint, double, int>::current();
        Bench bench;
        bench.scene.showFrozen(BWSceneController::frameOf(marked({1600, 1200}, mainColor)));
        if (shown == "full screen"_L1)
            bench.window.setFullScreen(true);
        else if (shown == "fit"_L1)
            bench.liveView.fitToWindow();
        else if (!shown.isEmpty())
            bench.compare(3);
        bench.comparison->setLinked(shown != "unlinked"_L1);
        QTRY_COMPARE(bench.window.isFullScreen(), shown == "full screen"_L1);
        QTest::qWait(250); // the program counts as just brought to the front
        QGuiApplication::styleHints()->setMousePressAndHoldInterval(60'000); // however slow this machine is
        const BWScene &scene = bench.liveView.scene();
        const QSize size = bench.view.viewport()->size();
        const auto middles = [&] { // of both pictures; the reference follows unless it moves alone
            const QPoint scroll = bench.view.scrollPosition();
            return std::pair(scene.mainPlace(size, scroll), scene.referencePlace(size, scroll));
        };
        const bool alone = bench.liveView.movesReference();
        const QPointF corner = alone ? scene.referenceArea(size).topLeft() : QPoint();
        const auto before = middles();
        const QSignalSpy clicked(&bench.view, &BWCenteringClipView::mousePressed);
        touch(bench, steps, from);
        const auto after = middles();
        const auto moved = [&](const BWPicturePlace &place) {
            return to + (place.middle + corner - from) * factor - corner;
        };
        QVERIFY(isNear(after.second.middle, moved(before.second), 2));
        QCOMPARE(qRound(after.second.width), qRound(before.second.width * factor));
        QCOMPARE(after.first.width, alone ? before.first.width : after.second.width);
        QVERIFY(isNear(after.first.middle, alone ? before.first.middle : moved(before.first), 2));
        QCOMPARE(clicked.size(), clicks);
    }

    void aFingerMovesTheLine()
    {
        Bench bench;
        bench.compare(3);
        bench.comparison->setMode(Mode::Divider);
        const auto line = [&] { return bench.liveView.scene().dividerPosition(bench.view.viewport()->size()); };
        const int to = line() + 90;
        touch(bench, u"a%1,300 a%2,305 a-"_s.arg(line()).arg(to), {});
        QCOMPARE(line(), to);
        const auto &slider = *bench.window.comparisonStrip().findChild<QSlider *>();
        TouchScreen(slider).touch(u"a10,32 a%1,32 a-"_s.arg(slider.width() / 2)); // not on the handle
        QVERIFY2(std::abs(slider.value() - 50) <= 2, qPrintable(QString::number(slider.value())));
    }

    void keys()
    {
        Bench bench;
        const BWComparisonStrip &strip = bench.window.comparisonStrip();
        bench.press(Qt::Key_B, Qt::ControlModifier);
        QVERIFY(bench.menu.compare->isChecked());
        bench.press(Qt::Key_B, Qt::ControlModifier); // before the picture is there
        QTest::qWait(100);
        QVERIFY(!bench.menu.compare->isChecked() && !strip.isVisible() && !bench.menu.compareOverlay->isEnabled());
        bench.press(Qt::Key_B, Qt::ControlModifier);
        QTRY_VERIFY(strip.isVisible());
        QVERIFY(bench.hasCaption(u"20260101_image_003.jpg"_s) && !bench.hasCaption(u"Live"_s));
        const QPointF shown = bench.marks().second;
        bench.scene.showLive();
        bench.liveView.clear(); // its camera is gone
        QVERIFY(bench.hasCaption(u"Live"_s));
        QCOMPARE(bench.marks(), std::pair(QRectF(QRect()).center(), shown)); // the other one stays
        bench.press(Qt::Key_2);
        bench.press(Qt::Key_Period);
        QCOMPARE(bench.liveView.scene().share, 0.4);
        strip.findChild<QSlider *>()->setValue(70);
        bench.press(Qt::Key_3);
        bench.press(Qt::Key_Comma); // less of what is on the right
        QCOMPARE(strip.findChild<QSlider *>()->value(), 55);
        bench.press(Qt::Key_2);
        QCOMPARE(bench.liveView.scene().share, 0.7);
        bench.press(Qt::Key_Escape);
        QVERIFY(!strip.isVisible() && !bench.scene.hasReference() && !bench.hasCaption(u"Live"_s));
    }

    void textsMakeWayForTheBars()
    {
        Bench bench;
        bench.compare(3);
        bench.scene.showLive();
        BWPictureCaption caption(bench.view);
        caption.showContents({u"20260101_image_003.jpg"_s});
        bench.window.setFullScreen(true);
        QTRY_VERIFY(bench.window.isFullScreen() && bench.window.topInset() == 0);
        const auto tops = [&] {
            QList<int> all{caption.y()};
            for (const auto *pill : bench.view.viewport()->findChildren<BWStatusPill *>())
                all << (pill->isVisible() ? pill->y() : 11);
            return all;
        };
        QCOMPARE(tops(), QList<int>(4, 11));
        QAbstractButton *inBars = buttonNamed(bench.window.controlBar(), u"Settings"_s);
        inBars->setFocus();
        QTRY_VERIFY(bench.window.topInset() > BWLiveViewGeometry::barHeight);
        QTRY_COMPARE(caption.y(), bench.window.topInset() + 11);
        QCOMPARE(tops().count(11), 1); // of the one that is not there
        QTest::keyClick(inBars, Qt::Key_Escape);
        QVERIFY(bench.view.hasFocus() && bench.scene.hasReference());
        QTRY_COMPARE(tops(), QList<int>(4, 11));
        bench.press(Qt::Key_Escape);
        QVERIFY(!bench.scene.hasReference() && bench.window.isFullScreen());
        bench.press(Qt::Key_Escape);
        QVERIFY(!bench.window.isFullScreen());
    }

    void picturesComeAndGo()
    {
        Bench bench;
        bench.lookedAt = QUrl::fromLocalFile(bench.inAlbum(2)); // instead of the last capture
        for (int times = 1; times <= 2; ++times) { // another program has just saved it
            bench.scene.showAlbumPicture(marked({640, 480}, albumColor), u"2"_s);
            if (times == 1)
                bench.press(Qt::Key_B, Qt::ControlModifier);
        }
        QTRY_VERIFY(bench.hasCaption(u"20260101_image_002.jpg"_s));
        QCOMPARE(bench.scene.main(), BWSceneController::Main::Live);
        QFile::remove(bench.inAlbum(2));
        bench.folder.file(u"BrimwellPro/Default Album/20260101_image_001.jpg"_s, "\xff\xd8 damaged");
        QTRY_COMPARE(bench.contents.files(BWMediaType::Image).size(), 2);
        QVERIFY(bench.hasCaption(u"20260101_image_002.jpg"_s)); // still
        bench.press(Qt::Key_Right);
        QTRY_VERIFY(bench.hasCaption(u"The picture is damaged and cannot be shown."_s));
        bench.press(Qt::Key_Right);
        QCOMPARE(bench.said, QStringList{u"This is the last picture of the album."_s});
        bench.scene.showAlbumPicture(marked({640, 480}, albumColor));
        QVERIFY(!bench.scene.hasReference());
        bench.lookedAt.clear();
        QVERIFY(QFile::remove(bench.inAlbum(1)) && QFile::remove(bench.inAlbum(3)));
        QTRY_VERIFY(bench.contents.files(BWMediaType::Image).isEmpty());
        bench.press(Qt::Key_B, Qt::ControlModifier);
        QCOMPARE(bench.said.last(), u"There is no picture in the album to compare with yet."_s);
        QVERIFY(!bench.menu.compare->isChecked());
    }

    void savedPicture_data()
    {
        const Rows<Mode, QString, QSize> row; // its size
        row("side by side", Mode::SideBySide, u"both.png"_s, {480 + 6 + 480, 640});
        row("overlay", Mode::Overlay, u"both.png"_s, {240, 320});
        row("line", Mode::Divider, u"both.PNG"_s, {240, 320});
        row("JPEG", Mode::SideBySide, u"both.jpg"_s, {966, 640});
        row("nowhere", Mode::Overlay, u"gone/both.jpg"_s, {0, 0});
    }
    /// Of different sizes, upside down, then turned to the left.
    void savedPicture()
    {
        const auto [mode, name, size] = Rows<Mode, QString, QSize>::current();
        Bench bench;
        bench.liveView.rotateByQuarter();
        bench.liveView.flipVertically();
        bench.compare(3);
        bench.comparison->setMode(mode);
        bench.settled();
        bench.target = bench.folder.url(name);
        bench.comparison->save();
        QVERIFY(bench.proposed.startsWith(u"20260101_image_003 - Frozen "_s));
        bench.comparison->save(); // not twice
        QTRY_VERIFY(!bench.comparison->isSaving());
        QCOMPARE(bench.said, QStringList{!size.isEmpty() ? u"Saved: "_s + name : u"Error while saving"_s});
        const QImage saved(bench.target.toLocalFile());
        QCOMPARE(saved.size(), size);
        if (saved.isNull())
            return;
        const auto isAt = [&](int tenths, QColor color) {
            return isLike(saved.pixelColor(size.width() * tenths / 10, size.height() * 9 / 10), color, 6);
        };
        QVERIFY(isAt(1, mode == Mode::Overlay ? mixed(0.35) : mainColor));
        QVERIFY(isAt(9, mode == Mode::Overlay ? mixed(0.35) : albumColor));
        const QSize pane(mode == Mode::SideBySide ? 480 : 240, size.height());
        for (const int left : {0, size.width() - pane.width()}) {
            const QRect mark = markIn(saved, QRect({left, 0}, pane));
            QVERIFY(isNear(mark.topLeft(), QPoint(pane.width(), pane.height()) / 2, 3));
            QVERIFY(isNear(mark.bottomRight(), QPoint(pane.width(), pane.height()) * 3 / 4, 3));
        }
    }

    void cancelledPictureLeavesTheFileThere()
    {
        const TestFolder folder;
        const QUrl target = folder.file(u"both.png"_s, "before");
        BWExportWatch watch;
        watch.cancel();
        const auto result = BWPictureExport::write(marked({640, 480}, mainColor), target, watch);
        QCOMPARE(result.outcome, BWExportResult::Outcome::Cancelled);
        QCOMPARE(TestFolder::read(target), "before");
        QCOMPARE(QDir(folder.path()).entryList({u"both*"_s}), QStringList{u"both.png"_s});
    }
};

QTEST_MAIN(TestBWComparison)
#include "tst_BWComparison.moc"
