// SPDX-License-Identifier: GPL-3.0-or-later
// Records a simulated camera into an album like the program, but without windows, until it is stopped or killed; or
// brings into the album what such a run left behind. Home and temporary folder are those of the environment.

#include "BWACUDriver/BWCameraDetector.h"
#include "BWACUDriver/BWCameraManager.h"
#include "BWACUDriver/BWSimulatedCameras.h"
#include "Model/Albums/BWAlbumManager.h"
#include "Model/Capture/BWCaptureController.h"
#include "Model/Capture/BWCaptureRecovery.h"
#include "Model/Settings/BWSettingsFile.h"
#include "Utils/BWMainQueue.h"

#include <cstdio>
#include <QCoreApplication>
#include <QDir>
#include <QSocketNotifier>
#include <QTimer>
#include <unistd.h>
#include <utility>

using namespace Qt::StringLiterals;

namespace {

void print(const QByteArray &line)
{
    // At once and in one piece, so that a kill right after it does not take it back.
    if (::write(STDOUT_FILENO, (line + '\n').constData(), size_t(line.size() + 1)) < 0)
        std::abort();
}

int recover(BWAlbumManager &albums)
{
    BWCaptureRecovery recovery(albums, [](int captures, const QUrl &last) {
        print("recovered " + QByteArray::number(captures) + ' ' + QFile::encodeName(last.toLocalFile()));
        QCoreApplication::exit(0);
    });
    recovery.start({qEnvironmentVariable("TMPDIR")});
    QTimer::singleShot(20000, qApp, [] { QCoreApplication::exit(1); });
    return QCoreApplication::exec();
}

/// Prints "recording", and for each frame its sequence number and how many are in the file already; at the end, on
/// request or not, how the recording ended, then how far a long copy into the album has come, and "saved FILE" or "left
/// FILE".
class Recording {
public:
    Recording(BWAlbumManager &albums, const QStringList &arguments)
        : m_controller(albums,
                       {[] {}, [](bool recording) { print(recording ? "recording" : "stopped"); },
                        [](const BWCaptureResult &result) { ended(result); },
                        [](double done) { print("copying " + QByteArray::number(done)); }}),
          m_resolution(*BWResolution::fromResolutionString(arguments.at(2)))
    {
        BWSimulatedCameraOptions options;
        options.type = BWSimulatedCameraOptions::Type::Ultra;
        options.path = arguments.at(0);
        options.pixelFormat = arguments.at(1) == u"mjpeg"_s ? BWPixelFormat::MJPEG : BWPixelFormat::YUYV;
        m_backend = BWSimulatedBackend::create({options});
        m_hand = m_backend->cameras().first();
        m_backend->start(
            {BWCameraDetector::descriptionForUltraResolutionMicroscope()},
            {[this](const BWDetectedCameraPtr &device) { start(device); }, [](const BWDetectedCameraPtr &) {}});
    }

    /// One word from the test: "stop", "unplug" or "smaller".
    void obey(const QByteArray &word)
    {
        if (word == "stop")
            m_controller.toggleRecording(m_camera);
        else if (word == "unplug")
            m_hand->unplug();
        else if (word == "smaller")
            m_camera->setResolution({640, 480}, {});
    }

private:
    void start(const BWDetectedCameraPtr &device)
    {
        m_camera = m_manager.addDetectedCamera(device);
        m_controller.prepareCamera(m_camera);
        m_camera->setOnCameraFrame([this](BWCamera &camera, const BWFrame &frame) {
            const BWRecordingStatus status = camera.recordingStatus();
            m_begun = m_begun || camera.recording();
            // The frame after which a recording ended by itself belongs to it, although all may be over by now.
            const bool wasOver = std::exchange(m_over, status.end != BWRecordingStatus::End::None);
            if (m_begun && !wasOver)
                print("frame " + QByteArray::number(frame.sequence()) + ' ' + QByteArray::number(status.frames));
        });
        m_camera->setResolution(m_resolution, {});
        m_camera->startWithCompletion(
            [this](bool) { BWMainQueue::post(m_camera, [this] { m_controller.toggleRecording(m_camera); }); });
    }

    static void ended(const BWCaptureResult &result)
    {
        const BWRecordingStatus &status = result.recording;
        print("end " + QByteArray::number(int(status.end)) + " left-out " + QByteArray::number(status.framesLeftOut));
        const bool saved = !result.file.isEmpty();
        print((saved ? "saved " : "left ") + QFile::encodeName((saved ? result.file : result.left).toLocalFile()));
        QCoreApplication::exit(0);
    }

    BWCaptureController m_controller;
    BWResolution m_resolution;
    std::shared_ptr<BWSimulatedCamera> m_hand;
    std::unique_ptr<BWSimulatedBackend> m_backend;
    BWCameraManager m_manager;
    BWCameraPtr m_camera;
    bool m_begun = false; // this and the next belong to the thread that delivers the frames
    bool m_over = false;
};

} // namespace

int main(int argc, char *argv[])
{
    QCoreApplication application(argc, argv);
    QStringList arguments = QCoreApplication::arguments();
    BWSettingsFile defaults;
    BWAlbumManager albums(defaults, QDir::homePath());
    albums.prepare();
    if (arguments.value(1) == u"recover"_s)
        return recover(albums);
    if (arguments.size() != 5) {
        std::fputs("capture_run recover | record MOVIE mjpeg|yuyv WIDTHxHEIGHT\n", stderr);
        return 2;
    }
    Recording recording(albums, arguments.mid(2));
    QSocketNotifier input(STDIN_FILENO, QSocketNotifier::Read);
    QObject::connect(&input, &QSocketNotifier::activated, qApp, [&] {
        char word[32];
        const ssize_t got = ::read(STDIN_FILENO, word, sizeof word);
        input.setEnabled(got > 0);
        recording.obey(QByteArray(word, qMax<ssize_t>(got, 0)).trimmed());
    });
    return QCoreApplication::exec();
}
