// SPDX-License-Identifier: GPL-3.0-or-later
#include "Contract.h"
#include "V4L2Fixture.h"

#include <mutex>
#include <QProcess>
#include <QTemporaryDir>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

using namespace Qt::StringLiterals;

namespace {

/// A USB camera played by tests/kernel/usbcamera, which sends a frame for each that is pushed.
class UsbCameraFixture : public V4L2Fixture {
public:
    /// The program that plays it, and the folder of its frames.
    UsbCameraFixture(const QString &program, const QString &frames) : V4L2Fixture(u"Contract Camera"_s)
    {
        const QString socket = m_folder.filePath(u"socket"_s);
        m_cameras.setProcessChannelMode(QProcess::ForwardedErrorChannel);
        m_cameras.start(program, {socket});
        if (!m_cameras.waitForStarted() || !m_cameras.waitForReadyRead())
            qFatal("%s: %s", qPrintable(program), qPrintable(m_cameras.errorString()));
        sockaddr_un address{AF_UNIX, {}};
        qstrncpy(address.sun_path, socket.toLocal8Bit().constData(), sizeof address.sun_path);
        if (::connect(m_socket, reinterpret_cast<const sockaddr *>(&address), sizeof address) != 0)
            qFatal("%s", qPrintable(qt_error_string()));
        command(u"add x uvc mode=pushed 'title=Contract Camera'"_s);
        command(u"source x "_s + frames);
    }
    ~UsbCameraFixture() override
    {
        ::close(m_socket);
        m_cameras.terminate();
        m_cameras.waitForFinished();
    }

    void plugIn() override
    {
        if (!std::exchange(m_plugged, true))
            command(u"plug x"_s);
    }
    void unplug() override
    {
        if (std::exchange(m_plugged, false))
            command(u"unplug x"_s);
    }
    void pressButton() override { command(u"press x"_s); }
    void pushFrames(int count) override
    {
        // The kernel drops what it has no buffer for.
        constexpr int atOnce = 3;
        for (; count > 0; count -= atOnce) {
            command(u"push x %1"_s.arg(std::min(count, atOnce)));
            while (isSending()) { }
        }
    }

private:
    bool isSending()
    {
        const QString status = command(u"status x"_s);
        return status.contains(u"streaming"_s) && !status.contains(u"waiting=0"_s);
    }

    QString command(const QString &line)
    {
        const std::lock_guard lock(m_mutex);
        const QByteArray bytes = line.toUtf8() + '\n';
        QByteArray answer;
        bool there = ::write(m_socket, bytes.constData(), std::size_t(bytes.size())) == bytes.size();
        for (char next = 0; there && next != '\n'; answer += next)
            there = ::read(m_socket, &next, 1) == 1;
        if (!there || !answer.startsWith("ok"))
            qFatal("%s: %s", qPrintable(line), answer.constData());
        return QString::fromUtf8(answer.mid(3)).trimmed();
    }

    const QTemporaryDir m_folder;
    QProcess m_cameras;
    const int m_socket = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    std::mutex m_mutex; ///< plugs are pulled on other threads
    bool m_plugged = false;
};

} // namespace

/// Arguments: usb_cameras, the folder of frames; what follows is for Qt Test.
int main(int argc, char **argv)
{
    const QCoreApplication application(argc, argv);
    const QStringList arguments = QCoreApplication::arguments();
    if (arguments.size() < 3)
        qFatal("Usage: tst_usb_camera_contract USB_CAMERAS FRAMES [Qt Test's own]");
    UsbCameraFixture fixture(arguments.at(1), arguments.at(2));
    return runContract(fixture, arguments.first(1) + arguments.mid(3));
}
