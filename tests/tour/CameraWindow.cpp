// SPDX-License-Identifier: GPL-3.0-or-later
#include "Model/Albums/BWAlbumManager.h"
#include "Model/BWRepository.h"
#include "Model/Measuring/BWMeasurement.h"
#include "TestFolder.h"
#include "Tour.h"
#include "Views/MainWindow/BWCenteringClipView.h"
#include "Views/MainWindow/BWComparisonStrip.h"
#include "Views/MainWindow/BWFrozenMark.h"
#include "Views/MainWindow/BWLastCaptureButton.h"
#include "Views/MainWindow/BWMainMenu.h"
#include "Views/MainWindow/BWMeasuringMenu.h"
#include "Views/MainWindow/BWMeasuringStrip.h"
#include "Views/MainWindow/BWPictureCaption.h"
#include "Views/MainWindow/BWSlidingBars.h"
#include "Views/Measuring/BWCalibrationDialog.h"
#include "Views/Measuring/BWCalibrationsDialog.h"
#include "Views/Measuring/BWMeasurementResultsPanel.h"

#include <QAbstractButton>
#include <QAction>
#include <QBuffer>
#include <QComboBox>
#include <QFileDialog>
#include <QHoverEvent>
#include <QLineEdit>
#include <QPainter>
#include <QTest>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

/// Texts and lines over it must be readable on either side.
QByteArray brightAndDark()
{
    QImage image(640, 480, QImage::Format_RGB32);
    image.fill(Qt::white);
    QPainter(&image).fillRect(320, 0, 320, 480, Qt::black);
    QBuffer buffer;
    image.save(&buffer, "JPEG");
    return buffer.data();
}

} // namespace

void Tour::seePlain()
{
    const BWMainMenu &menu = window->menu();
    showFrames();
    seeNarrowest(u"main"_s);
    menu.grid->trigger();
    showFrames();
    see(window, u"main-grid"_s);
    menu.statistics->trigger();
    freeze(true);
    seeNarrowest(u"main-statistics-frozen"_s);
    freeze(false);
    menu.statistics->trigger();
    menu.grid->trigger();
    menu.fitToWindow->trigger();
    showFrames();
    see(window, u"main-fit"_s);
    menu.actualSize->trigger();
}

void Tour::freeze(bool frozen) const
{
    window->menu().freeze->trigger();
    const auto *mark = window->findChild<BWFrozenMark *>();
    QTRY_VERIFY_WITH_TIMEOUT((cameras[0]->pushFrames(1), mark->isVisible() == frozen), patience);
}

/// Opens the tools, draws one of each kind, and points where the next one will be; or takes all back.
void Tour::measure(bool begins) const
{
    const BWMeasuringMenu &menu = *window->menu().measuring;
    while (menu.undo->isEnabled())
        menu.undo->trigger();
    menu.scaleBar->trigger();
    menu.showTools->trigger();
    auto *layer = window->findChild<QWidget *>(u"measuring"_s);
    const QPoint corner = layer->rect().center() - QPoint(190, 150);
    QList<QAction *> tools = menu.tools();
    tools[0] = tools[1]; // two lengths, in place of that which selects
    for (int i = 0; begins && i < tools.size(); ++i) {
        tools[i]->trigger();
        const int most = BWMeasurementKind::find(menu.kind())->mostPoints;
        for (const QPoint at : QList<QPoint>{{0, 0}, {50, 15}, {15, 45}}.first(std::min(3, most)))
            QTest::mouseClick(layer, Qt::LeftButton, {}, corner + at + QPoint(i % 3 * 150, i / 3 * 110));
        if (most == BWMeasurementKind::anyNumber)
            QTest::keyClick(layer, Qt::Key_Return);
    }
    if (auto *text = layer->findChild<QLineEdit *>()) { // of the arrow
        see(window, u"main-measuring-text"_s);
        QTest::keyClicks(text, u"A1"_s);
        QTest::keyClick(text, Qt::Key_Return);
        tools[0]->trigger();
        QTest::mouseMove(layer, corner + QPoint(365, 100));
    }
}

