// SPDX-License-Identifier: GPL-3.0-or-later
#include "App/Start/BWWindowedProgram.h"

#include "App/Start/BWAppTexts.h"
#include "App/Start/BWCameraListing.h"
#include "App/Start/BWCommandLine.h"
#include "App/Start/BWProcess.h"
#include "App/Start/BWSingleInstance.h"
#include "App/Start/BWStatisticsReport.h"
#include "AppDelegate.h"
#include "BWACUDriver/BWV4L2Backend.h"
#include "Model/BWRepository.h"
#include "Model/Session/BWCameraAuthorization.h"
#include "Model/Session/BWDesktopAppearance.h"
#include "Model/Texts/BWLocalizationManager.h"
#include "Utils/BWUIUtils.h"
#include "Utils/BWVersion.h"
#include "Views/MainWindow/BWMainWindow.h"
#include "Views/Utils/BWColors.h"
#include "Views/Utils/BWControlStyle.h"
#include "Views/Utils/BWIcons.h"
#include "Views/Utils/BWMessageBoxAlertPresenter.h"

#include <cstdlib>
#include <memory>
#include <optional>
#include <QApplication>
#include <QDesktopServices>
#include <QLocale>

using namespace Qt::StringLiterals;

namespace {

/// What the desktop gave to this start, so that the window it leads to may take the keyboard.
constexpr auto activationToken = "XDG_ACTIVATION_TOKEN";

AppDelegate::Options delegateOptions(const BWCommandLine &line)
{
    AppDelegate::Options options;
    options.technician = line.technician;
    options.openUrl = [](const QUrl &url) { return QDesktopServices::openUrl(url); };
    options.quit = &BWProcess::endSoon;
    if (line.simulated.isEmpty()) {
        options.authorization = std::make_unique<BWDeviceNodeAuthorization>(u"/dev"_s);
        options.backends.push_back(BWV4L2Backend::create(BWCameraListing::cameraTables()));
        return options;
    }
    options.authorization = std::make_unique<BWNoAuthorizationNeeded>();
    auto simulated = BWSimulatedBackend::create(line.simulated);
    options.simulatedCameras = simulated->cameras();
    options.backends.push_back(std::move(simulated));
    return options;
}

void reportOpenProgram(const BWCommandLine &line, BWSingleInstance::Start start)
{
    if (start == BWSingleInstance::Start::NoAnswer) {
        BWProcess::printError(u"It is running already, but does not respond"_s);
        return;
    }
    BWProcess::printError(u"It is running already; its window was brought to the front"_s);
    QStringList unused;
    if (!line.simulated.isEmpty())
        unused.append(u"--simulate"_s);
    if (!line.language.isNull())
        unused.append(u"--language"_s);
    if (line.technician)
        unused.append(u"--technician"_s);
    if (!unused.isEmpty())
        BWProcess::printError(u"Without effect, as the program was running: "_s + unused.join(u", "_s));
}

/// Shows why the program cannot start, as few people look at what it prints.
void showObstacle(const BWRepository::Options &options, bool homeIsUsable)
{
    QGuiApplication::setWindowIcon(BWIcons::applicationIcon());
    BWLocalizationManager manager(options.localizationFile, options.preferredLanguages);
    BWMessageBoxAlertPresenter alerts(manager);
    if (!homeIsUsable) {
        BWAppTexts texts;
        texts.localizeWithManager(manager);
        BWProcess::printError(texts.homeNotUsableMessage);
        alerts.presentOK(texts.homeNotUsableTitle, texts.homeNotUsableMessage);
        return;
    }
    alerts.presentOK(
        manager.text(u"start"_s, u"already_running_title"_s, u"BrimwellPro is already running, but does not respond"_s),
        manager.text(u"start"_s, u"already_running_message"_s,
                     u"It may still be closing. Please wait a moment and start it again. If that does not help, log "
                     "out and log in again."_s));
}

std::unique_ptr<QApplication> makeApplication(const BWCommandLine &line, int &argc, char **argv)
{
    std::unique_ptr<QApplication> application;
    {
        const BWNoDisplay noDisplay;
        application = BWStatisticsReport::isWanted() ? std::make_unique<BWTimedApplication>(argc, argv)
                                                     : std::make_unique<QApplication>(argc, argv);
    }
    if (!line.language.isNull())
        QLocale::setDefault(QLocale(line.language));
    QCoreApplication::setApplicationName(u"BrimwellPro"_s);
    QCoreApplication::setApplicationVersion(QStringLiteral(BW_VERSION));
    QGuiApplication::setDesktopFileName(u"brimwellpro"_s);
    QGuiApplication::setQuitOnLastWindowClosed(false); // the delegate decides, when the camera has stopped
    QApplication::setStyle(new BWControlStyle);
    BWIcons::install(*application);
    return application;
}

/// Where Qt does not do it by itself. Other styles than Qt's own come with a desktop that looks after colours.
void showAsDesktopWants(const BWDesktopAppearance::Wish &wish)
{
    const auto *style = qobject_cast<const BWControlStyle *>(QApplication::style());
    if (!style || !style->isFusion())
        return;
    QApplication::setPalette(QPalette()); // Qt's choice, with which it may have followed the desktop
    if (const auto palette = BWColors::wanted(QApplication::palette(), wish.dark, wish.highContrast))
        QApplication::setPalette(*palette);
}

/// Until the user has quit.
int runEventLoop(const BWCommandLine &line, BWSingleInstance &instance)
{
    BWLocalizationManager &texts = BWRepository::singleton().localizationManager();
    if (texts.isRightToLeft())
        QGuiApplication::setLayoutDirection(Qt::RightToLeft);
    const BWDesktopAppearance appearance(showAsDesktopWants);
    AppDelegate delegate(delegateOptions(line));
    BWMessageBoxAlertPresenter alerts(texts, [&delegate] { return delegate.cameraWindow(); });
    BWUIUtils::setAlertPresenter(&alerts);
    const BWQuitSignals quitSignals([&delegate] { delegate.terminate(); });
    instance.setBringForward([&delegate](const QByteArray &token) {
        if (!token.isEmpty())
            qputenv(activationToken, token); // Qt uses it up with the next window that is activated
        return delegate.bringForward();
    });
    QMetaObject::invokeMethod(
        &delegate, [&delegate] { delegate.applicationDidFinishLaunching(); }, Qt::QueuedConnection);
    BWStatisticsReport::printRegularly(delegate);
    const int result = QApplication::exec();
    BWStatisticsReport::print(delegate);
    BWUIUtils::setAlertPresenter(nullptr);
    BWUIUtils::removeEmptyTemporaryFolders();
    return result;
}

int runUntilQuit(const BWCommandLine &line, int &argc, char **argv)
{
    BWProcess::outliveLogReaders();
    const BWRepository::Options options = line.repositoryOptions();
    std::optional<BWSingleInstance> instance;
    if (BWProcess::homeIsUsable()) {
        instance.emplace(options.settingsFile, qgetenv(activationToken));
        if (instance->start() != BWSingleInstance::Start::First)
            reportOpenProgram(line, instance->start());
        if (instance->start() == BWSingleInstance::Start::HandedOver)
            return 0;
    }
    const std::unique_ptr<QApplication> application = makeApplication(line, argc, argv);
    if (!instance || instance->start() == BWSingleInstance::Start::NoAnswer) {
        showObstacle(options, instance.has_value());
        return 1;
    }
    BWRepository::setOptions(options);
    return runEventLoop(line, *instance);
}

} // namespace

int BWWindowedProgram::run(const BWCommandLine &line, int &argc, char **argv)
{
    const int result = runUntilQuit(line, argc, argv);
    // A thread that hangs in a camera may come back at any moment, and find half of what it shares taken down.
    if (BWCamera::runningThreads() > 0)
        std::_Exit(result);
    return result;
}
