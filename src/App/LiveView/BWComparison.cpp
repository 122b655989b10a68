// SPDX-License-Identifier: GPL-3.0-or-later
#include "App/LiveView/BWComparison.h"

#include "App/LiveView/BWLiveViewController.h"
#include "App/LiveView/BWSceneController.h"
#include "Model/Albums/BWAlbumContents.h"
#include "Model/Export/BWPictureExport.h"
#include "Model/LiveView/BWComparisonPicture.h"
#include "Utils/BWFilePath.h"
#include "Views/MainWindow/BWCenteringClipView.h"
#include "Views/MainWindow/BWComparisonMarks.h"
#include "Views/MainWindow/BWComparisonStrip.h"
#include "Views/MainWindow/BWMainMenu.h"
#include "Views/MainWindow/BWMainWindow.h"

#include <algorithm>
#include <QAction>
#include <QFile>
#include <QLocale>
#include <utility>

using namespace Qt::StringLiterals;
using Mode = BWScene::Mode;
using Main = BWSceneController::Main;

BWComparison::BWComparison(BWMainWindow &window, BWSceneController &scene, BWLiveViewController &liveView,
                           const BWAlbumContents &contents, BWLocalizationManager &texts, Callbacks callbacks,
                           BWClock &clock)
    : m_window(window),
      m_scene(scene),
      m_liveView(liveView),
      m_contents(contents),
      m_texts(texts),
      m_callbacks(std::move(callbacks)),
      m_marks(new BWComparisonMarks(window.centeringClipView())),
      m_loader(clock),
      m_saver(window, texts, {m_callbacks.say, m_callbacks.panels}, clock)
{
    connectMenu();
    window.setEscape(BWMainWindow::Escape::Comparison, [this] {
        const bool leaves = isComparing() || !m_wanted.isEmpty();
        end();
        return leaves;
    });
    connect(&m_loader, &BWStillLoader::loaded, this, &BWComparison::take);
    connect(&liveView, &BWLiveViewController::imageDisplayUpdated, m_marks, &BWComparisonMarks::place);
    connect(m_marks, &BWComparisonMarks::dividerDragged, this, &BWComparison::setShare);
    connect(&window.comparisonStrip(), &BWComparisonStrip::shareChanged, this, &BWComparison::setShare);
    connect(&scene, &BWSceneController::mainChanged, this, [this] {
        const bool isAlbum = m_scene.main() == Main::Album;
        const QString before = std::exchange(m_inMain, isAlbum ? m_scene.albumPicture() : QString());
        if (!isAlbum)
            showTexts();
        else if (isComparing() || m_inMain != before)
            end(); // it takes the place of both; the same one may show anew while another is read
    });
}

void BWComparison::connectMenu()
{
    const BWMainMenu &menu = m_window.menu();
    const auto on = [this](QAction *action, auto &&react) { connect(action, &QAction::triggered, this, react); };
    on(menu.compare, [this] { toggle(); });
    on(menu.compareSideBySide, [this] { setMode(Mode::SideBySide); });
    on(menu.compareOverlay, [this] { setMode(Mode::Overlay); });
    on(menu.compareDivider, [this] { setMode(Mode::Divider); });
    constexpr double byKey = 0.05;
    // It is on the right of the line.
    const auto more = [this](double step) { setShare(share() + (m_mode == Mode::Divider ? -step : step)); };
    on(menu.showMoreReference, [more] { more(byKey); });
    on(menu.showLessReference, [more] { more(-byKey); });
    on(menu.linkPictures, [this](bool linked) { setLinked(linked); });
    on(menu.saveComparison, [this] { save(); });
    on(menu.endComparison, [this] { end(); });
}

bool BWComparison::isComparing() const
{
    return m_scene.hasReference();
}

void BWComparison::toggle()
{
    if (isComparing() || !m_wanted.isEmpty()) {
        end();
        return;
    }
    QUrl file = m_callbacks.pictureInMainWindow();
    if (file.isEmpty())
        file = m_callbacks.lastCapture();
    if (file.isEmpty()) {
        m_callbacks.say(m_texts.text(u"comparison"_s, u"nothing_to_compare"_s,
                                     u"There is no picture in the album to compare with yet."_s));
        m_window.menu().showComparison(false); // the press has checked it
        return;
    }
    compareWith(file);
}

void BWComparison::compareWith(const QUrl &file)
{
    m_wanted = file;
    m_window.menu().compare->setChecked(true);
    m_loader.load(file);
}

void BWComparison::take(const BWAlbumPicture &still)
{
    m_wanted.clear();
    m_shown = still;
    followAlbum();
    const bool begins = !isComparing();
    if (m_scene.main() == Main::Album)
        m_scene.showLive();
    m_scene.compareWith(still.image);
    if (begins) {
        m_window.menu().showComparison(true);
        m_window.comparisonStrip().show();
        setLinked(true);
    }
    showMode();
    showTexts();
}

