#include "Views/Help/BWShortcutSection.h"

#include "Model/Texts/BWLocalizationManager.h"

#include <QAction>
#include <QMenu>
#include <QRegularExpression>

using namespace Qt::StringLiterals;

namespace {

/// Without what only a menu needs: marks of access keys, and the dots that announce a question.
QString plainText(QString text)
{
    static const QRegularExpression accessKeyInBrackets(u"\\s*\\(&[^&]\\)"_s);
    static const QRegularExpression accessKey(u"&(.)"_s);
    static const QRegularExpression dots(u"(\\.\\.\\.|…)$"_s);
    return text.remove(accessKeyInBrackets).replace(accessKey, u"\\1"_s).remove(dots);
}

/// As Qt names them in the user's language.
QString key(QKeyCombination combination)
{
    return QKeySequence(combination).toString(QKeySequence::NativeText);
}

/// "Shift+" before something that is no key, such as a click.
QString with(Qt::KeyboardModifier modifier, const QString &action)
{
    QString text = key(modifier | Qt::Key_A);
    text.chop(1);
    return text + action;
}

void collect(const QList<QAction *> &actions, QList<BWShortcutSection::Shortcut> &shortcuts)
{
    for (const QAction *action : actions) {
        if (!action->isVisible())
            continue;
        if (const QMenu *menu = action->menu()) {
            collect(menu->actions(), shortcuts);
            continue;
        }
        QStringList keys;
        const QList<QKeySequence> sequences = action->shortcuts();
        for (const QKeySequence &sequence : sequences)
            keys.append(sequence.toString(QKeySequence::NativeText));
        if (!keys.isEmpty())
            shortcuts.append({plainText(action->text()), keys});
    }
}

} // namespace

QList<BWShortcutSection> BWShortcutSection::ofActions(const QList<QAction *> &actions)
{
    QList<BWShortcutSection> sections;
    for (QAction *action : actions) {
        const QString title = action->menu() ? plainText(action->text()) : QString();
        if (sections.isEmpty() || action->menu() || !sections.last().title.isNull())
            sections.append({title, {}});
        collect({action}, sections.last().shortcuts);
    }
    sections.removeIf([](const BWShortcutSection &section) { return section.shortcuts.isEmpty(); });
    return sections;
}

QList<BWShortcutSection> BWShortcutSection::ofViews(BWLocalizationManager &manager)
{
    const QString click = manager.text(u"help_window"_s, u"click_key"_s, u"Click"_s);
    const QString doubleClick = manager.text(u"help_window"_s, u"double_click_key"_s, u"Double click"_s);
    const QString wheel = manager.text(u"help_window"_s, u"wheel_key"_s, u"Wheel"_s);
    const QString middleButton = manager.text(u"help_window"_s, u"middle_button_key"_s, u"Middle button"_s);
    const QString hold = manager.text(u"help_window"_s, u"hold_key"_s, u"Hold"_s);
    const QString drag = u'+' + manager.text(u"help_window"_s, u"drag_key"_s, u"Drag"_s);
    const QString arrows = manager.text(u"help_window"_s, u"arrow_keys"_s, u"Arrow keys"_s);
    const BWShortcutSection image{
        manager.text(u"camera_window"_s, u"live_image"_s, u"Live image"_s),
        {{plainText(manager.text(u"main_menu"_s, u"snapshot_menu_item"_s, u"Take &snapshot"_s)),
          {click, key(Qt::Key_Space)}},
         {manager.text(u"camera_window"_s, u"zoom_label"_s, u"Zoom"_s), {with(Qt::ControlModifier, wheel)}},
         {manager.text(u"help_window"_s, u"move_picture_label"_s, u"Move the picture"_s),
          {wheel, middleButton + drag}}}};
    const BWShortcutSection albums{
        manager.text(u"album_manager"_s, u"window_title"_s, u"Albums"_s),
        {{manager.text(u"help_window"_s, u"select_label"_s, u"Select"_s), {click, arrows}},
         {manager.text(u"help_window"_s, u"extend_selection_label"_s, u"Extend the selection"_s),
          {with(Qt::ShiftModifier, click), with(Qt::ShiftModifier, arrows)}},
         {manager.text(u"help_window"_s, u"select_one_more_label"_s, u"Add to the selection, or remove"_s),
          {with(Qt::ControlModifier, click), key(Qt::Key_Space)}},
         {manager.text(u"help_window"_s, u"select_all_label"_s, u"Select all, none"_s),
          {key(Qt::ControlModifier | Qt::Key_A), key(Qt::Key_Escape)}},
         {manager.text(u"help_window"_s, u"open_label"_s, u"Open"_s), {doubleClick, key(Qt::Key_Enter)}},
         {manager.text(u"help_window"_s, u"save_elsewhere_label"_s, u"Save elsewhere"_s),
          {key(Qt::ControlModifier | Qt::Key_E)}},
         {manager.text(u"help_window"_s, u"trash_label"_s, u"Move to the Trash, bring back"_s),
          {key(Qt::Key_Delete), key(Qt::ControlModifier | Qt::Key_Z)}},
         {manager.text(u"help_window"_s, u"drag_label"_s, u"Drag into another program"_s), {hold + drag}}}};
    return {image, albums};
}
