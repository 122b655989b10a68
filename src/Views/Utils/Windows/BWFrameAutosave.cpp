// SPDX-License-Identifier: GPL-3.0-or-later
#include "Views/Utils/Windows/BWFrameAutosave.h"

#include "Model/Settings/BWSettingsFile.h"
#include "Views/Utils/Windows/BWWindowPlacement.h"

#include <QEvent>
#include <QGuiApplication>
#include <QWidget>

using namespace Qt::StringLiterals;

namespace {

/// A frame stored in a Wayland session has no position and must not replace one that has.
QString key(const QString &name)
{
    return (BWFrameAutosave::canPlaceWindows() ? u"bwp2x_frame_"_s : u"bwp2x_frame_wayland_"_s) + name;
}

} // namespace

BWFrameAutosave::BWFrameAutosave(QWidget &window, const QString &name, BWUserDefaults &defaults)
    : QObject(&window), m_window(window), m_key(key(name)), m_defaults(defaults)
{
    m_isRemembered = window.restoreGeometry(QByteArray::fromBase64(defaults.string(m_key).toLatin1()));
    m_timer.setSingleShot(true);
    m_timer.setInterval(500); // a window that is being dragged is stored only once
    connect(&m_timer, &QTimer::timeout, this, &BWFrameAutosave::store);
    window.installEventFilter(this);
}

void BWFrameAutosave::storeChange()
{
    if (m_timer.isActive())
        store();
}

void BWFrameAutosave::forget()
{
    m_timer.stop();
    m_isRemembered = false;
    m_defaults.setString(m_key, QString());
    m_defaults.synchronize();
}

void BWFrameAutosave::forget(const QString &name, BWUserDefaults &defaults)
{
    defaults.setString(key(name), QString());
    defaults.synchronize();
}

QMargins BWFrameAutosave::margins(const QWidget &window, const QWidget *similar)
{
    for (const QWidget *known : {&window, similar}) {
        if (!known || !known->isVisible() || known->isFullScreen()) // a full-screen window has no frame
            continue;
        const QRect frame = known->frameGeometry();
        const QRect inside = known->geometry();
        return {inside.left() - frame.left(), inside.top() - frame.top(), frame.right() - inside.right(),
                frame.bottom() - inside.bottom()};
    }
    return BWWindowPlacement::assumedMargins;
}

void BWFrameAutosave::setFrame(QWidget &window, const QRect &frame, const QMargins &margins)
{
    window.resize(frame.size().shrunkBy(margins));
    window.move(frame.topLeft());
}

bool BWFrameAutosave::canPlaceWindows()
{
    return !QGuiApplication::platformName().startsWith("wayland"_L1);
}

bool BWFrameAutosave::eventFilter(QObject *watched, QEvent *event)
{
    switch (event->type()) {
    case QEvent::Show: // it may have been moved while hidden
    case QEvent::Move:
    case QEvent::Resize:
    case QEvent::WindowStateChange:
        if (m_window.isVisible())
            m_timer.start();
        break;
    case QEvent::Hide:
        storeChange();
        break;
    default:
        break;
    }
    return QObject::eventFilter(watched, event);
}

void BWFrameAutosave::store()
{
    m_timer.stop();
    if (m_window.isFullScreen()) // for a while; the next start is in a window
        return;
    m_isRemembered = true;
    m_defaults.setString(m_key, QString::fromLatin1(m_window.saveGeometry().toBase64()));
    m_defaults.synchronize();
}
