#pragma once

#include <QLabel>

/// A line that tells what has just been done. Screen readers say it by themselves, wherever the keyboard is. Its place
/// is kept while it tells nothing. GUI thread.
class BWAnnouncement : public QLabel {
    Q_OBJECT

public:
    explicit BWAnnouncement(QWidget *parent = nullptr);

    /// Also what is told already is said anew.
    void announce(const QString &text);
    /// Tells nothing any more.
    void clear();
};
