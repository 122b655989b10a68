// SPDX-License-Identifier: GPL-3.0-or-later
// A day of a series, a picture each second, as fast as the pictures can be saved, with the album window open at the newest:
// what the program holds on to after a part of the day, and what a picture has cost since the part before. $TMPDIR needs
// room for them, for a day 2 GB. The window takes in at once what comes within a moment; with a pause between the pictures,
// each alone, as in a real series.
// usage: bw_bench_series_day [PICTURES [FILES-THERE-BEFORE [PAUSE-IN-MILLISECONDS]]]
#include "BWACUDriver/BWCameraDetector.h"
#include "BWACUDriver/BWCameraManager.h"
#include "BWACUDriver/BWSimulatedCameras.h"
#include "BWManualClock.h"
#include "Model/Capture/BWSeriesRun.h"
#include "Model/Settings/BWSettingsFile.h"
#include "Model/Texts/BWLocalizationManager.h"
#include "TestFolder.h"
#include "Views/Albums/BWAlbumManagerWindowController.h"
#include "Views/Utils/BWFilePanels.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <malloc.h>
#include <QApplication>
#include <QElapsedTimer>
#include <QImage>
#include <QLoggingCategory>
#include <QTimer>
#include <utility>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

constexpr qint64 wholeDay = 86'400;

/// Processor time in milliseconds: what counts where other programs have the processors.
double computed(clockid_t clock)
{
    timespec time{};
    ::clock_gettime(clock, &time);
    return 1e3 * static_cast<double>(time.tv_sec) + 1e-6 * static_cast<double>(time.tv_nsec);
}

/// Keeps the longest event of the GUI thread.
class Application : public QApplication {
public:
    using QApplication::QApplication;

    bool notify(QObject *receiver, QEvent *event) override
    {
        if (std::exchange(m_isInside, true))
            return QApplication::notify(receiver, event);
        const double begun = computed(CLOCK_THREAD_CPUTIME_ID);
        QElapsedTimer passed;
        passed.start();
        const bool result = QApplication::notify(receiver, event);
        m_isInside = false;
        longest = std::max(longest, 1e-6 * static_cast<double>(passed.nsecsElapsed()));
        longestComputed = std::max(longestComputed, computed(CLOCK_THREAD_CPUTIME_ID) - begun);
        return result;
    }

    double longest = 0; // milliseconds
    double longestComputed = 0;

private:
    bool m_isInside = false;
};

double mebibytesOf(const char *name)
{
    const QByteArray status = TestFolder::read(QUrl::fromLocalFile(u"/proc/self/status"_s));
    return status.mid(status.indexOf(name)).split(':').value(1).trimmed().split(' ').first().toDouble() / 1024;
}

/// In all arenas; mallinfo2() knows only the main one.
double mebibytesAllocated()
{
    char *text = nullptr;
    std::size_t length = 0;
    std::FILE *const stream = ::open_memstream(&text, &length);
    ::malloc_info(0, stream);
    std::fclose(stream);
    const QByteArray report(text, static_cast<qsizetype>(length));
    std::free(text);
    const auto last = [&report](const char *entry) { // the sums come last
        const qsizetype at = report.lastIndexOf(entry);
        const qsizetype size = report.indexOf("size=\"", at) + 6;
        return report.mid(size, report.indexOf('"', size) - size).toDouble();
    };
    return (last("<system type=\"current\"") + last("<total type=\"mmap\"") - last("<total type=\"fast\"")
            - last("<total type=\"rest\""))
        / (1 << 20);
}

/// Prints a row of the table.
class Report {
public:
    Report() { m_passed.start(); }

    void add(Application &application, qint64 pictures)
    {
        const double now = computed(CLOCK_PROCESS_CPUTIME_ID);
        const auto since = static_cast<double>(pictures - std::exchange(m_pictures, pictures));
        std::printf("| %lld | %.1f | %.1f | %lld | %lld | %.2f | %.2f | %.1f | %.1f |\n",
                    static_cast<long long>(pictures), mebibytesOf("VmRSS"), mebibytesAllocated(),
                    static_cast<long long>(TestFolder::count(u"/proc/self/fd"_s)),
                    static_cast<long long>(TestFolder::count(u"/proc/self/task"_s)),
                    static_cast<double>(m_passed.restart()) / since, (now - std::exchange(m_computed, now)) / since,
                    std::exchange(application.longest, 0), std::exchange(application.longestComputed, 0));
        std::fflush(stdout);
    }

private:
    qint64 m_pictures = 0;
    double m_computed = computed(CLOCK_PROCESS_CPUTIME_ID);
    QElapsedTimer m_passed;
};

} // namespace

