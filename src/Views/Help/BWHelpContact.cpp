#include "Views/Help/BWHelpContact.h"

#include "Utils/BWLogging.h"

#include <QFile>
#include <QJsonDocument>
#include <QJsonObject>
#include <QRegularExpression>

using namespace Qt::StringLiterals;

BWHelpContact BWHelpContact::fromFile(const QString &path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        qCWarning(bwViews) << "Where to find help:" << path << file.errorString();
    const QJsonObject object = QJsonDocument::fromJson(file.readAll()).object();

    BWHelpContact contact;
    const QUrl page(object["faq_page"_L1].toString(), QUrl::StrictMode);
    if (page.isValid() && page.scheme() == "https"_L1 && !page.host().isEmpty())
        contact.faqPage = page;
    else
        qCWarning(bwViews) << "Where to find help:" << path << "names no page";
    const QString address = object["support_address"_L1].toString();
    static const QRegularExpression plainAddress(u"^[A-Za-z0-9._+-]+@[A-Za-z0-9.-]+$"_s);
    if (plainAddress.match(address).hasMatch())
        contact.supportAddress = address;
    else
        qCWarning(bwViews) << "Where to find help:" << path << "names no e-mail address";
    return contact;
}
