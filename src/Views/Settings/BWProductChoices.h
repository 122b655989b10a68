#pragma once

#include "Model/BWCameraProduct.h"

#include <QList>

class BWCamera;
class BWConfigManager;

/// The products that a camera can be, and which of them it is taken for. GUI thread.
class BWProductChoices {
public:
    explicit BWProductChoices(BWConfigManager &config);

    /// Lists the products of that camera's type; none without a camera.
    void setCamera(const BWCamera *camera);

    const QList<BWCameraProductPtr> &products() const { return m_products; }
    /// Of the product chosen for the type, or else of the type's default; -1 where that is not in the list, as when the
    /// chosen one is no longer in the catalogue.
    int currentIndex() const;
    /// Of the product chosen for the camera's type; -1 where none is chosen, or none of these.
    int chosenIndex(const BWCamera &camera) const;

    /// Stores the choice under the product's own type.
    void choose(int index);

private:
    int indexOf(const QString &productIdentifier) const;

    BWConfigManager &m_config;
    QString m_cameraIdentifier;
    QList<BWCameraProductPtr> m_products;
};
