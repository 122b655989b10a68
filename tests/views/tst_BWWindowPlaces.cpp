// SPDX-License-Identifier: GPL-3.0-or-later
#include "Model/Settings/BWSettingsFile.h"
#include "Rows.h"
#include "Views/Utils/Windows/BWUtilityPanel.h"
#include "Views/Utils/Windows/BWWindowPlacement.h"

#include <QTemporaryDir>
#include <QTest>

using namespace Qt::StringLiterals;

namespace {

// As one window manager frames them.
constexpr QMargins margins{1, 20, 1, 5};
constexpr QSize cameraContent(977, 569);
constexpr QSize settings(508, 301);
constexpr QSize advancedSettings(742, 332);
constexpr QSize albums(289, 575);
constexpr int leastCameraWidth = 745;
constexpr int leastAlbumsWidth = 242;

class Panel : public BWUtilityPanel {
public:
    Panel(QWidget &cameraWindow, BWUserDefaults &defaults) : BWUtilityPanel(&cameraWindow)
    {
        resize(200, 100);
        rememberFrame(u"panel"_s, defaults);
    }
};

} // namespace

class TestBWWindowPlaces : public QObject {
    Q_OBJECT

    QTemporaryDir m_folder;

private Q_SLOTS:
    void screens_data()
    {
        // advancedAt: while the settings are open
        const Rows<QSize, QList<QRect>, QPoint, QPoint, QPoint, QRect, QRect> row;
        const auto one = [](int width, int height) { return QList<QRect>{{0, 0, width, height}}; };
        row("small: all become narrower", QSize(1024, 600), one(1024, 600), QPoint(24, 6), QPoint(259, 299),
            QPoint(0, 268), QRect(0, 6, 745, 594), QRect(745, 25, 279, 575));
        row("the camera window moves aside", QSize(1280, 800), one(1280, 800), QPoint(152, 116), QPoint(387, 499),
            QPoint(0, 468), QRect(12, 116, 979, 594), QRect(991, 135, 289, 575));
        row("full HD", QSize(1920, 1080), one(1920, 1080), QPoint(472, 256), QPoint(707, 779), QPoint(0, 748),
            QRect(472, 256, 979, 594), QRect(1451, 275, 289, 575));
        row("room for all", QSize(2560, 1440), one(2560, 1440), QPoint(792, 436), QPoint(1027, 1030), QPoint(910, 1070),
            QRect(792, 436, 979, 594), QRect(1771, 455, 289, 575));
        row("the main screen is the right one", QSize(1920, 1080),
            QList<QRect>{{1280, 0, 1920, 1080}, {0, 0, 1280, 1024}}, QPoint(301, 256), QPoint(536, 723),
            QPoint(1280, 692), QRect(301, 256, 979, 594), QRect(1280, 275, 289, 575));
        row("a panel of the desktop, a larger screen beside", QSize(1366, 768),
            QList<QRect>{{0, 110, 1366, 658}, {1366, 0, 1920, 1080}}, QPoint(195, 110), QPoint(430, 467),
            QPoint(0, 436), QRect(98, 110, 979, 594), QRect(1077, 129, 289, 575));
    }
    void screens()
    {
        const auto [mainScreen, rooms, cameraAt, settingsAt, advancedAt, cameraAside, albumsAt] =
            Rows<QSize, QList<QRect>, QPoint, QPoint, QPoint, QRect, QRect>::current();
        const BWWindowPlacement placement(mainScreen, rooms);
        const QRect camera = placement.camera(cameraContent, margins);
        QCOMPARE(camera.size(), cameraContent.grownBy(margins));
        QCOMPARE(camera.topLeft(), cameraAt);
        const QRect settingsPlace = placement.below(camera, settings);
        QCOMPARE(settingsPlace.topLeft(), settingsAt);
        const QRect alone = placement.below(camera, advancedSettings);
        QVERIFY(qAbs(alone.center().x() - camera.center().x()) <= 1);
        QCOMPARE(placement.below(camera, advancedSettings, {settingsPlace}).topLeft(), advancedAt);
        const auto pair = placement.beside(camera, leastCameraWidth, albums, leastAlbumsWidth);
        QCOMPARE(pair.camera, cameraAside);
        QCOMPARE(pair.albums, albumsAt);
    }

    void largeWindowShrinks()
    {
        const BWWindowPlacement placement({800, 480}, {{0, 0, 800, 480}});
        QCOMPARE(placement.camera(cameraContent, margins), QRect(0, 0, 800, 480));
        // Where nothing helps they lie over each other.
        QCOMPARE(placement.beside({0, 0, 800, 480}, 745, albums, 242).albums, QRect(558, 0, 242, 480));
        QCOMPARE(placement.besideFixed({0, 0, 800, 480}, albums), QRect(511, 0, 289, 480));
    }

    void panelIsPlacedUntilTheUserMovesIt()
    {
        QWidget camera;
        camera.setGeometry(100, 50, 400, 200);
        camera.show();
        const QString path = m_folder.filePath(u"settings.conf"_s);
        auto defaults = std::make_unique<BWSettingsFile>(path);
        auto panel = std::make_unique<Panel>(camera, *defaults);
        const auto startAgain = [&] {
            panel.reset();
            defaults = std::make_unique<BWSettingsFile>(path);
            panel = std::make_unique<Panel>(camera, *defaults);
        };
        const QPoint itsPlace = camera.frameGeometry().bottomLeft() + QPoint(100, 1); // half as wide

        startAgain(); // never shown in the run before
        panel->move(1, 2);
        panel->show();
        QCOMPARE(panel->pos(), itsPlace);
        panel->move(70, 90);
        panel->hide();
        startAgain();
        panel->show();
        QCOMPARE(panel->pos(), QPoint(70, 90));

        panel->resetLayout();
        QCOMPARE(panel->pos(), itsPlace);
        panel->move(70, 90);
        panel->hide();
        panel->resetLayout();
        camera.move(camera.pos() + QPoint(10, 10)); // by where that is then
        panel->show();
        QCOMPARE(panel->pos(), itsPlace + QPoint(10, 10));
        panel->move(70, 90);
        panel->hide();
        panel->resetLayout();
        startAgain(); // before it was shown
        panel->show();
        QCOMPARE(panel->pos(), itsPlace + QPoint(10, 10));

        Panel second(camera, *defaults);
        second.resetLayout();
        second.show(); // leaves the title of the first
        QCOMPARE(second.pos(), panel->pos() + QPoint(0, BWWindowPlacement::assumedMargins.top()));
    }
};

QTEST_MAIN(TestBWWindowPlaces)
#include "tst_BWWindowPlaces.moc"
