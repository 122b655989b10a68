// SPDX-License-Identifier: GPL-3.0-or-later
#include "Model/Capture/BWSeriesRun.h"

#include "BWACUDriver/BWDiskSpace.h"
#include "Utils/BWFilePath.h"
#include "Utils/BWLogging.h"
#include "Utils/BWUIUtils.h"

#include <algorithm>
#include <QFile>
#include <sys/stat.h>
#include <utility>

BWSeriesRun::BWSeriesRun(Parts parts, const QString &recordFile, BWClock &clock, std::function<BWSeries::Time()> now,
                         Look look)
    : m_parts(std::move(parts)),
      m_look(std::move(look)),
      m_file(recordFile),
      m_series({[this]() -> const void * {
                    const BWCameraPtr camera = m_parts.camera();
                    return camera && camera->started() ? camera.get() : nullptr;
                },
                [this](unsigned request) { take(request); }, std::move(now)},
               clock)
{
    connect(&m_series, &BWSeries::ended, this, &BWSeriesRun::finish);
}

void BWSeriesRun::start(const BWSeriesPlan &plan, const BWAlbumPtr &album)
{
    if (isRunning() || !album || !plan.isValid())
        return;
    if (!m_file.claim())
        qCWarning(bwModel, "Series: another program has one, or no record can be kept; this one cannot be resumed");
    begin(album, {});
    m_series.start(plan);
    begun();
}

void BWSeriesRun::stop(BWSeries::Reason reason)
{
    m_series.end(reason);
}

std::optional<BWSeriesRecord> BWSeriesRun::unfinished()
{
    std::optional<BWSeriesRecord> record = m_file.read();
    if (!record || isRunning() || !m_file.claim())
        return std::nullopt;
    record = m_file.read(); // the other program may have ended it meanwhile
    const QDateTime now = QDateTime::currentDateTimeUtc();
    if (record && !record->isOver(now))
        return record;
    if (record)
        m_file.remove();
    return std::nullopt;
}

void BWSeriesRun::resume(const BWSeriesRecord &record)
{
    const QList<BWAlbumPtr> &albums = m_parts.albums.albums();
    const auto found = std::find_if(albums.cbegin(), albums.cend(),
                                    [&record](const BWAlbumPtr &album) { return album->path() == record.album; });
    begin(found != albums.cend() ? *found : std::make_shared<BWAlbum>(record.album), record.files);
    m_series.resume(record.plan, record.saved, record.missed,
                    std::chrono::milliseconds(record.first.msecsTo(QDateTime::currentDateTimeUtc())));
    begun();
}

void BWSeriesRun::forget()
{
    m_file.remove();
}

void BWSeriesRun::begin(const BWAlbumPtr &album, const BWSeriesFiles &files)
{
    ++m_run;
    m_album = album;
    m_files = files;
    m_last.clear();
    m_disk.reset();
    m_looking = m_lookAgain = m_saveFailed = false;
    lookAtDisk();
}

void BWSeriesRun::begun()
{
    if (!isRunning())
        return; // it was over already
    store();
    Q_EMIT runningChanged(true);
}

void BWSeriesRun::take(unsigned request)
{
    const BWCameraPtr camera = m_parts.camera();
    const auto mine = [this, run = m_run, alive = m_alive.watch()] { return !alive.expired() && run == m_run; };
    m_parts.capture.takeInto(m_album, camera,
                             {[this, mine, request](bool taken) {
                                  if (!mine())
                                      return;
                                  if (taken)
                                      m_series.taken(request);
                                  else
                                      m_series.notTaken(request);
                                  if (taken && m_parts.taken)
                                      m_parts.taken();
                              },
                              [this, mine](const BWCaptureResult &result) {
                                  if (mine())
                                      pictureDone(result);
                              }});
}

void BWSeriesRun::pictureDone(const BWCaptureResult &result)
{
    if (result.file.isEmpty()) {
        m_saveFailed = true;
        m_lookAgain = m_looking; // what it sees may be older
    } else {
        m_last = result.file;
        m_files.add(result.file);
        if (m_parts.saved)
            m_parts.saved(result.file);
        m_series.saved();
    }
    if (!isRunning())
        return;
    store();
    lookAtDisk();
}

void BWSeriesRun::lookAtDisk()
{
    if (std::exchange(m_looking, true))
        return;
    m_disks.run([this, look = m_look, folder = m_album->path(), alive = m_alive.watch(), run = m_run] {
        const Disk disk = look(folder);
        BWMainQueue::post(alive, [this, disk, run] {
            if (run == m_run)
                looked(disk);
        });
    });
}

void BWSeriesRun::looked(const Disk &disk)
{
    m_looking = false;
    if (std::exchange(m_lookAgain, false)) {
        lookAtDisk();
        return;
    }
    if (!m_disk)
        m_disk = disk;
    if (!disk.isThere || disk.device != m_disk->device)
        stop(BWSeries::Reason::AlbumGone);
    else if (disk.isFull)
        stop(BWSeries::Reason::DiskFull);
    else if (m_saveFailed)
        stop(BWSeries::Reason::NotSaved);
}

BWSeriesRun::Disk BWSeriesRun::lookAt(const QUrl &album)
{
    struct stat folder { };
    const QByteArray path = BWFilePath::native(album);
    if (::stat(path.constData(), &folder) != 0 || !S_ISDIR(folder.st_mode))
        return {};
    constexpr uint64_t toCome = 32 << 20; // a few pictures
    return {true,
            BWDiskSpace::isNearlyFull(path, toCome)
                || BWDiskSpace::isNearlyFull(QFile::encodeName(BWUIUtils::temporaryFolder())),
            folder.st_dev};
}

void BWSeriesRun::store()
{
    if (isRunning())
        m_file.store({m_series.plan(), m_album->path(),
                      QDateTime::currentDateTimeUtc().addMSecs(
                          -std::chrono::duration_cast<std::chrono::milliseconds>(m_series.sinceFirst()).count()),
                      m_series.savedCount(), m_series.missedCount(), m_files});
}

void BWSeriesRun::finish()
{
    if (m_series.reason() != BWSeries::Reason::LeftForNextStart)
        m_file.remove();
    Q_EMIT runningChanged(false);
    Q_EMIT ended({m_series.plan(), m_series.reason(), m_series.savedCount(), m_series.missedCount(), m_album, m_last});
}
