// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <csignal>
#include <QtGlobal>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

/// Whether that mistake aborts a process, which is forked for it.
template <typename Mistake>
bool aborts(const Mistake &mistake)
{
    const pid_t helper = ::fork();
    if (helper == 0) {
        const rlimit noCoreFile{0, 0};
        ::setrlimit(RLIMIT_CORE, &noCoreFile);
        qInstallMessageHandler(nullptr); // the test's handlers would count it as a failure
        std::signal(SIGABRT, SIG_DFL);
        mistake();
        ::_exit(0);
    }
    int status = 0;
    return ::waitpid(helper, &status, 0) == helper && WIFSIGNALED(status) && WTERMSIG(status) == SIGABRT;
}
