#pragma once

#include "Views/Utils/BWFlashPicture.h"
#include "Views/Utils/BWOpacityAnimation.h"

#include <memory>
#include <QPixmap>
#include <QString>
#include <QWidget>

class BWLocalizationManager;

/// The view over the top of the live image that flashes "Snapshot saved" once, and "Recording..." as long as a
/// recording runs, with steady details beside it. Takes neither mouse nor keyboard. GUI thread, except setAction().
class BWFlashActionViewController : public QWidget {
    Q_OBJECT

public:
    enum class Action {
        SnapshotSaved = 0,
        RecordingStarted = 1,
        RecordingStopped = 2,
    };

    /// Lies over all that `content` holds, along its top edge; shows its captions below the topmost `inset` points.
    BWFlashActionViewController(QWidget &content, int inset, BWLocalizationManager &texts,
                                BWClock &clock = BWClock::system());
    ~BWFlashActionViewController() override;

    /// Done later on the GUI thread. Any thread.
    void setAction(Action action);
    /// What stands beside "Recording...", without blinking, until the next action.
    void setDetails(const QString &details);

    const QString &caption() const { return m_picture.caption(); }
    const QString &details() const { return m_picture.details(); }
    /// Of the caption.
    double opacity() const { return m_animation.opacity(); }

protected:
    void paintEvent(QPaintEvent *event) override;
    void showEvent(QShowEvent *event) override;
    void hideEvent(QHideEvent *event) override;
    void changeEvent(QEvent *event) override;
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    void doAction(Action action);
    void present(BWFlashPicture::Sign sign, const QString &caption);
    void flashOnce();
    void repeatFlash();
    void stopFlash();
    BWOpacityAnimation::Motion motion() const;
    void nextStep();
    void cancelStep();
    void pictureChanged();
    QRect pillRect() const;

    BWLocalizationManager &m_texts;
    BWClock &m_clock;
    const int m_inset;
    BWOpacityAnimation m_animation;
    BWFlashPicture m_picture;
    QPixmap m_steady; // with a picture below that moves, both are painted many times a second
    QPixmap m_fading;
    QRect m_drawn; // the pill as it was painted last
    DispatchAfterStrict::Handle m_step;
    std::shared_ptr<void> m_alive = std::make_shared<int>();
};
