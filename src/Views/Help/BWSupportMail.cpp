#include "Views/Help/BWSupportMail.h"

#include <QGuiApplication>
#include <QSysInfo>

using namespace Qt::StringLiterals;

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

/// One line of it, not too long and without half a character at its end.
QString shortened(const QString &fact)
{
    const QString line = fact.simplified();
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
