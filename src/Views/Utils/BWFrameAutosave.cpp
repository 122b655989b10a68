#include "Views/Utils/BWFrameAutosave.h"

#include "Model/BWUserDefaults.h"

#include <QEvent>
#include <QWidget>

BWFrameAutosave::BWFrameAutosave(QWidget &window, const QString &name, BWUserDefaults &defaults)
    : QObject(&window), m_window(window), m_key(QStringLiteral("bwp2x_frame_") + name), m_defaults(defaults)
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
