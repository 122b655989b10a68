#pragma once

#include <QList>

class BWCamera;
class BWCameraProduct;

/// Sends a product's values to a camera.
class BWProductLoader {
public:
    enum class VideoNorm { Send, LeaveAlone };

    /// The control codes in the order in which they are shown and sent. Backlight compensation is not among them: it
    /// is stored with a product but never changed.
    static const QList<int> &settingsOrder();

    /// Every value of the product that the camera accepts, in order; each is clamped by the camera and stays as it is
    /// in the product. `norm` tells whether the video norm goes along.
    static void load(const BWCameraProduct &product, BWCamera &camera, VideoNorm norm);
};
