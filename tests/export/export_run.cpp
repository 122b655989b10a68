// SPDX-License-Identifier: GPL-3.0-or-later
// Saves files as the program does: export_run TARGET, with the files' names, each ended by a zero byte, from standard
// input; export_run TARGET join RATE makes a movie of such files, export_run TARGET smaller QUALITY MOVIE a smaller one. Prints the outcome, the problem, and the memory used at first and at most.
#include "Model/Export/BWFileExport.h"
#include "Model/Export/BWMovieExport.h"
#include "Utils/BWFilePath.h"

#include <cstdio>
#include <cstdlib>
#include <QCoreApplication>
#include <QFile>

namespace {

/// In KiB.
long memory(const QByteArray &which)
{
    QFile status(QStringLiteral("/proc/self/status"));
    if (!status.open(QIODevice::ReadOnly))
        return -1;
    const QByteArray text = status.readAll();
    const qsizetype begin = text.indexOf(which) + which.size() + 1;
    return text.mid(begin, text.indexOf("kB", begin) - begin).trimmed().toLong();
}

QList<QUrl> filesFromInput()
{
    QFile input;
    QList<QUrl> files;
    if (input.open(stdin, QIODevice::ReadOnly)) {
        for (const QByteArray &name : input.readAll().split('\0')) {
            if (!name.isEmpty())
                files.append(BWFilePath::url(name));
        }
    }
    return files;
}

} // namespace

int main(int argc, char *argv[])
{
    const QCoreApplication application(argc, argv);
    if (argc < 2)
        return 2;
    const QList<QUrl> files = filesFromInput();
    const long before = memory("VmRSS");
    BWFileExport fileExport;
    const QUrl target = BWFilePath::url(argv[1]);
    const auto finished = [before](const BWExportResult &result) {
        std::printf("%d %d %ld %ld %s\n", static_cast<int>(result.outcome), static_cast<int>(result.problem), before,
                    memory("VmHWM"), qPrintable(result.reason));
        QCoreApplication::exit(static_cast<int>(result.outcome));
    };
    const int number = argc > 3 ? std::atoi(argv[3]) : 0;
    const auto work = [=](BWExportWatch &watch) {
        return argc > 4 ? BWMovieExport::makeSmaller(BWFilePath::url(argv[4]), target,
                                                     static_cast<BWSmallerMovie::Quality>(number), watch)
                        : BWMovieExport::joinPictures(files, number, target, watch);
    };
    const bool begun = argc > 2 ? fileExport.start(work, target, finished) : fileExport.start(files, target, finished);
    return begun ? QCoreApplication::exec() : 2;
}
