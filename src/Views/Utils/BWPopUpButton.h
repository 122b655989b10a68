#pragma once

#include <QComboBox>
#include <QWheelEvent>

/// A pop-up menu that the wheel of the mouse does not change, unless it is open. What such a menu changes can be more
/// than an inadvertent turn should: another camera or another resolution ends a recording, another album takes what is
/// captured next.
class BWPopUpButton : public QComboBox {
public:
    using QComboBox::QComboBox;

protected:
    void wheelEvent(QWheelEvent *event) override { event->ignore(); }
};
