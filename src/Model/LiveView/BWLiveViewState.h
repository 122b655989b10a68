#pragma once

#include <QString>

/// Mirroring of the live image, applied in the image's own axes before the rotation. The numbers are the positions in
/// the flip menu.
enum class BWFlip { None = 0, Horizontal = 1, Vertical = 2, Both = 3 };

/// How the live image is being looked at. Never stored: every start begins unzoomed, unturned and unmirrored.
class BWLiveViewState {
public:
    /// Percent; 100 shows one image pixel per point.
    unsigned currentZoom() const { return m_zoom; }
    /// Degrees, counter-clockwise.
    int currentRotation() const { return m_rotation; }
    BWFlip currentFlip() const { return m_flip; }

    void setCurrentZoom(unsigned percent) { m_zoom = percent; }
    void setCurrentRotation(int degrees) { m_rotation = degrees; }
    /// Anything but 0 to 3 is no mirroring.
    void setCurrentFlip(int index);

    /// Ten percent more, if below 200.
    void zoomIn();
    /// Ten percent less, if 51 or more.
    void zoomOut();
    /// The zoom as shown to the user: "110%".
    QString zoomText() const;

    /// The angle in a menu title such as "90"; 0 for a title that is no number.
    static int rotationFromTitle(const QString &title);

    bool operator==(const BWLiveViewState &) const = default;

private:
    unsigned m_zoom = 100;
    int m_rotation = 0;
    BWFlip m_flip = BWFlip::None;
};
