#include "Views/Utils/BWToolWindowPlace.h"

#include "Model/LiveView/BWLiveViewGeometry.h"
#include "Views/Utils/BWFrameAutosave.h"
#include "Views/Utils/BWWindowPlacement.h"

#include <QWidget>

void placeBWToolWindow(QWidget &tool, const QWidget &mainWindow)
{
    constexpr int distance = 24;
    constexpr int menuBar = 24; // its height, about
    tool.adjustSize();
    const QRect window = mainWindow.geometry();
    QRect place(QPoint(), tool.size().grownBy(BWFrameAutosave::margins(tool, &mainWindow)));
    place.moveTop(window.top() + menuBar + BWLiveViewGeometry::barHeight + distance);
    place.moveRight(window.right() - distance);
    tool.move(BWWindowPlacement::onScreens().fitted(place, mainWindow.frameGeometry()).topLeft());
}
