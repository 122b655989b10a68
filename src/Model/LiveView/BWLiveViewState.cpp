#include "Model/LiveView/BWLiveViewState.h"

void BWLiveViewState::setCurrentFlip(int index)
{
    m_flip = index >= 0 && index <= 3 ? static_cast<BWFlip>(index) : BWFlip::None;
}

void BWLiveViewState::zoomIn()
{
    if (m_zoom < 200)
        m_zoom += 10;
}

void BWLiveViewState::zoomOut()
{
    // Not the mirror image of zoomIn(): a zoom between the steps, such as 55, may still go below 50 once.
    if (m_zoom >= 51)
        m_zoom -= 10;
}

QString BWLiveViewState::zoomText() const
{
    return QString::asprintf("%u%%", m_zoom);
}

int BWLiveViewState::rotationFromTitle(const QString &title)
{
    return title.toInt();
}
