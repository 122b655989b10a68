#pragma once

#include "BWACUDriver/DispatchAfterStrict.h"
#include "Model/LiveView/BWLiveRenderer.h"
#include "Model/LiveView/BWLiveViewGeometry.h"

#include <functional>
#include <QAbstractScrollArea>
#include <QElapsedTimer>

/// The live image in its scroll area. Shows what a BWLiveRenderer makes, one pixel to one, centred where the image is
/// smaller than the view. The top BWLiveViewGeometry::barHeight points belong to the control bar.
class BWCenteringClipView : public QAbstractScrollArea {
    Q_OBJECT

public:
    explicit BWCenteringClipView(BWLiveRenderer &renderer, QWidget *parent = nullptr);

    /// Lays the image out anew; the middle of what is seen stays where it is.
    void setLiveGeometry(const BWLiveViewGeometry &geometry);

    /// Draws the measuring grid into the picture, its lines that many points apart; 0 for no grid.
    void setGridDistance(double distance);
    double gridDistance() const { return m_gridDistance; }

    /// Queried at each press of the left button, which either clicks or drags the image.
    void setLeftButtonClicks(std::function<bool()> clicks) { m_leftButtonClicks = std::move(clicks); }
    /// Until the mouse button is released, to show that the press has taken a picture.
    void showCameraCursor();

    /// Shows nothing until the next frame.
    void clear();

    /// Whether anybody can see the image. While nobody can, none is made. The last picture stays for a moment, because a
    /// busy desktop may say for a moment that the window is hidden; then it goes, and only a new one is shown.
    void setSeen(bool seen);

    /// What was painted last has been handed to the display server.
    void windowFlushed();

Q_SIGNALS:
    /// The image was clicked; not by a click that only brought the program to the front.
    void mousePressed();
    /// Space was pressed while the image had the focus.
    void spacePressed();
    /// The wheel was turned with Control held.
    void zoomRequested(bool in);
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
    QPoint scrollPosition() const;
    void pressLeftButton(QMouseEvent *event);
    void beginPanning(QMouseEvent *event);
    void updateScrollBars();
    void updateRequest();
    QRect changingRect() const;
    void drawGrid(QPainter &painter) const;

    BWLiveRenderer &m_renderer;
    BWLiveViewGeometry m_geometry;
    BWRenderedImage m_image;
    QRect m_pictureRect; // what m_image covers of the viewport
    std::function<bool()> m_leftButtonClicks;
    QElapsedTimer m_programActive; // since when; invalid while another program is active
    Qt::MouseButton m_panButton = Qt::NoButton; // which moves the image while it is held
    QPoint m_panStart;
    QPoint m_panScroll;
    double m_gridDistance = 0;
    int m_wheel = 0;
    bool m_painted = false;
    bool m_isSeen = true;
    DispatchAfterStrict::Handle m_forgetting;
    bool m_isNew = false; // m_image, and not flushed yet
};
