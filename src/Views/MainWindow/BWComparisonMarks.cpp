// SPDX-License-Identifier: GPL-3.0-or-later
#include "Views/MainWindow/BWComparisonMarks.h"

#include "Views/MainWindow/BWCenteringClipView.h"
#include "Views/MainWindow/BWStatusLine.h"
#include "Views/Utils/BWCrispFrame.h"
#include "Views/Utils/BWTouchInput.h"

#include <algorithm>
#include <QMouseEvent>
#include <QPainter>

/// The line between two pictures, wide enough to be grabbed. The slider beside it is for the keyboard.
class BWDividerHandle : public QWidget {
    Q_OBJECT

public:
    static constexpr int width = BWTouchInput::fingerWidth; // even, so that the middle is a whole point

    explicit BWDividerHandle(QWidget *parent) : QWidget(parent)
    {
        setCursor(Qt::SplitHCursor);
        setFocusPolicy(Qt::NoFocus);
        hide();
    }

Q_SIGNALS:
    void draggedTo(int x);

protected:
    void mousePressEvent(QMouseEvent *event) override
    {
        event->setAccepted(event->button() == Qt::LeftButton);
        m_grip = event->pos().x() - width / 2;
    }

    void mouseMoveEvent(QMouseEvent *event) override
    {
        if (event->buttons() & Qt::LeftButton)
            Q_EMIT draggedTo(mapToParent(event->pos()).x() - m_grip);
    }

    /// Wide enough for a finger at the knob alone: beside the line, the picture is within reach, to be measured.
    void resizeEvent(QResizeEvent *) override
    {
        constexpr int besideLine = 5; // points
        const QRect knob(0, (height() - width) / 2, width, width);
        setMask(QRegion(rect().adjusted(width / 2 - besideLine, 0, besideLine - width / 2, 0))
                + QRegion(knob, QRegion::Ellipse));
    }

    /// A light line with dark edges, equally wide, can be seen on any picture.
    void paintEvent(QPaintEvent *) override
    {
        constexpr QColor light(250, 250, 250);
        constexpr QColor dark(24, 24, 26);
        constexpr double knob = 11; // radius
        constexpr double middle = width / 2.0;
        QPainter painter(this);
        const double lightWidth = bwLineWidth(painter, 2);
        const double edge = bwLineWidth(painter);
        painter.fillRect(QRectF(middle - lightWidth / 2 - edge, 0, lightWidth + 2 * edge, height()), dark);
        painter.fillRect(QRectF(middle - lightWidth / 2, 0, lightWidth, height()), light);
        painter.setRenderHint(QPainter::Antialiasing);
        painter.translate(middle, height() / 2.0);
        painter.setPen(QPen(dark, 1.5));
        painter.setBrush(light);
        painter.drawEllipse(QPointF(), knob, knob);
        painter.setPen(Qt::NoPen);
        painter.setBrush(dark);
        for (const int side : {-1, 1})
            painter.drawPolygon(QPolygonF{{side * 2.5, -4}, {side * 7.0, 0}, {side * 2.5, 4}});
    }

private:
    int m_grip = 0; // where it was pressed, from its middle
};

BWComparisonMarks::BWComparisonMarks(BWCenteringClipView &view)
    : QObject(&view),
      m_view(view),
      m_main(new BWStatusPill(view.viewport())),
      m_reference(new BWStatusPill(view.viewport())),
      m_word(new BWStatusPill(view.viewport())),
      m_divider(new BWDividerHandle(view.viewport()))
{
    connect(&view, &BWCenteringClipView::uncoveredChanged, this, &BWComparisonMarks::place);
    connect(m_divider, &BWDividerHandle::draggedTo, this, [this](int x) {
        Q_EMIT dividerDragged(std::clamp(double(x) / std::max(1, m_view.viewport()->width()), 0.0, 1.0));
    });
}

void BWComparisonMarks::setTexts(const Texts &texts)
{
    m_main->setText(texts.main);
    m_reference->setText(texts.reference);
    m_word->setText(texts.inPlaceOfReference);
    place();
}

void BWComparisonMarks::place()
{
    const BWScene &scene = m_view.scene();
    const QSize size = m_view.viewport()->size();
    m_divider->setVisible(scene.mode == BWScene::Mode::Divider);
    const int x = scene.dividerPosition(size);
    m_divider->setGeometry(x - BWDividerHandle::width / 2, 0, BWDividerHandle::width, size.height());
    // Each over its half, in every mode.
    QRect half = m_view.uncovered();
    half.setWidth((size.width() - BWScene::gap) / 2);
    m_main->placeIn(half, Qt::AlignTop | Qt::AlignLeft);
    half.moveRight(size.width() - 1);
    m_reference->placeIn(half, Qt::AlignTop | Qt::AlignRight);
    m_word->placeIn(scene.mode == BWScene::Mode::SideBySide ? scene.referenceArea(size) : QRect({}, size),
                    Qt::AlignCenter);
}

#include "BWComparisonMarks.moc"
