#pragma once

#include <QRect>
#include <QWidget>

class BWFrameAutosave;
class BWUserDefaults;

/// A utility window beside the camera window, which stays the one in use when the panel is shown. It remembers its frame;
/// without one it is put in its place when it is shown, as the camera window may move until then, and at the start has not
/// even got its frame. Escape closes it. GUI thread.
class BWUtilityPanel : public QWidget {
    Q_OBJECT

public:
    /// The camera window owns the panel, if given, and is what it is placed by.
    explicit BWUtilityPanel(QWidget *cameraWindow);

    /// Puts it in its place: at once, or when it is shown the next time.
    void resetLayout();

    void setVisible(bool visible) override;

Q_SIGNALS:
    /// It was shown or hidden.
    void visibilityChanged();

protected:
    /// To be called when the panel has its usual size.
    void rememberFrame(const QString &name, BWUserDefaults &defaults);

    /// Puts it centred below the camera window; its size stays.
    virtual void place(QWidget &cameraWindow);

    void showEvent(QShowEvent *event) override;
    void hideEvent(QHideEvent *event) override;

private:
    void fit();
    void placeByCameraWindow();

    BWFrameAutosave *m_frame = nullptr;
};
