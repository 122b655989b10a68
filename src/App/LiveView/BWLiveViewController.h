// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Model/LiveView/BWScene.h"

#include <functional>
#include <optional>
#include <QObject>

class BWDoubleButton;
class BWLiveRenderer;
class BWMainWindow;
class BWProductInUse;

/// Zoom, rotation and mirroring of what the main window shows: takes the user's actions, lays the scene out, keeps the
/// controls of the window in step. GUI thread.
///
/// Turning and mirroring apply to the main picture, zooming and moving to the whole scene. While the pictures of a
/// comparison are not linked, all of it applies to the reference alone.
class BWLiveViewController : public QObject {
    Q_OBJECT

public:
    /// All must outlive this object. `live` draws the camera's frames.
    BWLiveViewController(BWMainWindow &window, BWLiveRenderer &live, const BWProductInUse &productInUse);

    /// Lays the image out: size from the camera's resolution, or the still in its place, and the zoom, then rotation and
    /// mirroring.
    void updateImageDisplay();
    /// Drops the last live picture.
    void clear();

    /// A still of that size, in pixels, is the main picture from now on; none: the live image.
    void setStill(std::optional<QSize> size);
    /// Shows a picture of that size, in pixels, beside the main one, turned and mirrored like that at first; another picture
    /// in place of the last reference keeps how it was laid. An empty size stands for one that cannot be shown.
    void setReference(QSize size);
    void endReference();
    /// How both are shown, while there is a reference. `share` is for an overlay and a dividing line, from 0 to 1.
    void setComparison(BWScene::Mode mode, double share);
    void setLinked(bool linked);
    bool isLinked() const { return m_linked; }
    /// Whether moving, zooming, turning and mirroring apply to the reference alone.
    bool movesReference() const { return m_scene.hasReference() && !m_linked; }
    const BWScene &scene() const { return m_scene; }

    void onZoom(BWDoubleButton *sender);
    void zoomIn();
    void zoomOut();
    void zoomToActualSize();
    /// Shows the whole picture from now on; once more: its actual size.
    void fitToWindow();
    void onRotate(const QString &title);
    void rotateByQuarter();
    void onFlip(int index);
    void flipHorizontally();
    void flipVertically();

    /// Of the main picture.
    const BWLiveViewState &state() const { return m_state; }
    /// In pixels, before it is turned; none without a picture.
    QSize mainSize() const;

Q_SIGNALS:
    /// At the end of updateImageDisplay().
    void imageDisplayUpdated();

private:
    void toggleFlip(BWFlip axis);
    void zoom(const std::function<void(BWLiveViewState &)> &change, std::optional<QPointF> at = std::nullopt);
    void zoomByStep(bool in, std::optional<QPointF> at = std::nullopt);
    void moveReference(const std::function<BWPicturePlace(const BWPicturePlace &)> &change);
    BWLiveViewState &turnedState() { return movesReference() ? m_referenceState : m_state; }
    double referenceScale() const;
    QSize laidOutSize() const;
    void layOut(std::optional<QPointF> anchor = std::nullopt);
    void showState();

    BWMainWindow &m_window;
    BWLiveRenderer &m_live;
    const BWProductInUse &m_productInUse;
    BWLiveViewState m_state;
    BWLiveViewState m_referenceState;
    QSize m_referenceSize;
    std::optional<QSize> m_still;
    BWScene m_scene;
    bool m_linked = true;
};
