// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QLineEdit>

/// Asks for the text of an arrow, over the picture. GUI thread.
class BWRemarkField final : public QLineEdit {
    Q_OBJECT

public:
    /// `label` says what is asked for.
    BWRemarkField(const QString &label, QWidget *parent);

    /// Beside that place of the parent, within the width of `room` and the parent's height.
    void placeBeside(QPoint at, const QRect &room);

Q_SIGNALS:
    /// By Return, or because the keyboard goes elsewhere in the window; not accepted by Escape.
    void answered(bool accepted);

protected:
    void keyPressEvent(QKeyEvent *event) override;
    void focusOutEvent(QFocusEvent *event) override;
};
