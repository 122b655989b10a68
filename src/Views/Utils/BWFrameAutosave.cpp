#include "Views/Utils/BWFrameAutosave.h"

#include "Model/BWUserDefaults.h"

#include <QEvent>
#include <QGuiApplication>
#include <QWidget>

using namespace Qt::StringLiterals;

namespace {

/// No program knows where its windows are in a Wayland session: what is stored there must not take the place of what is
/// known elsewhere.
QString key(const QString &name)
{
    const bool isWayland = QGuiApplication::platformName().startsWith("wayland"_L1);
    return (isWayland ? u"bwp2x_frame_wayland_"_s : u"bwp2x_frame_"_s) + name;
}

} // namespace

BWFrameAutosave::BWFrameAutosave(QWidget &window, const QString &name, BWUserDefaults &defaults)
    : QObject(&window), m_window(window), m_key(key(name)), m_defaults(defaults)
{
    const QString stored = defaults.string(m_key);
    if (!stored.isNull())
        window.restoreGeometry(QByteArray::fromBase64(stored.toLatin1()));
    m_timer.setSingleShot(true);
    m_timer.setInterval(500); // a window that is being dragged is stored once
    connect(&m_timer, &QTimer::timeout, this, &BWFrameAutosave::store);
    window.installEventFilter(this);
}

bool BWFrameAutosave::eventFilter(QObject *watched, QEvent *event)
{
    switch (event->type()) {
    case QEvent::Show: // it may have been moved before
    case QEvent::Move:
    case QEvent::Resize:
    case QEvent::WindowStateChange:
        if (m_window.isVisible())
            m_timer.start();
        break;
    case QEvent::Hide:
        if (m_timer.isActive())
            store();
        break;
    default:
        break;
    }
    return QObject::eventFilter(watched, event);
}

void BWFrameAutosave::store()
{
    m_timer.stop();
    m_defaults.setString(m_key, QString::fromLatin1(m_window.saveGeometry().toBase64()));
    m_defaults.synchronize();
}
