// SPDX-License-Identifier: GPL-3.0-or-later
#include "App/Start/BWConsoleCommands.h"

#include "App/Start/BWAppTexts.h"
#include "App/Start/BWCameraListing.h"
#include "App/Start/BWCommandLine.h"
#include "App/Start/BWProcess.h"
#include "Model/Albums/BWAlbumManager.h"
#include "Model/BWRepository.h"
#include "Model/Import/BWImportTexts.h"
#include "Model/Settings/BWSettingsFile.h"
#include "Model/Settings/BWSettingsLock.h"
#include "Model/Texts/BWLibraryList.h"
#include "Model/Texts/BWLocalizationManager.h"
#include "Utils/BWVersion.h"

#include <QCoreApplication>
#include <QGuiApplication>
#include <QIODevice>
#include <QTextStream>

using namespace Qt::StringLiterals;

namespace {

int refuse(const QString &sentence)
{
    BWProcess::printError(sentence);
    return 1;
}

void printVersion(QTextStream &out)
{
    out << "BrimwellPro " << BW_VERSION << "\n"
        << "Free software under the GNU General Public License, version 3 or later\n"
           "(GPL-3.0-or-later). There is no warranty. The libraries in use:\n";
    for (const BWLibrary &library : BWLibraryList::ours())
        out << "  " << library.name << ' ' << library.version << ", " << library.licence << '\n';
}

int importSettings(const BWRepository::Options &options, const QString &path, QTextStream &out)
{
    BWLocalizationManager texts(options.localizationFile, options.preferredLanguages);
    if (!BWProcess::homeIsUsable()) {
        BWAppTexts appTexts;
        appTexts.localizeWithManager(texts);
        return refuse(appTexts.homeNotUsableMessage);
    }
    const QString name = BWImportTexts::nameOf(path);
    const BWOldSettingsFile file = BWOldSettingsFile::read(path);
    if (file.problem != BWOldSettingsFile::Problem::None)
        return refuse(BWImportTexts::refused(file, name, texts));
    const BWSettingsLock use(options.settingsFile);
    if (!use.isGranted())
        return refuse(BWImportTexts::programRuns(texts));

    const BWRepository repository(options);
    repository.albumManager().waitUntilPrepared();
    const auto result =
        BWOldSettingsImporter::importByHand(file.settings, BWOldSettingsImporter::foldersThere(file.settings),
                                            repository.configManager(), repository.albumManager());
    if (!repository.userDefaults().synchronize())
        return refuse(BWImportTexts::notStored(texts));
    out << BWImportTexts::takenOver(result, name, texts) << '\n';
    return 0;
}

int obey(const BWCommandLine &line, int &argc, char **argv, QTextStream &out)
{
    if (line.help) {
        out << BWCommandLine::helpText();
        return 0;
    }
    if (line.version) {
        printVersion(out);
        return 0;
    }
    if (!line.importSettings.isNull()) {
        // Qt ends a program without windows that finds a picture among the settings in a damaged file. One with windows
        // needs no display if it shows none; what Qt misses of a desktop is no news on a console.
        qputenv("QT_QPA_PLATFORM", "minimal");
        qunsetenv("QT_QPA_PLATFORMTHEME"); // some themes want a display
        const auto handler = qInstallMessageHandler([](QtMsgType, const QMessageLogContext &, const QString &) {});
        const QGuiApplication application(argc, argv);
        qInstallMessageHandler(handler);
        return importSettings(line.repositoryOptions(), line.importSettings, out);
    }
    const QCoreApplication application(argc, argv);
    if (line.simulated.isEmpty())
        BWCameraListing::printNodes(BWV4L2Listing::list(BWCameraListing::cameraTables()), out);
    else
        BWCameraListing::printSimulated(line.simulated, out);
    return 0;
}

} // namespace

int BWConsoleCommands::run(const BWCommandLine &line, int &argc, char **argv)
{
    QTextStream out(stdout);
    const int code = obey(line, argc, argv, out);
    out.flush();
    // A script must not take half a list for the whole one.
    if (out.status() != QTextStream::Ok)
        return refuse(u"The output could not be written: %1"_s.arg(out.device()->errorString()));
    return code;
}
