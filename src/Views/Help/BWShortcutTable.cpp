// SPDX-License-Identifier: GPL-3.0-or-later
#include "Views/Help/BWShortcutTable.h"

#include "Model/Texts/BWLocalizationManager.h"
#include "Views/Albums/BWThumbnailKeyboard.h"
#include "Views/Utils/BWColors.h"
#include "Views/Utils/BWCrispFrame.h"
#include "Views/Utils/BWViewKeys.h"

#include <algorithm>
#include <QAction>
#include <QGridLayout>
#include <QGuiApplication>
#include <QLabel>
#include <QMenu>
#include <QPainter>
#include <QRegularExpression>

using namespace Qt::StringLiterals;

namespace {

/// As Qt names them in the user's language.
QString key(const QKeySequence &keys)
{
    return keys.toString(QKeySequence::NativeText);
}

QString key(BWThumbnailKeyboard::Command command)
{
    return key(BWThumbnailKeyboard::keyFor(command));
}

/// "Shift+" before something other than a key, such as a click.
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
            shortcuts.append({BWShortcutSection::plainText(action->text()), keys});
    }
}

} // namespace

QString BWShortcutSection::plainText(QString text)
{
    static const QRegularExpression accessKeyInBrackets(u"\\s*\\(&[^&]\\)"_s);
    static const QRegularExpression accessKey(u"&(.)"_s);
    static const QRegularExpression dots(u"(\\.\\.\\.|…)$"_s);
    return text.remove(accessKeyInBrackets).replace(accessKey, u"\\1"_s).remove(dots);
}

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
    using Command = BWThumbnailKeyboard::Command;
    const QString click = manager.text(u"help_window"_s, u"click_key"_s, u"Click"_s);
    const QString doubleClick = manager.text(u"help_window"_s, u"double_click_key"_s, u"Double click"_s);
    const QString wheel = manager.text(u"help_window"_s, u"wheel_key"_s, u"Wheel"_s);
    const QString middleButton = manager.text(u"help_window"_s, u"middle_button_key"_s, u"Middle button"_s);
    const QString rightClick = manager.text(u"help_window"_s, u"right_click_key"_s, u"Right click"_s);
    const QString longPress = manager.text(u"help_window"_s, u"long_press_key"_s, u"Long press"_s);
    const QString hold = manager.text(u"help_window"_s, u"hold_key"_s, u"Hold"_s);
    const QString drag = u'+' + manager.text(u"help_window"_s, u"drag_key"_s, u"Drag"_s);
    const QString arrows = manager.text(u"help_window"_s, u"arrow_keys"_s, u"Arrow keys"_s);
    const QString dragAlone = manager.text(u"help_window"_s, u"drag_key"_s, u"Drag"_s);
    const BWShortcutSection::Shortcut step{
        manager.text(u"help_window"_s, u"step_label"_s, u"Previous, next picture of the album"_s),
        QGuiApplication::isRightToLeft() ? QStringList{key(Qt::Key_Right), key(Qt::Key_Left)}
                                         : QStringList{key(Qt::Key_Left), key(Qt::Key_Right)}};
    const QString trash = manager.text(u"help_window"_s, u"trash_label"_s, u"Move to the Trash, bring back"_s);
    const BWShortcutSection::Shortcut more{manager.text(u"help_window"_s, u"more_commands_label"_s, u"More commands"_s),
                                           {rightClick, longPress}};
    const BWShortcutSection image{
        manager.text(u"camera_window"_s, u"live_image"_s, u"Live image"_s),
        {{plainText(manager.text(u"main_menu"_s, u"snapshot_menu_item"_s, u"Take &snapshot"_s)),
          {click, key(BWViewKeys::snapshot),
           manager.text(u"help_window"_s, u"camera_button_key"_s, u"Button on the camera"_s)}},
         {manager.text(u"camera_window"_s, u"zoom_label"_s, u"Zoom"_s), {with(Qt::ControlModifier, wheel)}},
         {manager.text(u"help_window"_s, u"move_picture_label"_s, u"Move the picture"_s), {wheel, middleButton + drag}},
         {manager.text(u"help_window"_s, u"copy_picture_label"_s, u"Copy the picture, as a snapshot would save it"_s),
          {key(BWViewKeys::copy)}},
         more}};
    const BWShortcutSection lastCapture{
        plainText(manager.text(u"main_menu"_s, u"last_capture_menu_item"_s, u"&Last capture"_s)),
        {step,
         {manager.text(u"look_back"_s, u"play"_s, u"Play"_s), {key(BWViewKeys::play)}},
         {trash, {key(BWViewKeys::trash), key(BWViewKeys::undo)}},
         {manager.text(u"look_back"_s, u"back_to_live"_s, u"Back to the live image"_s), {key(BWViewKeys::leave)}}}};
    const BWShortcutSection comparison{
        plainText(manager.text(u"comparison"_s, u"menu"_s, u"Compariso&n"_s)),
        {{manager.text(u"help_window"_s, u"move_line_label"_s, u"Move the dividing line"_s), {dragAlone}},
         step,
         {manager.text(u"help_window"_s, u"align_label"_s, u"Align the album picture alone"_s),
          {dragAlone, wheel, arrows}}}};
    const BWShortcutSection fullScreen{
        plainText(manager.text(u"main_menu"_s, u"full_screen_menu_item"_s, u"&Full screen"_s)),
        {{manager.text(u"help_window"_s, u"show_bars_label"_s, u"Show the bar and the menus"_s),
          {manager.text(u"help_window"_s, u"top_edge_key"_s, u"Pointer at the top edge"_s), key(BWViewKeys::bars)}},
         {manager.text(u"help_window"_s, u"leave_label"_s, u"Leave"_s), {key(BWViewKeys::leave)}}}};
    const BWShortcutSection measurements{
        manager.text(u"measuring"_s, u"layer"_s, u"Measurements"_s),
        {{manager.text(u"help_window"_s, u"place_point_label"_s, u"Set a point"_s),
          {click, key(BWViewKeys::placePoint)}},
         {manager.text(u"help_window"_s, u"complete_label"_s, u"Complete a path, polygon or count"_s),
          {doubleClick, key(BWViewKeys::complete)}},
         {manager.text(u"help_window"_s, u"draw_line_label"_s, u"Draw a line or circle in one go, move a point"_s),
          {dragAlone}},
         {manager.text(u"help_window"_s, u"level_label"_s, u"Keep a line level, upright or at 45°"_s),
          {with(Qt::ShiftModifier, click), key(Qt::ShiftModifier | BWViewKeys::placePoint)}},
         {manager.text(u"help_window"_s, u"nudge_label"_s, u"Move a point by a pixel, by ten"_s),
          {arrows, with(Qt::ShiftModifier, arrows)}},
         {manager.text(u"help_window"_s, u"next_point_label"_s, u"Next, previous point"_s),
          {key(Qt::Key_Tab), key(Qt::SHIFT | Qt::Key_Tab)}},
         {manager.text(u"help_window"_s, u"give_up_label"_s, u"Give up, leave the tool"_s),
          {key(BWViewKeys::giveUp)}}}};
    const BWShortcutSection albums{
        manager.text(u"album_manager"_s, u"window_title"_s, u"Albums"_s),
        {{manager.text(u"help_window"_s, u"select_label"_s, u"Select"_s), {click, arrows}},
         {manager.text(u"help_window"_s, u"extend_selection_label"_s, u"Extend the selection"_s),
          {with(Qt::ShiftModifier, click), with(Qt::ShiftModifier, arrows)}},
         {manager.text(u"help_window"_s, u"select_one_more_label"_s, u"Add to the selection, or remove"_s),
          {with(Qt::ControlModifier, click), key(Command::Toggle)}},
         {manager.text(u"help_window"_s, u"move_focus_label"_s, u"Move without selecting"_s),
          {with(Qt::ControlModifier, arrows)}},
         {manager.text(u"help_window"_s, u"first_last_label"_s, u"First, last; a page up, down"_s),
          {key(Qt::Key_Home), key(Qt::Key_End), key(Qt::Key_PageUp), key(Qt::Key_PageDown)}},
         {manager.text(u"help_window"_s, u"select_all_label"_s, u"Select all, none"_s),
          {key(Command::SelectAll), key(Command::Deselect)}},
         {manager.text(u"help_window"_s, u"open_label"_s, u"Open"_s), {doubleClick, key(Command::Open)}},
         {manager.text(u"help_window"_s, u"show_in_main_window_label"_s, u"Show in the main window"_s),
          {key(Command::ShowInMainWindow)}},
         {manager.text(u"help_window"_s, u"compare_label"_s, u"Compare with the live image"_s),
          {key(Command::Compare)}},
         {manager.text(u"help_window"_s, u"copy_label"_s, u"Copy files and picture"_s), {key(Command::Copy)}},
         {manager.text(u"help_window"_s, u"rename_file_label"_s, u"Rename"_s), {key(Command::Rename)}},
         {manager.text(u"help_window"_s, u"show_in_file_manager_label"_s, u"Show in the file manager"_s),
          {key(Command::ShowInFileManager)}},
         {manager.text(u"help_window"_s, u"save_elsewhere_label"_s, u"Save elsewhere"_s), {key(Command::SaveAs)}},
         {manager.text(u"help_window"_s, u"make_movie_label"_s, u"Smaller movie; movie of the pictures"_s),
          {key(Command::MakeMovie)}},
         {trash, {key(Command::Trash), key(BWViewKeys::undo)}},
         {manager.text(u"help_window"_s, u"context_menu_label"_s, u"Menu of all commands"_s),
          {manager.text(u"help_window"_s, u"right_click_key"_s, u"Right click"_s), key(Command::Menu)}},
         {manager.text(u"help_window"_s, u"drag_label"_s, u"Drag into another program"_s), {hold + drag}}}};
    const BWShortcutSection others{
        manager.text(u"help_window"_s, u"other_windows_label"_s, u"Other windows"_s),
        {{manager.text(u"help_window"_s, u"close_label"_s, u"Close"_s),
          {key(BWViewKeys::leave), key(BWViewKeys::close)}},
         {manager.text(u"help_window"_s, u"copy_results_label"_s, u"Copy the results"_s), {key(BWViewKeys::copy)}},
         {manager.text(u"help_window"_s, u"rename_label"_s, u"Rename, remove a calibration"_s),
          {key(BWViewKeys::renameCalibration), key(BWViewKeys::removeCalibration)}}}};
    return {image, fullScreen, lastCapture, comparison, measurements, albums, others};
}

