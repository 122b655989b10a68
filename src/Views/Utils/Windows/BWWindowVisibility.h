// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>
#include <QAbstractNativeEventFilter>
#include <QObject>

class QWidget;

/// Whether anybody can see a window, as far as the desktop says so: it is not minimised, nor on another desktop, nor
/// covered by other windows altogether. In an X session under a compositing manager the covered windows count as seen; in
/// a Wayland session the compositor decides, by asking for no more pictures. GUI thread; must not outlive the window.
class BWWindowVisibility : public QObject, private QAbstractNativeEventFilter {
    Q_OBJECT

public:
    explicit BWWindowVisibility(QWidget &window);

    /// True until the desktop says otherwise, also before the window shows.
    bool isSeen() const { return m_isSeen; }

Q_SIGNALS:
    void changed();

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    bool nativeEventFilter(const QByteArray &eventType, void *message, qintptr *result) override;
    void watchHandle();
    void readDesktop();
    void update();

    QWidget &m_window;
    uint32_t m_root = 0; // X window; 0 where there is no X
    uint32_t m_currentDesktop = 0; // names of properties
    uint32_t m_windowDesktop = 0;
    bool m_isSeen = true;
    bool m_isExposed = true;
    bool m_isCovered = false;
    bool m_isElsewhere = false;
};
