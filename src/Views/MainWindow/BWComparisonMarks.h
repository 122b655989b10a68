// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Model/LiveView/BWScene.h"

#include <QObject>
#include <QString>

class BWCenteringClipView;
class BWDividerHandle;
class BWStatusPill;

/// What lies over two pictures that are compared: a caption on each side, a word in place of a picture that cannot be
/// shown, and the line between them, which can be dragged. GUI thread.
class BWComparisonMarks : public QObject {
    Q_OBJECT

public:
    struct Texts {
        QString main;
        QString reference;
        QString inPlaceOfReference; ///< null if there is a picture
    };

    explicit BWComparisonMarks(BWCenteringClipView &view);

    /// Texts of nothing hide all of it.
    void setTexts(const Texts &texts);
    /// Follows the view's scene.
    void place();

Q_SIGNALS:
    /// The line was dragged there, as a share of the width.
    void dividerDragged(double share);

private:
    BWCenteringClipView &m_view;
    BWStatusPill *m_main;
    BWStatusPill *m_reference;
    BWStatusPill *m_word;
    BWDividerHandle *m_divider;
};
