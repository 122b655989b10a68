// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Model/Texts/BWLocalizationManager.h"
#include "Views/Utils/BWPillPainting.h"

#include <QWidget>

/// Says over the picture that it stands still. Ignores the mouse. Screen readers speak it when it appears.
class BWFrozenMark : public QWidget, public BWLocalizationManagerDelegate {
    Q_OBJECT

public:
    explicit BWFrozenMark(QWidget *parent);

    void localizeWithManager(BWLocalizationManager &manager) override;

    /// Moves to the upper left corner of that area. Returns what is left of it below the mark while that shows.
    QRect placeIn(const QRect &area);

protected:
    void paintEvent(QPaintEvent *event) override;
    void changeEvent(QEvent *event) override;

private:
    void fit();

    BWFlashPicture m_picture;
    QPixmap m_drawn; // cached, because a moving picture beside it has it painted many times a second
};
