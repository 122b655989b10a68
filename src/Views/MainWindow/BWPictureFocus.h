// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QWidget>

class BWCenteringClipView;

/// A ring at the edges of the picture, visible on every picture, once Tab has led there and until a mouse button is pressed or
/// the focus goes elsewhere. Belongs to the view and ignores the mouse. GUI thread.
class BWPictureFocus : public QWidget {
    Q_OBJECT

public:
    /// Of the view, or of what lies over it and has the focus in its place.
    BWPictureFocus(BWCenteringClipView &view, QWidget &focused);

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;
    void paintEvent(QPaintEvent *event) override;

private:
    void place();

    BWCenteringClipView &m_view;
    bool m_byTab = false;
};
