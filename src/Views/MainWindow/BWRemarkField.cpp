// SPDX-License-Identifier: GPL-3.0-or-later
#include "Views/MainWindow/BWRemarkField.h"

#include <algorithm>
#include <QKeyEvent>

BWRemarkField::BWRemarkField(const QString &label, QWidget *parent) : QLineEdit(parent)
{
    setAccessibleName(label);
    setPlaceholderText(label);
}

void BWRemarkField::placeBeside(QPoint at, const QRect &room)
{
    const int width = std::max(180, fontMetrics().horizontalAdvance(placeholderText()) + 24);
    const QSize size(width, sizeHint().height());
    const int lowest = parentWidget()->height() - size.height();
    setGeometry(QRect({std::clamp(at.x() + 8, 0, std::max(0, room.width() - size.width())),
                       std::clamp(at.y() - size.height() - 4, 0, std::max(0, lowest))},
                      size));
}

void BWRemarkField::keyPressEvent(QKeyEvent *event)
{
    const bool accepts = event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter;
    if (!accepts && event->key() != Qt::Key_Escape) {
        QLineEdit::keyPressEvent(event);
        return;
    }
    event->accept(); // the layer below would begin another arrow
    Q_EMIT answered(accepts);
}

void BWRemarkField::focusOutEvent(QFocusEvent *event)
{
    QLineEdit::focusOutEvent(event);
    if (event->reason() != Qt::PopupFocusReason && event->reason() != Qt::ActiveWindowFocusReason)
        Q_EMIT answered(true);
}
