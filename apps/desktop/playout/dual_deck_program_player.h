#pragma once

#include "playout/dual_deck_bgm_player.h"
#include "playout/program_player.h"

#include <memory>

namespace tarnix {

class DualDeckPlayer;
class ProgramAudioOutput;

// ProgramPlayer over the real dual-deck player, which it owns.
class DualDeckProgramPlayer : public ProgramPlayer
{
public:
    explicit DualDeckProgramPlayer(std::unique_ptr<DualDeckPlayer> player);
    ~DualDeckProgramPlayer() override;

    DualDeckPlayer *player() const { return m_player.get(); }

    bool isInitialized() const override;
    bool prepareStandby(const DeckSource &request) override;
    PreparationStatus standbyStatus() const override;
    QString standbyError() const override;
    bool releaseStandby() override;
    int currentDeck() const override;
    bool isStandbyOffline() const override;
    bool isCurrentOffline() const override;
    bool takeStandby(bool crossfade, float videoLevel, int *status) override;
    bool stopCrossfade(float progress) override;
    bool isCrossfadeActive() const override;
    bool play() override;
    bool pause() override;
    bool stop() override;
    bool seek(qint64 ms) override;
    bool setRate(double rate) override;
    int restoreStill() override;
    void setVideoLevel(float level) override;
    void setProgramFade(double amount) override;
    void setItemDelayFrames(int frames) override;
    void setItemEq(double lowDb, double midDb, double highDb) override;
    void setCurrentItemDelayFrames(int frames) override;
    void setMasterDelayFrames(int frames) override;
    void setCurrentItemEq(double lowDb, double midDb, double highDb) override;
    void setMasterEq(double lowDb, double midDb, double highDb) override;
    void setMasterVolume(double linearGain) override;
    void setItemVolume(double linearGain) override;
    void setMasterMuted(bool muted) override;
    qint64 positionMs() const override;
    qint64 durationMs() const override;
    bool isPlaying() const override;
    int offAir() override;
    int takeEvent(QString *text, bool *programAudio) override;
    ProgramLevelTimeline::Snapshot levelSnapshot() override;
    void poll() override;
    void beginShutdown() override;
    BgmPlayer *bgmPlayer() override { return &m_bgm; }
    DskPlayer *dskPlayer() override;

private:
    // The program audio output while the player is up; null otherwise.
    ProgramAudioOutput *audio() const;

    std::unique_ptr<DualDeckPlayer> m_player;
    DualDeckBgmPlayer m_bgm{m_player.get()};
};

} // namespace tarnix
