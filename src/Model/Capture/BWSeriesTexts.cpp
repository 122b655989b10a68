// SPDX-License-Identifier: GPL-3.0-or-later
#include "Model/Capture/BWSeriesTexts.h"

#include "Model/Texts/BWIsolated.h"
#include "Model/Texts/BWLocalizationManager.h"
#include "Utils/BWFilePath.h"
#include "Utils/BWUIUtils.h"

#include <QFile>
#include <QStringList>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

using State = BWSeries::State;
using Reason = BWSeries::Reason;

constexpr auto leastCountdown = 5s; // intervals

/// "12 of 100", or "12" if it has no end.
QString countOf(const BWSeries &series, BWLocalizationManager &texts)
{
    const QString saved = QString::number(series.savedCount());
    const std::optional<qint64> all = series.plan().pictures();
    return all ? texts.text(u"series"_s, u"count"_s, u"%1 of %2"_s).arg(saved, QString::number(*all)) : saved;
}

QString inSeconds(BWSeries::Time time)
{
    return BWCaptureNotice::elapsed(std::chrono::ceil<std::chrono::seconds>(time));
}

QString shownName(const BWAlbum &album, BWLocalizationManager &texts)
{
    return album.shownName(texts.text(u"album_manager"_s, u"default_album_name"_s, u"Default Album"_s));
}

/// "16 min 30 s"; at most two of them.
QString inWords(std::chrono::seconds time, BWLocalizationManager &texts)
{
    const qint64 seconds = time.count();
    const auto part = [](const QString &text, qint64 value) { return text.arg(value).replace(u' ', u'\u00a0'); };
    const QString secondsText = texts.text(u"series"_s, u"time_seconds"_s, u"%1 s"_s);
    QStringList parts;
    for (const auto &[value, text] :
         {std::pair(seconds / 3600, texts.text(u"series"_s, u"time_hours"_s, u"%1 h"_s)),
          std::pair(seconds / 60 % 60, texts.text(u"series"_s, u"time_minutes"_s, u"%1 min"_s)),
          std::pair(seconds % 60, secondsText)}) {
        if (value > 0 && parts.size() < 2)
            parts << part(text, value);
    }
    return bwIsolated(parts.isEmpty() ? part(secondsText, 0) : parts.join(u' '));
}

QString whyEnded(const BWSeriesResult &result, BWLocalizationManager &texts)
{
    switch (result.reason) {
    case Reason::DiskFull:
        return texts.text(u"series"_s, u"disk_full"_s,
                          u"The disk is nearly full. Please make room, then start another series."_s);
    case Reason::AlbumGone:
        return texts
            .text(u"series"_s, u"album_gone"_s,
                  u"The folder of the album “%1” is not there any more. It may have been moved, renamed or removed, or "
                  "its disk was disconnected."_s)
            .arg(shownName(*result.album, texts));
    case Reason::NotSaved:
        return texts
            .text(
                u"series"_s, u"not_saved"_s,
                u"A picture could not be saved in the album “%1”. Please check that you have write permission there."_s)
            .arg(shownName(*result.album, texts));
    case Reason::Done:
    case Reason::Stopped:
    case Reason::LeftForNextStart:
        break;
    }
    return {};
}

} // namespace

QString BWSeriesTexts::progress(const BWSeries &series, BWLocalizationManager &texts)
{
    if (series.state() == State::Waiting)
        return texts.text(u"series"_s, u"starts_in"_s, u"Series: starts in %1"_s)
            .arg(inSeconds(series.untilNext().value_or(0s)));
    const std::optional<BWSeries::Time> next = series.untilNext();
    if (series.state() == State::Running && next && series.plan().interval >= leastCountdown)
        return texts.text(u"series"_s, u"next_in"_s, u"Series: %1, next in %2"_s)
            .arg(countOf(series, texts), inSeconds(*next));
    return spoken(series, texts);
}

