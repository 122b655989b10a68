// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Utils/BWWorkerPool.h"

#include <QString>
#include <QUrl>

/// The list of recent files that the programs of the desktop share, in the file for it that freedesktop.org describes. What
/// other programs have put there stays; a list that cannot be read is left alone, which the log says. GUI thread; the disk
/// is waited for elsewhere.
class BWRecentFiles {
public:
    /// `list` is where the file is, or is made.
    explicit BWRecentFiles(QString list = defaultList());

    static QString defaultList();

    /// As the newest.
    void add(const QUrl &file);
    /// Takes out what we have put there.
    void clear();

private:
    const QString m_list;
    BWWorkerPool m_worker;
};