void BWComparison::end()
{
    m_loader.cancel();
    m_wanted.clear();
    m_window.menu().showComparison(false);
    if (!isComparing())
        return;
    m_scene.endComparison();
    m_shown = {};
    if (m_window.comparisonStrip().isAncestorOf(m_window.focusWidget()))
        m_window.centeringClipView().setFocus();
    m_window.comparisonStrip().hide();
    showTexts();
}

bool BWComparison::step(bool forward)
{
    if (!isComparing())
        return false;
    followAlbum();
    const bool hasMoved = m_stepper.file() != file(); // the shown one has gone, and the next has taken its place
    const bool isElsewhere = !m_stepper.position(); // in another album: both ways lead to the first of this one
    const QUrl next = forward && hasMoved && !isElsewhere ? m_stepper.file()
        : forward || isElsewhere                          ? m_stepper.next()
                                                          : m_stepper.previous();
    if (!next.isEmpty())
        compareWith(next);
    else if (forward)
        m_callbacks.say(m_texts.text(u"comparison"_s, u"last_picture"_s, u"This is the last picture of the album."_s));
    else
        m_callbacks.say(
            m_texts.text(u"comparison"_s, u"first_picture"_s, u"This is the first picture of the album."_s));
    return true;
}

void BWComparison::followAlbum()
{
    m_stepper.setFile(file());
    m_stepper.setFiles(m_contents.files(BWMediaType::Image) + m_contents.files(BWMediaType::Video));
}

void BWComparison::setMode(Mode mode)
{
    m_mode = mode;
    showMode();
}

void BWComparison::setShare(double share)
{
    this->share() = std::clamp(share, 0.0, 1.0);
    showMode();
}

void BWComparison::showMode()
{
    m_liveView.setComparison(m_mode, share());
    m_window.comparisonStrip().showShare(m_mode, share());
    const BWMainMenu &menu = m_window.menu();
    menu.compareSideBySide->setChecked(m_mode == Mode::SideBySide);
    menu.compareOverlay->setChecked(m_mode == Mode::Overlay);
    menu.compareDivider->setChecked(m_mode == Mode::Divider);
}

void BWComparison::setLinked(bool linked)
{
    m_liveView.setLinked(linked);
    m_window.menu().linkPictures->setChecked(linked);
    showTexts();
}

void BWComparison::showTexts()
{
    if (!isComparing()) {
        m_marks->setTexts({});
        return;
    }
    BWComparisonMarks::Texts texts;
    if (m_scene.main() == Main::Live) // the mark of a frozen picture is in the same place
        texts.main = mainName();
    texts.reference = QFile::decodeName(BWFilePath::lastComponent(m_shown.file));
    if (m_shown.stamp) { // which captures keep from when they were taken
        const QDateTime modified = QDateTime::fromSecsSinceEpoch(m_shown.stamp->modified);
        texts.reference += u" · "_s + QLocale().toString(modified, QLocale::ShortFormat);
    }
    const QString problem = BWAlbumPicture::text(m_shown.problem, m_texts);
    if (m_shown.image.isNull())
        texts.inPlaceOfReference = problem;
    else if (!problem.isNull())
        texts.reference += u'\n' + problem;
    if (!m_liveView.isLinked())
        texts.reference +=
            u'\n' + m_texts.text(u"comparison"_s, u"moves_alone"_s, u"Zoom, turn and move act on this picture alone"_s);
    m_marks->setTexts(texts);
}

QString BWComparison::mainName() const
{
    return m_scene.main() == Main::Frozen ? m_texts.text(u"camera_window"_s, u"frozen_mark"_s, u"Frozen"_s)
                                          : m_texts.text(u"comparison"_s, u"live"_s, u"Live"_s);
}

QString BWComparison::proposedName() const
{
    QString reference = QFile::decodeName(BWFilePath::lastComponent(m_shown.file));
    reference = reference.section(u'.', 0, -2);
    const QString now = QDateTime::currentDateTime().toString(u"yyyy-MM-dd HH.mm.ss"_s);
    return u"%1 - %2 %3.jpg"_s.arg(reference, mainName(), now);
}

void BWComparison::save()
{
    if (!isComparing() || isSaving())
        return;
    const BWFrame frame = m_scene.mainFrame();
    if (frame.isNull()) {
        m_callbacks.say(m_texts.text(u"comparison"_s, u"no_live_picture"_s, u"There is no live picture to save."_s));
        return;
    }
    const BWCenteringClipView &view = m_window.centeringClipView();
    BWComparisonPicture::Shown shown{m_liveView.scene(), view.viewport()->size(), view.scrollPosition(), frame,
                                     m_scene.referenceFrame()};
    m_saver.save(
        m_texts.text(u"comparison"_s, u"save_title"_s, u"Save comparison"_s),
        m_texts.text(u"comparison"_s, u"save_message"_s,
                     u"Both pictures are saved as one. A name that ends in .png keeps every pixel as it is; "
                     ".jpg makes a smaller file."_s),
        proposedName(), [shown = std::move(shown)] { return BWComparisonPicture::of(shown); },
        [](const QImage &picture, const QUrl &target, BWExportWatch &watch) {
            return BWPictureExport::write(picture, target, watch);
        });
}
