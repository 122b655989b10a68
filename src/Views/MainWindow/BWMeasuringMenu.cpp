// SPDX-License-Identifier: GPL-3.0-or-later
#include "Views/MainWindow/BWMeasuringMenu.h"

#include "Model/Measuring/BWMeasurement.h"

#include <algorithm>
#include <QAction>
#include <QActionGroup>
#include <QMenu>
#include <utility>

using namespace Qt::StringLiterals;

namespace {

/// The choice of a unit that suits the picture.
constexpr int anyUnit = -1;

} // namespace

BWMeasuringMenu::BWMeasuringMenu(QMenu &menu, QObject *parent)
    : QObject(parent),
      m_tools(new QActionGroup(this)),
      m_scales(new QActionGroup(this)),
      m_units(new QActionGroup(this))
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
        // A screen reader can switch off the chosen one, too; but one of them is always in the hand.
        connect(action, &QAction::toggled, this, [this, action] {
            if (std::ranges::none_of(tools(), &QAction::isChecked))
                action->setChecked(true);
        });
    }
    setKind({});
    menu.addSeparator();
    undo = add({u"Ctrl+Z"_s});
    redo = add({u"Ctrl+Shift+Z"_s, u"Ctrl+Y"_s});
    remove = add({u"Del"_s, u"Backspace"_s});
    menu.addSeparator();
    scaleBar = add({u"Ctrl+L"_s});
    scaleBar->setCheckable(true);
    results = add({u"Ctrl+Shift+M"_s});
    results->setCheckable(true);
    saveCopy = add({u"Ctrl+E"_s}); // as files of an album are saved elsewhere
    menu.addSeparator();
    m_scaleMenu = menu.addMenu(QString());
    m_unitMenu = menu.addMenu(QString());
    calibrate = add({});
    calibrations = add({});
    const auto addUnit = [this](int unit, const QString &title) {
        QAction *action = m_unitMenu->addAction(title);
        action->setData(unit);
        action->setCheckable(true);
        m_units->addAction(action);
    };
    addUnit(anyUnit, {});
    for (const auto unit :
         {BWLengthUnit::Micrometre, BWLengthUnit::Millimetre, BWLengthUnit::Centimetre, BWLengthUnit::Inch})
        addUnit(static_cast<int>(unit), BWLengths::symbol(unit));
    showUnit({});
    for (QAction *action : menu.actions())
        action->setAutoRepeat(false); // a key held down a moment too long undoes one step, not twenty
    connect(m_tools, &QActionGroup::triggered, this,
            [this](const QAction *action) { Q_EMIT kindPicked(action->data().toString()); });
    connect(m_scales, &QActionGroup::triggered, this,
            [this](const QAction *action) { Q_EMIT scalePicked(action->data().toInt()); });
    connect(m_units, &QActionGroup::triggered, this, [this](const QAction *action) {
        const int unit = action->data().toInt();
        Q_EMIT unitPicked(unit == anyUnit ? std::nullopt : std::optional(static_cast<BWLengthUnit>(unit)));
    });
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
    calibrations->setText(manager.text(u"measuring"_s, u"calibrations_menu_item"_s, u"Calibrat&ions..."_s));
    results->setText(manager.text(u"measuring"_s, u"results_menu_item"_s, u"R&esults"_s));
    saveCopy->setText(manager.text(u"measuring"_s, u"save_copy_menu_item"_s, u"&Save with measurements..."_s));
    m_scaleMenu->setTitle(manager.text(u"measuring"_s, u"scale_menu"_s, u"Sc&ale"_s));
    m_unitMenu->setTitle(manager.text(u"measuring"_s, u"unit_menu"_s, u"U&nit"_s));
    m_units->actions().constFirst()->setText(manager.text(u"measuring"_s, u"unit_automatic"_s, u"Automatic"_s));
    m_noScale = manager.text(u"measuring"_s, u"no_scale"_s, u"No scale: pixels"_s);
    fillScales();
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

void BWMeasuringMenu::showScales(const QStringList &titles, int chosen)
{
    m_chosenScale = chosen;
    if (std::exchange(m_scaleTitles, titles) != titles) {
        fillScales();
        return;
    }
    const auto scales = m_scales->actions();
    for (QAction *scale : scales)
        scale->setChecked(scale->data().toInt() == chosen);
}

void BWMeasuringMenu::fillScales()
{
    const auto old = m_scales->actions();
    for (QAction *scale : old) {
        m_scales->removeAction(scale);
        m_scaleMenu->removeAction(scale);
        scale->deleteLater(); // it may be the one that has just been chosen
    }
    for (int i = -1; i < m_scaleTitles.size(); ++i) {
        const QString title = i < 0 ? m_noScale : m_scaleTitles[i];
        auto *scale = new QAction(QString(title).replace(u'&', u"&&"_s), m_scales); // a name has no access key
        scale->setData(i);
        scale->setCheckable(true);
        scale->setChecked(i == m_chosenScale);
        m_scaleMenu->addAction(scale);
    }
}

void BWMeasuringMenu::showUnit(std::optional<BWLengthUnit> unit)
{
    const auto units = m_units->actions();
    for (QAction *action : units)
        action->setChecked(action->data().toInt() == (unit ? static_cast<int>(*unit) : anyUnit));
}

QString BWMeasuringMenu::toolName() const
{
    return m_tools->checkedAction()->text();
}
