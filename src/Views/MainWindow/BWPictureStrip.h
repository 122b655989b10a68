// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Views/Utils/BWBarButton.h"

#include <QWidget>

/// A flat button of a strip, with its text, or with a cross. GUI thread.
class BWStripButton : public BWBarButton {
    Q_OBJECT

public:
    enum class Shows { Text, Cross };

    BWStripButton(Shows shows, QWidget *parent) : BWBarButton(parent), m_shows(shows) { }

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override { return sizeHint(); }

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    const Shows m_shows;
};

/// A small panel of controls over the lower edge of the picture, readable on any picture. Hidden at first. GUI thread.
class BWPictureStrip : public QWidget {
    Q_OBJECT

public:
    /// Moves to the middle of the lower edge of that area.
    void placeIn(const QRect &area);
    /// How wide the picture has to be for it; 0 while it is hidden.
    int neededWidth() const;
    /// How much of the lower edge it takes up, with the gap above it; 0 while it is hidden.
    int takenHeight() const;

protected:
    explicit BWPictureStrip(QWidget *parent);

    void paintEvent(QPaintEvent *event) override;
};
