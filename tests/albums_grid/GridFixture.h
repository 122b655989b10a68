// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "BWManualClock.h"
#include "FakeAlbum.h"
#include "TouchScreen.h"
#include "Views/Albums/BWThumbnailDrag.h"

#include <QCoreApplication>
#include <QTest>

/// A grid that records what would be dragged.
class DragRecorder : public BWThumbnailTableView {
public:
    explicit DragRecorder(BWClock &clock) : BWThumbnailTableView(nullptr, clock) { }

    void beginDraggingSession(const QList<BWThumbnailDragItem> &items) override
    {
        for (const BWThumbnailDragItem &item : items)
            dragged.append(item.file.fileName().section(u'.', 0, 0).toInt());
        onDrag();
    }

    QList<int> dragged;
    std::function<void()> onDrag = [] {}; ///< a drag has its own event loop, in which anything may happen
};

/// A grid on the screen, four rows of 120 points high, and its time.
struct GridFixture {
    explicit GridFixture(int count) : album(count), view(clock)
    {
        view.setFrameShape(QFrame::NoFrame);
        view.setModelDelegate(&album);
        view.setDataSource(&album);
        view.resize(300, 480);
        view.show();
        view.reloadData();
        view.activateWindow();
        view.setFocus();
        QCoreApplication::processEvents();
    }

    QPoint place(int cell) { return view.visualRect(view.model()->index(cell / 2, cell % 2)).center(); }

    BWManualClock clock;
    FakeAlbum album;
    DragRecorder view;
    TouchScreen screen{*view.viewport()};
};
