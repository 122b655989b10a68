#pragma once

#include <QWidget>

/// A utility window that stands centred below the camera window, which stays the one in use when the panel is shown.
/// Escape closes it. GUI thread.
class BWUtilityPanel : public QWidget {
    Q_OBJECT

public:
    /// The camera window owns the panel, if given, and is what it is placed by.
    explicit BWUtilityPanel(QWidget *cameraWindow);

    /// Puts it in its place; its size stays. A hidden panel is placed when it is shown the next time, as the camera
    /// window may still move until then, and at the start has not even got its frame.
    void resetLayout();

    void setVisible(bool visible) override;

Q_SIGNALS:
    /// It was shown or hidden.
    void visibilityChanged();

protected:
    void showEvent(QShowEvent *event) override;
    void hideEvent(QHideEvent *event) override;

private:
    void fit();
    void place();

    bool m_mustPlace = false;
};
