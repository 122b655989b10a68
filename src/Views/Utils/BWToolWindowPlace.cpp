#include "Views/Utils/BWToolWindowPlace.h"

#include "Model/LiveView/BWLiveViewGeometry.h"

#include <algorithm>
#include <QScreen>
#include <QWidget>

void placeBWToolWindow(QWidget &tool, const QWidget &mainWindow)
{
    constexpr int distance = 24;
    constexpr int menuBar = 24; // its height, about
    tool.adjustSize();
    const QRect window = mainWindow.geometry();
    const QRect screen = mainWindow.screen()->availableGeometry();
    const int x = window.x() + window.width() - tool.width() - distance;
    const int y = window.y() + menuBar + BWLiveViewGeometry::barHeight + distance;
    tool.move(std::max(screen.x(), std::min(x, screen.x() + screen.width() - tool.width())),
              std::max(screen.y(), std::min(y, screen.y() + screen.height() - tool.height())));
}
