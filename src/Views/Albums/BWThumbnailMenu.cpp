// SPDX-License-Identifier: GPL-3.0-or-later
#include "Views/Albums/BWThumbnailMenu.h"

#include "Views/Albums/BWThumbnailKeyboard.h"
#include "Views/Albums/BWThumbnailTableView.h"
#include "Views/Albums/BWThumbnailTableViewDelegate.h"
#include "Views/Albums/BWThumbnailViewMouseEventHandler.h"

using namespace Qt::StringLiterals;

BWThumbnailMenu::BWThumbnailMenu(BWThumbnailTableView &view) : QMenu(&view), m_view(view)
{
    connect(this, &QMenu::aboutToShow, this, &BWThumbnailMenu::prepare);
}

void BWThumbnailMenu::setMovieCommand(const QString &text, int leastElements)
{
    m_movieText = text;
    m_leastForMovie = leastElements;
}

void BWThumbnailMenu::localizeWithManager(BWLocalizationManager &manager)
{
    using Command = BWThumbnailKeyboard::Command;
    using View = BWThumbnailTableView;
    // The keys are only shown here: the grid handles them itself, while it has the focus.
    const auto add = [this](const QString &text, Command command, void (View::*action)()) {
        const QString key = BWThumbnailKeyboard::keyFor(command).toString(QKeySequence::NativeText);
        return addAction(text + u'\t' + key, &m_view, action);
    };
    clear();
    delete m_albums;
    m_albums = nullptr;
    add(manager.text(u"thumbnail_table_view"_s, u"right_menu_select_all"_s, u"Select All"_s), Command::SelectAll,
        &View::onSelectAll);
    add(manager.text(u"thumbnail_table_view"_s, u"right_menu_deselect_all"_s, u"Deselect All"_s), Command::Deselect,
        &View::onUnselectAll);
    addSeparator();
    const QString open = manager.text(u"thumbnail_table_view"_s, u"right_menu_open"_s, u"Open"_s);
    addAction(open + u'\t' + BWThumbnailKeyboard::keyFor(Command::Open).toString(QKeySequence::NativeText), &m_view,
              [this] { m_view.performDoubleClickForIndex(m_view.focusIndex()); });
    add(manager.text(u"thumbnail_table_view"_s, u"right_menu_show_in_main_window"_s, u"Show in the Main Window"_s),
        Command::ShowInMainWindow, &View::onShowInMainWindow);
    add(manager.text(u"thumbnail_table_view"_s, u"right_menu_compare"_s, u"Compare with the Live Image"_s),
        Command::Compare, &View::onCompare);
    add(manager.text(u"thumbnail_table_view"_s, u"right_menu_show_in_file_manager"_s, u"Show in the File Manager"_s),
        Command::ShowInFileManager, &View::onReveal);
    addSeparator();
    add(manager.text(u"thumbnail_table_view"_s, u"right_menu_copy"_s, u"Copy"_s), Command::Copy, &View::onCopy);
    add(manager.text(u"thumbnail_table_view"_s, u"right_menu_rename"_s, u"Rename..."_s), Command::Rename,
        &View::onRename);
    m_albums = addMenu(manager.text(u"thumbnail_table_view"_s, u"right_menu_move"_s, u"Move to Album"_s));
    add(manager.text(u"thumbnail_table_view"_s, u"right_menu_save_as"_s, u"Save as..."_s), Command::SaveAs,
        &View::onSaveAs);
    m_makeMovie = m_movieText.isEmpty() ? nullptr : add(m_movieText, Command::MakeMovie, &View::onMakeMovie);
    add(manager.text(u"thumbnail_table_view"_s, u"right_menu_trash"_s, u"Trash"_s), Command::Trash, &View::onTrash);
}

void BWThumbnailMenu::prepare()
{
    const QList<int> indexes = m_view.mouseEventHandler()->operationIndexes();
    if (m_makeMovie)
        m_makeMovie->setEnabled(indexes.size() >= m_leastForMovie);
    if (m_albums && m_view.modelDelegate())
        m_view.modelDelegate()->offerAlbumsForIndexesOfModel(m_view, *m_albums, indexes);
}
