// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QMargins>
#include <QObject>
#include <QRect>
#include <QString>
#include <QTimer>

class BWUserDefaults;
class QWidget;

/// Remembers the frame of a window, title bar included, under a name: restores it in the constructor, and stores it
/// shortly after every change. Owned by the window.
class BWFrameAutosave : public QObject {
    Q_OBJECT

public:
    BWFrameAutosave(QWidget &window, const QString &name, BWUserDefaults &defaults);

    /// Without a remembered frame the window must be placed when it is shown, whenever that is. It must be placed before
    /// it is visible: a position set in its showEvent() would be that of the content.
    bool isRemembered() const { return m_isRemembered; }
    /// Stores a change at once that waits for it, as before the window changes to full screen.
    void storeChange();
    /// Forgets the frame until the window is next shown.
    void forget();
    /// The same for a window that does not exist yet.
    static void forget(const QString &name, BWUserDefaults &defaults);

    /// The frame that the window manager adds to a window. Until the window has been shown, this is the frame of
    /// `similar`, or an assumed one.
    static QMargins margins(const QWidget &window, const QWidget *similar = nullptr);
    /// Moves the window, and resizes its content to the frame without the margins.
    static void setFrame(QWidget &window, const QRect &frame, const QMargins &margins);
    /// False in a Wayland session, where a program neither knows nor decides where its windows are.
    static bool canPlaceWindows();

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    void store();

    QWidget &m_window;
    QString m_key;
    BWUserDefaults &m_defaults;
    QTimer m_timer;
    bool m_isRemembered;
};
