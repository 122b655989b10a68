// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Views/Utils/BWBarButton.h"

#include <QImage>

/// The button of the bar that shows the last capture as a small picture in a quiet frame. GUI thread.
class BWLastCaptureButton : public BWBarButton {
    Q_OBJECT

public:
    explicit BWLastCaptureButton(QWidget *parent = nullptr);

    /// The picture keeps its proportions; a movie is marked as such.
    void setPicture(const QImage &picture, bool isMovie);

    QSize sizeHint() const override;

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    QImage m_picture;
    bool m_isMovie = false;
};
