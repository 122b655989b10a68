#include "App/Capture/BWSnapshotSound.h"

#include "App/Capture/BWSoundPlayer.h"
#include "Utils/BWLogging.h"

#include <cstdio>
#include <cstdlib>
#include <unistd.h>

namespace {

constexpr std::chrono::milliseconds patience(300); // for a device to let go

/// The sound server's library cleans up at exit, and aborts where a thread still waits in it.
void exitWithoutWaiting(int status, void *)
{
    std::fflush(nullptr);
    _exit(status);
}

} // namespace

BWSnapshotSound::BWSnapshotSound(const QByteArray &file)
    : m_player(std::make_shared<BWSoundPlayer>(file)), m_thread([player = m_player] { player->run(); })
{
}

BWSnapshotSound::~BWSnapshotSound()
{
    if (m_player->end(patience)) {
        m_thread.join();
        return;
    }
    qCWarning(bwApp, "Shutter sound: the audio device does not answer");
    on_exit(&exitWithoutWaiting, nullptr);
    m_thread.detach();
}

void BWSnapshotSound::play()
{
    m_player->play();
}
