#include "App/Start/BWAppTexts.h"
#include "App/Start/BWCameraListing.h"
#include "App/Start/BWCommandLine.h"
#include "App/Start/BWImportCommand.h"
#include "App/Start/BWNodePrinter.h"
#include "App/Start/BWNoDisplay.h"
#include "App/Start/BWQuitSignals.h"
#include "App/Start/BWSingleInstance.h"
#include "App/Start/BWStatisticsReport.h"
#include "App/Start/BWTimedApplication.h"
#include "AppDelegate.h"
#include "BWACUDriver/BWV4L2Backend.h"
#include "BWACUDriver/BWV4L2Listing.h"
#include "Model/BWRepository.h"
#include "Model/Session/BWCameraAuthorization.h"
#include "Model/Settings/BWSettingsFile.h"
#include "Model/Texts/BWLibraryList.h"
#include "Model/Texts/BWLocalizationManager.h"
#include "Utils/BWLogging.h"
#include "Utils/BWUIUtils.h"
#include "Utils/BWVersion.h"
#include "Views/MainWindow/BWMainWindow.h"
#include "Views/Utils/BWIcons.h"
#include "Views/Utils/BWMessageBoxAlertPresenter.h"

#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <memory>
#include <optional>
#include <QApplication>
#include <QDesktopServices>
#include <QFileInfo>
#include <QLocale>
#include <QTextStream>
#include <thread>
#include <unistd.h>

using namespace Qt::StringLiterals;

