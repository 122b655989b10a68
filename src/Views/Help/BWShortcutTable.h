#pragma once

#include <QList>
#include <QString>
#include <QWidget>

class BWLocalizationManager;
class QAction;
class QGridLayout;

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

/// Keys to be pressed together, drawn as on a keyboard: "Ctrl+S" as two caps. More than one way to press it stand side
/// by side. GUI thread.
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

/// Shortcuts to be looked up: the sections in two columns of about the same height, where there is room for them. GUI
/// thread.
class BWShortcutTable : public QWidget {
    Q_OBJECT

public:
    explicit BWShortcutTable(QWidget *parent = nullptr);

    void setSections(const QList<BWShortcutSection> &sections, int room);

private:
    void fill(const QList<BWShortcutSection> &sections, int columns);
    void addSection(QGridLayout &column, const BWShortcutSection &section);
};
