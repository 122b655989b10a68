// SPDX-License-Identifier: GPL-3.0-or-later
#include "Model/Products/BWProductCatalogue.h"

#include "BWACUDriver/BWCameraDetector.h"

#include <array>
#include <span>

namespace {

/// The constants of one product of the catalogue. It points to static data.
struct BWCatalogueEntry {
    const char *identifier;
    const char *name;
    const char *oldGermanName; ///< nullptr for a product that the old software did not know
    BWCameraDescriptionPtr (*type)(); ///< whose controls and sizes the product has
    std::span<const int> factoryValues; ///< one for each control of the type, in its order
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

constexpr auto ultra = &BWCameraDetector::descriptionForUltraResolutionMicroscope;
constexpr auto examination = &BWCameraDetector::descriptionForDX20;
constexpr auto high = &BWCameraDetector::descriptionForHighResolutionMicroscope;
constexpr auto regular = &BWCameraDetector::descriptionForRegularMicroscope;
constexpr auto wireless = &BWCameraDetector::descriptionForReceptorWirelessMicroscope;

constexpr std::array<int, 12> ultraA{0, 32, 64, 0, 3, 100, 4600, 1, 0, 1, 1, 157};
constexpr std::array<int, 12> ultraB{12, 50, 60, 35, 4, 90, 3750, 1, 0, 1, 0, 625};
constexpr std::array<int, 8> highA{0, 15, 15, 160, 13, 78, 128, 1};
constexpr std::array<int, 8> regularA{0, 13, 15, 152, 15, 64, 120, 0};
constexpr std::array<int, 8> regularB{0, 8, 16, 120, 12, 92, 128, 1};
constexpr std::array<int, 8> regularC{0, 13, 15, 167, 15, 75, 90, 0};
constexpr std::array<int, 6> wirelessA{63, 28, 56, 130, 10, 1};
constexpr std::array<int, 6> wirelessB{63, 32, 56, 100, 11, 1};

// Stored settings hold the identifiers, and those of older versions the names: do not tidy them up.
// clang-format off
constexpr BWCatalogueEntry entries[]{
    {"mx62", "Polarizing Microscope MX62", "Polarisationsmikroskop MX62", ultra, ultraA},
    {"mx51", "Digital Microscope MX51", "Digitales Mikroskop MX51", ultra, ultraA},
    {"mx24", "Digital Camera MX24", "Digitalkamera MX24", ultra, ultraB},
    {"dx15_16", "Digital Video Otoscope DX15/DX16", "Digitales Video-Otoskop DX15 / DX16", regular, regularA},
    {"dx14", "Digital Iris Scope DX14", "Digitales Iris Scope DX14", regular, regularB},
    {"dx70", "Digital Camera DX70", "Digitalkamera DX70", regular, regularC},
    {"dx10", "Digital Dermatoscope DX10", "Digitales Dermatoskop DX10", high, highA},
    {"mx50_40", "Digital Microscope MX50/MX40", "Digitales Mikroskop MX50 / MX40", high, highA},
    {"mx61", "Digital Polarizing Microscope MX61", "Digitales Polarisationsmikroskop MX61", high, highA},
    {"mx63", "Digital U/V Polarizing Microscope MX63", "Digitales U/V-Polarisationsmikroskop MX63", high, highA},
    {"dx11t", "Digital Trichoscope DX11T", "Digitales Trichoskop DX11T", high, highA},
    {"dx12", "Wireless Dermatoscope DX12", "Drahtloses Dermatoskop DX12", wireless, wirelessA},
    {"dx17_18", "Wireless Otoscope DX17/DX18", "Drahtloses Otoskop DX17 / DX18", wireless, wirelessB},
    {"mx30_31", "Wireless Microscope MX30/MX31", "Drahtloses Mikroskop MX30 / MX31", wireless, wirelessA},
    {"mx32", "Wireless Polarizing Microscope MX32", "Drahtloses Polarisationsmikroskop MX32", wireless, wirelessA},
    {"mx33", "Wireless UV Polarizing Microscope MX33", "Drahtloses UV Polarisationsmikroskop MX33", wireless, wirelessA},
    {"dx72", "Wireless Endoscope Camera DX72", "Wireless Endoskop Kamera DX72", wireless, wirelessA},
    {"wx90", "Wireless Digital Camera WX90", "Drahtlos Digitalkamera WX90", wireless, wirelessA},
    {"dx20", "General Examination Camera DX20", nullptr, examination, ultraA},
};
// clang-format on

} // namespace

BWCatalogueProduct::BWCatalogueProduct(const BWCatalogueEntry &entry, BWUserDefaults &defaults)
    : BWCameraProduct(defaults), m_entry(entry)
{
    Q_ASSERT(static_cast<qsizetype>(entry.factoryValues.size()) == availableSettings().size());
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
    return m_entry.type()->identifierForProducts;
}

QList<int> BWCatalogueProduct::availableSettings() const
{
    return m_entry.type()->acceptedSettings;
}

QList<BWResolution> BWCatalogueProduct::availableResolutions() const
{
    return m_entry.type()->availableResolutions;
}

void BWCatalogueProduct::setDefaults()
{
    QMap<int, double> values;
    const QList<int> settings = availableSettings();
    for (qsizetype i = 0; i < settings.size(); ++i)
        values.insert(settings[i], m_entry.factoryValues[static_cast<std::size_t>(i)]);
    setValues(values);
    setCurrentResolution({640, 480});
}

QList<BWCameraProductPtr> BWProductCatalogue::products(BWUserDefaults &defaults)
{
    QList<BWCameraProductPtr> products;
    for (const BWCatalogueEntry &entry : entries)
        products.append(std::make_shared<BWCatalogueProduct>(entry, defaults));
    return products;
}
