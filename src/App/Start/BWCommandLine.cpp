// SPDX-License-Identifier: GPL-3.0-or-later
#include "App/Start/BWCommandLine.h"

#include "Model/Texts/BWLocalizationManager.h"

#include <algorithm>
#include <functional>
#include <QFileInfo>
#include <QHash>
#include <QRegularExpression>

using namespace Qt::StringLiterals;

namespace {

QString typeList()
{
    return BWSimulatedCameraOptions::typeNames().join(u", "_s);
}

QString usage()
{
    return u"brimwellpro [--simulate TYPE[=PATH]]... [--language CODE] [--technician] [--import-settings FILE] "
           "[--list-cameras] [--version] [--help]"_s;
}

/// "de" from "de", "de_AT", "de-AT" or "de_AT.UTF-8"; null if there are no texts in that language.
QString languageFrom(const QString &code)
{
    static const QRegularExpression pattern(u"\\A([A-Za-z]+)(?:[-_.@].*)?\\z"_s);
    const QString language = pattern.match(code).captured(1).toLower();
    return BWLocalizationManager::languages().contains(language) ? language : QString();
}

void readCamera(const QString &camera, BWCommandLine &line)
{
    const qsizetype equals = camera.indexOf(u'=');
    const QString typeName = equals < 0 ? camera : camera.left(equals);
    const auto type = BWSimulatedCameraOptions::typeFromName(typeName);
    if (!type) {
        line.error = u"Unknown camera type %1; accepted are %2"_s.arg(typeName, typeList());
        return;
    }
    BWSimulatedCameraOptions options;
    options.type = *type;
    if (equals >= 0) {
        options.path = camera.mid(equals + 1);
        if (!QFileInfo::exists(options.path)) {
            line.error = u"No photo, folder of photos or movie at \"%1\""_s.arg(options.path);
            return;
        }
    }
    line.simulated.append(options);
}

void readLanguage(const QString &code, BWCommandLine &line)
{
    line.language = languageFrom(code);
    if (line.language.isNull())
        line.error = u"Unknown language %1; accepted are %2, also with a country as in de_AT"_s.arg(
            code, BWLocalizationManager::languages().join(u", "_s));
}

struct OptionWithValue {
    QString name;
    QString needs; ///< for the message about a missing value
    std::function<void(const QString &value, BWCommandLine &line)> read;
};

} // namespace

BWCommandLine BWCommandLine::parse(int argc, char **argv)
{
    QStringList arguments;
    for (int i = 1; i < argc; ++i)
        arguments.append(QString::fromLocal8Bit(argv[i]));
    const QHash<QString, bool BWCommandLine::*> switches{{u"--list-cameras"_s, &BWCommandLine::listCameras},
                                                         {u"--technician"_s, &BWCommandLine::technician},
                                                         {u"--version"_s, &BWCommandLine::version},
                                                         {u"--help"_s, &BWCommandLine::help},
                                                         {u"-h"_s, &BWCommandLine::help}};
    const QList<OptionWithValue> options{
        {u"--simulate"_s, u"a camera type; accepted are %1, each with =PATH if you like"_s.arg(typeList()), readCamera},
        {u"--language"_s, u"a language; accepted are %1"_s.arg(BWLocalizationManager::languages().join(u", "_s)),
         readLanguage},
        {u"--import-settings"_s, u"the file that holds the old settings"_s,
         [](const QString &file, BWCommandLine &line) { line.importSettings = file; }}};

    BWCommandLine line;
    for (qsizetype i = 0; i < arguments.size() && line.error.isNull(); ++i) {
        const QString &argument = arguments[i];
        if (const auto found = switches.constFind(argument); found != switches.constEnd()) {
            line.*(*found) = true;
            continue;
        }
        const QString name = argument.section(u'=', 0, 0);
        const auto option = std::find_if(options.begin(), options.end(),
                                         [&name](const OptionWithValue &one) { return one.name == name; });
        if (option == options.end()) {
            line.error = u"Unknown option %1; accepted: %2"_s.arg(argument, usage());
            continue;
        }
        const QString value = argument.contains(u'=') ? argument.section(u'=', 1)
            : ++i < arguments.size()                  ? arguments[i]
                                                      : QString();
        if (value.isEmpty())
            line.error = u"%1 needs %2"_s.arg(name, option->needs);
        else
            option->read(value, line);
    }
    return line;
}

bool BWCommandLine::needsWindows() const
{
    return !help && !version && !listCameras && importSettings.isNull();
}

BWRepository::Options BWCommandLine::repositoryOptions() const
{
    BWRepository::Options options = BWRepository::Options::standard();
    if (!language.isNull())
        options.preferredLanguages = QStringList{language};
    return options;
}

QString BWCommandLine::helpText()
{
    return u"Usage: brimwellpro [--simulate TYPE[=PATH]]... [--language CODE] [--technician]\n"
           "       brimwellpro --import-settings FILE [--language CODE]\n"
           "       brimwellpro --list-cameras [--simulate TYPE[=PATH]]...\n"
           "       brimwellpro --version | --help\n"
           "\n"
           "Looks through digital microscopes and examination scopes.\n"
           "\n"
           "  --simulate TYPE[=PATH]  attach a simulated camera; TYPE is one of\n"
           "                          %1.\n"
           "                          PATH is a photo, a folder of photos or a movie to show\n"
           "                          in place of the specimen. May be given several times.\n"
           "  --language CODE         show all texts in that language: %2\n"
           "  --technician            show the menu of the technician's tools\n"
           "  --import-settings FILE  take over the settings and albums of the previous\n"
           "                          generation from the property list FILE, and tell what\n"
           "                          was taken over; the program must not be open\n"
           "  --list-cameras          print the attached cameras and what they can do\n"
           "  --version               print the version, and the libraries in use\n"
           "  --help, -h              print this text\n"_s.arg(typeList(),
                                                               BWLocalizationManager::languages().join(u", "_s));
}