namespace {

/// What tells the types of cameras: the user's own table before ours.
QStringList cameraTables()
{
    return {QFileInfo(BWSettingsFile::defaultPath()).path() + "/cameras.json"_L1, u":/cameras.json"_s};
}

/// After the event loop nothing is left but to take down: what matters to the user is on the disk. No disk, sound server
/// or device that hangs in that keeps the process.
void endSoon()
{
    constexpr std::chrono::seconds patience(10);
    std::thread([patience] {
        std::this_thread::sleep_for(patience);
        qCWarning(bwApp, "Quit: something hangs; ended without it");
        std::_Exit(0);
    }).detach();
    // Not quit(), which asks the windows again whether they may close.
    QCoreApplication::exit(0);
}

AppDelegate::Options delegateOptions(const BWCommandLine &line)
{
    AppDelegate::Options options;
    options.technician = line.technician;
    options.openUrl = [](const QUrl &url) { return QDesktopServices::openUrl(url); };
    options.quit = &endSoon;
    if (line.simulated.isEmpty()) {
        options.authorization = std::make_unique<BWDeviceNodeAuthorization>(u"/dev"_s);
        options.backends.push_back(BWV4L2Backend::create(cameraTables()));
        return options;
    }
    options.authorization = std::make_unique<BWNoAuthorizationNeeded>();
    auto simulated = BWSimulatedBackend::create(line.simulated);
    options.simulatedCameras = simulated->cameras();
    options.backends.push_back(std::move(simulated));
    return options;
}

BWRepository::Options repositoryOptions(const BWCommandLine &line)
{
    BWRepository::Options options = BWRepository::Options::standard();
    if (!line.language.isNull())
        options.preferredLanguages = QStringList{line.language};
    return options;
}

/// A program that was started without them would write what it says into the first files that it opens, a movie maybe.
void openStandardStreams()
{
    for (int descriptor = STDIN_FILENO; descriptor <= STDERR_FILENO; ++descriptor) {
        if (::fcntl(descriptor, F_GETFD) < 0)
            ::open("/dev/null", O_RDWR); // takes the lowest number that is free
    }
}

/// Whoever reads the log may go, a terminal for instance, while a recording goes on.
void outliveReaders()
{
    struct sigaction action = {};
    action.sa_handler = [](int) {}; // not SIG_IGN, which the programs that we start would inherit
    action.sa_flags = SA_RESTART;
    ::sigaction(SIGPIPE, &action, nullptr);
}

/// Qt takes file names for UTF-8: it would make a second folder beside one whose name is not.
bool homeCanBeUsed()
{
    return qgetenv("HOME").isValidUtf8() && qgetenv("XDG_CONFIG_HOME").isValidUtf8();
}

/// Answers what was told.
BWAppTexts tellHomeProblem(BWLocalizationManager &manager)
{
    BWAppTexts texts;
    texts.localizeWithManager(manager);
    QTextStream(stderr) << "brimwellpro: " << texts.homeNotUsableMessage << '\n';
    return texts;
}

/// What the desktop gave to this start, so that the window it leads to may take the keyboard.
constexpr auto activationToken = "XDG_ACTIVATION_TOKEN";

void tellOfOpenProgram(const BWCommandLine &line, BWSingleInstance::Start start)
{
    QTextStream err(stderr);
    if (start == BWSingleInstance::Start::NoAnswer) {
        err << "brimwellpro: It is running already, but does not respond\n";
        return;
    }
    err << "brimwellpro: It is running already; its window was brought to the front\n";
    QStringList unused;
    if (!line.simulated.isEmpty())
        unused.append(u"--simulate"_s);
    if (!line.language.isNull())
        unused.append(u"--language"_s);
    if (line.technician)
        unused.append(u"--technician"_s);
    if (!unused.isEmpty())
        err << "brimwellpro: Without effect, as the program was running: " << unused.join(u", "_s) << '\n';
}

/// Why the program cannot start: on the screen, as few look at what is printed.
void alertOfObstacle(const BWRepository::Options &options, bool homeIsUsable)
{
    BWLocalizationManager texts(options.localizationFile, options.preferredLanguages);
    BWMessageBoxAlertPresenter alerts(texts);
    if (!homeIsUsable) {
        const BWAppTexts told = tellHomeProblem(texts);
        alerts.presentOK(told.homeNotUsableTitle, told.homeNotUsableMessage);
        return;
    }
    alerts.presentOK(
        texts.text(u"start"_s, u"already_running_title"_s, u"BrimwellPro is already running, but does not respond"_s),
        texts.text(u"start"_s, u"already_running_message"_s,
                   u"It may still be closing. Please wait a moment and start it again. If that does not help, log out "
                   "and log in again."_s));
}

int runWithoutWindows(const BWCommandLine &line, int &argc, char **argv)
{
    if (line.help) {
        QTextStream(stdout) << BWCommandLine::helpText();
        return 0;
    }
    if (line.version) {
        QTextStream out(stdout);
        out << "BrimwellPro " << BW_VERSION << '\n';
        for (const BWLibrary &library : BWLibraryList::ours())
            out << "  " << library.name << ' ' << library.version << ", " << library.licence << '\n';
        return 0;
    }
    QCoreApplication application(argc, argv);
    if (!line.importSettings.isNull()) {
        const BWRepository::Options options = repositoryOptions(line);
        if (homeCanBeUsed())
            return BWImportCommand::run(options, line.importSettings);
        BWLocalizationManager manager(options.localizationFile, options.preferredLanguages);
        tellHomeProblem(manager);
        return 1;
    }
    QTextStream out(stdout);
    if (line.simulated.isEmpty()) {
        BWNodePrinter::print(BWV4L2Listing::list(cameraTables()), out);
        return 0;
    }
    std::vector<std::unique_ptr<BWCameraBackend>> backends;
    backends.push_back(BWSimulatedBackend::create(line.simulated));
    BWCameraListing::print(std::move(backends), out);
    return 0;
}

int runWithWindows(const BWCommandLine &line, int &argc, char **argv)
{
    outliveReaders();
    const BWRepository::Options options = repositoryOptions(line);
    std::optional<BWSingleInstance> running;
    if (homeCanBeUsed()) {
        running.emplace(options.settingsFile, qgetenv(activationToken));
        if (running->start() != BWSingleInstance::Start::First)
            tellOfOpenProgram(line, running->start());
        if (running->start() == BWSingleInstance::Start::HandedOver)
            return 0;
    }

    auto noDisplay = std::make_optional<BWNoDisplay>();
    const auto application = BWStatisticsReport::isWished() ? std::make_unique<BWTimedApplication>(argc, argv)
                                                            : std::make_unique<QApplication>(argc, argv);
    noDisplay.reset();
    if (!line.language.isNull())
        QLocale::setDefault(QLocale(line.language));
    QCoreApplication::setApplicationName(u"BrimwellPro"_s);
    QCoreApplication::setApplicationVersion(QStringLiteral(BW_VERSION));
    QGuiApplication::setDesktopFileName(u"brimwellpro"_s);
    QGuiApplication::setQuitOnLastWindowClosed(false); // the delegate decides, when the camera has stopped
    BWIcons::install(*application);
    QGuiApplication::setWindowIcon(BWIcons::applicationIcon());

    if (!running || running->start() == BWSingleInstance::Start::NoAnswer) {
        alertOfObstacle(options, running.has_value());
        return 1;
    }

    BWRepository::setOptions(options);
    AppDelegate delegate(delegateOptions(line));
    BWMessageBoxAlertPresenter alerts(BWRepository::singleton().localizationManager(),
                                      [&delegate] { return delegate.cameraWindow(); });
    BWUIUtils::setAlertPresenter(&alerts);
    const BWQuitSignals endSignals([&delegate] { delegate.terminate(); });
    running->setBringForward([&delegate](const QByteArray &token) {
        if (!token.isEmpty())
            qputenv(activationToken, token); // Qt uses it up with the next window that is activated
        return delegate.bringForward();
    });
    QMetaObject::invokeMethod(
        &delegate, [&delegate] { delegate.applicationDidFinishLaunching(); }, Qt::QueuedConnection);
    const int result = QApplication::exec();
    BWStatisticsReport::print(delegate);
    BWUIUtils::setAlertPresenter(nullptr);
    BWUIUtils::removeEmptyTemporaryFolders();
    return result;
}

} // namespace

int main(int argc, char *argv[])
{
    openStandardStreams();
    QStringList arguments;
    for (int i = 1; i < argc; ++i)
        arguments.append(QString::fromLocal8Bit(argv[i]));
    const BWCommandLine line = BWCommandLine::parse(arguments);
    if (!line.error.isNull()) {
        QTextStream(stderr) << "brimwellpro: " << line.error << '\n';
        return 2;
    }
    if (line.help || line.version || line.listCameras || !line.importSettings.isNull())
        return runWithoutWindows(line, argc, argv);
    const int result = runWithWindows(line, argc, argv);
    // A thread that hangs in a camera may come back at any moment, and find half of what it shares taken down.
    if (BWCamera::runningThreads() > 0)
        std::_Exit(result);
    return result;
}
