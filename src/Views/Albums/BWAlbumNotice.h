#pragma once

#include "BWACUDriver/DispatchAfterStrict.h"

#include <QFrame>
#include <QLabel>
#include <QString>

class BWLocalizationManager;
class QToolButton;

/// A text that takes more lines rather than making the window wider. GUI thread.
class BWWrappingLabel : public QLabel {
public:
    BWWrappingLabel();

    QSize minimumSizeHint() const override { return {0, QLabel::minimumSizeHint().height()}; }
    /// Long names may be broken, too.
    void setWrappingText(QString text);
};

/// For a while what was done with files of the album, and a way back. Lies over the lower edge of the thumbnails, which
/// a place of its own would move each time; so it goes as soon as it is in the way. GUI thread.
class BWAlbumNotice : public QFrame {
    Q_OBJECT

public:
    explicit BWAlbumNotice(QWidget *parent = nullptr, BWClock &clock = BWClock::system());
    ~BWAlbumNotice() override;

    void localize(BWLocalizationManager &manager);

    /// Until the next one, a click on it, or some time has passed. `canUndo` offers to undo what the text tells.
    void showNotice(const QString &text, bool canUndo);
    void endNotice();
    /// Null without one.
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
