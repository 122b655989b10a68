// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Utils/BWMainQueue.h"
#include "Utils/BWWorkerPool.h"

#include <functional>
#include <QObject>
#include <QUrl>

class BWFilePanels;
class BWMainWindow;
class BWRepository;
struct BWOldSettingsFile;

/// The menu item that imports old settings: asks for the file, reads it and looks for its albums on another thread, and
/// reports the outcome. GUI thread.
class BWImportMenu : public QObject {
    Q_OBJECT

public:
    /// `takenOver` is called after an import, before the outcome is reported. All must outlive this object.
    BWImportMenu(BWMainWindow &window, BWRepository &repository, BWFilePanels &panels, std::function<void()> takenOver);

    /// Asks the user for a file.
    void chooseFile();

private:
    void read(const QUrl &url);
    void finish(const BWOldSettingsFile &file, const QList<QUrl> &folders, const QString &name);

    BWMainWindow &m_window;
    BWRepository &m_repository;
    BWFilePanels &m_panels;
    std::function<void()> m_takenOver;
    BWWorkerPool m_reader;
    BWAliveToken m_alive;
};
