// SPDX-License-Identifier: GPL-3.0-or-later
#include "Views/Albums/BWThumbnailKeyboard.h"

#include "Views/Albums/BWThumbnailTableView.h"
#include "Views/Albums/BWThumbnailViewMouseEventHandler.h"

#include <algorithm>
#include <array>
#include <optional>
#include <QHeaderView>
#include <QKeyEvent>

namespace {

using Command = BWThumbnailKeyboard::Command;

struct Binding {
    QKeyCombination keys;
    Command command;
};

// Of several keys for one command, the first is the one to name.
constexpr std::array bindings{
    Binding{Qt::CTRL | Qt::Key_A, Command::SelectAll},
    Binding{Qt::Key_Escape, Command::Deselect},
    Binding{Qt::Key_Space, Command::Toggle},
    Binding{Qt::CTRL | Qt::Key_Space, Command::Toggle},
    Binding{Qt::Key_Return, Command::Open},
    Binding{Qt::Key_Enter, Command::Open},
    Binding{Qt::CTRL | Qt::Key_Return, Command::ShowInMainWindow},
    Binding{Qt::CTRL | Qt::Key_Enter, Command::ShowInMainWindow},
    Binding{Qt::CTRL | Qt::SHIFT | Qt::Key_Return, Command::Compare},
    Binding{Qt::CTRL | Qt::SHIFT | Qt::Key_Enter, Command::Compare},
    Binding{Qt::CTRL | Qt::Key_C, Command::Copy},
    Binding{Qt::CTRL | Qt::Key_Insert, Command::Copy},
    Binding{Qt::Key_F2, Command::Rename},
    Binding{Qt::CTRL | Qt::SHIFT | Qt::Key_O, Command::ShowInFileManager},
    Binding{Qt::Key_Delete, Command::Trash},
    Binding{Qt::CTRL | Qt::Key_E, Command::SaveAs}, // Ctrl+S takes a snapshot in every window
    Binding{Qt::CTRL | Qt::SHIFT | Qt::Key_V, Command::MakeMovie},
    Binding{Qt::SHIFT | Qt::Key_F10, Command::Menu}, // the menu key itself arrives as a context menu event
};

Qt::KeyboardModifiers modifiersOf(const QKeyEvent &event)
{
    return event.modifiers() & ~Qt::KeypadModifier;
}

std::optional<Command> commandOf(const QKeyEvent &event)
{
    const QKeyCombination pressed(modifiersOf(event), static_cast<Qt::Key>(event.key()));
    const auto *found = std::find_if(bindings.begin(), bindings.end(),
                                     [pressed](const Binding &binding) { return binding.keys == pressed; });
    return found == bindings.end() ? std::nullopt : std::optional(found->command);
}

/// Where a navigation key leads from `focus` (-1: none yet); nothing for any other key.
std::optional<int> targetOf(int key, int focus, const BWThumbnailTableView &view)
{
    const int columns = view.model()->columnCount();
    const int across = columns > 1 ? 1 : 2; // a single column shows only every second element
    const int elements = view.elementCount();
    const int last = across == 1 ? elements - 1 : (elements - 1) / 2 * 2;
    const int page = std::max(1, view.viewport()->height() / view.verticalHeader()->defaultSectionSize());
    const auto byRows = [&](int rows) {
        const int row = std::clamp(focus / 2 + rows, 0, last / 2);
        return std::min(row * 2 + focus % 2, last);
    };
    if (view.isRightToLeft() && (key == Qt::Key_Left || key == Qt::Key_Right))
        key = key == Qt::Key_Left ? Qt::Key_Right : Qt::Key_Left;
    switch (key) {
    case Qt::Key_Left:
        return std::max(focus - across, 0);
    case Qt::Key_Right:
        return focus < 0 ? 0 : std::min(focus + across, last);
    case Qt::Key_Up:
        return focus < 0 ? 0 : byRows(-1);
    case Qt::Key_Down:
        return focus < 0 ? 0 : byRows(1);
    case Qt::Key_PageUp:
        return focus < 0 ? 0 : byRows(-page);
    case Qt::Key_PageDown:
        return focus < 0 ? 0 : byRows(page);
    case Qt::Key_Home:
        return 0;
    case Qt::Key_End:
        return last;
    default:
        return std::nullopt;
    }
}

bool move(BWThumbnailTableView &view, const QKeyEvent &event)
{
    const Qt::KeyboardModifiers modifiers = modifiersOf(event);
    if (modifiers != Qt::NoModifier && modifiers != Qt::ShiftModifier && modifiers != Qt::ControlModifier)
        return false;
    const int focus = view.focusIndex();
    const std::optional<int> target = targetOf(event.key(), focus, view);
    if (!target)
        return false;
    view.setFocusIndex(*target);
    view.scrollTo(view.currentIndex());
    if (modifiers == Qt::ControlModifier)
        return true;
    const auto handler = view.mouseEventHandler();
    handler->updateOperationIndexesFromIndex(*target);
    if (modifiers == Qt::ShiftModifier)
        handler->moveRangeEnd(focus < 0 ? *target : focus, *target);
    else
        handler->selectOnly(*target);
    return true;
}

void perform(Command command, BWThumbnailTableView &view)
{
    const auto handler = view.mouseEventHandler(); // held: an operation may make the grid reload and replace it
    if (view.focusIndex() < 0)
        view.setFocusIndex(handler->selectedIndexes().value(0, 0));
    const int focus = view.focusIndex();
    if (command != Command::SelectAll && command != Command::Deselect)
        handler->updateOperationIndexesFromIndex(focus);
    switch (command) {
    case Command::SelectAll:
        return view.onSelectAll();
    case Command::Deselect:
        return view.onUnselectAll();
    case Command::Toggle:
        return handler->toggle(focus);
    case Command::Open:
        return view.performDoubleClickForIndex(focus);
    case Command::ShowInMainWindow:
        return view.onShowInMainWindow();
    case Command::Compare:
        return view.onCompare();
    case Command::Copy:
        return view.onCopy();
    case Command::Rename:
        return view.onRename();
    case Command::ShowInFileManager:
        return view.onReveal();
    case Command::Trash:
        return view.onTrash();
    case Command::SaveAs:
        return view.onSaveAs();
    case Command::MakeMovie:
        return view.onMakeMovie();
    case Command::Menu:
        return view.popUpMenuAtFocus();
    }
}

} // namespace

QKeySequence BWThumbnailKeyboard::keyFor(Command command)
{
    const auto *found = std::find_if(bindings.begin(), bindings.end(),
                                     [command](const Binding &binding) { return binding.command == command; });
    return found == bindings.end() ? QKeySequence() : QKeySequence(found->keys);
}

QList<Command> BWThumbnailKeyboard::commands()
{
    QList<Command> all;
    for (const Binding &binding : bindings) {
        if (!all.contains(binding.command))
            all.append(binding.command);
    }
    return all;
}

bool BWThumbnailKeyboard::takes(const QKeyEvent &event)
{
    const std::optional<Command> command = commandOf(event);
    return command && *command != Command::Deselect; // without a selection, Escape belongs to the window
}

bool BWThumbnailKeyboard::press(BWThumbnailTableView &view, const QKeyEvent &event)
{
    if (view.elementCount() == 0)
        return false;
    const std::optional<Command> command = commandOf(event);
    if (command || targetOf(event.key(), 0, view))
        view.mouseEventHandler()->performPendingSelection(); // now, or later it would undo what the key does
    if (!command)
        return move(view, event);
    if (*command == Command::Deselect && view.mouseEventHandler()->selectedIndexes().isEmpty())
        return false;
    perform(*command, view);
    return true;
}
