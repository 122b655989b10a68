#include "Views/Settings/BWProductChoices.h"

#include "BWACUDriver/BWCamera.h"
#include "Model/BWConfigManager.h"

#include <algorithm>

BWProductChoices::BWProductChoices(BWConfigManager &config) : m_config(config) { }

void BWProductChoices::setCamera(const BWCamera *camera)
{
    m_cameraIdentifier = camera ? camera->identifierForProducts() : QString();
    m_products = m_config.productsByCameraIdentifier(m_cameraIdentifier);
}

int BWProductChoices::currentIndex() const
{
    const QString chosen = m_config.currentProductIdentifierForCameraIdentifier(m_cameraIdentifier);
    return indexOf(chosen.isNull() ? m_config.defaultProductIdentifierForCameraIdentifier(m_cameraIdentifier) : chosen);
}

int BWProductChoices::chosenIndex(const BWCamera &camera) const
{
    return indexOf(m_config.currentProductIdentifierForCameraIdentifier(camera.identifierForProducts()));
}

void BWProductChoices::choose(int index)
{
    if (index < 0 || index >= m_products.size())
        return;
    const BWCameraProductPtr product = m_products[index]; // the list may change while the listeners are told
    m_config.setCurrentProductIdentifier(product->identifier(), product->cameraTypeIdentifier());
}

int BWProductChoices::indexOf(const QString &productIdentifier) const
{
    const auto found = std::find_if(m_products.begin(), m_products.end(), [&](const BWCameraProductPtr &product) {
        return product->identifier() == productIdentifier;
    });
    return found == m_products.end() ? -1 : static_cast<int>(found - m_products.begin());
}
