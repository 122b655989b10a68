// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "BWACUDriver/DispatchAfterStrict.h"
#include "Model/LiveView/BWLiveViewMeter.h"
#include "Model/Texts/BWLocalizationManager.h"

#include <array>
#include <functional>
#include <QPixmap>
#include <QString>
#include <QWidget>

/// The figures of the live image, on a dark pill over its upper left corner; once a second they are read anew, and only
/// while the panel shows. Ignores the mouse. Screen readers can ask for the figures but do not announce them. GUI thread.
class BWStatisticsPanel : public QWidget, public BWLocalizationManagerDelegate {
    Q_OBJECT

public:
    using Figures = std::function<BWLiveViewFigures()>;

    BWStatisticsPanel(Figures figures, QWidget *parent, BWClock &clock = BWClock::system());

    void localizeWithManager(BWLocalizationManager &manager) override;

    /// Moves to the upper left corner of that area.
    void placeIn(const QRect &area);

    /// All figures in one line.
    QString text() const;

protected:
    void paintEvent(QPaintEvent *event) override;
    void showEvent(QShowEvent *event) override;
    void hideEvent(QHideEvent *event) override;
    void changeEvent(QEvent *event) override;

private:
    struct Row {
        QString name;
        QString number;
        QString unit;
    };
    struct Columns {
        int name;
        int number;
        int unit;
    };

    void refresh();
    void fit();
    int cellWidth(QChar character) const;
    int numberWidth(const QString &number) const;
    void drawTexts(QPainter &painter) const;

    Figures m_figures;
    BWClock &m_clock;
    std::array<Row, 4> m_rows;
    QString m_rateUnit;
    QString m_timeUnit;
    Columns m_columns{};
    QPoint m_corner;
    QPixmap m_drawn;
    DispatchAfterStrict::Handle m_next;
};
