#pragma once

#include <chrono>
#include <QList>
#include <QUrl>

/// Asks whether folders are there without waiting long for a disk that does not answer, as one on a network may not.
class BWFolderCheck {
public:
    BWFolderCheck() = delete;

    /// Those of the URLs that name folders, in the same order, and those about which the disks have not answered within
    /// the patience: they are likely to be there again some time. Any thread but the GUI's.
    static QList<QUrl> folders(const QList<QUrl> &urls, std::chrono::milliseconds patience = std::chrono::seconds(1));
};
