#pragma once

#include <csignal>
#include <QtGlobal>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

/// Whether a process of its own is aborted by making that mistake.
template <typename Mistake>
bool aborts(const Mistake &mistake)
{
    const pid_t helper = ::fork();
    if (helper == 0) {
        const rlimit noCoreFile{0, 0};
        ::setrlimit(RLIMIT_CORE, &noCoreFile);
        qInstallMessageHandler(nullptr); // the handlers of the test would count it as their own end
        std::signal(SIGABRT, SIG_DFL);
        mistake();
        ::_exit(0);
    }
    int status = 0;
    return ::waitpid(helper, &status, 0) == helper && WIFSIGNALED(status) && WTERMSIG(status) == SIGABRT;
}
