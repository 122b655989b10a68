// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "BWACUDriver/DispatchAfterStrict.h"
#include "Model/Thumbnails/BWThumbnailMaker.h"
#include "Utils/BWMainQueue.h"
#include "Utils/BWWorkerPool.h"

#include <memory>
#include <optional>
#include <QImage>
#include <QMetaType>
#include <QObject>
#include <QString>
#include <QUrl>

class BWLocalizationManager;

/// What can be shown of a file of an album: its picture, or the first one of a movie.
struct BWAlbumPicture {
    enum class Problem {
        None,
        PartlyDamaged, ///< the only one with an image: what could not be read of it is grey, or wrong
        Damaged, ///< so much that nothing can be shown
        Gone,
        Unreadable, ///< not allowed, or not a file, or the disk has a fault
        Empty,
        NotAPicture,
        NoMoviePicture,
        TooLarge,
        NoMemory,
    };

    QUrl file;
    QImage image{}; ///< in full size, 32-bit, opaque, upright; null if there is none
    Problem problem = Problem::None;
    bool isMovie = false;
    std::optional<BWFileStamp> stamp{}; ///< of the file, as it was when it was read; nothing if there was none

    /// A sentence for the user; null if there is no problem.
    static QString text(Problem problem, BWLocalizationManager &texts);
};
Q_DECLARE_METATYPE(BWAlbumPicture)

/// Reads pictures of albums in the background, in full size. Only the newest request counts. A file on a disk that does
/// not answer holds up nothing but itself. GUI thread, unless a comment says otherwise.
class BWStillLoader : public QObject {
    Q_OBJECT

public:
    static constexpr qint64 mostPixels = 100'000'000;
    /// Without a result after that many seconds, takesLong() is emitted.
    static constexpr double patience = 0.5;

    explicit BWStillLoader(BWClock &clock = BWClock::system());
    ~BWStillLoader() override;

    /// Replaces an earlier request whose result has not been delivered.
    void load(const QUrl &file);
    /// Loads a picture that is shown anew if its file has changed since; else nothing is emitted, as if never called.
    void loadIfChanged(const BWAlbumPicture &shown);
    /// Drops it.
    void cancel();

    /// Reads one file, waiting for its disk. Any thread.
    static BWAlbumPicture read(const QUrl &file);

Q_SIGNALS:
    void loaded(const BWAlbumPicture &still);
    void takesLong(const QUrl &file);

private:
    struct Shared;

    void start(const QUrl &file, const std::optional<BWFileStamp> &known);

    BWClock &m_clock;
    const std::shared_ptr<Shared> m_shared; // with threads that may be left behind
    DispatchAfterStrict::Handle m_slow;
    BWAliveToken m_alive;
    std::unique_ptr<BWWorkerPool> m_thread; // of the newest request
};
