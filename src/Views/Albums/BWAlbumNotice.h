// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "BWACUDriver/DispatchAfterStrict.h"

#include <QFrame>
#include <QLabel>
#include <QString>

class BWLocalizationManager;
class QToolButton;

/// A label that adds lines rather than making the window wider. GUI thread.
class BWWrappingLabel : public QLabel {
public:
    BWWrappingLabel();

    QSize minimumSizeHint() const override { return {0, QLabel::minimumSizeHint().height()}; }
    /// Breaks long names, too.
    void setWrappingText(QString text);
};

/// Reports for a while what was done with files of the album, with a button to undo it. It lies over the lower edge of the
/// thumbnails, as a place of its own would move them each time, and goes at a click. GUI thread.
class BWAlbumNotice : public QFrame {
    Q_OBJECT

public:
    explicit BWAlbumNotice(QWidget *parent = nullptr, BWClock &clock = BWClock::system());
    ~BWAlbumNotice() override;

    void localize(BWLocalizationManager &manager);

    /// Stays until the next notice, a click on it, or some time has passed. `canUndo` shows the button.
    void showNotice(const QString &text, bool canUndo);
    void endNotice();
    /// Null without a notice.
    QString text() const;

Q_SIGNALS:
    void undoTriggered();

protected:
    void mousePressEvent(QMouseEvent *event) override;

private:
    BWClock &m_clock;
    BWWrappingLabel *m_text;
    QToolButton *m_undo;
    DispatchAfterStrict::Handle m_end;
};
