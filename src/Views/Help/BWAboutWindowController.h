// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Model/Texts/BWLibraryList.h"
#include "Model/Texts/BWLocalizationManager.h"

#include <QDialog>

class QLabel;
class QPushButton;
class QTreeWidget;

/// Shows the version of the program, and its libraries with their versions and licences. GUI thread.
class BWAboutWindowController : public QDialog, public BWLocalizationManagerDelegate {
    Q_OBJECT

public:
    BWAboutWindowController(const QList<BWLibrary> &libraries, QWidget *cameraWindow);

    void localizeWithManager(BWLocalizationManager &manager) override;

    /// Brings the window to the front and activates it.
    void makeKeyAndOrderFront();

protected:
    void showEvent(QShowEvent *event) override;

private:
    void fitLibraries();

    QLabel *m_version;
    QLabel *m_description;
    QLabel *m_licence;
    QLabel *m_librariesLabel;
    QTreeWidget *m_libraries;
    QLabel *m_licencesNote;
    QPushButton *m_closeButton;
};
