#pragma once

#include "Model/Products/BWCameraProduct.h"

#include <span>

/// What products of one make have in common. Everything it points to lives as long as the program.
struct BWProductShape {
    const char *cameraTypeIdentifier;
    std::span<const int> settings;
    std::span<const BWResolution> resolutions;
};

/// The constants of one product of the catalogue. Everything it points to lives as long as the program.
struct BWCatalogueEntry {
    const char *identifier;
    const char *name;
    const char *oldGermanName; ///< nullptr when there is none
    const BWProductShape &shape;
    std::span<const int> factoryValues; ///< one for each of the shape's settings
};

/// A product made from a row of the catalogue's table.
class BWCatalogueProduct : public BWCameraProduct {
public:
    BWCatalogueProduct(const BWCatalogueEntry &entry, BWUserDefaults &defaults);

    QString name() const override;
    QString oldGermanName() const override;
    QString identifier() const override;
    QString cameraTypeIdentifier() const override;
    QList<int> availableSettings() const override;
    QList<BWResolution> availableResolutions() const override;
    void setDefaults() override;

private:
    const BWCatalogueEntry &m_entry;
};