QString BWSeriesTexts::spoken(const BWSeries &series, BWLocalizationManager &texts)
{
    switch (series.state()) {
    case State::WaitingForCamera:
        return texts.text(u"series"_s, u"waiting_for_camera"_s, u"Series: %1, waiting for the camera"_s)
            .arg(countOf(series, texts));
    case State::WaitingForDisk:
        return texts.text(u"series"_s, u"waiting_for_disk"_s, u"Series: %1, waiting for the disk"_s)
            .arg(countOf(series, texts));
    case State::Idle:
    case State::Waiting:
    case State::Running:
    case State::Ended:
        break;
    }
    return texts.text(u"series"_s, u"progress"_s, u"Series: %1"_s).arg(countOf(series, texts));
}

QString BWSeriesTexts::ofGap(const BWSeries::Gap &gap, BWLocalizationManager &texts)
{
    return texts.text(u"series"_s, u"goes_on"_s, u"The series goes on. Missed pictures: %1, in %2"_s)
        .arg(QString::number(gap.missed), BWCaptureNotice::elapsed(gap.length));
}

BWCaptureNotice BWSeriesTexts::ofEnd(const BWSeriesResult &result, BWLocalizationManager &texts)
{
    const QString saved = texts.text(u"series"_s, u"saved"_s, u"Pictures in “%1”: %2"_s)
                              .arg(shownName(*result.album, texts), QString::number(result.saved));
    const QString missed = result.missed > 0
        ? u"\n"_s + texts.text(u"series"_s, u"missed"_s, u"Missed pictures: %1"_s).arg(result.missed)
        : QString();
    if (const QString reason = whyEnded(result, texts); !reason.isNull())
        return {texts.text(u"series"_s, u"ended_early_title"_s, u"The series has ended early"_s),
                reason + u"\n\n"_s + saved + missed};
    const QString ended = result.reason == Reason::Done
        ? texts.text(u"series"_s, u"complete"_s, u"The series is complete."_s)
        : texts.text(u"series"_s, u"stopped"_s, u"The series was stopped."_s);
    return {{}, BWUIUtils::inOneLine(ended, saved) + missed, true};
}

BWCaptureNotice BWSeriesTexts::ofUnfinished(const BWSeriesRecord &record, BWLocalizationManager &texts)
{
    return {
        texts.text(u"series"_s, u"resume_title"_s, u"Go on with the series?"_s),
        texts
            .text(u"series"_s, u"resume_message"_s,
                  u"BrimwellPro ended while it took a series of pictures. Saved in “%1”: %2. Pictures that were due in "
                  "the meantime are missing."_s)
            .arg(QFile::decodeName(BWFilePath::lastComponent(record.album)), QString::number(record.saved))};
}

BWCaptureNotice BWSeriesTexts::ofQuitting(BWLocalizationManager &texts)
{
    return {
        texts.text(u"series"_s, u"quit_title"_s, u"Quit and stop the series?"_s),
        texts.text(u"series"_s, u"quit_message"_s,
                   u"A series of pictures is being taken. If you quit now, it ends; the album keeps its pictures."_s)};
}

QString BWSeriesTexts::summary(const BWSeriesPlan &plan, qint64 pictureBytes, BWLocalizationManager &texts,
                               const QLocale &locale)
{
    const auto room = [&](qint64 pictures) {
        const qint64 bytes = pictures * pictureBytes;
        return bwIsolated(locale.formattedDataSize(bytes, bytes < 1'000'000'000 ? 0 : 1, QLocale::DataSizeSIFormat));
    };
    if (const std::optional<qint64> pictures = plan.pictures())
        return texts
            .text(u"series"_s, u"summary"_s, u"Pictures: %1. Time to the last one: %2. Room needed: about %3."_s)
            .arg(locale.toString(*pictures), inWords(*plan.length(), texts), room(*pictures));
    const qint64 daily = std::chrono::seconds(24h) / plan.interval;
    const qint64 hourly = std::chrono::seconds(1h) / plan.interval;
    return (hourly > 0 ? texts.text(u"series"_s, u"summary_hourly"_s, u"Pictures in an hour: %1, about %2."_s)
                       : texts.text(u"series"_s, u"summary_daily"_s, u"Pictures in a day: %1, about %2."_s))
        .arg(locale.toString(hourly > 0 ? hourly : daily), room(hourly > 0 ? hourly : daily));
}