void Tour::seeMeasuring()
{
    const BWMeasuringMenu &menu = *window->menu().measuring;
    measure(true);
    auto *scales = window->findChild<BWMeasuringStrip *>()->findChild<QComboBox *>();
    scales->setFocus();
    Q_EMIT scales->activated(0);
    see(window, u"main-measuring-pixels"_s);
    Q_EMIT scales->activated(1);
    clock.advance(10s);
    seeNarrowest(u"main-measuring"_s);
    menu.results->trigger();
    see(visible<BWMeasurementResultsPanel>(), u"results"_s);
    menu.calibrate->trigger();
    auto *calibration = visible<BWCalibrationDialog>();
    see(calibration, u"calibration"_s);
    const auto fields = calibration->findChildren<QLineEdit *>();
    for (QLineEdit *field : fields)
        field->setText(field == fields.last() ? u"50x"_s : u"1"_s);
    see(calibration, u"calibration-typed"_s);
    calibration->reject();
    menu.calibrations->trigger();
    see(visible<BWCalibrationsDialog>(), u"calibrations"_s);
    visible<BWCalibrationsDialog>()->reject();
    menu.saveCopy->trigger();
    auto *panel = visible<QFileDialog>();
    see(panel, u"save-measured"_s);
    panel->reject();
    measure(false);
    see(visible<BWMeasurementResultsPanel>(), u"results-none"_s);
    menu.results->trigger();
}

/// After a video was taken.
void Tour::seeLookBack()
{
    auto *view = &window->centeringClipView();
    const auto *lastCapture = window->findChild<BWLastCaptureButton *>();
    // the video may still be on its way
    QTRY_VERIFY_WITH_TIMEOUT(lastCapture->accessibleName().contains("_video_"_L1), patience);
    window->menu().lastCapture->trigger();
    const auto *caption = window->findChild<BWPictureCaption *>();
    QTRY_VERIFY_WITH_TIMEOUT(caption->isVisible(), patience);
    seeNarrowest(u"main-look-back-movie"_s);
    const auto step = [&](Qt::Key key) {
        const QString before = caption->text();
        QTest::keyClick(view, key);
        QTRY_VERIFY_WITH_TIMEOUT(caption->text() != before, patience);
    };
    const bool mirrored = QGuiApplication::isRightToLeft();
    const Qt::Key back = mirrored ? Qt::Key_Right : Qt::Key_Left;
    step(back);
    see(window, u"main-look-back"_s);
    const QString folder = BWRepository::singleton().albumManager().currentAlbum()->path().toLocalFile();
    const QUrl file = QUrl::fromLocalFile(folder + u'/' + caption->text().section(u',', 0, 0));
    const QByteArray whole = TestFolder::read(file);
    for (const auto &[name, content] :
         {std::pair(u"half"_s, whole.first(whole.size() / 2)), std::pair(u"damaged"_s, "x"_ba),
          std::pair(u"bright-and-dark"_s, brightAndDark())}) {
        step(mirrored ? Qt::Key_Left : Qt::Key_Right);
        TestFolder::write(file, content);
        step(back);
        see(window, u"main-look-back-"_s + name);
    }
    measure(true);
    see(window, u"main-measuring-bright-and-dark"_s);
    measure(false);
    TestFolder::write(file, whole);
}

void Tour::seeComparing()
{
    const BWMainMenu &menu = window->menu();
    menu.compare->trigger(); // the live image comes back beside the picture of the album
    QTRY_VERIFY_WITH_TIMEOUT(menu.linkPictures->isEnabled(), patience);
    window->activateWindow(); // or the ring of the focus would not show
    window->comparisonStrip().findChild<QAbstractButton *>()->setFocus();
    for (const auto &[mode, name] :
         {std::pair(menu.compareSideBySide, u"side-by-side"_s), std::pair(menu.compareOverlay, u"overlay"_s),
          std::pair(menu.compareDivider, u"divider"_s)}) {
        mode->trigger();
        showFrames();
        see(window, u"main-compare-"_s + name);
    }
    menu.linkPictures->trigger();
    menu.rotate->trigger(); // of the album's alone
    seeNarrowest(u"main-compare-unlinked"_s);
    // As much as can be open at a time.
    menu.compareSideBySide->trigger();
    showAll(true);
    seeNarrowest(u"main-everything"_s);
    showAll(false);
    menu.endComparison->trigger();
}

void Tour::showAll(bool shown) const
{
    window->menu().statistics->trigger();
    freeze(shown);
    measure(shown);
}

void Tour::seeFullScreen()
{
    window->menu().fitToWindow->trigger();
    setFullScreen(true);
    showFrames();
    see(window, u"main-full-screen-hint"_s);
    clock.advance(10s);
    see(window, u"main-full-screen"_s);
    showAll(true);
    see(window, u"main-full-screen-everything"_s);
    QHoverEvent topEdge(QEvent::HoverMove, {300, 0}, {300, 0}, {300, 20});
    QCoreApplication::sendEvent(window->centralWidget(), &topEdge);
    QCOMPARE(window->findChild<BWSlidingBars *>()->y(), 0);
    see(window, u"main-full-screen-bars"_s);
    showAll(false);
    setFullScreen(false);
    window->menu().actualSize->trigger();
}
