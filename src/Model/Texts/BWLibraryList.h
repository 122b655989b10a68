// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QList>
#include <QString>

/// A library that the program is linked with.
struct BWLibrary {
    QString name;
    QString version; ///< of the build; what is loaded is compatible with it
    QString licence; ///< as an SPDX expression, of the library as Debian packages it

    friend bool operator==(const BWLibrary &, const BWLibrary &) = default;
};

/// The libraries that the program is made of.
class BWLibraryList {
public:
    /// Reads a JSON array of objects with "name", "version" and "licence". Entries without a name are left out, and so is
    /// everything where the file cannot be read.
    static QList<BWLibrary> fromFile(const QString &path);
    /// Those of this program.
    static QList<BWLibrary> ours() { return fromFile(QStringLiteral(":/libraries.json")); }
};
