// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

struct BWCommandLine;

/// What the command line can ask for that needs neither windows nor a display: help, version, the list of cameras, the
/// import of old settings.
class BWConsoleCommands {
public:
    BWConsoleCommands() = delete;

    /// Prints the result, or to the standard error why there is none or why it could not be printed. Returns the exit
    /// code, 0 or 1.
    static int run(const BWCommandLine &line, int &argc, char **argv);
};
