// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <memory>
#include <QMap>
#include <QPointingDevice>
#include <QStringList>
#include <QTest>
#include <QWidget>

/// A touch screen under a widget, which must be shown by the first touch; touches come as the window system delivers them.
class TouchScreen {
public:
    explicit TouchScreen(const QWidget &widget) : m_widget(widget) { }

    /// Fingers go to places of the widget, as in "a30,40", or off, as in "a-". Blanks stand between what happens one after
    /// the other, a plus between what happens at once.
    void touch(const QString &steps)
    {
        QWindow *window = m_widget.window()->windowHandle();
        if (!m_touches)
            m_touches.reset(new QTest::QTouchEventSequence(QTest::touchEvent(window, device(), false)));
        for (const QString &step : steps.split(u' ')) {
            const auto before = m_down;
            for (const QString &finger : step.split(u'+')) {
                const int id = finger[0].unicode();
                const bool goes = finger.endsWith(u'-');
                const QPoint to(finger.mid(1).section(u',', 0, 0).toInt(), finger.section(u',', 1).toInt());
                const QPoint at = goes ? m_down[id] : m_widget.mapTo(m_widget.window(), to);
                if (goes)
                    m_touches->release(id, at, window), m_down.remove(id);
                else if (!m_down.contains(id))
                    m_touches->press(id, at, window), m_down[id] = at;
                else
                    m_touches->move(id, at, window), m_down[id] = at;
            }
            for (auto still = before.begin(); still != before.end(); ++still) {
                if (!step.contains(QChar(still.key())))
                    m_touches->stationary(still.key());
            }
            m_touches->commit();
        }
    }

private:
    static QPointingDevice *device()
    {
        static QPointingDevice *const screen = QTest::createTouchDevice();
        return screen;
    }

    const QWidget &m_widget;
    std::unique_ptr<QTest::QTouchEventSequence> m_touches;
    QMap<int, QPoint> m_down; // in the window
};
