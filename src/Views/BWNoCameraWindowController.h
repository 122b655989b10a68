#pragma once

#include "Views/BWNoCameraBaseWindowController.h"

class BWNoticeView;
class BWPreparingView;
class QPushButton;

/// The welcome window: stands alone until the first camera of the run is there, above the empty camera window, which a
/// click would bring before it otherwise. Closing it ends the program.
class BWNoCameraWindowController final : public BWNoCameraBaseWindowController {
    Q_OBJECT

public:
    explicit BWNoCameraWindowController(Callbacks callbacks, BWClock &clock = BWClock::system(),
                                        QWidget *cameraWindow = nullptr);

    void localizeWithManager(BWLocalizationManager &manager) override;
    void setPreparingCamera(bool preparing) override;
    void setObstacle(const QString &obstacle) override;

    void onClose();

Q_SIGNALS:
    /// The user wants the program to end. Not emitted again while a receiver is still at work.
    void terminateRequested();

protected:
    void closeEvent(QCloseEvent *event) override;

private:
    BWNoticeView *m_view;
    BWPreparingView *m_preparing;
    QPushButton *m_closeButton;
    bool m_terminating = false;
};
