#pragma once

#include <QList>
#include <QString>

class QAction;

class BWLocalizationManager;

/// What can be done with keyboard and mouse in one place: the shortcuts of one menu, in its order, or what is in none.
struct BWShortcutSection {
    struct Shortcut {
        QString name; ///< of the action, as plain text
        QStringList keys; ///< one text for each way to press it, such as "Ctrl+S"
    };

    QString title; ///< of the menu or view; null for actions that are in none
    QList<Shortcut> shortcuts;

    /// Of those actions, and of all in the menus that they open, sub-menus included. An action that is not to be seen or
    /// has no shortcut is left out, and so is a menu without any.
    static QList<BWShortcutSection> ofActions(const QList<QAction *> &actions);
    /// Of the live image and the album window, for which there is no item in a menu.
    static QList<BWShortcutSection> ofViews(BWLocalizationManager &manager);
};
