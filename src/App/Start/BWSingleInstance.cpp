// SPDX-License-Identifier: GPL-3.0-or-later
#include "App/Start/BWSingleInstance.h"

#include "Utils/BWLogging.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <poll.h>
#include <QRandomGenerator>
#include <QSocketNotifier>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>
#include <utility>

namespace {

// An answer.
constexpr char cameForward = '1';
constexpr char isEnding = '0';

/// An abstract name, which leaves no file behind when the program is killed.
struct Address {
    sockaddr_un data{};
    socklen_t size = offsetof(sockaddr_un, sun_path);

    /// The system chooses one if the name is empty.
    explicit Address(const QByteArray &name = {})
    {
        data.sun_family = AF_UNIX;
        if (name.isEmpty())
            return;
        const auto length = std::min<std::size_t>(std::size_t(name.size()), sizeof(data.sun_path) - 1);
        std::copy_n(name.cbegin(), length, data.sun_path + 1);
        size += socklen_t(1 + length);
    }

    const sockaddr *get() const { return reinterpret_cast<const sockaddr *>(&data); }
    sockaddr *get() { return reinterpret_cast<sockaddr *>(&data); }
};

int openSocket(const Address &address)
{
    const int descriptor = ::socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
    if (descriptor >= 0 && ::bind(descriptor, address.get(), address.size) == 0)
        return descriptor;
    if (descriptor >= 0)
        ::close(descriptor);
    return -1;
}

QByteArray addressOf(const QByteArray &note)
{
    return note.left(note.indexOf(' '));
}

} // namespace

BWSingleInstance::BWSingleInstance(const QString &settingsFile, const QByteArray &activationToken,
                                   std::chrono::milliseconds patience)
    : m_use(settingsFile), m_start(m_use.isGranted() ? Start::First : askOther(activationToken, patience))
{
    if (m_start == Start::First)
        listen();
}

BWSingleInstance::~BWSingleInstance()
{
    m_notifier.reset();
    if (m_socket >= 0)
        ::close(m_socket);
}

BWSingleInstance::Start BWSingleInstance::askOther(const QByteArray &activationToken,
                                                   std::chrono::milliseconds patience)
{
    using Clock = std::chrono::steady_clock;
    constexpr int interval = 50; // milliseconds
    const auto end = Clock::now() + patience;
    pollfd answered{openSocket(Address()), POLLIN, 0};
    const auto closed =
        std::unique_ptr<int, void (*)(int *)>(&answered.fd, [](int *descriptor) { ::close(*descriptor); });
    QByteArray asked;
    while (!m_use.tryAgain()) {
        // It may be a program that does not listen yet, or an import that only takes a moment.
        if (const QByteArray note = m_use.note(); note != asked) {
            const Address address(addressOf(note));
            const QByteArray message = note + '\n' + activationToken;
            if (::sendto(answered.fd, message.constData(), std::size_t(message.size()), MSG_NOSIGNAL, address.get(),
                         address.size)
                >= 0)
                asked = note;
        }
        char answer = isEnding;
        if (::poll(&answered, 1, interval) > 0 && ::recv(answered.fd, &answer, 1, 0) == 1 && answer == cameForward)
            return Start::HandedOver;
        if (Clock::now() > end)
            return Start::NoAnswer;
    }
    return Start::First;
}

void BWSingleInstance::listen()
{
    std::array<quint32, 8> numbers;
    QRandomGenerator::system()->fillRange(numbers.data(), numbers.size());
    const QByteArray random =
        QByteArray::fromRawData(reinterpret_cast<const char *>(numbers.data()), sizeof(numbers)).toHex();
    // The name is public, but only this user can read the second half in the file.
    m_note = "brimwellpro-" + random.first(random.size() / 2) + ' ' + random.last(random.size() / 2);
    m_socket = openSocket(Address(addressOf(m_note)));
    if (m_socket < 0)
        qCWarning(bwApp, "A second start will not be able to bring this program to the front");
    m_use.setNote(m_socket < 0 ? QByteArray() : m_note);
}

void BWSingleInstance::setBringForward(BringForward bringForward)
{
    m_bringForward = std::move(bringForward);
    if (m_socket < 0)
        return;
    m_notifier = std::make_unique<QSocketNotifier>(m_socket, QSocketNotifier::Read);
    QObject::connect(m_notifier.get(), &QSocketNotifier::activated, m_notifier.get(), [this] { answer(); });
}

void BWSingleInstance::answer()
{
    std::array<char, 4096> bytes;
    Address sender;
    sender.size = sizeof(sender.data);
    const ssize_t size = ::recvfrom(m_socket, bytes.data(), bytes.size(), 0, sender.get(), &sender.size);
    const QByteArray message(bytes.data(), std::max<ssize_t>(size, 0));
    if (!message.startsWith(m_note + '\n'))
        return;
    const char answer = m_bringForward(message.mid(m_note.size() + 1)) ? cameForward : isEnding;
    ::sendto(m_socket, &answer, 1, MSG_NOSIGNAL, sender.get(), sender.size);
}
