#pragma once

#include "Model/LiveView/BWLiveViewGeometry.h"

#include <QObject>

class BWDoubleButton;
class BWMainWindow;
class BWProductInUse;

/// Zoom, rotation and mirroring of the live image: takes the user's actions, lays the image out, keeps the controls
/// of the main window in step. GUI thread.
class BWLiveViewController : public QObject {
    Q_OBJECT

public:
    /// Both must outlive this object.
    BWLiveViewController(BWMainWindow &window, const BWProductInUse &productInUse);

    /// Lays the image out: size from the camera's resolution and the zoom, then rotation and mirroring.
    void updateImageDisplay();
    /// Drops the last picture.
    void clear();

    void onZoom(BWDoubleButton *sender);
    void zoomIn();
    void zoomOut();
    void zoomToActualSize();
    void onRotate(const QString &title);
    void rotateByQuarter();
    void onFlip(int index);
    void flipHorizontally();
    void flipVertically();

    const BWLiveViewState &state() const { return m_state; }

Q_SIGNALS:
    /// At the end of updateImageDisplay().
    void imageDisplayUpdated();

private:
    void toggleFlip(BWFlip axis);
    void showZoom();

    BWMainWindow &m_window;
    const BWProductInUse &m_productInUse;
    BWLiveViewState m_state;
};
