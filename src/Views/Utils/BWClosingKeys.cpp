#include "Views/Utils/BWClosingKeys.h"

#include <QKeyEvent>
#include <QWidget>

BWClosingKeys::BWClosingKeys(QWidget &window) : QObject(&window), m_window(window)
{
    window.installEventFilter(this);
}

// Not by shortcuts, which would come before the controls.
bool BWClosingKeys::eventFilter(QObject *watched, QEvent *event)
{
    if (event->type() != QEvent::KeyPress)
        return QObject::eventFilter(watched, event);
    const auto &key = static_cast<const QKeyEvent &>(*event);
    const bool closes = key.matches(QKeySequence::Cancel) || key.matches(QKeySequence::Close);
    if (closes)
        m_window.close();
    return closes;
}
