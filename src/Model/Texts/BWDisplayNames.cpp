// SPDX-License-Identifier: GPL-3.0-or-later
#include "Model/Texts/BWDisplayNames.h"

#include "Model/Products/BWCameraProduct.h"
#include "Model/Texts/BWLocalizationManager.h"

using namespace Qt::StringLiterals;

QString BWDisplayNames::product(const BWCameraProduct &product, BWLocalizationManager &texts)
{
    return texts.text(u"camera_product"_s, product.identifier(), product.name());
}

QString BWDisplayNames::camera(const BWCameraDescription &camera, BWLocalizationManager &texts)
{
    return camera.hasOwnName ? camera.name : texts.text(u"camera_type"_s, camera.identifierForCameraType, camera.name);
}

QStringList BWDisplayNames::cameras(const QList<BWCameraPtr> &cameras, BWLocalizationManager &texts)
{
    QStringList names;
    for (const BWCameraPtr &each : cameras)
        names.append(camera(*each->detectedCamera()->cameraDescription(), texts));
    return unique(names);
}

QStringList BWDisplayNames::unique(const QStringList &names)
{
    QStringList titles;
    for (const QString &name : names) {
        QString title = name;
        for (int number = 2; titles.contains(title); ++number)
            title = QStringLiteral("%1 (%2)").arg(name).arg(number);
        titles.append(title);
    }
    return titles;
}
