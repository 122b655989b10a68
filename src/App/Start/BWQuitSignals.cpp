#include "App/Start/BWQuitSignals.h"

#include "Utils/BWLogging.h"

#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <unistd.h>
#include <utility>

namespace {

constexpr int endingSignals[] = {SIGTERM, SIGINT, SIGHUP};

int readingEnd = -1;
int writingEnd = -1;

/// A handler may do next to nothing, but it may write into a pipe.
void handle(int number)
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
    for (const int number : endingSignals) {
        struct sigaction now;
        if (::sigaction(number, nullptr, &now) != 0 || now.sa_handler == SIG_IGN)
            continue;
        struct sigaction action = {};
        action.sa_handler = handler;
        action.sa_flags = SA_RESTART | (number == SIGINT ? SA_RESETHAND : 0);
        ::sigaction(number, &action, nullptr);
    }
}

} // namespace

BWQuitSignals::BWQuitSignals(std::function<void()> end)
    : m_end(std::move(end)), m_notifier(openPipe(), QSocketNotifier::Read)
{
    if (readingEnd < 0)
        return;
    QObject::connect(&m_notifier, &QSocketNotifier::activated, &m_notifier, [this] { take(); });
    setHandler(&handle);
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
        qCInfo(bwApp, "Quit: asked by %s", number == SIGTERM ? "SIGTERM" : number == SIGINT ? "SIGINT" : "SIGHUP");
        m_end();
    }
}
