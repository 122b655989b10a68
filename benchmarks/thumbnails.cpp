// SPDX-License-Identifier: GPL-3.0-or-later
// Makes the thumbnails of all files of a folder, as the album window does.
// Usage: bw_bench_thumbnails FOLDER PIXELS SHARED_FOLDER. Prints "thumbnails: files=N shown_ms=X stored_ms=Y cpu_ms=Z".

#include "Model/Thumbnails/BWThumbnails.h"

#include <chrono>
#include <cstdio>
#include <ctime>
#include <QCoreApplication>
#include <QDir>
#include <QTimer>

namespace {

double milliseconds(clockid_t clock)
{
    timespec time{};
    clock_gettime(clock, &time);
    return static_cast<double>(time.tv_sec) * 1e3 + static_cast<double>(time.tv_nsec) / 1e6;
}

} // namespace

int main(int argc, char **argv)
{
    QCoreApplication application(argc, argv);
    const QStringList arguments = QCoreApplication::arguments();
    const double begin = milliseconds(CLOCK_MONOTONIC);
    const QDir folder(arguments.value(1));
    QList<QUrl> files;
    for (const QString &name : folder.entryList(QDir::Files))
        files.append(QUrl::fromLocalFile(folder.filePath(name)));
    if (argc != 4 || files.isEmpty()) {
        std::fprintf(stderr, "Usage: bw_bench_thumbnails FOLDER PIXELS SHARED_FOLDER\n");
        return 2;
    }

    BWThumbnails::Options options;
    options.memory = qint64(2) * 1024 * 1024 * 1024; // all of them at once
    options.sharedFolder = QFile::encodeName(arguments.at(3));
    qsizetype ready = 0;
    double shown = 0;
    BWThumbnails thumbnails(
        [&](const QList<QUrl> &changed) {
            ready += changed.size();
            if (ready == files.size())
                shown = milliseconds(CLOCK_MONOTONIC) - begin;
        },
        options);
    thumbnails.request(files, arguments.at(2).toInt());
    QTimer idle;
    idle.callOnTimeout([&thumbnails] {
        if (thumbnails.isIdle())
            QCoreApplication::quit();
    });
    idle.start(std::chrono::milliseconds(5));
    QCoreApplication::exec();
    const double stored = milliseconds(CLOCK_MONOTONIC) - begin;

    for (const QUrl &file : files) {
        const std::optional<BWThumbnail> thumbnail = thumbnails.thumbnail(file);
        if (!thumbnail || thumbnail->kind != BWThumbnail::Kind::Picture) {
            std::fprintf(stderr, "%s has no thumbnail\n", qPrintable(file.toString()));
            return 1;
        }
    }
    std::printf("thumbnails: files=%d shown_ms=%.1f stored_ms=%.1f cpu_ms=%.1f\n", int(files.size()), shown, stored,
                milliseconds(CLOCK_PROCESS_CPUTIME_ID));
    return 0;
}
