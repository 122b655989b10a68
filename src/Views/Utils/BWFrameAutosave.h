#pragma once

#include <QMargins>
#include <QObject>
#include <QRect>
#include <QString>
#include <QTimer>

class BWUserDefaults;
class QWidget;

/// The frame of a window, title bar included, remembered under a name: put back when this is made, and stored shortly
/// after every change. Owned by the window.
class BWFrameAutosave : public QObject {
    Q_OBJECT

public:
    BWFrameAutosave(QWidget &window, const QString &name, BWUserDefaults &defaults);

    /// Without a remembered frame the window has to be put in its place when it is shown, in whatever run that is. Before
    /// it is shown: what is set in its showEvent() is the place of the content.
    bool isRemembered() const { return m_isRemembered; }
    /// Until the window is seen again.
    void forget();

    /// What the window manager adds to a window. Until it has been shown, this is taken to be what it adds to `similar`,
    /// or, without that, what is usual.
    static QMargins margins(const QWidget &window, const QWidget *similar = nullptr);
    /// Moves the window, and gives its content the rest of the frame.
    static void setFrame(QWidget &window, const QRect &frame, const QMargins &margins);
    /// In a Wayland session no program knows or decides where its windows are.
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
