// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "BWACUDriver/DispatchAfterStrict.h"
#include "Model/LiveView/BWLiveRenderer.h"
#include "Model/LiveView/BWScene.h"

#include <functional>
#include <optional>
#include <QAbstractScrollArea>
#include <QElapsedTimer>

class BWTouchInput;

/// The live image, or what is shown in its place or beside it, in a scroll area. Draws what renderers make, one pixel to
/// one, and lays it out as a BWScene says: centred where the image is smaller than the view. The scroll bars are those of
/// the main picture. A menu is asked for by customContextMenuRequested(), also by a finger that stays.
class BWCenteringClipView : public QAbstractScrollArea {
    Q_OBJECT

public:
    explicit BWCenteringClipView(BWLiveRenderer &renderer, QWidget *parent = nullptr);

    /// Whose pictures the scene consists of: the live renderer or that of a still. They must stay while they are shown, and
    /// what is not shown is told so. The last picture stays until the new source has one; until a live one, for a moment.
    void setSources(BWLiveRenderer &main, BWLiveRenderer *reference = nullptr);

    /// Lays the pictures out anew. What lies at `anchor`, in the viewport, stays there; the middle, if none is given.
    void setScene(const BWScene &scene, std::optional<QPointF> anchor = std::nullopt);
    const BWScene &scene() const { return m_scene; }
    /// The room for pictures while there are no scroll bars.
    QSize largestViewport() const { return maximumViewportSize(); }
    /// Where the main picture is scrolled to, in points.
    QPoint scrollPosition() const;

    /// So many points of the top belong to something that lies over it; the image keeps clear of them. At first
    /// BWLiveViewGeometry::barHeight.
    void setTopInset(int points);

    /// Bars and controls lie over so much of the viewport's edges; what is to be read belongs into the rest.
    void setCovered(const QMargins &covered);
    QRect uncovered() const { return viewport()->rect().marginsRemoved(m_covered); }

    /// From places in the main picture, in widths of it, to the viewport, as the image lies that shows; nothing without one.
    /// It follows a change of the scene a little later, as the image does.
    std::optional<QTransform> pictureToViewport() const;
    /// The main picture's frame; keep it for a moment only.
    BWFrame mainFrame() const { return m_main.renderer->currentFrame(); }

    /// Draws the measuring grid into the picture, its lines that many points apart; 0 for no grid.
    void setGridDistance(double distance);
    double gridDistance() const { return m_gridDistance; }
    /// The grid's distance is that of the camera's pictures: over others it is not drawn.
    void setMainIsOfCamera(bool isOfCamera) { m_mainIsOfCamera = isOfCamera; }

    /// Whether dragging, the wheel and the arrow keys move the reference alone instead of the whole scene.
    void setMovesReference(bool moves) { m_movesReference = moves; }

    /// Fingers that pinch or point; those that move the image or tap it are seen to.
    BWTouchInput &touchInput() const { return *m_touch; }
    /// Queried at each press of the left button, which either clicks or drags the image.
    void setLeftButtonClicks(std::function<bool()> clicks) { m_leftButtonClicks = std::move(clicks); }
    /// Queried when Left or Right is pressed: true if it has stepped to another picture, and nothing is to be scrolled.
    void setStep(std::function<bool(bool right)> step) { m_step = std::move(step); }
    /// Until the mouse button is released, to show that the press has taken a picture.
    void showCameraCursor();

    /// Shows nothing of that source until its next frame.
    void clear(BWLiveRenderer &renderer);

    /// Whether anybody can see the image. While nobody can, none is made. The last live picture stays for a moment, because
    /// a busy desktop may say for a moment that the window is hidden; then it goes, and only a new one is shown.
    void setSeen(bool seen);

    /// What was painted last has been handed to the display server.
    void windowFlushed();

Q_SIGNALS:
    /// The image was clicked, or tapped with one finger; not by a click that only brought the program to the front.
    void mousePressed();
    /// Space was pressed while the image had the focus.
    void spacePressed();
    /// The wheel was turned with Control held, with the pointer there in the viewport.
    void zoomRequested(bool in, QPointF at);
    /// The reference is to be moved by that much, while dragging moves it.
    void referenceDragged(QPointF distance);
    /// The size of the viewport has changed, or what covers it.
    void uncoveredChanged();
    /// The very first picture was painted.
    void firstPicturePainted();

protected:
    void paintEvent(QPaintEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;
    void scrollContentsBy(int dx, int dy) override;
    void mousePressEvent(QMouseEvent *event) override;
    void mouseDoubleClickEvent(QMouseEvent *event) override;
    void mouseMoveEvent(QMouseEvent *event) override;
    void mouseReleaseEvent(QMouseEvent *event) override;
    void wheelEvent(QWheelEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;
    bool event(QEvent *event) override;

private:
    /// A picture of the scene as it was last drawn.
    struct Pane {
        BWLiveRenderer *renderer = nullptr;
        BWRenderedImage image;
        QRect rect; // what the image covers of the viewport
        bool isNew = false; // and not flushed yet
    };

    bool clickCounts() const;
    void pressLeftButton(QMouseEvent *event);
    void beginPanning(QMouseEvent *event);
    void panBy(QPoint distance);
    void scrollTo(QPoint position);
    void updateScrollBars();
    void updateRequest();
    void tellSeen();
    Pane *paneOf(const BWLiveRenderer &renderer);
    QRect clipOf(const Pane &pane) const;
    QRect deviceRectOf(const Pane &pane) const;
    QRect coveredBy(const Pane &pane) const;
    /// Takes a newer image, if there is one; true if it lies elsewhere than the last one.
    bool refresh(Pane &pane);
    void drawPane(QPainter &painter, const Pane &pane) const;
    void drawGrid(QPainter &painter) const;

    BWLiveRenderer &m_live;
    BWTouchInput *m_touch;
    BWScene m_scene;
    Pane m_main;
    Pane m_reference;
    std::function<bool()> m_leftButtonClicks;
    std::function<bool(bool)> m_step;
    QElapsedTimer m_programActive; // since when; invalid while another program is active
    Qt::MouseButton m_panButton = Qt::NoButton; // which moves the image while it is held
    QPoint m_panStart;
    QPoint m_panAt;
    QPoint m_panScroll;
    double m_gridDistance = 0;
    bool m_mainIsOfCamera = true;
    int m_wheel = 0;
    bool m_movesReference = false;
    QMargins m_covered;
    QWidget *m_scrollBarSpacer; // keeps the vertical scroll bar from beginning in the top inset
    bool m_painted = false;
    bool m_isSeen = true;
    DispatchAfterStrict::Handle m_forgetting;
};
