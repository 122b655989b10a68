// SPDX-License-Identifier: GPL-3.0-or-later
#include "App/Capture/BWSeriesController.h"

#include "BWACUDriver/BWStill.h"
#include "Model/Capture/BWSeriesTexts.h"
#include "Model/LiveView/BWLiveRenderer.h"
#include "Model/Settings/BWConfigManager.h"
#include "Model/Texts/BWLocalizationManager.h"
#include "Utils/BWFilePath.h"
#include "Utils/BWUIUtils.h"
#include "Views/Albums/BWAlbumTexts.h"
#include "Views/MainWindow/BWMainMenu.h"
#include "Views/MainWindow/BWMainWindow.h"
#include "Views/MainWindow/BWStatusLine.h"

#include <algorithm>
#include <QAction>
#include <QApplication>
#include <QFile>
#include <QJsonDocument>
#include <utility>

using namespace Qt::StringLiterals;

namespace {

constexpr std::chrono::seconds newestEvery(10);
constexpr double seriesNoticeSeconds = 8; // two sentences, for people who are looking elsewhere

} // namespace

BWSeriesController::BWSeriesController(Parts parts, std::function<BWCameraPtr()> camera,
                                       std::function<void(const QUrl &)> saved, const QString &recordFile,
                                       BWClock &clock)
    : m_parts(std::move(parts)),
      m_camera(std::move(camera)),
      m_saved(std::move(saved)),
      m_clock(clock),
      m_run({m_parts.albums, m_parts.capture, m_camera,
             [this] {
                 if (isSingle())
                     m_parts.feedback.snapshot();
             },
             [this](const QUrl &file) { pictureSaved(file); }},
            recordFile, clock),
      m_offer({m_parts.window, m_parts.statusLine, m_parts.texts, [this] { return m_run.files(); }, m_parts.makeMovie})
{
    connect(m_parts.window.menu().series, &QAction::triggered, this, &BWSeriesController::toggle);
    connect(&m_run, &BWSeriesRun::runningChanged, this, [this](bool running) {
        m_parts.window.menu().showSeries(running);
        showProgress();
        if (running)
            m_offer.seriesBegan();
        Q_EMIT runningChanged(running);
    });
    connect(&m_run, &BWSeriesRun::ended, this, &BWSeriesController::report);
    connect(&m_run.series(), &BWSeries::changed, this, &BWSeriesController::showProgress);
    connect(&m_run.series(), &BWSeries::gapEnded, this, [this](const BWSeries::Gap &gap) {
        m_parts.statusLine.showForAMoment(BWSeriesTexts::ofGap(gap, m_parts.texts), seriesNoticeSeconds);
    });
}

void BWSeriesController::toggle()
{
    if (isRunning())
        m_run.stop();
    else if (!QApplication::activeModalWidget())
        ask();
}

void BWSeriesController::ask()
{
    const auto before = BWSeriesPlan::fromJson(QJsonDocument::fromJson(m_parts.config.series().toUtf8()).object());
    QStringList names;
    const QList<BWAlbumPtr> albums = m_parts.albums.albums();
    const QString defaultName = m_parts.texts.text(u"album_manager"_s, u"default_album_name"_s, u"Default Album"_s);
    for (const BWAlbumPtr &album : albums)
        names << album->shownName(defaultName);
    auto *dialog = new BWSeriesDialog(
        {before.value_or(BWSeriesPlan()), m_parts.albums.selectedIndex(), freeName()}, names,
        [this, bytes = pictureBytes()](const BWSeriesPlan &plan) {
            return BWSeriesTexts::summary(plan, bytes, m_parts.texts);
        },
        [this, albums](const BWSeriesDialog::Choice &choice) {
            return start({choice.plan, static_cast<int>(m_parts.albums.albums().indexOf(albums.value(choice.album))),
                          choice.newAlbum});
        },
        &m_parts.window);
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    dialog->localizeWithManager(m_parts.texts);
    dialog->open();
}

/// Null if the series has begun.
QString BWSeriesController::start(const BWSeriesDialog::Choice &choice)
{
    BWAlbumPtr album = m_parts.albums.albums().value(choice.album);
    if (!album) { // a new one, or one that was taken off the list meanwhile
        QUrl folder;
        if (QString problem = problemWith(choice.newAlbum, &folder); !problem.isNull())
            return problem;
        m_parts.albums.addAlbumsFromPaths({folder});
        const QList<BWAlbumPtr> &albums = m_parts.albums.albums();
        const auto found = std::find_if(albums.cbegin(), albums.cend(),
                                        [&folder](const BWAlbumPtr &one) { return one->path() == folder; });
        album = found != albums.cend() ? *found : m_parts.albums.currentAlbum();
    }
    m_parts.config.setSeries(QString::fromUtf8(QJsonDocument(choice.plan.toJson()).toJson(QJsonDocument::Compact)));
    m_run.start(choice.plan, album);
    return {};
}

