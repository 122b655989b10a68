// SPDX-License-Identifier: GPL-3.0-or-later
#include "App/LiveView/BWMeasurementsInFile.h"

#include "App/LiveView/BWLiveViewController.h"
#include "App/LiveView/BWMeasuringController.h"
#include "App/LiveView/BWSceneController.h"
#include "Model/Export/BWPictureExport.h"
#include "Model/Measuring/BWMeasuredPicture.h"
#include "Utils/BWFilePath.h"
#include "Utils/BWUIUtils.h"
#include "Views/MainWindow/BWCenteringClipView.h"
#include "Views/MainWindow/BWMainMenu.h"
#include "Views/MainWindow/BWMainWindow.h"
#include "Views/MainWindow/BWMeasuringMenu.h"

#include <QAction>
#include <QDateTime>
#include <QFile>
#include <utility>

using namespace Qt::StringLiterals;
using Main = BWSceneController::Main;

namespace {

QUrl urlOf(const QString &albumPicture)
{
    return QUrl::fromEncoded(albumPicture.toLatin1(), QUrl::StrictMode);
}

QString fileNameOf(const QUrl &file)
{
    return QFile::decodeName(BWFilePath::lastComponent(file));
}

/// The scale as it is in this picture.
BWMeasurementFile::Contents contentsOf(const BWMeasuringController &measuring)
{
    const BWPictureScale scale = measuring.scale();
    BWCalibration calibration = scale.calibration;
    calibration.millimetresPerWidth = scale.millimetresPerWidth();
    calibration.otherFields.clear();
    return {measuring.measurements(), calibration, scale.unit};
}

} // namespace

BWMeasurementsInFile::BWMeasurementsInFile(const Parts &parts, BWClock &clock)
    : m_parts(parts), m_clock(clock), m_saver(parts.window, parts.texts, parts.callbacks, clock)
{
    connect(&parts.measuring, &BWMeasuringController::changed, this, &BWMeasurementsInFile::followMeasurements);
    connect(&parts.scene, &BWSceneController::mainChanged, this, &BWMeasurementsInFile::followScene);
    connect(parts.window.menu().measuring->saveCopy, &QAction::triggered, this, &BWMeasurementsInFile::saveCopy);
}

BWMeasurementsInFile::~BWMeasurementsInFile() = default;

BWMeasurementFile &BWMeasurementsInFile::fileOf(const QUrl &url)
{
    std::unique_ptr<BWMeasurementFile> &file = m_files[url];
    if (!file) {
        file = std::make_unique<BWMeasurementFile>(url, m_clock);
        connect(file.get(), &BWMeasurementFile::contentsRead, this, [this, one = file.get()] {
            if (one == m_shown)
                bringBack();
        });
        connect(file.get(), &BWMeasurementFile::done, this, [this, one = file.get()] { fileDone(*one); });
    }
    return *file;
}

void BWMeasurementsInFile::followMeasurements()
{
    const QUrl url = urlOf(m_parts.measuring.albumPicture());
    if (m_shown && m_shown->file() != url) {
        const QUrl before = std::exchange(m_shown, nullptr)->file();
        m_files.at(before)->save();
        forget(before);
    }
    if (!m_shown && !url.isEmpty()) {
        m_shown = &fileOf(url);
        m_isNew = true;
        bringBack();
        m_shown->read();
    } else if (m_shown) {
        m_shown->change(contentsOf(m_parts.measuring));
    }
    announceProblem();
}

/// A picture that is shown once more is read once more, as another program may have changed it.
void BWMeasurementsInFile::followScene()
{
    const bool isNew = std::exchange(m_isNew, false);
    if (m_shown && !isShown(*m_shown))
        m_shown->save();
    else if (m_shown && !isNew)
        m_shown->read();
    announceProblem();
}

void BWMeasurementsInFile::bringBack()
{
    const BWMeasurementFile::Contents contents = m_shown->contents();
    if (contentsOf(m_parts.measuring) != contents)
        m_parts.measuring.setMeasurements(contents.measurements, contents.calibration);
}

void BWMeasurementsInFile::announceProblem()
{
    const QString now = problem();
    if (std::exchange(m_problem, now) != now)
        Q_EMIT problemChanged();
}

bool BWMeasurementsInFile::isShown(const BWMeasurementFile &file) const
{
    return m_parts.scene.main() == Main::Album && urlOf(m_parts.scene.albumPicture()) == file.file();
}

/// Nothing is lost with a file in which nothing was measured.
void BWMeasurementsInFile::forget(const QUrl &url)
{
    const BWMeasurementFile &file = *m_files.at(url);
    if (!file.isBusy() && file.isSaved() && file.contents() == BWMeasurementFile::Contents())
        m_files.erase(url);
}

