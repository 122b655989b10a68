#pragma once

#include "BWACUDriver/DispatchAfterStrict.h"

#include <QObject>
#include <QString>

class BWStatusPill;

/// The status line of the main window: what the session is doing, and for a moment what has just happened.
class BWStatusLine : public QObject {
    Q_OBJECT

public:
    static constexpr double momentSeconds = 2.5;

    explicit BWStatusLine(BWStatusPill &pill, BWClock &clock = BWClock::system());
    ~BWStatusLine() override;

    void setText(const QString &text);
    /// In place of that text while something goes on; null when it is over.
    void setProgress(const QString &text);
    /// Shows another text for a moment.
    void showForAMoment(const QString &text, double seconds = momentSeconds);

private:
    void show();

    BWStatusPill &m_pill;
    BWClock &m_clock;
    QString m_text;
    QString m_progress;
    DispatchAfterStrict::Handle m_moment;
};
