// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

struct BWCommandLine;

/// The program with its windows, from the start of the process to its end.
class BWWindowedProgram {
public:
    BWWindowedProgram() = delete;

    /// Returns the exit code when the user has quit, or at once where another instance was brought to the front. Ends
    /// the process itself if a camera's thread still hangs by then.
    static int run(const BWCommandLine &line, int &argc, char **argv);
};