namespace {
constexpr int keyPadding = 6; // on both sides of the text
constexpr int keyGap = 3;
constexpr int wayGap = 12;
constexpr double radius = 3.5;
} // namespace

BWKeyCaps::BWKeyCaps(const QStringList &ways, QWidget *parent) : QWidget(parent), m_ways(ways)
{
    setAccessibleName(ways.join(u", "_s));
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
}

QStringList BWKeyCaps::keys(const QString &way)
{
    QStringList keys = way.split(u'+', Qt::SkipEmptyParts);
    if (way.endsWith(u'+')) // here it is the key itself, not a separator
        keys.append(u"+"_s);
    return keys;
}

QList<BWKeyCaps::Cap> BWKeyCaps::caps() const
{
    QList<Cap> caps;
    int x = 0;
    for (const QString &way : m_ways) {
        if (x > 0)
            x += wayGap - keyGap;
        const QStringList texts = keys(way);
        for (const QString &text : texts) {
            // No cap is narrower than it is high.
            const int width = std::max(fontMetrics().horizontalAdvance(text) + 2 * keyPadding, height(fontMetrics()));
            caps.append({text, x, width});
            x += width + keyGap;
        }
    }
    return caps;
}

int BWKeyCaps::height(const QFontMetrics &metrics)
{
    return metrics.height() + 4;
}

