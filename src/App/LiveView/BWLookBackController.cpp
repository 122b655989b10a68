// SPDX-License-Identifier: GPL-3.0-or-later
#include "App/LiveView/BWLookBackController.h"

#include "App/LiveView/BWSceneController.h"
#include "Model/Texts/BWLocalizationManager.h"
#include "Utils/BWFilePath.h"
#include "Utils/BWUIUtils.h"
#include "Views/MainWindow/BWCenteringClipView.h"
#include "Views/MainWindow/BWMainMenu.h"
#include "Views/MainWindow/BWMainWindow.h"
#include "Views/MainWindow/BWMeasuringMenu.h"
#include "Views/MainWindow/BWPictureCaption.h"
#include "Views/MainWindow/BWStatusLine.h"
#include "Views/Utils/BWViewKeys.h"

#include <QAction>
#include <QFile>
#include <QGuiApplication>
#include <QKeyEvent>
#include <utility>

using namespace Qt::StringLiterals;

namespace {

constexpr double longNotice = 5; // seconds

QString nameOf(const QUrl &file)
{
    return QFile::decodeName(BWFilePath::lastComponent(file));
}

} // namespace

BWLookBackController::BWLookBackController(BWMainWindow &window, BWSceneController &scene, BWAlbumManager &albums,
                                           const BWAlbumContents &contents, BWStatusLine &statusLine,
                                           BWLocalizationManager &texts, OpenUrl openUrl, BWClock &clock)
    : m_window(window),
      m_scene(scene),
      m_albums(albums),
      m_contents(contents),
      m_statusLine(statusLine),
      m_texts(texts),
      m_openUrl(std::move(openUrl)),
      m_loader(clock)
{
    window.setEscape(BWMainWindow::Escape::StillPicture, [this] {
        const bool leaves = isActive();
        if (leaves)
            end();
        return leaves;
    });
    connect(&m_loader, &BWStillLoader::loaded, this, [this](const BWAlbumPicture &still) {
        m_isLoading = false;
        loaded(still);
        followFile();
    });
    connect(&m_loader, &BWStillLoader::takesLong, this, [this](const QUrl &file) {
        loaded({file});
        m_isReading = true;
        updateCaption();
    });
    connect(&contents, &BWAlbumContents::reloaded, this, &BWLookBackController::followAlbum);
    connect(&contents, &BWAlbumContents::changed, this, &BWLookBackController::followAlbum);
    connect(&contents, &BWAlbumContents::filesWritten, this, [this] {
        m_mayDiffer = true;
        followFile();
    });
    connect(&scene, &BWSceneController::mainChanged, this, [this] {
        if (!m_still.file.isEmpty() && m_scene.main() != BWSceneController::Main::Album)
            leave(); // something else has taken the place
    });
    window.centeringClipView().installEventFilter(this);
}

/// With the first picture: the start need not wait for it.
void BWLookBackController::makeCaption()
{
    m_albumTexts.localizeWithManager(m_texts);
    m_caption = new BWPictureCaption(m_window.centeringClipView());
    m_caption->localizeWithManager(m_texts);
    connect(m_caption, &BWPictureCaption::stepTriggered, this, &BWLookBackController::step);
    connect(m_caption, &BWPictureCaption::playTriggered, this, &BWLookBackController::play);
    connect(m_caption, &BWPictureCaption::closeTriggered, this, &BWLookBackController::end);
}

void BWLookBackController::show(const QUrl &file)
{
    if (file.isEmpty())
        return;
    if (!m_caption)
        makeCaption();
    followAlbum();
    m_stepper.setFile(file);
    load();
    m_window.centeringClipView().setFocus(); // the keys are for the picture
}

void BWLookBackController::end()
{
    if (!isActive())
        return;
    leave();
    m_scene.showLive();
}

void BWLookBackController::leave()
{
    m_loader.cancel();
    m_isLoading = false;
    m_stepper.setFile({});
    m_still = {};
    m_caption->clear();
    m_window.setShowsLive(true);
    if (!m_liveName.isNull())
        m_window.centeringClipView().setAccessibleName(std::exchange(m_liveName, {}));
}

void BWLookBackController::load()
{
    m_isLoading = true;
    m_mayDiffer = false;
    m_loader.load(m_stepper.file());
}

/// Another program may have saved the picture, or may have completed it by now.
void BWLookBackController::followFile()
{
    if (!isActive() || m_isLoading || !std::exchange(m_mayDiffer, false))
        return;
    if (m_still.problem == BWAlbumPicture::Problem::None)
        m_loader.loadIfChanged(m_still);
    else
        load();
}

void BWLookBackController::loaded(const BWAlbumPicture &still)
{
    m_isReading = false;
    m_still = {still.file, {}, still.problem, still.isMovie, still.stamp};
    if (m_liveName.isNull())
        m_liveName = m_window.centeringClipView().accessibleName();
    m_window.setShowsLive(false);
    updateCaption();
    m_scene.showAlbumPicture(still.image, QString::fromLatin1(still.file.toEncoded()));
}

void BWLookBackController::updateCaption()
{
    if (m_still.file.isEmpty())
        return;
    BWPictureCaption::Contents contents{nameOf(m_still.file)};
    if (const auto position = m_stepper.position())
        contents.place = m_texts.text(u"look_back"_s, u"place"_s, u"%1 of %2"_s).arg(*position).arg(m_stepper.count());
    const QString problem = BWAlbumPicture::text(m_still.problem, m_texts);
    (m_still.problem == BWAlbumPicture::Problem::PartlyDamaged ? contents.remark : contents.reason) = problem;
    if (m_isReading)
        contents.reason = m_texts.text(u"look_back"_s, u"reading"_s, u"Reading the picture..."_s);
    contents.isMovie = m_still.isMovie;
    contents.hasPrevious = !m_stepper.previous().isEmpty();
    contents.hasNext = !m_stepper.next().isEmpty();
    m_caption->showContents(contents);
    m_window.centeringClipView().setAccessibleName(m_caption->text());
}

