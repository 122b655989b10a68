// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Model/LiveView/BWAutoHide.h"

#include <QObject>
#include <QPixmap>
#include <QPoint>
#include <QString>
#include <QVariantAnimation>
#include <QWidget>

/// A short text on a dark pill over the live image, which can fade away. Ignores the mouse. Screen readers speak what
/// appears; a faded text is still there for them, so that they do not speak it again when it is back.
class BWStatusPill : public QWidget {
    Q_OBJECT

public:
    explicit BWStatusPill(QWidget *parent);

    /// While the pill fades away it still shows the text from before. Screen readers get `spoken`, if it is not null.
    void setText(const QString &text, const QString &spoken = {});
    /// As setText(); shown at once, and screen readers speak it even if a text was showing already, or this one.
    void announce(const QString &text);
    const QString &text() const { return m_text; }

    void setFaded(bool faded);
    bool isFaded() const { return m_faded; }

    /// Moves to the middle of the lower edge of that area, or where `alignment` says; long texts wrap.
    void placeIn(const QRect &area, Qt::Alignment alignment = Qt::AlignHCenter | Qt::AlignBottom);
    /// In the coordinates of the parent.
    void pointerAt(const QPoint &position);

Q_SIGNALS:
    /// The pointer moves over the pill or near it.
    void pointerNear();

protected:
    void paintEvent(QPaintEvent *event) override;
    void changeEvent(QEvent *event) override;

private:
    int widestText() const;
    void fit();

    QString m_text;
    QPixmap m_drawn;
    QRect m_area;
    QVariantAnimation m_fade;
    double m_opacity = 1;
    bool m_faded = false;
    Qt::Alignment m_alignment;
};

/// The status line of the main window: what the session is doing and, briefly, what has just happened. It fades when
/// nothing is new, and is back for news, for what must stay in sight, and when the pointer moves near it.
class BWStatusLine : public QObject {
    Q_OBJECT

public:
    static constexpr double momentSeconds = 2.5;
    static constexpr std::chrono::milliseconds quietTime{5000};

    enum class Kind {
        Calm, ///< worth reading once
        Lasting, ///< a problem or a warning: stays in sight as long as it is true
    };

    explicit BWStatusLine(BWStatusPill &pill, BWClock &clock = BWClock::system());
    ~BWStatusLine() override;

    void setText(const QString &text, Kind kind = Kind::Calm);
    /// Shown in place of that text while something is in progress; null afterwards.
    void setProgress(const QString &text);
    /// A series runs: shown in place of a calm text, and with a lasting one; null afterwards. `spoken` is that text without
    /// what changes every second.
    void setSeries(const QString &text, const QString &spoken = {});
    /// Shows another text briefly.
    void showForAMoment(const QString &text, double seconds = momentSeconds);
    /// While a recording runs, the line stays in sight.
    void setRecording(bool recording);

private:
    void show();
    void endMoment();
    void hold();
    void fade();

    BWStatusPill &m_pill;
    BWClock &m_clock;
    QString m_text;
    QString m_progress;
    QString m_series;
    QString m_seriesSpoken;
    Kind m_kind = Kind::Calm;
    bool m_recording = false;
    BWAutoHide m_quiet;
    DispatchAfterStrict::Handle m_moment;
};