QSize BWKeyCaps::sizeHint() const
{
    const QList<Cap> all = caps();
    return {all.isEmpty() ? 0 : all.last().left + all.last().width, height(fontMetrics())};
}

void BWKeyCaps::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    constexpr double edgeShare = 0.3; // of the text colour
    const QList<Cap> all = caps();
    for (const Cap &cap : all) {
        const QRectF outer(cap.left, 0, cap.width, sizeHint().height());
        const BWCrispFrame frame(painter, outer);
        painter.setPen(QPen(BWColors::line(palette(), edgeShare), frame.width));
        painter.setBrush(palette().base());
        painter.drawRoundedRect(frame.rect, radius, radius);
        painter.setPen(palette().color(QPalette::Text));
        painter.drawText(outer, Qt::AlignCenter, cap.text);
    }
}

namespace {

constexpr int tableColumnSpacing = 40;
constexpr int keySpacing = 16;
constexpr int tableRowSpacing = 2;
constexpr int tableSectionSpacing = 8;

QLabel *plainLabel(const QString &text)
{
    auto *label = new QLabel(text);
    label->setTextFormat(Qt::PlainText);
    return label;
}

} // namespace

BWShortcutTable::BWShortcutTable(QWidget *parent) : QWidget(parent)
{
    auto *columns = new QHBoxLayout(this);
    columns->setContentsMargins(0, 0, 0, 0);
    columns->setSpacing(tableColumnSpacing);
}

