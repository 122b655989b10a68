// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QObject>
#include <QRect>
#include <QWidget>

class BWFrameAutosave;
class BWUserDefaults;
class QDialog;
class QWidget;

/// A utility window beside the camera window, which stays active when the panel is shown. The panel remembers its frame;
/// without one it is placed when it is shown, as the camera window may move until then, and at the start has no frame
/// yet. Escape closes it. GUI thread.
class BWUtilityPanel : public QWidget {
    Q_OBJECT

public:
    /// The camera window, if given, owns the panel, which is placed relative to it.
    explicit BWUtilityPanel(QWidget *cameraWindow);

    /// Puts the panel in its default place, at once if it is visible, otherwise when it is next shown.
    void resetLayout();

    void setVisible(bool visible) override;

Q_SIGNALS:
    /// It was shown or hidden.
    void visibilityChanged();

protected:
    /// Call this when the panel has its default size.
    void rememberFrame(const QString &name, BWUserDefaults &defaults);

    /// Centres the panel below the camera window; keeps its size.
    virtual void place(QWidget &cameraWindow);

    void showEvent(QShowEvent *event) override;
    void hideEvent(QHideEvent *event) override;

private:
    void fit();
    void placeByCameraWindow();

    BWFrameAutosave *m_frame = nullptr;
};

/// Closes a window on Escape and on the desktop's own key for closing, unless a control in it uses that key. Owned by the
/// window. GUI thread.
class BWClosingKeys : public QObject {
    Q_OBJECT

public:
    explicit BWClosingKeys(QWidget &window);

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    QWidget &m_window;
};

/// Gives the keyboard back to the dialog's window, if it has one, when the dialog finishes: not every desktop returns it to
/// a panel, and what is typed next must not reach the camera window. GUI thread.
void returnBWKeyboardAfter(const QDialog &dialog);

/// Moves a small tool window to the upper right of the picture in the main window, or as near to it as the screen
/// allows. For the first time it is shown; after that it stays where the user left it. GUI thread.
void placeBWToolWindow(QWidget &tool, const QWidget &mainWindow);
