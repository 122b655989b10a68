#pragma once

#include <QString>

/// The texts that Qt itself brings: names of keys, the menu of a text field, the file dialog where the desktop has none
/// of its own. GUI thread.
class BWQtTexts {
public:
    /// Shows them in that language ("de") from now on, in place of the one before. They stay English where Qt has no
    /// translation, or it is not installed, which is logged.
    static void setLanguage(const QString &language);
};
