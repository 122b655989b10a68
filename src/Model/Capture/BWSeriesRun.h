// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Model/Capture/BWCaptureController.h"
#include "Model/Capture/BWSeries.h"
#include "Model/Capture/BWSeriesFile.h"

#include <functional>
#include <optional>
#include <QObject>
#include <QUrl>

/// What became of a series.
struct BWSeriesResult {
    BWSeriesPlan plan;
    BWSeries::Reason reason = BWSeries::Reason::Done;
    qint64 saved = 0;
    qint64 missed = 0;
    BWAlbumPtr album;
    QUrl last; ///< its last file in the album; empty without any

    /// Whether there are pictures for a movie.
    bool makesMovie() const { return saved > 1 && reason != BWSeries::Reason::AlbumGone; }
};

/// Runs a series: takes its pictures with whichever camera streams, from the live image even while one is frozen, into one
/// album, whichever is current; watches that album's disk; and keeps a record of it, with which a later run of the program
/// can go on. GUI thread.
class BWSeriesRun : public QObject {
    Q_OBJECT

public:
    /// All must outlive this object.
    struct Parts {
        BWAlbumManager &albums;
        BWCaptureController &capture;
        std::function<BWCameraPtr()> camera; ///< the current one
        std::function<void()> taken = {}; ///< a picture was taken; it is not saved yet
        std::function<void(const QUrl &file)> saved = {};
    };
    /// An album's disk.
    struct Disk {
        bool isThere = false; ///< the folder
        bool isFull = false; ///< nearly, or that of temporary files
        quint64 device = 0; ///< an unmounted disk leaves a folder on another one
    };
    /// Waits for the disk.
    using Look = std::function<Disk(const QUrl &album)>;

    BWSeriesRun(Parts parts, const QString &recordFile, BWClock &clock = BWClock::system(),
                std::function<BWSeries::Time()> now = &BWSeries::timeSinceBoot, Look look = &BWSeriesRun::lookAt);

    void start(const BWSeriesPlan &plan, const BWAlbumPtr &album);
    /// Without effect if none is running. Pictures on their way still come into the album.
    void stop(BWSeries::Reason reason = BWSeries::Reason::Stopped);

    bool isRunning() const { return m_series.isRunning(); }
    const BWSeries &series() const { return m_series; }
    const BWAlbumPtr &album() const { return m_album; }
    /// Of the album; after the end some may still join them.
    const BWSeriesFiles &files() const { return m_files; }

    /// The series that an earlier run left unfinished; nothing if there is none, or another program has it. It must be
    /// followed by resume() or forget(), before another series is started.
    std::optional<BWSeriesRecord> unfinished();
    void resume(const BWSeriesRecord &record);
    void forget();

    static Disk lookAt(const QUrl &album);

Q_SIGNALS:
    void runningChanged(bool running);
    void ended(const BWSeriesResult &result);

private:
    void begin(const BWAlbumPtr &album, const BWSeriesFiles &files);
    void begun();
    void take(unsigned request);
    void pictureDone(const BWCaptureResult &result);
    void lookAtDisk();
    void looked(const Disk &disk);
    void store();
    void finish();

    const Parts m_parts;
    const Look m_look;
    BWSeriesFile m_file;
    BWSeries m_series;
    BWAlbumPtr m_album;
    BWSeriesFiles m_files;
    QUrl m_last;
    std::optional<Disk> m_disk; // as it was first
    bool m_looking = false;
    bool m_lookAgain = false;
    bool m_saveFailed = false; // the disk is asked why
    int m_run = 0; // answers of an earlier one are stale
    BWAliveToken m_alive;
    BWWorkerPool m_disks{1, std::chrono::milliseconds(0)}; // one that hangs must not hold up the program's end
};
