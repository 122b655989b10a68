// SPDX-License-Identifier: GPL-3.0-or-later
#include "App/Start/BWCommandLine.h"
#include "App/Start/BWConsoleCommands.h"
#include "App/Start/BWProcess.h"
#include "App/Start/BWWindowedProgram.h"

int main(int argc, char *argv[])
{
    BWProcess::openStandardStreams();
    BWProcess::shareHeap();
    const BWCommandLine line = BWCommandLine::parse(argc, argv);
    if (!line.error.isNull()) {
        BWProcess::printError(line.error);
        return 2;
    }
    return line.needsWindows() ? BWWindowedProgram::run(line, argc, argv) : BWConsoleCommands::run(line, argc, argv);
}
