#pragma once

#include "playout/bgm_player.h"

namespace tarnix {

class DualDeckPlayer;

// BgmPlayer over the real dual-deck player: its BGM deck and the BGM path
// of its program audio output. The player is borrowed and outlives this.
class DualDeckBgmPlayer : public BgmPlayer
{
public:
    explicit DualDeckBgmPlayer(DualDeckPlayer *player) : m_player(player) {}

    bool isAvailable() const override;
    Output output() const override;
    bool prepare(const DeckSource &request, QString *error) override;
    PreparationStatus status() const override;
    QString error() const override;
    bool isOffline() const override;
    bool play() override;
    bool pause() override;
    bool seek(qint64 ms) override;
    bool release(QString *error) override;
    bool isPlaying() const override;
    qint64 positionMs() const override;
    qint64 durationMs() const override;
    int takeEvent(QString *text, bool *offline) override;
    void setItemVolume(double linearGain) override;
    void setItemEq(double lowDb, double midDb, double highDb) override;
    void setItemDelayFrames(int frames) override;
    void setControlVolume(double gain) override;
    void setManualFadeVolume(double gain) override;
    void setTransportVolume(double gain) override;
    void rampTransportVolume(double from, double to, qint64 durationMs) override;
    bool isTransportRampApplied() const override;
    void setPathMuted(bool muted) override;
    void setMetering(bool on) override;
    LevelReading inputLevel() const override;

private:
    DualDeckPlayer *m_player;
};

} // namespace tarnix
