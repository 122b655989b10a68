#include "Views/MainWindow/BWMeasuringMenu.h"

#include "Model/Measuring/BWMeasurement.h"

#include <QAction>
#include <QActionGroup>
#include <QMenu>

using namespace Qt::StringLiterals;

BWMeasuringMenu::BWMeasuringMenu(QMenu &menu, QObject *parent) : QObject(parent), m_tools(new QActionGroup(this))
{
    const auto add = [&menu](const QList<QKeySequence> &keys) {
        QAction *action = menu.addAction(QString());
        action->setShortcuts(keys);
        return action;
    };
    showTools = menu.addAction(QString());
    showTools->setShortcut(u"Ctrl+M"_s);
    showTools->setCheckable(true);
    menu.addSeparator();
    QStringList kinds{QString()}; // that which selects and moves
    for (const BWMeasurementKind &kind : BWMeasurementKind::all())
        kinds << kind.identifier;
    for (qsizetype i = 0; i < kinds.size(); ++i) {
        QAction *action = m_tools->addAction(QString());
        action->setData(kinds[i]);
        action->setCheckable(true);
        constexpr int keys = 8; // Ctrl+9 is taken
        if (i > 0 && i <= keys)
            action->setShortcut(u"Ctrl+%1"_s.arg(i));
        menu.addAction(action);
    }
    setKind({});
    menu.addSeparator();
    undo = add({u"Ctrl+Z"_s});
    redo = add({u"Ctrl+Shift+Z"_s, u"Ctrl+Y"_s});
    remove = add({u"Del"_s, u"Backspace"_s});
    menu.addSeparator();
    scaleBar = add({u"Ctrl+L"_s});
    scaleBar->setCheckable(true);
    calibrate = add({});
    results = add({u"Ctrl+Shift+M"_s});
    results->setCheckable(true);
    menu.addSeparator();
    saveCopy = add({u"Ctrl+E"_s}); // as files of an album are saved elsewhere
    for (QAction *action : menu.actions())
        action->setAutoRepeat(false); // a key held down a moment too long undoes one step, not twenty
    connect(m_tools, &QActionGroup::triggered, this,
            [this](const QAction *action) { Q_EMIT kindPicked(action->data().toString()); });
}

void BWMeasuringMenu::localizeWithManager(BWLocalizationManager &manager)
{
    m_words.localizeWithManager(manager);
    for (QAction *tool : tools()) {
        const QString kind = tool->data().toString();
        tool->setText(kind.isEmpty() ? manager.text(u"measuring"_s, u"select_tool"_s, u"Select and move"_s)
                                     : m_words.kind(kind));
    }
    showTools->setText(manager.text(u"measuring"_s, u"tools_menu_item"_s, u"Measuring &tools"_s));
    undo->setText(manager.text(u"measuring"_s, u"undo_menu_item"_s, u"&Undo"_s));
    redo->setText(manager.text(u"measuring"_s, u"redo_menu_item"_s, u"&Redo"_s));
    remove->setText(manager.text(u"measuring"_s, u"delete_menu_item"_s, u"&Delete"_s));
    scaleBar->setText(manager.text(u"measuring"_s, u"scale_bar_menu_item"_s, u"Scale &bar"_s));
    calibrate->setText(manager.text(u"measuring"_s, u"calibrate_menu_item"_s, u"&Calibrate..."_s));
    results->setText(manager.text(u"measuring"_s, u"results_menu_item"_s, u"R&esults"_s));
    saveCopy->setText(manager.text(u"measuring"_s, u"save_copy_menu_item"_s, u"&Save with measurements..."_s));
}

QList<QAction *> BWMeasuringMenu::tools() const
{
    return m_tools->actions();
}

QString BWMeasuringMenu::kind() const
{
    return m_tools->checkedAction()->data().toString();
}

void BWMeasuringMenu::setKind(const QString &kind)
{
    for (QAction *action : tools()) {
        if (action->data().toString() == kind)
            action->setChecked(true);
    }
}