void BWShortcutTable::setSections(const QList<BWShortcutSection> &sections, int room)
{
    fill(sections, 2);
    if (sizeHint().width() > room)
        fill(sections, 1);
}

void BWShortcutTable::fill(const QList<BWShortcutSection> &sections, int columns)
{
    const auto old = findChildren<QWidget *>(QString(), Qt::FindDirectChildrenOnly);
    qDeleteAll(old);

    qsizetype rows = 0;
    for (const BWShortcutSection &section : sections)
        rows += section.shortcuts.size() + 1;
    qsizetype used = 0;
    QGridLayout *column = nullptr;
    for (const BWShortcutSection &section : sections) {
        // The second column begins with the section whose middle lies beyond the middle of all.
        const bool inSecondColumn = used > 0 && 2 * used + section.shortcuts.size() + 1 > rows;
        if (!column || (inSecondColumn && layout()->count() < columns)) {
            auto *widget = new QWidget;
            column = new QGridLayout(widget);
            column->setContentsMargins(0, 0, 0, 0);
            column->setHorizontalSpacing(keySpacing);
            column->setVerticalSpacing(tableRowSpacing);
            column->setColumnStretch(0, 1);
            static_cast<QHBoxLayout *>(layout())->addWidget(widget, 1, Qt::AlignTop);
        }
        addSection(*column, section);
        used += section.shortcuts.size() + 1;
    }
    // In a visible window they would otherwise have no size until the event loop shows them.
    const auto made = findChildren<QWidget *>();
    for (QWidget *widget : made)
        widget->show();
}

void BWShortcutTable::addSection(QGridLayout &column, const BWShortcutSection &section)
{
    int row = column.rowCount();
    if (column.count() > 0)
        column.setRowMinimumHeight(row++, tableSectionSpacing);
    if (!section.title.isNull()) {
        QLabel *title = plainLabel(section.title);
        QFont bold = title->font();
        bold.setWeight(QFont::Bold);
        title->setFont(bold);
        column.addWidget(title, row++, 0, 1, 2);
    }
    for (const BWShortcutSection::Shortcut &shortcut : section.shortcuts) {
        column.addWidget(plainLabel(shortcut.name), row, 0);
        column.addWidget(new BWKeyCaps(shortcut.keys), row++, 1, Qt::AlignRight);
    }
}
