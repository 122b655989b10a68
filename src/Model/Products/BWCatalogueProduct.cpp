#include "Model/Products/BWCatalogueProduct.h"

BWCatalogueProduct::BWCatalogueProduct(const BWCatalogueEntry &entry, BWUserDefaults &defaults)
    : BWCameraProduct(defaults), m_entry(entry)
{
    Q_ASSERT(entry.factoryValues.size() == entry.shape.settings.size());
    initialize();
}

QString BWCatalogueProduct::name() const
{
    return QString::fromUtf8(m_entry.name);
}

QString BWCatalogueProduct::oldGermanName() const
{
    return QString::fromUtf8(m_entry.oldGermanName);
}

QString BWCatalogueProduct::identifier() const
{
    return QString::fromUtf8(m_entry.identifier);
}

QString BWCatalogueProduct::cameraTypeIdentifier() const
{
    return QString::fromUtf8(m_entry.shape.cameraTypeIdentifier);
}

QList<int> BWCatalogueProduct::availableSettings() const
{
    return {m_entry.shape.settings.begin(), m_entry.shape.settings.end()};
}

QList<BWResolution> BWCatalogueProduct::availableResolutions() const
{
    return {m_entry.shape.resolutions.begin(), m_entry.shape.resolutions.end()};
}

void BWCatalogueProduct::setDefaults()
{
    QMap<int, double> values;
    for (std::size_t i = 0; i < m_entry.shape.settings.size(); ++i)
        values.insert(m_entry.shape.settings[i], m_entry.factoryValues[i]);
    setValues(values);
    setCurrentResolution({640, 480});
}
