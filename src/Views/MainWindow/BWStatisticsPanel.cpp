// SPDX-License-Identifier: GPL-3.0-or-later
#include "Views/MainWindow/BWStatisticsPanel.h"

#include "Views/Utils/BWPillPainting.h"

#include <algorithm>
#include <QAccessibleWidget>
#include <QEvent>
#include <QLocale>
#include <QPainter>
#include <utility>

using namespace Qt::StringLiterals;

namespace {

constexpr double refreshSeconds = 1;
constexpr int sidePadding = 14;
constexpr int endPadding = 8;
constexpr int numberGap = 14;
constexpr int unitGap = 5;
constexpr QColor nameColor(255, 255, 255, 190);
const QString usualNumber = u"000"_s; // leaves room for what is usual, so that nothing moves

QString rateText(const std::optional<double> &rate)
{
    if (!rate)
        return {};
    constexpr double slow = 9.95;
    return *rate > 0 && *rate < slow ? QLocale().toString(*rate, 'f', 1) : QLocale().toString(qRound(*rate));
}

/// Read when a screen reader asks; a description that is set would be announced with every change.
class AccessiblePanel : public QAccessibleWidget {
public:
    explicit AccessiblePanel(BWStatisticsPanel &panel) : QAccessibleWidget(&panel, QAccessible::StaticText) { }

    QString text(QAccessible::Text which) const override
    {
        if (which == QAccessible::Value || which == QAccessible::Description)
            return static_cast<BWStatisticsPanel *>(widget())->text();
        return QAccessibleWidget::text(which);
    }
};

QAccessibleInterface *accessiblePanel(const QString &, QObject *object)
{
    auto *panel = qobject_cast<BWStatisticsPanel *>(object);
    return panel ? new AccessiblePanel(*panel) : nullptr;
}

} // namespace

BWStatisticsPanel::BWStatisticsPanel(Figures figures, QWidget *parent, BWClock &clock)
    : QWidget(parent), m_figures(std::move(figures)), m_clock(clock)
{
    QAccessible::installFactory(&accessiblePanel);
    setAttribute(Qt::WA_TransparentForMouseEvents);
    hide();
}

void BWStatisticsPanel::localizeWithManager(BWLocalizationManager &manager)
{
    setAccessibleName(manager.text(u"statistics"_s, u"title"_s, u"Statistics"_s));
    m_rows[0].name = manager.text(u"statistics"_s, u"camera_label"_s, u"Camera"_s);
    m_rows[1].name = manager.text(u"statistics"_s, u"screen_label"_s, u"Screen"_s);
    m_rows[2].name = manager.text(u"statistics"_s, u"dropped_label"_s, u"Dropped"_s);
    m_rows[3].name = manager.text(u"statistics"_s, u"latency_label"_s, u"Latency"_s);
    m_rateUnit = manager.text(u"statistics"_s, u"frames_per_second_unit"_s, u"fps"_s);
    m_timeUnit = manager.text(u"statistics"_s, u"milliseconds_unit"_s, u"ms"_s);
    fit();
}

void BWStatisticsPanel::placeIn(const QRect &area)
{
    m_corner = area.topLeft() + QPoint(bwPillDistance, bwPillDistance);
    move(m_corner);
}

QString BWStatisticsPanel::text() const
{
    QStringList texts;
    for (const Row &row : m_rows)
        texts << u"%1 %2 %3"_s.arg(row.name, row.number, row.unit).trimmed();
    return texts.join(u", "_s);
}

