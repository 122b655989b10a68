// SPDX-License-Identifier: GPL-3.0-or-later
#include "Utils/BWUIUtils.h"

#include "Utils/BWFilePath.h"
#include "Utils/BWLogging.h"
#include "Utils/BWTemporaryFiles.h"

#include <cmath>
#include <QFile>
#include <QFontInfo>
#include <QFontMetricsF>
#include <QGuiApplication>
#include <QUuid>
#include <unistd.h>
#include <utility>

namespace {

BWAlertPresenter *alertPresenter = nullptr;

void logUnshown(const QString &title, const QString &message)
{
    qCWarning(bwApp).noquote() << "Alert that nobody shows:" << title << "-" << message;
}

QFont systemFont(double pointSize)
{
    QFont font = QGuiApplication::font();
    font.setPointSizeF(pointSize);
    return font;
}

bool fits(const QFont &font, const QSizeF &bounds, const QString &text)
{
    const QSizeF size = QFontMetricsF(font).size(0, text);
    const auto lines = static_cast<unsigned>(std::ceil(static_cast<float>(bounds.height() / size.height())));
    return lines > 0 && size.width() / lines <= bounds.width();
}

} // namespace

BWAlertPresenter *BWUIUtils::setAlertPresenter(BWAlertPresenter *presenter)
{
    return std::exchange(alertPresenter, presenter);
}

void BWUIUtils::displayOKAlert(const QString &title, const QString &message)
{
    if (alertPresenter)
        alertPresenter->presentOK(title, message);
    else
        logUnshown(title, message);
}

void BWUIUtils::displayOKAlertOver(QObject &window, const QString &title, const QString &message)
{
    if (alertPresenter)
        alertPresenter->presentOKOver(window, title, message);
    else
        logUnshown(title, message);
}

void BWUIUtils::displayInformation(const QString &title, const QString &message)
{
    if (alertPresenter)
        alertPresenter->presentInformation(title, message);
    else
        logUnshown(title, message);
}

bool BWUIUtils::displayOKCancelAlert(const QString &title, const QString &message)
{
    if (alertPresenter)
        return alertPresenter->presentOKCancel(title, message);
    logUnshown(title, message);
    return false;
}

bool BWUIUtils::displayChoiceAlert(const QString &title, const QString &message, const QString &accept,
                                   const QString &reject)
{
    if (alertPresenter)
        return alertPresenter->presentChoice(title, message, accept, reject);
    logUnshown(title, message);
    return false;
}

QString BWUIUtils::withShortcut(const QString &text, const QKeySequence &shortcut)
{
    return shortcut.isEmpty() ? text : QStringLiteral("%1 (%2)").arg(text, shortcut.toString(QKeySequence::NativeText));
}

QString BWUIUtils::inOneLine(const QString &first, const QString &second)
{
    return first.endsWith(u'：') || first.endsWith(u'。') ? first + second : first + u' ' + second;
}

QString BWUIUtils::temporaryFolder()
{
    const QStringList parents = temporaryFolders();
    for (const QString &parent : parents) {
        // A parent that was removed, or is another user's, must not cost the captures.
        if (const auto folder = BWPrivateFolder::make(QFile::encodeName(parent)))
            return QFile::decodeName(folder->path());
    }
    return parents.constLast(); // a capture in a folder open to all is better than none
}

QStringList BWUIUtils::temporaryFolders()
{
    const QByteArray own = qgetenv("TMPDIR");
    QStringList folders{QStringLiteral("/var/tmp")};
    // Qt cannot make a file below a name that is not UTF-8.
    if (!own.startsWith('/') || !own.isValidUtf8())
        return folders;
    if (const QString folder = BWFilePath::url(own).toLocalFile(); !folders.contains(folder))
        folders.prepend(folder);
    return folders;
}

void BWUIUtils::removeEmptyTemporaryFolders()
{
    const QStringList parents = temporaryFolders();
    for (const QString &parent : parents) {
        for (const BWPrivateFolder &folder : BWPrivateFolder::all(QFile::encodeName(parent)))
            ::rmdir(folder.path().constData());
    }
}

QUrl BWUIUtils::temporaryPath(const QString &prefix, const QString &extension)
{
    const QString uuid = QUuid::createUuid().toString(QUuid::WithoutBraces).toUpper();
    return BWFilePath::fromLocal(QStringLiteral("%1/%2-%3.%4").arg(temporaryFolder(), prefix, uuid, extension));
}

QFont BWUIUtils::fontToFit(const QFont &current, const QSizeF &bounds, const QString &text, double minimumSize)
{
    // A font set in pixels has no point size of its own.
    const double largest = current.pointSizeF() > 0 ? current.pointSizeF() : QFontInfo(current).pointSizeF();
    for (double size = largest; size >= minimumSize; size -= 1) {
        const QFont font = systemFont(size);
        if (fits(font, bounds, text))
            return font;
    }
    return systemFont(minimumSize);
}
