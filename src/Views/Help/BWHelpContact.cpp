// SPDX-License-Identifier: GPL-3.0-or-later
#include "Views/Help/BWHelpContact.h"

#include "Utils/BWLogging.h"

#include <QFile>
#include <QGuiApplication>
#include <QJsonDocument>
#include <QJsonObject>
#include <QRegularExpression>
#include <QSysInfo>

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

namespace {

constexpr qsizetype longestFact = 120; // characters
const QString leftOut = u"…"_s;

QByteArray encoded(const QString &text)
{
    return QUrl::toPercentEncoding(text);
}

QByteArray encodedLine(const QString &text)
{
    return "%0D%0A" + encoded(text);
}

/// In one line, not too long, and not ending in half a character.
QString shortened(const QString &fact)
{
    QString line = fact.simplified();
    if (line.size() <= longestFact)
        return line;
    const bool half = line[longestFact - 1].isHighSurrogate();
    return line.left(half ? longestFact - 1 : longestFact) + leftOut;
}

} // namespace

QUrl BWSupportMail::url() const
{
    QByteArray mail = "mailto:" + QUrl::toPercentEncoding(address, "@") + "?subject=" + encoded(subject)
        + "&body=" + encoded(request) + encodedLine({}) + encodedLine({});
    const qsizetype room = maxLength - encodedLine(leftOut).size();
    for (const QString &fact : facts) {
        const QByteArray line = encodedLine(shortened(fact));
        if (mail.size() + line.size() > room) {
            mail += encodedLine(leftOut);
            break;
        }
        mail += line;
    }
    return QUrl::fromEncoded(mail, QUrl::StrictMode);
}

QString BWSupportMail::system()
{
    const QString desktop = qEnvironmentVariable("XDG_CURRENT_DESKTOP");
    return u"%1, %2 %3 (%4), %5, Qt %6"_s.arg(QSysInfo::prettyProductName(), QSysInfo::kernelType(),
                                              QSysInfo::kernelVersion(), QSysInfo::currentCpuArchitecture(),
                                              desktop.isEmpty() ? QGuiApplication::platformName()
                                                                : desktop + u'/' + QGuiApplication::platformName(),
                                              QString::fromLatin1(qVersion()));
}