/// Only a listing says what is there; while a folder does not answer, what shows stays.
void BWLookBackController::followAlbum()
{
    const BWAlbumPtr album = m_albums.currentAlbum();
    if (std::exchange(m_album, album) != album)
        end();
    if (m_contents.state() != BWAlbumContents::State::Listed)
        return;
    const QUrl before = m_stepper.file();
    m_stepper.setFiles(m_contents.files(BWMediaType::Image) + m_contents.files(BWMediaType::Video));
    if (before.isEmpty())
        return;
    if (!isActive()) {
        m_stepper.setFile(before);
        end(); // nothing is left
    } else if (m_stepper.file() != before) {
        load();
    } else {
        updateCaption();
    }
}

void BWLookBackController::step(bool forward)
{
    const QUrl file = forward ? m_stepper.next() : m_stepper.previous();
    if (file.isEmpty())
        return;
    m_stepper.setFile(file);
    load();
}

void BWLookBackController::play()
{
    if (m_still.isMovie && !m_openUrl(m_still.file))
        BWUIUtils::displayOKAlert(m_albumTexts.errorOpening.single.title,
                                  m_albumTexts.errorOpening.single.message.arg(nameOf(m_still.file)));
}

/// The neighbour shows as soon as the album has lost the file.
void BWLookBackController::trash()
{
    const QUrl file = m_stepper.file();
    const BWMediaType type = BWFilePath::native(file).endsWith(".mov") ? BWMediaType::Video : BWMediaType::Image;
    const BWAlbumTexts::Alert &question = m_albumTexts.trashing(type).single;
    if (!BWUIUtils::displayChoiceAlert(question.title, question.message, m_albumTexts.trashOk,
                                       m_albumTexts.trashCancel))
        return;
    m_albums.removeFiles({file}, [this, file, alive = m_alive.watch()](const BWTrash::Moved &result) {
        if (alive.expired())
            return;
        if (!result.files.isEmpty())
            m_albums.moves().forget(); // the Trash comes first now
        m_statusLine.showForAMoment(
            (result.files.isEmpty() ? m_albumTexts.stayedOutOfTrash : m_albumTexts.movedToTrash).arg(nameOf(file)));
    });
}

void BWLookBackController::undoTrash()
{
    m_albums.undoRemoving([this, alive = m_alive.watch()](const BWTrash::Restored &result) {
        if (alive.expired())
            return;
        if (result.files.isEmpty()) {
            for (const BWTrash::Failure &failure : result.failed)
                m_statusLine.showForAMoment(m_albumTexts.notBroughtBack.arg(nameOf(failure.file)));
            return;
        }
        const QUrl file = result.files.first().now;
        m_statusLine.showForAMoment(m_albumTexts.broughtBack.arg(nameOf(file)));
        if (isActive())
            show(file);
    });
}

bool BWLookBackController::isMeasuring() const
{
    return m_window.menu().measuring->showTools->isChecked();
}

bool BWLookBackController::takes(const QKeyEvent &key) const
{
    // Whoever measures means the last measurement, or the selected one, and not the file.
    const BWMeasuringMenu &measuring = *m_window.menu().measuring;
    if (key.matches(BWViewKeys::undo))
        return (m_albums.canUndoRemoving() || m_albums.moves().canUndo())
            && !(isMeasuring() && measuring.undo->isEnabled());
    if (key.key() == BWViewKeys::trash && isMeasuring() && measuring.remove->isEnabled())
        return false;
    return key.modifiers() == Qt::NoModifier
        && (key.key() == Qt::Key_Left || key.key() == Qt::Key_Right || key.key() == BWViewKeys::trash
            || (m_still.isMovie && key.key() == BWViewKeys::play));
}

bool BWLookBackController::press(const QKeyEvent &key)
{
    if (!takes(key))
        return false;
    if (key.matches(BWViewKeys::undo))
        m_albums.moves().canUndo() ? Q_EMIT undoMoveRequested() : undoTrash();
    else if (key.key() == Qt::Key_Left || key.key() == Qt::Key_Right)
        step((key.key() == Qt::Key_Right) != QGuiApplication::isRightToLeft());
    else if (key.isAutoRepeat())
        return true;
    else if (key.key() == BWViewKeys::trash && isMeasuring())
        m_statusLine.showForAMoment(
            m_texts
                .text(u"look_back"_s, u"delete_while_measuring"_s,
                      u"Nothing is selected to be deleted. To move the picture to the Trash, close the measuring tools "
                      "first (%1)."_s)
                .arg(m_window.menu().measuring->showTools->shortcut().toString(QKeySequence::NativeText)),
            longNotice);
    else if (key.key() == BWViewKeys::trash)
        trash();
    else
        play();
    return true;
}

bool BWLookBackController::eventFilter(QObject *watched, QEvent *event)
{
    const bool isKey = event->type() == QEvent::KeyPress || event->type() == QEvent::ShortcutOverride;
    if (!isKey || !isActive())
        return QObject::eventFilter(watched, event);
    const auto &key = static_cast<const QKeyEvent &>(*event);
    if (event->type() == QEvent::KeyPress)
        return press(key);
    if (takes(key))
        event->accept(); // no shortcut gets it
    return takes(key);
}
