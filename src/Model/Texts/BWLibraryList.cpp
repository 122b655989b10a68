// SPDX-License-Identifier: GPL-3.0-or-later
#include "Model/Texts/BWLibraryList.h"

#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

QList<BWLibrary> BWLibraryList::fromFile(const QString &path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return {};
    QList<BWLibrary> libraries;
    const QJsonArray entries = QJsonDocument::fromJson(file.readAll()).array();
    for (const QJsonValue entry : entries) {
        const QJsonObject fields = entry.toObject();
        const QString name = fields[QLatin1String("name")].toString();
        if (!name.isEmpty())
            libraries.append(
                {name, fields[QLatin1String("version")].toString(), fields[QLatin1String("licence")].toString()});
    }
    return libraries;
}
