#include "playout/dual_deck_bgm_player.h"

#include "audio/program_audio_output.h"
#include "playout/bgm_deck.h"
#include "playout/dual_deck_player.h"

namespace tarnix {

namespace {

// The deck while the player is up; null otherwise.
BgmDeck *deckOf(const DualDeckPlayer *player)
{
    return player && player->isInitialized() ? player->bgmDeck() : nullptr;
}

ProgramAudioOutput *audioOf(const DualDeckPlayer *player)
{
    return player && player->isInitialized() ? player->audioOutput() : nullptr;
}

} // namespace

bool DualDeckBgmPlayer::isAvailable() const { return deckOf(m_player) != nullptr; }

BgmPlayer::Output DualDeckBgmPlayer::output() const
{
    const ProgramAudioOutput *audio = audioOf(m_player);
    if (!audio)
        return Output::Unavailable;
    if (audio->hasUsableDevice())
        return Output::Usable;
    // Not yet started, or between two devices: it is being prepared.
    if (audio->isDeviceChangeRunning() || audio->statusKey() != QLatin1String("settings.output.failed"))
        return Output::Changing;
    return Output::Unavailable;
}

bool DualDeckBgmPlayer::prepare(const DeckSource &request, QString *error)
{
    BgmDeck *deck = deckOf(m_player);
    return deck && deck->prepare(request, error);
}

PreparationStatus DualDeckBgmPlayer::status() const
{
    const BgmDeck *deck = deckOf(m_player);
    return deck ? deck->status() : PreparationStatus::Failed;
}

QString DualDeckBgmPlayer::error() const
{
    const BgmDeck *deck = deckOf(m_player);
    return deck ? deck->error() : QString();
}

bool DualDeckBgmPlayer::isOffline() const
{
    const BgmDeck *deck = deckOf(m_player);
    return deck && deck->mediaOffline();
}

bool DualDeckBgmPlayer::play()
{
    BgmDeck *deck = deckOf(m_player);
    return deck && deck->play();
}

bool DualDeckBgmPlayer::pause()
{
    BgmDeck *deck = deckOf(m_player);
    return deck && deck->pause();
}

bool DualDeckBgmPlayer::seek(qint64 ms)
{
    BgmDeck *deck = deckOf(m_player);
    return deck && deck->seek(ms);
}

bool DualDeckBgmPlayer::release(QString *error)
{
    BgmDeck *deck = deckOf(m_player);
    return deck && deck->release(error);
}

bool DualDeckBgmPlayer::isPlaying() const
{
    const BgmDeck *deck = deckOf(m_player);
    return deck && deck->isPlaying();
}

qint64 DualDeckBgmPlayer::positionMs() const
{
    const BgmDeck *deck = deckOf(m_player);
    return deck ? deck->positionMs() : -1;
}

qint64 DualDeckBgmPlayer::durationMs() const
{
    const BgmDeck *deck = deckOf(m_player);
    return deck ? deck->durationMs() : -1;
}

int DualDeckBgmPlayer::takeEvent(QString *text, bool *offline)
{
    BgmDeck *deck = deckOf(m_player);
    return deck ? deck->takeEvent(text, offline) : NoEvent;
}

void DualDeckBgmPlayer::setItemVolume(double linearGain)
{
    if (BgmDeck *deck = deckOf(m_player))
        deck->setItemVolume(linearGain);
}

void DualDeckBgmPlayer::setItemEq(double lowDb, double midDb, double highDb)
{
    if (BgmDeck *deck = deckOf(m_player))
        deck->setItemEq(lowDb, midDb, highDb);
}

void DualDeckBgmPlayer::setItemDelayFrames(int frames)
{
    if (BgmDeck *deck = deckOf(m_player))
        deck->setItemDelayFrames(frames);
}

void DualDeckBgmPlayer::setControlVolume(double gain)
{
    if (ProgramAudioOutput *audio = audioOf(m_player))
        audio->setBgmControlVolume(gain);
}

void DualDeckBgmPlayer::setManualFadeVolume(double gain)
{
    if (ProgramAudioOutput *audio = audioOf(m_player))
        audio->setBgmManualFadeVolume(gain);
}

void DualDeckBgmPlayer::setTransportVolume(double gain)
{
    if (ProgramAudioOutput *audio = audioOf(m_player))
        audio->setBgmTransportVolume(gain);
}

void DualDeckBgmPlayer::rampTransportVolume(double from, double to, qint64 durationMs)
{
    if (ProgramAudioOutput *audio = audioOf(m_player))
        audio->rampBgmTransportVolume(from, to, durationMs);
}

bool DualDeckBgmPlayer::isTransportRampApplied() const
{
    const ProgramAudioOutput *audio = audioOf(m_player);
    return !audio || audio->isBgmTransportRampApplied();
}

void DualDeckBgmPlayer::setPathMuted(bool muted)
{
    if (ProgramAudioOutput *audio = audioOf(m_player))
        audio->setBgmMuted(muted);
}

void DualDeckBgmPlayer::setMetering(bool on)
{
    if (m_player)
        m_player->setBgmMetering(on);
}

LevelReading DualDeckBgmPlayer::inputLevel() const
{
    return m_player ? m_player->bgmInputLevel() : LevelReading{};
}

} // namespace tarnix