/// Repeats itself while the panel shows.
void BWStatisticsPanel::refresh()
{
    using Milliseconds = std::chrono::duration<double, std::milli>;
    const BWLiveViewFigures figures = m_figures();
    const std::array<std::pair<QString, QString>, 4> shown{
        {{rateText(figures.cameraRate), m_rateUnit},
         {rateText(figures.screenRate), m_rateUnit},
         {figures.dropped ? QLocale().toString(qulonglong(*figures.dropped)) : QString(), {}},
         {figures.latency ? QLocale().toString(qRound(Milliseconds(*figures.latency).count())) : QString(),
          m_timeUnit}}};
    for (std::size_t i = 0; i < shown.size(); ++i) {
        const auto &[number, unit] = shown[i];
        m_rows[i].number = number.isNull() ? u"\u2013"_s : number;
        m_rows[i].unit = number.isNull() ? QString() : unit;
    }
    fit();
    m_next = DispatchAfterStrict::dispatchForQueue(
        this, [this] { refresh(); }, refreshSeconds, m_clock);
}

/// Digits are equally wide in any font, so that a number does not move while it changes.
int BWStatisticsPanel::cellWidth(QChar character) const
{
    if (!character.isDigit())
        return fontMetrics().horizontalAdvance(character);
    int widest = 0;
    for (const QChar digit : u"0123456789"_s)
        widest = std::max(widest, fontMetrics().horizontalAdvance(digit));
    return widest;
}

int BWStatisticsPanel::numberWidth(const QString &number) const
{
    int width = 0;
    for (const QChar character : number)
        width += cellWidth(character);
    return width;
}

/// The columns grow as they must but do not shrink.
void BWStatisticsPanel::fit()
{
    const QFontMetrics metrics = fontMetrics();
    m_columns.number = std::max(m_columns.number, numberWidth(usualNumber));
    for (const QString &unit : {m_rateUnit, m_timeUnit})
        m_columns.unit = std::max(m_columns.unit, metrics.horizontalAdvance(unit));
    for (const Row &row : m_rows) {
        m_columns.name = std::max(m_columns.name, metrics.horizontalAdvance(row.name));
        m_columns.number = std::max(m_columns.number, numberWidth(row.number));
    }
    resize(m_columns.name + numberGap + m_columns.number + unitGap + m_columns.unit + 2 * sidePadding,
           static_cast<int>(m_rows.size()) * metrics.lineSpacing() + 2 * endPadding);
    m_drawn = {};
    update();
}

void BWStatisticsPanel::drawTexts(QPainter &painter) const
{
    const int numberLeft = sidePadding + m_columns.name + numberGap;
    const auto leftOf = [this](int left, int width) { return isRightToLeft() ? this->width() - left - width : left; };
    // A number stands before its unit also where names are read from the right.
    const int number = leftOf(numberLeft, m_columns.number + unitGap + m_columns.unit);
    int baseline = endPadding + fontMetrics().ascent();
    for (const Row &row : m_rows) {
        painter.setPen(nameColor);
        painter.drawText(leftOf(sidePadding, fontMetrics().horizontalAdvance(row.name)), baseline, row.name);
        painter.drawText(number + m_columns.number + unitGap, baseline, row.unit);
        painter.setPen(bwPillTextColor);
        int left = number + m_columns.number - numberWidth(row.number);
        for (const QChar character : row.number) {
            const int width = cellWidth(character);
            painter.drawText(left + (width - fontMetrics().horizontalAdvance(character)) / 2, baseline, character);
            left += width;
        }
        baseline += fontMetrics().lineSpacing();
    }
}

void BWStatisticsPanel::paintEvent(QPaintEvent *)
{
    paintBWPill(*this, m_drawn, [this](QPainter &painter) { drawTexts(painter); });
}

void BWStatisticsPanel::showEvent(QShowEvent *event)
{
    QWidget::showEvent(event);
    refresh();
}

void BWStatisticsPanel::hideEvent(QHideEvent *event)
{
    QWidget::hideEvent(event);
    if (const auto next = std::exchange(m_next, {}))
        next->cancel();
}

void BWStatisticsPanel::changeEvent(QEvent *event)
{
    if (event->type() == QEvent::FontChange || event->type() == QEvent::PaletteChange) {
        m_columns = {};
        fit();
    }
    QWidget::changeEvent(event);
}
