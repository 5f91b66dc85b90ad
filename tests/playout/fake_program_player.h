#pragma once

#include "playout/program_player.h"

#include <QHash>
#include <QList>

#include <optional>

namespace tarnix::test {

// A player that does what it is told and what the test scripts: the standby
// becomes ready or fails when the test says so, ends of stream and errors
// arrive when injected, and each refusal is a switch.
class FakeProgramPlayer : public ProgramPlayer
{
public:
    // Scripted state.
    bool initialized = true;
    PreparationStatus status = PreparationStatus::Idle;
    QString error;
    bool standbyOffline = false;
    bool currentOffline = false;
    qint64 position = -1;
    qint64 duration = -1;
    bool playing = false;
    bool crossfadeActive = false;
    int current = -1;
    QHash<QString, qint64> durations;  // by path, applied at a take

    // Refusals.
    bool refusePrepare = false;
    bool refuseRelease = false;
    bool refuseTake = false;
    int refusedTakeStatus = 3;
    bool refusePlay = false;
    bool refusePause = false;
    bool refuseStop = false;
    bool refuseSeek = false;
    bool refuseRate = false;
    int offAirResult = 2;
    int restoreResult = 0;
    ProgramLevelTimeline::Snapshot levels;
    int restores = 0;
    // Off: the deck keeps reporting its old position after a seek.
    bool seekMovesPosition = true;

    // What was asked.
    std::optional<DeckSource> standbySource;
    std::optional<DeckSource> currentSource;
    QList<DeckSource> prepared;
    QList<bool> takeCrossfades;
    QList<qint64> seeks;
    int releases = 0;
    int plays = 0;
    int pauses = 0;
    int offAirs = 0;
    float videoLevel = 1.0f;
    double programFade = 0.0;
    double rate = 1.0;
    int standbyDelayFrames = 0;
    int currentDelayFrames = 0;
    QList<double> masterEq;
    double masterVolume = -1.0;
    double itemVolume = -1.0;
    bool masterMuted = false;

    void makeReady() { status = PreparationStatus::Ready; }
    void fail(const QString &text)
    {
        status = PreparationStatus::Failed;
        error = text;
    }
    void endOfStream()
    {
        m_event = EndOfStream;
        playing = false;
    }
    void raiseError(const QString &text, bool programAudio = false)
    {
        m_event = Error;
        m_eventText = text;
        m_eventProgramAudio = programAudio;
    }
    int takes() const { return int(takeCrossfades.size()); }

    bool isInitialized() const override { return initialized; }
    bool prepareStandby(const DeckSource &request) override
    {
        if (refusePrepare) {
            error = QStringLiteral("prepare refused");
            return false;
        }
        prepared.append(request);
        standbySource = request;
        status = PreparationStatus::Preparing;
        error.clear();
        return true;
    }
    PreparationStatus standbyStatus() const override { return status; }
    QString standbyError() const override { return error; }
    bool releaseStandby() override
    {
        if (refuseRelease)
            return false;
        ++releases;
        standbySource.reset();
        status = PreparationStatus::Idle;
        return true;
    }
    int currentDeck() const override { return current; }
    bool isStandbyOffline() const override { return standbyOffline; }
    bool isCurrentOffline() const override { return currentOffline; }
    bool takeStandby(bool crossfade, float level, int *takeStatus) override
    {
        if (refuseTake || status != PreparationStatus::Ready || !standbySource) {
            if (takeStatus)
                *takeStatus = refusedTakeStatus;
            return false;
        }
        takeCrossfades.append(crossfade);
        crossfadeActive = crossfade && current >= 0;
        current = current < 0 ? 0 : 1 - current;
        currentSource = std::exchange(standbySource, std::nullopt);
        status = PreparationStatus::Idle;
        position = currentSource->inMs;
        duration = durations.value(currentSource->source, -1);
        playing = false;
        videoLevel = level;
        m_event = NoEvent;
        if (takeStatus)
            *takeStatus = 0;
        return true;
    }
    bool stopCrossfade(float progress) override
    {
        if (progress >= 1.0f)
            crossfadeActive = false;
        return true;
    }
    bool isCrossfadeActive() const override { return crossfadeActive; }
    bool play() override
    {
        if (refusePlay || current < 0)
            return false;
        ++plays;
        playing = true;
        return true;
    }
    bool pause() override
    {
        if (refusePause || current < 0)
            return false;
        ++pauses;
        playing = false;
        return true;
    }
    bool stop() override
    {
        if (refuseStop)
            return false;
        playing = false;
        return true;
    }
    bool seek(qint64 ms) override
    {
        if (refuseSeek)
            return false;
        seeks.append(ms);
        if (seekMovesPosition)
            position = ms;
        return true;
    }
    bool setRate(double value) override
    {
        if (refuseRate)
            return false;
        rate = value;
        return true;
    }
    int restoreStill() override
    {
        ++restores;
        return restoreResult;
    }
    void setVideoLevel(float level) override { videoLevel = level; }
    void setProgramFade(double amount) override { programFade = amount; }
    void setItemDelayFrames(int frames) override { standbyDelayFrames = frames; }
    void setItemEq(double, double, double) override {}
    void setCurrentItemDelayFrames(int frames) override { currentDelayFrames = frames; }
    void setMasterDelayFrames(int) override {}
    void setCurrentItemEq(double, double, double) override {}
    void setMasterEq(double lowDb, double midDb, double highDb) override { masterEq = {lowDb, midDb, highDb}; }
    void setMasterVolume(double gain) override { masterVolume = gain; }
    void setItemVolume(double gain) override { itemVolume = gain; }
    void setMasterMuted(bool muted) override { masterMuted = muted; }
    qint64 positionMs() const override { return current < 0 ? -1 : position; }
    qint64 durationMs() const override { return current < 0 ? -1 : duration; }
    bool isPlaying() const override { return playing; }
    int offAir() override
    {
        ++offAirs;
        if (offAirResult != 2)
            return offAirResult;
        current = -1;
        currentSource.reset();
        standbySource.reset();
        status = PreparationStatus::Idle;
        crossfadeActive = false;
        playing = false;
        m_event = NoEvent;
        return 2;
    }
    int takeEvent(QString *text, bool *programAudio) override
    {
        const int event = std::exchange(m_event, int(NoEvent));
        if (text)
            *text = m_eventText;
        if (programAudio)
            *programAudio = m_eventProgramAudio;
        return event;
    }
    ProgramLevelTimeline::Snapshot levelSnapshot() override { return levels; }
    void poll() override {}
    void beginShutdown() override {}
    BgmPlayer *bgmPlayer() override { return bgm; }

    // The BGM deck beside the decks, when the test gives one.
    BgmPlayer *bgm = nullptr;

private:
    int m_event = NoEvent;
    QString m_eventText;
    bool m_eventProgramAudio = false;
};

} // namespace tarnix::test
