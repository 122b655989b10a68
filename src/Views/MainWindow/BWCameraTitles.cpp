#include "Views/MainWindow/BWCameraTitles.h"

QStringList BWCameraTitles::unique(const QStringList &names)
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
