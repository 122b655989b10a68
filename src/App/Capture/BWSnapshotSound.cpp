#include "App/Capture/BWSnapshotSound.h"

#include "App/Capture/BWSoundPlayer.h"
#include "Utils/BWLogging.h"

#include <cstdio>
#include <cstdlib>
#include <unistd.h>

namespace {

/// The sound server's library cleans up at exit, and aborts where a thread still waits in it.
void exitWithoutWaiting(int status, void *)
{
    std::fflush(nullptr);
    _exit(status);
}

} // namespace

BWSnapshotSound::BWSnapshotSound(const QByteArray &file) : m_player(std::make_shared<BWSoundPlayer>(file))
{
    m_thread.run([player = m_player] { player->run(); });
}

BWSnapshotSound::~BWSnapshotSound()
{
    m_player->end();
    if (m_thread.finish())
        return;
    qCWarning(bwApp, "Shutter sound: the audio device does not answer");
    on_exit(&exitWithoutWaiting, nullptr);
}

void BWSnapshotSound::play()
{
    m_player->play();
}
