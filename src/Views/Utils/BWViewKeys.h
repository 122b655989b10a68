// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QKeySequence>

/// The keys of views that are in no menu. Who reacts to one, and the help and tool tips that name it, take it from here; for
/// the album's own keys see BWThumbnailKeyboard.
namespace BWViewKeys {

constexpr auto snapshot = Qt::Key_Space; ///< over the live image
constexpr auto bars = Qt::Key_F10; ///< of a full screen
constexpr auto leave = QKeySequence::Cancel; ///< whatever one is in: a full screen, a capture, a panel
constexpr auto close = QKeySequence::Close;
constexpr auto copy = QKeySequence::Copy;
constexpr auto undo = QKeySequence::Undo;
constexpr auto play = Qt::Key_Return;
constexpr auto trash = Qt::Key_Delete;
constexpr auto placePoint = Qt::Key_Space;
constexpr auto complete = Qt::Key_Return; ///< what is being measured
constexpr auto giveUp = Qt::Key_Escape;
constexpr auto renameCalibration = Qt::Key_F2;
constexpr auto removeCalibration = QKeySequence::Delete;

} // namespace BWViewKeys
