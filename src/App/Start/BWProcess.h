// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <functional>
#include <QSocketNotifier>

class QString;

/// What a process has to settle with the system it runs on.
class BWProcess {
public:
    BWProcess() = delete;

    /// Opens those of the standard streams that are closed. Without them the program would write its messages into the
    /// first files that it opens, a movie maybe.
    static void openStandardStreams();
    /// Makes all threads share two areas of the heap. Else each of more than a dozen has one of its own, and keeps in it
    /// the space of the largest pictures that it ever had. To be called while there is one thread.
    static void shareHeap();
    /// Keeps the process alive when the reader of its messages goes away, such as a terminal during a recording.
    static void outliveLogReaders();
    /// Whether captures and settings can be kept in the home folder. Qt takes file names for UTF-8: it would make a
    /// second folder beside one whose name is not.
    static bool homeIsUsable();
    /// One line on the standard error, after the program's name.
    static void printError(const QString &text);
    /// Leaves the event loop, and ends the process ten seconds later if that has not happened by then. Everything that
    /// matters to the user is on the disk already, so no disk, sound server or device that hangs keeps the process.
    static void endSoon();
};

/// Hands the signals that ask a program to end (SIGTERM, SIGINT, SIGHUP) to the GUI thread, so that it ends as if the
/// user had quit. A second SIGINT ends it at once. What was ignored at the start, as after nohup, stays ignored.
///
/// One at a time; made and destroyed on the GUI thread.
class BWQuitSignals {
public:
    /// `end` is called for every signal, by the event loop.
    explicit BWQuitSignals(std::function<void()> end);
    /// From then on the signals end the program at once.
    ~BWQuitSignals();
    BWQuitSignals(const BWQuitSignals &) = delete;
    BWQuitSignals &operator=(const BWQuitSignals &) = delete;

private:
    void take();

    std::function<void()> m_end;
    QSocketNotifier m_notifier;
};

/// While one lives, an application that finds no display ends with one line on standard error and exit status 1; Qt by
/// itself would abort. One at a time, around the construction of the application.
class BWNoDisplay {
public:
    BWNoDisplay();
    ~BWNoDisplay();
    BWNoDisplay(const BWNoDisplay &) = delete;
    BWNoDisplay &operator=(const BWNoDisplay &) = delete;
};
