#pragma once

#include <QByteArray>
#include <QString>

/// Looks through a binary property list before libplist reads it, which trusts some things too far: it reads a value
/// anew each time it is referred to, so that a few hundred bytes can ask for any amount of memory, it follows nested
/// containers as deep as they go, and it cuts texts at a NUL character or, in a key, stops the program.
class BWBinaryPropertyListCheck {
public:
    /// Null when all offsets and references hold and the list stays within the limits of BWPropertyList.
    static QString problem(const QByteArray &bytes);
};
