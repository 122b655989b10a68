#pragma once

#include <QList>
#include <QString>

class QAction;

/// The keyboard shortcuts of one menu, in its order.
struct BWShortcutSection {
    struct Shortcut {
        QString name; ///< of the action, as plain text
        QStringList keys; ///< one text for each way to press it, such as "Ctrl+S"
    };

    QString title; ///< of the menu; null for actions that are in none
    QList<Shortcut> shortcuts;

    /// Of those actions, and of all in the menus that they open, sub-menus included. An action that is not to be seen or
    /// has no shortcut is left out, and so is a menu without any.
    static QList<BWShortcutSection> ofActions(const QList<QAction *> &actions);
};
