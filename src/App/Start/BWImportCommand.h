#pragma once

#include "Model/BWRepository.h"

/// Takes over old settings from the command line, without a window.
class BWImportCommand {
public:
    BWImportCommand() = delete;

    /// Prints one sentence: what was taken over, or to the standard error why nothing was. Returns the exit code, 0 or
    /// 1. There must be a QCoreApplication.
    static int run(const BWRepository::Options &options, const QString &path);
};