int main(int argc, char *argv[])
{
    const TestFolder folder;
    qputenv("TMPDIR", folder.folder(u"tmp"_s).toLocalFile().toUtf8());
    qputenv("XDG_CACHE_HOME", folder.folder(u"cache"_s).toLocalFile().toUtf8());
    Application application(argc, argv);
    QLoggingCategory::setFilterRules(u"bw.model.info=false\nbw.views=false"_s); // each picture; missing icons
    const auto argument = [&](int index, qint64 usual) {
        return argc > index ? QByteArray(argv[index]).toLongLong() : usual;
    };
    const qint64 pictures = argument(1, wholeDay);
    const qint64 pause = argument(3, 0);

    BWManualClock clock;
    BWSettingsFile defaults(folder.path(u"settings.conf"_s));
    BWAlbumManager albums(defaults, folder.path());
    albums.prepare();
    const QString day = QDate::currentDate().toString(u"yyyyMMdd"_s);
    for (qint64 there = argument(2, 0); there > 0; --there)
        folder.file(u"BrimwellPro/Default Album/%1_image_%2.jpg"_s.arg(day).arg(there));
    BWCaptureController capture(albums, {[] {}, [](bool) {}, [](const auto &) {}});
    const auto backend = BWSimulatedBackend::create({{.path = folder.path(u"photo.png"_s),
                                                      .pacing = BWSimulatedCameraOptions::Pacing::Manual,
                                                      .pixelFormat = BWPixelFormat::MJPEG}});
    BWCameraManager cameras;
    QImage photo(640, 480, QImage::Format_RGB32); // makes small files
    photo.fill(Qt::darkGray);
    photo.save(folder.path(u"photo.png"_s));
    backend->start(BWCameraDetector::supportedDescriptions(),
                   {[&cameras](const BWDetectedCameraPtr &device) { cameras.addDetectedCamera(device); },
                    [&cameras](const BWDetectedCameraPtr &device) { cameras.removeDetectedCamera(device); }});
    BWDialogFilePanels panels;
    BWAlbumManagerWindowController window(
        albums, defaults, {panels, [](const QUrl &) { return false; }, [](const QUrl &) {}, [](const QUrl &) {}},
        nullptr);
    BWLocalizationManager texts(QString(), {u"en"_s});
    window.localizeWithManager(texts);
    window.show();

    BWSeriesRun run({albums, capture, [&cameras] { return cameras.cameras().value(0); }, {}, {}},
                    folder.path(u"series.json"_s), clock, [&clock] { return clock.now(); });
    std::printf(
        "| pictures | MiB resident | MiB allocated | open files | threads | ms a picture | of CPU | longest event, "
        "ms | computed, ms |\n| --- | --- | --- | --- | --- | --- | --- | --- | --- |\n");
    QList<qint64> reports{pictures / 100, pictures / 50};
    for (int tenth = 1; tenth <= 10; ++tenth)
        reports << pictures * tenth / 10;
    Report report;
    QElapsedTimer pushed;
    QElapsedTimer saving;
    saving.start();
    QTimer step; // after the events of the picture before
    QObject::connect(&step, &QTimer::timeout, &application, [&, taken = qint64(-1), wanted = false]() mutable {
        const BWCameraPtr camera = cameras.cameras().value(0);
        if (!camera)
            return;
        if (!camera->started()) {
            if (std::exchange(taken, 0) < 0) {
                capture.prepareCamera(camera);
                camera->setResolution({640, 480}, [camera] { camera->startWithCompletion({}); });
            }
            return;
        }
        if (!run.isRunning() && taken == 0)
            run.start({1s, 0s, BWSeriesPlan::End::Number, pictures, 1s}, albums.currentAlbum());
        const qint64 saved = run.series().savedCount();
        if (saved > taken) {
            taken = saved;
            while (!reports.isEmpty() && reports.first() <= saved) {
                if (reports.takeFirst() == saved)
                    report.add(application, saved);
            }
            if (!run.isRunning())
                return application.quit();
            wanted = true;
        }
        if (wanted && saving.hasExpired(pause)) {
            wanted = false;
            saving.start();
            clock.advance(1s);
            pushed.invalidate();
        }
        // The request may have come after the last frame.
        constexpr qint64 interval = 3; // ms
        if (!pushed.isValid() || pushed.hasExpired(interval)) {
            pushed.start();
            backend->cameras().first()->pushFrames(1);
        }
    });
    step.start(1ms);
    const int result = application.exec();
    std::printf("missed: %lld\n", static_cast<long long>(run.series().missedCount()));
    return result;
}
