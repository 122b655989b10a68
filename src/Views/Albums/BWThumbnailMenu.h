// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Model/Texts/BWLocalizationManager.h"

#include <QMenu>

class BWThumbnailTableView;

/// The context menu of a grid of thumbnails. It acts on the elements that the grid's handler has for an operation.
/// GUI thread.
class BWThumbnailMenu : public QMenu, public BWLocalizationManagerDelegate {
    Q_OBJECT

public:
    explicit BWThumbnailMenu(BWThumbnailTableView &view);

    void localizeWithManager(BWLocalizationManager &manager) override;
    /// What makes movies of elements is called here, and how many elements it needs at least. Before the texts are
    /// localized.
    void setMovieCommand(const QString &text, int leastElements);
    int leastForMovie() const { return m_leastForMovie; }

private:
    void prepare();

    BWThumbnailTableView &m_view;
    QAction *m_makeMovie = nullptr;
    QMenu *m_albums = nullptr; ///< to which elements can move
    QString m_movieText;
    int m_leastForMovie = 1;
};
