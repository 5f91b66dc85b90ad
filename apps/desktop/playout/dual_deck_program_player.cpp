#include "playout/dual_deck_program_player.h"

#include "playout/deck_source_session.h"
#include "playout/dsk_playback.h"
#include "playout/dual_deck_player.h"

namespace tarnix {

DualDeckProgramPlayer::DualDeckProgramPlayer(std::unique_ptr<DualDeckPlayer> player) : m_player(std::move(player)) {}

DualDeckProgramPlayer::~DualDeckProgramPlayer() = default;

bool DualDeckProgramPlayer::isInitialized() const { return m_player && m_player->isInitialized(); }
bool DualDeckProgramPlayer::prepareStandby(const DeckSource &request) { return m_player->prepareStandby(request); }
PreparationStatus DualDeckProgramPlayer::standbyStatus() const { return m_player->standbyStatus(); }
QString DualDeckProgramPlayer::standbyError() const { return m_player->standbyError(); }
bool DualDeckProgramPlayer::releaseStandby() { return m_player->releaseStandby(); }
int DualDeckProgramPlayer::currentDeck() const { return m_player->currentDeck(); }

bool DualDeckProgramPlayer::isStandbyOffline() const
{
    const DeckSourceSession *deck = m_player->deck(m_player->standbyDeck());
    return deck && deck->mediaOffline();
}

bool DualDeckProgramPlayer::isCurrentOffline() const
{
    const DeckSourceSession *deck = m_player->deck(m_player->currentDeck());
    return deck && deck->mediaOffline();
}

bool DualDeckProgramPlayer::takeStandby(bool crossfade, float videoLevel, int *status)
{
    return m_player->takeStandby(crossfade, videoLevel, status);
}

bool DualDeckProgramPlayer::stopCrossfade(float progress) { return m_player->stopCrossfade(progress); }
bool DualDeckProgramPlayer::isCrossfadeActive() const { return m_player->isCrossfadeActive(); }
bool DualDeckProgramPlayer::play() { return m_player->play(); }
bool DualDeckProgramPlayer::pause() { return m_player->pause(); }
bool DualDeckProgramPlayer::stop() { return m_player->stop(); }
bool DualDeckProgramPlayer::seek(qint64 ms) { return m_player->seek(ms); }
bool DualDeckProgramPlayer::setRate(double rate) { return m_player->setRate(rate); }
int DualDeckProgramPlayer::restoreStill() { return m_player->restoreStill(); }
void DualDeckProgramPlayer::setVideoLevel(float level) { m_player->setVideoLevel(level); }
void DualDeckProgramPlayer::setProgramFade(double amount) { m_player->setProgramFade(amount); }
void DualDeckProgramPlayer::setItemDelayFrames(int frames) { m_player->setItemDelayFrames(frames); }
void DualDeckProgramPlayer::setItemEq(double lowDb, double midDb, double highDb) { m_player->setItemEq(lowDb, midDb, highDb); }
ProgramAudioOutput *DualDeckProgramPlayer::audio() const
{
    return isInitialized() ? m_player->audioOutput() : nullptr;
}

void DualDeckProgramPlayer::setCurrentItemDelayFrames(int frames)
{
    if (ProgramAudioOutput *output = audio(); output && currentDeck() >= 0)
        output->setItemDelayFrames(currentDeck(), frames);
}

void DualDeckProgramPlayer::setMasterDelayFrames(int frames)
{
    if (ProgramAudioOutput *output = audio())
        output->setMasterDelayFrames(frames);
}

void DualDeckProgramPlayer::setCurrentItemEq(double lowDb, double midDb, double highDb)
{
    if (ProgramAudioOutput *output = audio(); output && currentDeck() >= 0)
        output->setItemEq(currentDeck(), lowDb, midDb, highDb);
}

void DualDeckProgramPlayer::setMasterEq(double lowDb, double midDb, double highDb)
{
    if (ProgramAudioOutput *output = audio())
        output->setMasterEq(lowDb, midDb, highDb);
}

void DualDeckProgramPlayer::setMasterVolume(double linearGain)
{
    if (ProgramAudioOutput *output = audio())
        output->setMasterVolume(linearGain);
}

void DualDeckProgramPlayer::setItemVolume(double linearGain)
{
    if (isInitialized())
        m_player->setItemVolume(linearGain);
}

void DualDeckProgramPlayer::setMasterMuted(bool muted)
{
    if (ProgramAudioOutput *output = audio())
        output->setMasterMuted(muted);
}

qint64 DualDeckProgramPlayer::positionMs() const { return m_player->positionMs(); }
qint64 DualDeckProgramPlayer::durationMs() const { return m_player->durationMs(); }
bool DualDeckProgramPlayer::isPlaying() const { return m_player->isPlaying(); }
int DualDeckProgramPlayer::offAir() { return m_player->offAir(); }
int DualDeckProgramPlayer::takeEvent(QString *text, bool *programAudio) { return m_player->takeEvent(text, programAudio); }
ProgramLevelTimeline::Snapshot DualDeckProgramPlayer::levelSnapshot() { return m_player->levelSnapshot(); }
void DualDeckProgramPlayer::poll() { m_player->poll(); }
void DualDeckProgramPlayer::beginShutdown() { m_player->beginShutdown(); }

DskPlayer *DualDeckProgramPlayer::dskPlayer()
{
    return m_player ? m_player->dskPlayback() : nullptr;
}

} // namespace tarnix
