// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "BWACUDriver/DispatchAfterStrict.h"
#include "Utils/BWMainQueue.h"
#include "Views/Utils/BWPillPainting.h"

#include <chrono>
#include <memory>
#include <optional>
#include <QPixmap>
#include <QString>
#include <QWidget>

class BWLocalizationManager;

/// How something over the live image fades: in within half a second, out within another, once or until it is stopped.
/// It only computes the opacity; whoever draws asks for it. GUI thread.
class BWOpacityAnimation {
public:
    static constexpr std::chrono::milliseconds duration{500}; ///< in, or out

    /// Gentle is for users who have switched animations off: fully opaque instead of fading.
    enum class Motion { Full, Gentle };

    explicit BWOpacityAnimation(BWClock &clock) : m_clock(clock) { }

    /// These restart a running animation.
    void flashOnce(Motion motion = Motion::Full);
    void repeatFlash(Motion motion = Motion::Full);
    void stop();

    /// Becomes false when a single flash is over.
    bool isRunning() const;
    /// 0 (invisible) to 1; 0 when it does not run.
    double opacity() const;
    /// Time until the opacity changes, which is `interval` while it fades; nothing if it stays as it is.
    std::optional<std::chrono::nanoseconds> nextStep(std::chrono::nanoseconds interval) const;

private:
    enum class Repeat { Never, Once, Forever };

    void start(Repeat repeat, Motion motion);

    BWClock &m_clock;
    std::chrono::nanoseconds m_start{0};
    Repeat m_repeat = Repeat::Never;
    Motion m_motion = Motion::Full;
};

/// The view over the top of the live image that flashes "Snapshot saved" once, and "Recording..." while a recording
/// runs, with steady details beside it. Ignores mouse and keyboard. GUI thread, except setAction().
class BWFlashActionViewController : public QWidget {
    Q_OBJECT

public:
    enum class Action {
        SnapshotSaved = 0,
        RecordingStarted = 1,
        RecordingStopped = 2,
    };

    /// Lies above the other children of `content`, along its top edge; captions start `inset` points below that edge, and
    /// a little more.
    BWFlashActionViewController(QWidget &content, int inset, BWLocalizationManager &texts,
                                BWClock &clock = BWClock::system());
    ~BWFlashActionViewController() override;

    void setInset(int inset);

    /// Posted to the GUI thread. Any thread.
    void setAction(Action action);
    /// The text beside "Recording...", which does not blink, until the next action.
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
    void place();
    QRect pillRect() const;
    QRect fadingRect() const;

    BWLocalizationManager &m_texts;
    BWClock &m_clock;
    int m_inset;
    BWOpacityAnimation m_animation;
    BWFlashPicture m_picture;
    QPixmap m_steady; // cached: over a live image both are painted many times a second
    QPixmap m_fading;
    QRect m_drawn; // where the pill was last painted
    bool m_requested = false; // by the next step, to be painted
    bool m_paintedByOthers = false; // since the last step
    DispatchAfterStrict::Handle m_step;
    BWAliveToken m_alive;
};
