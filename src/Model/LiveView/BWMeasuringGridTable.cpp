#include "Model/LiveView/BWMeasuringGridTable.h"

using namespace Qt::StringLiterals;

BWMeasuringGridTable::BWMeasuringGridTable()
    : m_products{{u"dx12"_s, {{u"640x480"_s, 391}, {u"720x480"_s, 428}}},
                 {u"dx10"_s, {{u"640x480"_s, 355}, {u"1280x1024"_s, 710}, {u"1600x1200"_s, 710}}}}
{
}

double BWMeasuringGridTable::distance(const QString &productIdentifier, const QString &resolution) const
{
    return m_products.value(productIdentifier).value(resolution, 0);
}

void BWMeasuringGridTable::setDistance(double distance, const QString &productIdentifier, const QString &resolution)
{
    const auto product = m_products.find(productIdentifier);
    if (product != m_products.end())
        product->insert(resolution, distance);
}
