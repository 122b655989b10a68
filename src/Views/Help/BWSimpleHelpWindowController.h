// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "BWACUDriver/BWCamera.h"
#include "Model/Texts/BWLocalizationManager.h"
#include "Views/Help/BWHelpContact.h"
#include "Views/Help/BWShortcutTable.h"

#include <functional>
#include <QWidget>

class BWShortcutTable;
class QAction;
class QLabel;
class QPushButton;
class QScrollArea;

/// The help window: the page with answers, an e-mail to the support that already holds what they ask first, and the
/// keyboard and mouse actions. A utility window of its own: no sheet of the camera window blocks it. GUI thread.
class BWSimpleHelpWindowController : public QWidget, public BWLocalizationManagerDelegate {
    Q_OBJECT

public:
    /// What the window needs of the application.
    struct Callbacks {
        std::function<bool(const QUrl &)> openUrl; ///< with the desktop's program for it; false if there is none
        std::function<QList<BWCameraPtr>()> cameras; ///< the attached ones
        std::function<QList<QAction *>()> actions; ///< whose shortcuts are listed, those of their menus included
    };

    /// It opens over the camera window, which must outlive it.
    BWSimpleHelpWindowController(const BWHelpContact &contact, Callbacks callbacks, const QWidget *cameraWindow);

    void localizeWithManager(BWLocalizationManager &manager) override;

    /// Brings the window to the front and activates it.
    void makeKeyAndOrderFront();

    void onFrequentlyAskedQuestions();
    void onWriteToSupport();

protected:
    void changeEvent(QEvent *event) override;

private:
    QLayout *ways();
    void updateFonts();
    void fitShortcuts();
    void prepare();
    void placeOverCameraWindow();
    void open(const QUrl &url, const QString &address);
    QUrl mail() const;

    BWHelpContact m_contact;
    Callbacks m_callbacks;
    const QWidget *m_cameraWindow;
    QList<BWShortcutSection> m_views;
    QString m_mailSubject;
    QString m_mailRequest;
    QString m_cannotOpen;
    QLabel *m_introduction;
    QPushButton *m_faqButton;
    QPushButton *m_supportButton;
    QLabel *m_supportNote;
    QLabel *m_problem;
    QLabel *m_shortcutsTitle;
    QScrollArea *m_shortcutsView;
    BWShortcutTable *m_shortcuts;
    bool m_placed = false; // once, when its size was first known
};
