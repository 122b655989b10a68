// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QList>
#include <QString>
#include <QWidget>

class BWLocalizationManager;
class QAction;
class QGridLayout;

/// What keyboard and mouse do in one place: the shortcuts of one menu, in its order, or those outside all menus.
struct BWShortcutSection {
    struct Shortcut {
        QString name; ///< of the action, as plain text
        QStringList keys; ///< one text for each way to press it, such as "Ctrl+S"
    };

    QString title; ///< of the menu or view; null for actions outside of both
    QList<Shortcut> shortcuts;

    /// A menu item's text without what only menus need: the mark of its access key, and the dots.
    static QString plainText(QString text);
    /// The shortcuts of those actions and of all menus below them. Leaves out actions that are hidden or have no shortcut,
    /// and menus without any.
    static QList<BWShortcutSection> ofActions(const QList<QAction *> &actions);
    /// Those of the live image and everything that may take its place, of the album window and others, which are in no
    /// menu.
    static QList<BWShortcutSection> ofViews(BWLocalizationManager &manager);
};

/// Keys that are pressed together, drawn as on a keyboard: "Ctrl+S" as two caps. Alternatives stand side by side. GUI
/// thread.
class BWKeyCaps : public QWidget {
    Q_OBJECT

public:
    explicit BWKeyCaps(const QStringList &ways, QWidget *parent = nullptr);

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override { return sizeHint(); }

    /// The single keys of a text such as "Ctrl++".
    static QStringList keys(const QString &way);

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    struct Cap {
        QString text;
        int left;
        int width;
    };
    QList<Cap> caps() const;
    static int height(const QFontMetrics &metrics);

    QStringList m_ways;
};

/// A table of shortcuts: the sections in two columns of about the same height if there is room. GUI thread.
class BWShortcutTable : public QWidget {
    Q_OBJECT

public:
    explicit BWShortcutTable(QWidget *parent = nullptr);

    void setSections(const QList<BWShortcutSection> &sections, int room);

private:
    void fill(const QList<BWShortcutSection> &sections, int columns);
    void addSection(QGridLayout &column, const BWShortcutSection &section);
};
