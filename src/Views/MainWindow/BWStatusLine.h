#pragma once

#include "BWACUDriver/DispatchAfterStrict.h"

#include <QObject>
#include <QPixmap>
#include <QString>
#include <QWidget>

/// A short text on a dark pill over the live image. Ignores the mouse. Screen readers speak what appears.
class BWStatusPill : public QWidget {
    Q_OBJECT

public:
    explicit BWStatusPill(QWidget *parent);

    void setText(const QString &text);
    /// As setText(); screen readers speak it even if a text was showing already, or this one.
    void announce(const QString &text);
    const QString &text() const { return m_text; }

    /// Moves to the middle of the lower edge of that area; long texts wrap.
    void placeIn(const QRect &area);

protected:
    void paintEvent(QPaintEvent *event) override;
    void changeEvent(QEvent *event) override;

private:
    int widestText() const;
    void fit();

    QString m_text;
    QPixmap m_drawn;
    QRect m_area;
};

/// The status line of the main window: what the session is doing and, briefly, what has just happened.
class BWStatusLine : public QObject {
    Q_OBJECT

public:
    static constexpr double momentSeconds = 2.5;

    explicit BWStatusLine(BWStatusPill &pill, BWClock &clock = BWClock::system());
    ~BWStatusLine() override;

    void setText(const QString &text);
    /// Shown in place of that text while something is in progress; null afterwards.
    void setProgress(const QString &text);
    /// Shows another text briefly.
    void showForAMoment(const QString &text, double seconds = momentSeconds);

private:
    void show();

    BWStatusPill &m_pill;
    BWClock &m_clock;
    QString m_text;
    QString m_progress;
    DispatchAfterStrict::Handle m_moment;
};
