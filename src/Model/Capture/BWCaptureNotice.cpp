// SPDX-License-Identifier: GPL-3.0-or-later
#include "Model/Capture/BWCaptureNotice.h"

#include "Model/Capture/BWCaptureController.h"
#include "Model/Texts/BWIsolated.h"
#include "Model/Texts/BWLocalizationManager.h"
#include "Utils/BWUIUtils.h"

#include <QStringList>

using namespace Qt::StringLiterals;

namespace {

using End = BWRecordingStatus::End;

const QString separator = u" · "_s;

/// Why a recording ended by itself; null if the user ended it.
QString reason(const BWCaptureResult &result, BWLocalizationManager &texts)
{
    switch (result.recording.end) {
    case End::None:
    case End::Asked:
    case End::NoMovies: // has not begun
        return {};
    case End::CameraChanged:
        return texts.text(u"camera_window"_s, u"recording_camera_changed"_s,
                          u"The recording ended because the picture size or the video norm was changed."_s);
    case End::CameraGone:
        // Another camera may have taken over since.
        if (!result.camera.isEmpty())
            return texts
                .text(u"camera_window"_s, u"recording_this_camera_gone"_s,
                      u"The recording ended because “%1” was unplugged."_s)
                .arg(result.camera);
        return texts.text(u"camera_window"_s, u"recording_camera_gone"_s,
                          u"The recording ended because the camera was unplugged."_s);
    case End::DiskFull:
        return texts.text(u"camera_window"_s, u"recording_disk_full"_s,
                          u"The recording ended because the disk is full."_s);
    case End::FileGone:
        return texts.text(u"camera_window"_s, u"recording_file_gone"_s,
                          u"The recording ended because its temporary file was removed."_s);
    case End::Failed:
        return texts.text(u"camera_window"_s, u"recording_failed"_s,
                          u"The recording ended because its file could not be written."_s);
    }
    return {};
}

QString leftOut(const BWRecordingStatus &recording, BWLocalizationManager &texts)
{
    if (recording.framesLeftOut == 0)
        return {};
    return BWUIUtils::inOneLine(texts.text(u"camera_window"_s, u"recording_frames_left_out"_s,
                                           u"Pictures left out because the disk or the computer was too slow:"_s),
                                QString::number(recording.framesLeftOut));
}

/// One line each, without the empty ones.
QString lines(QStringList texts, const QString &between = u"\n"_s)
{
    texts.removeAll(QString());
    return texts.join(between);
}

/// Titles have no full stop, in no language.
QString asTitle(QString sentence)
{
    if (sentence.endsWith(u'.') || sentence.endsWith(u'。'))
        sentence.chop(1);
    return sentence;
}

BWCaptureNotice saved(const BWCaptureResult &result, BWLocalizationManager &texts)
{
    const QString caption = result.type == BWMediaType::Image
        ? texts.text(u"flash_view"_s, u"snapshot_saved"_s, u"Snapshot saved"_s)
        : texts.text(u"flash_view"_s, u"video_saved"_s, u"Video saved"_s);
    const QString album = result.album
        ? result.album->shownName(texts.text(u"album_manager"_s, u"default_album_name"_s, u"Default Album"_s))
        : QString();
    const QString place = lines({album, result.file.fileName()}, separator);
    const QString ended = reason(result, texts);
    const QString missing = leftOut(result.recording, texts);
    const End end = result.recording.end;
    if (end == End::DiskFull || end == End::FileGone || end == End::Failed) {
        const QString until = texts.text(u"camera_window"_s, u"recording_saved_until_then"_s,
                                         u"What was recorded up to that point is in the album:"_s);
        return {asTitle(ended), lines({until, place, missing})};
    }
    return {{}, lines({caption + separator + place, ended, missing}), !ended.isEmpty() || !missing.isEmpty()};
}

BWCaptureNotice lost(const BWCaptureResult &result, BWLocalizationManager &texts)
{
    const End end = result.recording.end;
    if (end == End::NoMovies)
        return {texts.text(u"camera_window"_s, u"recording_impossible_title"_s, u"Videos cannot be recorded"_s),
                texts.text(u"camera_window"_s, u"recording_impossible_message"_s,
                           u"A part of BrimwellPro that videos need is missing or damaged. Please install BrimwellPro "
                           "again. Until then you can take snapshots."_s)};
    const QString ended = reason(result, texts);
    const QString notSaved =
        texts.text(u"camera_window"_s, u"capture_not_saved_title"_s, u"The capture could not be saved"_s);
    if (!result.left.isEmpty()) {
        const QString left =
            texts.text(u"camera_window"_s, u"capture_left_message"_s,
                       u"It could not be copied into the album. Please check that the album folder exists and has "
                       "free space. The capture is kept here:"_s);
        // The path has a line of its own, so that it is broken as late as can be.
        return {notSaved,
                lines({ended, u"%1\n%2"_s.arg(left, result.left.toLocalFile()), leftOut(result.recording, texts)},
                      u"\n\n"_s)};
    }
    if (result.type == BWMediaType::Video && end != End::DiskFull && end != End::Failed) {
        const QString nothing = texts.text(u"camera_window"_s, u"recording_empty"_s,
                                           u"Nothing was recorded, because the camera sent no picture."_s);
        return {{}, lines({nothing, ended}), true};
    }
    const QString message =
        texts.text(u"camera_window"_s, u"capture_not_saved_message"_s,
                   u"It could not be written to the disk. Please check that there is free space, then take it "
                   "again."_s);
    return {notSaved, message};
}

constexpr int64_t gigabyte = 1'000'000'000;

} // namespace

