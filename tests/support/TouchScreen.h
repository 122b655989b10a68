// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <functional>
#include <memory>
#include <QMap>
#include <QPointingDevice>
#include <QStringList>
#include <QTest>
#include <QWidget>

/// A touch screen under a widget, which must be shown by the first touch; touches come as the window system delivers them.
class TouchScreen {
public:
    using Place = std::function<QPointF(QPointF)>;

    /// `place` says where on the widget what is written in steps lies.
    explicit TouchScreen(const QWidget &widget, Place place = std::identity()) : m_widget(widget), m_place(place) { }

    /// Fingers go to places of the widget, as in "a30,40", or off, as in "a-". Blanks stand between what happens one after
    /// the other, a plus between what happens at once.
    void touch(const QString &steps)
    {
        QWindow *window = m_widget.window()->windowHandle();
        static QPointingDevice *const screen = QTest::createTouchDevice();
        if (!m_touches)
            m_touches.reset(new QTest::QTouchEventSequence(QTest::touchEvent(window, screen, false)));
        for (const QString &step : steps.split(u' ')) {
            const auto before = m_down;
            for (const QString &finger : step.split(u'+')) {
                const int id = finger[0].unicode();
                const bool goes = finger.endsWith(u'-');
                const QPointF to(finger.mid(1).section(u',', 0, 0).toInt(), finger.section(u',', 1).toInt());
                const QPoint at = goes ? m_down[id] : m_widget.mapTo(m_widget.window(), m_place(to).toPoint());
                if (goes)
                    m_touches->release(id, at, window);
                else
                    m_down.contains(id) ? m_touches->move(id, at, window) : m_touches->press(id, at, window);
                goes ? void(m_down.remove(id)) : void(m_down[id] = at);
            }
            for (auto still = before.begin(); still != before.end(); ++still) {
                if (!step.contains(QChar(still.key())))
                    m_touches->stationary(still.key());
            }
            m_touches->commit();
        }
    }

private:
    const QWidget &m_widget;
    const Place m_place;
    std::unique_ptr<QTest::QTouchEventSequence> m_touches;
    QMap<int, QPoint> m_down; // in the window
};
