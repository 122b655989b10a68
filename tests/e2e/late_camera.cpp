// The program with a simulated camera that is plugged in a while after the start, and then takes its time to be ready.
//
// usage: late_camera SECONDS_UNTIL_PLUGGED_IN SECONDS_UNTIL_READY

#include "AppDelegate.h"
#include "Model/Session/BWCameraAuthorization.h"
#include "Views/Utils/BWIcons.h"

#include <QApplication>
#include <QTimer>

using namespace Qt::StringLiterals;

int main(int argc, char *argv[])
{
    QApplication application(argc, argv);
    QCoreApplication::setApplicationName(u"BrimwellPro"_s);
    QGuiApplication::setQuitOnLastWindowClosed(false);
    BWIcons::install(application);
    if (argc != 3)
        return 2;
    BWSimulatedCameraOptions camera;
    camera.pluggedIn = false;
    camera.pendingSeconds = QByteArray(argv[2]).toDouble();

    auto simulated = BWSimulatedBackend::create({camera});
    AppDelegate::Options options;
    options.simulatedCameras = simulated->cameras();
    options.backends.push_back(std::move(simulated));
    options.authorization = std::make_unique<BWNoAuthorizationNeeded>();
    options.openUrl = [](const QUrl &) { return false; };
    options.quit = [] { QCoreApplication::exit(0); };
    const auto hand = options.simulatedCameras.first();
    AppDelegate delegate(std::move(options));
    const int milliseconds = qRound(1000 * QByteArray(argv[1]).toDouble());
    QTimer::singleShot(0, &delegate, [&delegate, hand, milliseconds] {
        delegate.applicationDidFinishLaunching();
        QTimer::singleShot(milliseconds, &delegate, [hand] { hand->plugIn(); });
    });
    return QApplication::exec();
}
