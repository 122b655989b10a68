#include "App/LiveView/BWComparison.h"

#include "App/LiveView/BWLiveViewController.h"
#include "App/LiveView/BWSceneController.h"
#include "Model/Albums/BWAlbumContents.h"
#include "Model/LiveView/BWComparisonPicture.h"
#include "Utils/BWFilePath.h"
#include "Utils/BWLogging.h"
#include "Utils/BWUIUtils.h"
#include "Views/Albums/BWAlbumTexts.h"
#include "Views/MainWindow/BWCenteringClipView.h"
#include "Views/MainWindow/BWComparisonMarks.h"
#include "Views/MainWindow/BWComparisonStrip.h"
#include "Views/MainWindow/BWMainMenu.h"
#include "Views/MainWindow/BWMainWindow.h"
#include "Views/Utils/BWFilePanels.h"

#include <algorithm>
#include <QAction>
#include <QFile>
#include <QLocale>
#include <QStandardPaths>
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
      m_clock(clock)
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
        if (m_scene.main() == Main::Album)
            end(); // it takes the place of both
        else
            showTexts();
    });
}

BWComparison::~BWComparison()
{
    if (m_watch)
        m_watch->cancel();
    if (m_slow)
        m_slow->cancel();
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
    if (m_shown.modified.isValid())
        texts.reference += u" · "_s + QLocale().toString(m_shown.modified, QLocale::ShortFormat);
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
    const auto picture = std::make_shared<QImage>();
    m_thread.run([picture,
                  shown = std::make_shared<BWComparisonPicture::Shown>(
                      BWComparisonPicture::Shown{m_liveView.scene(), view.viewport()->size(), view.scrollPosition(),
                                                 frame, m_scene.referenceFrame()})]() mutable {
        *picture = BWComparisonPicture::of(*shown);
        shown.reset(); // a camera gets its buffer back
    });
    BWFilePanels::Save panel;
    panel.title = m_texts.text(u"comparison"_s, u"save_title"_s, u"Save comparison"_s);
    panel.message =
        m_texts.text(u"comparison"_s, u"save_message"_s,
                     u"Both pictures are saved as one. A name that ends in .png keeps every pixel as it is; "
                     ".jpg makes a smaller file."_s);
    panel.extension = u"jpg"_s;
    panel.otherExtension = u"png"_s;
    panel.folder = BWFilePath::fromLocal(QStandardPaths::writableLocation(QStandardPaths::DesktopLocation));
    panel.name = proposedName();
    m_callbacks.panels.save(&m_window, panel, [this, picture](const QUrl &target) { write(picture, target); });
}

void BWComparison::write(std::shared_ptr<QImage> picture, const QUrl &target)
{
    constexpr double noticeable = 0.5; // seconds
    BWAlbumTexts texts;
    texts.localizeWithManager(m_texts);
    m_watch = std::make_shared<BWExportWatch>();
    m_slow = DispatchAfterStrict::dispatchForQueue(
        this, [this, text = texts.savingProgress.arg(target.fileName())] { m_callbacks.showProgress(text); },
        noticeable, m_clock);
    m_thread.run([this, alive = m_alive.watch(), picture = std::move(picture), target, watch = m_watch] {
        const BWExportResult result = BWComparisonPicture::write(*picture, target, *watch);
        if (result.outcome == BWExportResult::Outcome::Failed)
            qCWarning(bwApp).noquote() << "Cannot save" << target.toDisplayString() << '-' << result.reason;
        BWMainQueue::post(alive, [this, result] { written(result); });
    });
}

void BWComparison::written(const BWExportResult &result)
{
    BWAlbumTexts texts;
    texts.localizeWithManager(m_texts);
    m_watch.reset();
    std::exchange(m_slow, {})->cancel();
    m_callbacks.showProgress({});
    if (result.outcome == BWExportResult::Outcome::Done)
        m_callbacks.say(texts.saved.arg(result.file.fileName()));
    else if (result.outcome == BWExportResult::Outcome::Failed)
        BWUIUtils::displayOKAlertOver(m_window, texts.errorSavingTitle,
                                      texts.errorSaving.value(result.problem) + u"\n\n"_s + result.file.toLocalFile());
}
