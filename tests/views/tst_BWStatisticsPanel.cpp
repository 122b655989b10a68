// SPDX-License-Identifier: GPL-3.0-or-later
#include "BWManualClock.h"
#include "Rows.h"
#include "Views/MainWindow/BWStatisticsPanel.h"

#include <QAccessible>
#include <QLocale>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

class TestBWStatisticsPanel : public QObject {
    Q_OBJECT

    BWManualClock m_clock;
    BWLiveViewFigures m_figures;
    int m_asked = 0;
    QWidget m_window;
    BWStatisticsPanel m_panel{[this] { return ++m_asked, m_figures; }, &m_window, m_clock};

private Q_SLOTS:
    void figures_data()
    {
        const Rows<BWLiveViewFigures, QString> row;
        row("no camera", {}, u"Camera –, Screen –, Dropped –, Latency –"_s);
        row("stalled", {0, 0, 12345, {}}, u"Camera 0 fps, Screen 0 fps, Dropped 12.345, Latency –"_s);
        row("usual", {29.6, 7.52, 0, 23500us}, u"Camera 30 fps, Screen 7,5 fps, Dropped 0, Latency 24 ms"_s);
    }
    void figures()
    {
        const auto [figures, text] = Rows<BWLiveViewFigures, QString>::current();
        BWLocalizationManager texts{QString(), {u"en"_s}};
        m_panel.localizeWithManager(texts);
        m_window.show();
        QLocale::setDefault(QLocale(u"de_DE"_s));
        m_figures = figures;
        m_panel.show();
        const QAccessibleInterface *accessible = QAccessible::queryAccessibleInterface(&m_panel);
        QCOMPARE(accessible->text(QAccessible::Name), u"Statistics"_s);
        QCOMPARE(accessible->text(QAccessible::Value), text);
        m_panel.hide();
    }

    void newOnceASecondWithoutAWord()
    {
        m_panel.show();
        m_panel.hide();
        m_panel.show(); // with one timer, not two
        m_figures = {111, 9.9, 111, 111ms};
        m_clock.advance(1s);
        const int width = m_panel.width();
        m_figures = {30, 120, 0, 9ms};
        m_asked = 0;
        m_clock.advance(10s);
        QCOMPARE(m_asked, 10);
        QCOMPARE(m_panel.width(), width);
        // A change of these would be announced.
        QCOMPARE(m_panel.accessibleName() + m_panel.accessibleDescription(), u"Statistics"_s);
        m_panel.hide();
        m_clock.advance(1h);
        QCOMPARE(m_asked, 10);
    }
};

QTEST_MAIN(TestBWStatisticsPanel)
#include "tst_BWStatisticsPanel.moc"