void BWMeasurementsInFile::fileDone(const BWMeasurementFile &file)
{
    const QString problem = problemOf(file);
    if (isShown(file))
        announceProblem();
    else if (!file.isSaved() && !file.isBusy() && !problem.isNull())
        m_parts.callbacks.say(u"%1: %2"_s.arg(fileNameOf(file.file()), problem));
    announceSaved();
}

QString BWMeasurementsInFile::problemOf(const BWMeasurementFile &file) const
{
    QString problem = BWPictureFile::problemText(file.problem(), m_parts.texts);
    if (problem.isNull() || file.isSaved())
        return problem;
    return BWUIUtils::inOneLine(
        problem,
        m_parts.texts.text(u"measuring"_s, u"file_use_copy"_s, u"“Save with measurements...” keeps them in a copy."_s));
}

QString BWMeasurementsInFile::problem() const
{
    return m_shown && isShown(*m_shown) ? problemOf(*m_shown) : QString();
}

QList<QUrl> BWMeasurementsInFile::unsavedFiles() const
{
    QList<QUrl> files;
    for (const auto &[url, file] : m_files) {
        if (!file->isSaved() && !file->isSaving() && file->problem() != BWPictureProblem::None
            && file->problem() != BWPictureProblem::Partly)
            files << url;
    }
    return files;
}

QStringList BWMeasurementsInFile::unsaved() const
{
    QStringList names;
    for (const QUrl &file : unsavedFiles())
        names << fileNameOf(file);
    return names;
}

QStringList BWMeasurementsInFile::onTheWay() const
{
    QStringList names;
    for (const auto &[url, file] : m_files) {
        if (file->isSaving())
            names << fileNameOf(url);
    }
    return names;
}

void BWMeasurementsInFile::whenSaved(std::function<void()> done)
{
    m_parts.measuring.completeText();
    m_whenSaved.push_back(std::move(done));
    for (const auto &[url, file] : m_files)
        file->save();
    announceSaved();
}

void BWMeasurementsInFile::announceSaved()
{
    if (m_whenSaved.empty() || !onTheWay().isEmpty())
        return;
    for (const auto &done : std::exchange(m_whenSaved, {}))
        done();
}

QString BWMeasurementsInFile::proposedName() const
{
    const QString suffix = m_parts.texts.text(u"measuring"_s, u"copy_suffix"_s, u"measured"_s);
    if (m_parts.scene.main() == Main::Album)
        return u"%1 - %2.jpg"_s.arg(fileNameOf(urlOf(m_parts.scene.albumPicture())).section(u'.', 0, -2), suffix);
    const QString kind = m_parts.scene.main() == Main::Frozen
        ? m_parts.texts.text(u"camera_window"_s, u"frozen_mark"_s, u"Frozen"_s)
        : m_parts.texts.text(u"comparison"_s, u"live"_s, u"Live"_s);
    return u"%1 %2 - %3.jpg"_s.arg(kind, QDateTime::currentDateTime().toString(u"yyyy-MM-dd HH.mm.ss"_s), suffix);
}

void BWMeasurementsInFile::saveCopy()
{
    m_parts.measuring.completeText();
    BWMeasuredPicture::Shown shown{m_parts.scene.mainFrame(),
                                   m_parts.liveView.state(),
                                   m_parts.measuring.measurements(),
                                   m_parts.measuring.scale(),
                                   m_parts.window.menu().measuring->scaleBar->isChecked(),
                                   m_parts.scene.main() == Main::Album ? QString() : m_parts.product(),
                                   m_parts.window.centeringClipView().font(),
                                   m_parts.window.locale()};
    if (shown.frame.isNull()) {
        m_parts.callbacks.say(m_parts.texts.text(u"measuring"_s, u"no_picture"_s, u"There is no picture to save."_s));
        return;
    }
    const BWPictureMetadata metadata = BWMeasuredPicture::metadataOf(shown);
    m_saver.save(
        m_parts.texts.text(u"measuring"_s, u"save_copy_title"_s, u"Save with measurements"_s),
        m_parts.texts.text(u"measuring"_s, u"save_copy_message"_s,
                           u"A copy of the picture is saved with the measurements drawn into it. A name that ends in "
                           ".png keeps every pixel as it is; .jpg makes a smaller file."_s),
        proposedName(), [shown = std::move(shown)] { return BWMeasuredPicture::of(shown); },
        [metadata](const QImage &picture, const QUrl &target, BWExportWatch &watch) {
            return BWPictureExport::write(picture, target, watch, metadata);
        });
}