/// Null if there is a folder for an album of that name.
QString BWSeriesController::problemWith(const QString &name, QUrl *folder) const
{
    using Problem = BWAlbumManager::FolderProblem;
    BWAlbumTexts texts;
    texts.localizeWithManager(m_parts.texts);
    *folder = BWFilePath::normalized(m_parts.albums.pathForAlbumName(name));
    switch (BWAlbum::isName(name) ? BWAlbumManager::makeAlbumFolder(*folder) : Problem::Name) {
    case Problem::None:
        return {};
    case Problem::Name:
        return texts.folderName.arg(name);
    case Problem::Taken:
        return texts.folderTaken.arg(name);
    case Problem::NotAllowed:
        return texts.folderNotAllowed.arg(name);
    case Problem::Failed:
        break;
    }
    return texts.folderFailed.arg(name);
}

/// "Series 2024-06-07", numbered if there is one already.
QString BWSeriesController::freeName() const
{
    const QString name = u"%1 %2"_s.arg(m_parts.texts.text(u"series"_s, u"album_name"_s, u"Series"_s),
                                        QDate::currentDate().toString(Qt::ISODate));
    const QList<BWAlbumPtr> &albums = m_parts.albums.albums();
    for (int number = 1;; ++number) {
        QString numbered = name + QString::fromLatin1(BWFilePath::numberSuffix(number));
        if (std::none_of(albums.cbegin(), albums.cend(),
                         [&numbered](const BWAlbumPtr &album) { return album->name() == numbered; }))
            return numbered;
    }
}

bool BWSeriesController::isSingle() const
{
    return m_run.series().plan().pictures() == 1;
}

/// Those that what shows now would take.
qint64 BWSeriesController::pictureBytes() const
{
    constexpr qint64 usual = 1'000'000;
    constexpr qint64 quicklyEncoded = 2'100'000; // pixels: 10 ms
    constexpr int pixelsInByte = 5; // of a detailed picture
    const BWFrame frame = m_parts.live.currentFrame();
    if (frame.isNull())
        return usual;
    if (frame.pixelFormat() == BWPixelFormat::MJPEG)
        return static_cast<qint64>(frame.plane(0).size);
    const qint64 pixels = qint64(frame.width()) * frame.height();
    return pixels <= quicklyEncoded ? BWStill::jpegOf(frame).size() : pixels / pixelsInByte;
}

void BWSeriesController::pictureSaved(const QUrl &file)
{
    if (m_savedAt && m_clock.now() - *m_savedAt < newestEvery)
        return;
    m_savedAt = m_clock.now();
    m_saved(file);
}

void BWSeriesController::showProgress()
{
    if (isRunning())
        m_parts.statusLine.setSeries(BWSeriesTexts::progress(m_run.series(), m_parts.texts),
                                     BWSeriesTexts::spoken(m_run.series(), m_parts.texts));
    else
        m_parts.statusLine.setSeries({});
}

void BWSeriesController::report(const BWSeriesResult &result)
{
    m_savedAt.reset();
    if (!result.last.isEmpty())
        m_saved(result.last);
    if (result.reason == BWSeries::Reason::LeftForNextStart)
        return;
    const bool isSnapshot = isSingle() && result.reason == BWSeries::Reason::Done;
    const BWCaptureNotice notice = isSnapshot
        ? BWCaptureNotice::of({BWMediaType::Image, result.last, {}, {}, {}, result.album}, m_parts.texts)
        : BWSeriesTexts::ofEnd(result, m_parts.texts);
    if (notice.title.isNull())
        m_parts.statusLine.showForAMoment(notice.text, isSnapshot ? BWStatusLine::momentSeconds : seriesNoticeSeconds);
    else
        BWUIUtils::displayOKAlert(notice.title, notice.text);
    if (!isRunning()) // another one may have begun during the alert
        m_offer.seriesEnded(result);
}

void BWSeriesController::offerToResume()
{
    const std::optional<BWSeriesRecord> record = m_run.unfinished();
    if (!record)
        return;
    const BWCaptureNotice question = BWSeriesTexts::ofUnfinished(*record, m_parts.texts);
    const bool goesOn = BWUIUtils::displayChoiceAlert(
        question.title, question.text, m_parts.texts.text(u"series"_s, u"resume_button"_s, u"&Go on"_s),
        m_parts.texts.text(u"series"_s, u"end_button"_s, u"&End series"_s));
    if (isRunning())
        return; // another one was begun meanwhile
    if (goesOn)
        m_run.resume(*record);
    else
        m_run.forget();
}

bool BWSeriesController::askToStop()
{
    if (!isRunning())
        return true;
    const BWCaptureNotice question = BWSeriesTexts::ofQuitting(m_parts.texts);
    const bool may = BWUIUtils::displayOKCancelAlert(question.title, question.text);
    if (may)
        m_run.stop();
    return may;
}