BWCaptureNotice BWCaptureNotice::ofRecovered(const QUrl &last, BWLocalizationManager &texts)
{
    const QString message = texts.text(u"camera_window"_s, u"captures_recovered_message"_s,
                                       u"BrimwellPro ended unexpectedly the last time, or could not save into the "
                                       "album. What it had captured is now in the album; the newest file is:"_s);
    return {texts.text(u"camera_window"_s, u"captures_recovered_title"_s, u"Captures were recovered"_s),
            BWUIUtils::inOneLine(message, last.fileName())};
}

BWCaptureNotice BWCaptureNotice::of(const BWCaptureResult &result, BWLocalizationManager &texts)
{
    return result.file.isEmpty() ? lost(result, texts) : saved(result, texts);
}

BWCaptureNotice BWCaptureNotice::ofRefused(BWCaptureRefusal reason, BWLocalizationManager &texts)
{
    switch (reason) {
    case BWCaptureRefusal::StillSaving:
        return {{},
                texts.text(u"camera_window"_s, u"recording_still_saving"_s, u"The video is still being saved."_s),
                true};
    case BWCaptureRefusal::NotStreaming:
        return {{},
                texts.text(u"camera_window"_s, u"recording_not_begun"_s,
                           u"No recording was started, because the camera is not running yet."_s),
                true};
    case BWCaptureRefusal::NoPicture:
        return {{},
                texts.text(u"camera_window"_s, u"snapshot_without_picture"_s,
                           u"No snapshot was taken, because the camera sent no further picture."_s),
                true};
    }
    return {};
}

QString BWCaptureNotice::elapsed(std::chrono::seconds duration)
{
    const QLatin1Char zero('0');
    const qint64 seconds = duration.count();
    const QString end =
        u"%1:%2"_s.arg(seconds / 60 % 60, seconds < 3600 ? 1 : 2, 10, zero).arg(seconds % 60, 2, 10, zero);
    return seconds < 3600 ? end : u"%1:%2"_s.arg(seconds / 3600).arg(end);
}

QString BWCaptureNotice::progressText(const BWRecordingStatus &status, const QLocale &locale)
{
    const int decimals = status.bytes < gigabyte ? 0 : 1;
    return u"%1 · %2"_s.arg(elapsed(std::chrono::floor<std::chrono::seconds>(status.duration)),
                            bwIsolated(locale.formattedDataSize(status.bytes, decimals, QLocale::DataSizeSIFormat)));
}
