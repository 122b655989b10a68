// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Model/Texts/BWLocalizationManager.h"
#include "Views/MainWindow/BWPictureStrip.h"

/// Offers to do something that suggests itself, beside a cross that closes the offer. Asks for nothing: it waits, takes no
/// keyboard, and the picture goes on. Screen readers speak it when it appears. GUI thread.
class BWOfferStrip : public BWPictureStrip, public BWLocalizationManagerDelegate {
    Q_OBJECT

public:
    explicit BWOfferStrip(QWidget *parent);

    void localizeWithManager(BWLocalizationManager &manager) override;

    /// Its buttons come after that widget.
    void followInTabOrder(QWidget &widget);
    /// False without an offer.
    bool end();

Q_SIGNALS:
    /// To make a movie of the pictures of the last series.
    void movieWanted();
    /// It ends with the keyboard in it.
    void keyboardReturned();

private:
    BWStripButton *m_movie;
    BWStripButton *m_close;
};
