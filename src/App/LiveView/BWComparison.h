// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "App/LiveView/BWPictureSaver.h"
#include "Model/Albums/BWAlbumStepper.h"
#include "Model/Albums/BWStillLoader.h"
#include "Model/LiveView/BWScene.h"
#include "Model/Texts/BWLocalizationManager.h"

#include <functional>
#include <QObject>

class BWAlbumContents;
class BWComparisonMarks;
class BWLiveViewController;
class BWMainWindow;
class BWSceneController;

/// Compares a picture of an album with the live image, or with what stands in its place: which picture, how both are shown,
/// and what the controls for it say. Nothing of it is stored. GUI thread.
class BWComparison : public QObject {
    Q_OBJECT

public:
    /// What is needed of the rest of the program.
    struct Callbacks {
        std::function<QUrl()> pictureInMainWindow; ///< the file that is looked at in place of the live image, if any
        std::function<QUrl()> lastCapture; ///< empty if there is none
        std::function<void(const QString &)> say; ///< a sentence for the user
        BWFilePanels &panels;
    };

    /// All must outlive this object.
    BWComparison(BWMainWindow &window, BWSceneController &scene, BWLiveViewController &liveView,
                 const BWAlbumContents &contents, BWLocalizationManager &texts, Callbacks callbacks,
                 BWClock &clock = BWClock::system());

    /// Begins with the picture that is looked at, else with the last capture; or ends.
    void toggle();
    /// With that file of an album, whether or not something is compared already.
    void compareWith(const QUrl &file);
    void end();
    /// Takes the next picture of the album, or the previous one. False if nothing is being compared.
    bool step(bool forward);

    bool isComparing() const;
    BWScene::Mode mode() const { return m_mode; }
    /// The picture of the album that is shown, or on its way.
    const QUrl &file() const { return m_wanted.isEmpty() ? m_shown.file : m_wanted; }

    void setMode(BWScene::Mode mode);
    /// How opaque the reference is, or where the dividing line is.
    void setShare(double share);
    void setLinked(bool linked);

    /// Asks where, then saves both as one picture in the background: as they are shown now, however long the user takes to
    /// answer.
    void save();
    bool isSaving() const { return m_saver.isSaving(); }

private:
    void connectMenu();
    void take(const BWAlbumPicture &still);
    void followAlbum();
    void showMode();
    void showTexts();
    QString mainName() const;
    QString proposedName() const;
    double &share() { return m_mode == BWScene::Mode::Divider ? m_line : m_opacity; }

    BWMainWindow &m_window;
    BWSceneController &m_scene;
    BWLiveViewController &m_liveView;
    const BWAlbumContents &m_contents;
    BWLocalizationManager &m_texts;
    Callbacks m_callbacks;
    BWComparisonMarks *m_marks; // the window's
    BWStillLoader m_loader;
    BWAlbumStepper m_stepper;
    QUrl m_wanted; // until it is loaded
    QString m_inMain; // the album's picture in the main place
    BWAlbumPicture m_shown;
    BWScene::Mode m_mode = BWScene::Mode::SideBySide;
    double m_opacity = 0.35; // enough to aim by, while the live image stays clear
    double m_line = 0.5;
    BWPictureSaver m_saver;
};
