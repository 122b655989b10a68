// SPDX-License-Identifier: GPL-3.0-or-later
#include "App/Start/BWProcess.h"

#include "Utils/BWLogging.h"

#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <malloc.h>
#include <QByteArray>
#include <QCoreApplication>
#include <QTextStream>
#include <QtGlobal>
#include <thread>
#include <unistd.h>
#include <utility>

namespace {

constexpr int quitSignalNumbers[] = {SIGTERM, SIGINT, SIGHUP};

int readingEnd = -1;
int writingEnd = -1;

/// A handler may do next to nothing, but it may write into a pipe.
void writeSignal(int number)
{
    const int reason = errno;
    const auto byte = static_cast<unsigned char>(number);
    [[maybe_unused]] const ssize_t written = ::write(writingEnd, &byte, 1);
    errno = reason;
}

int openPipe()
{
    int ends[2];
    if (::pipe2(ends, O_CLOEXEC | O_NONBLOCK) != 0)
        return -1;
    readingEnd = ends[0];
    writingEnd = ends[1];
    return readingEnd;
}

void setHandler(void (*handler)(int))
{
    for (const int number : quitSignalNumbers) {
        struct sigaction now;
        if (::sigaction(number, nullptr, &now) != 0 || now.sa_handler == SIG_IGN)
            continue;
        struct sigaction action = {};
        action.sa_handler = handler;
        action.sa_flags = SA_RESTART | (number == SIGINT ? SA_RESETHAND : 0);
        ::sigaction(number, &action, nullptr);
    }
}

QtMessageHandler handlerBefore = nullptr;

void reportNoDisplay(QtMsgType type, const QMessageLogContext &context, const QString &message)
{
    if (type != QtFatalMsg) {
        handlerBefore(type, context, message);
        return;
    }
    QByteArray displays;
    for (const char *name : {"DISPLAY", "WAYLAND_DISPLAY"}) {
        const QByteArray value = qgetenv(name);
        displays += displays.isEmpty() ? "" : ", ";
        displays += QByteArray(name) + (value.isEmpty() ? " is not set" : " is \"" + value + '"');
    }
    std::fprintf(stderr, "brimwellpro: No display to open a window on (%s)\n", displays.constData());
    std::_Exit(1);
}

} // namespace

void BWProcess::openStandardStreams()
{
    for (int descriptor = STDIN_FILENO; descriptor <= STDERR_FILENO; ++descriptor) {
        if (::fcntl(descriptor, F_GETFD) < 0)
            ::open("/dev/null", O_RDWR); // takes the lowest number that is free
    }
}

void BWProcess::shareHeap()
{
    ::mallopt(M_ARENA_MAX, 2);
}

void BWProcess::outliveLogReaders()
{
    struct sigaction action = {};
    action.sa_handler = [](int) {}; // not SIG_IGN, which the programs that we start would inherit
    action.sa_flags = SA_RESTART;
    ::sigaction(SIGPIPE, &action, nullptr);
}

bool BWProcess::homeIsUsable()
{
    return qgetenv("HOME").isValidUtf8() && qgetenv("XDG_CONFIG_HOME").isValidUtf8();
}

void BWProcess::printError(const QString &text)
{
    QTextStream(stderr) << "brimwellpro: " << text << '\n';
}

void BWProcess::endSoon()
{
    constexpr std::chrono::seconds patience(10);
    std::thread([patience] {
        std::this_thread::sleep_for(patience);
        qCWarning(bwApp, "Quit: something hangs; the process ends without waiting for it");
        std::_Exit(0);
    }).detach();
    // Not quit(), which asks the windows again whether they may close.
    QCoreApplication::exit(0);
}

BWQuitSignals::BWQuitSignals(std::function<void()> end)
    : m_end(std::move(end)), m_notifier(openPipe(), QSocketNotifier::Read)
{
    if (readingEnd < 0)
        return;
    QObject::connect(&m_notifier, &QSocketNotifier::activated, &m_notifier, [this] { take(); });
    setHandler(&writeSignal);
}

BWQuitSignals::~BWQuitSignals()
{
    if (readingEnd < 0)
        return;
    setHandler(SIG_DFL);
    m_notifier.setEnabled(false);
    ::close(std::exchange(readingEnd, -1));
    ::close(std::exchange(writingEnd, -1));
}

void BWQuitSignals::take()
{
    unsigned char number = 0;
    while (::read(readingEnd, &number, 1) == 1) {
        qCInfo(bwApp, "Quit: requested by %s", number == SIGTERM ? "SIGTERM" : number == SIGINT ? "SIGINT" : "SIGHUP");
        m_end();
    }
}

BWNoDisplay::BWNoDisplay()
{
    handlerBefore = qInstallMessageHandler(&reportNoDisplay);
}

BWNoDisplay::~BWNoDisplay()
{
    qInstallMessageHandler(handlerBefore);
}
