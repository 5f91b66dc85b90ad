#pragma once

#include "playout/bgm_player.h"

#include <QList>
#include <QSet>
#include <QStringList>

#include <optional>

namespace tarnix::test {

// A BGM deck and mix path that do what they are told and what the test
// scripts: a preparation ends when the test says so (failing for the paths
// it names), ends of stream and errors arrive when injected, and each
// refusal is a switch. The gains written to the mix are kept in order.
class FakeBgmPlayer : public BgmPlayer
{
public:
    // Scripted state.
    bool available = true;
    Output out = Output::Usable;
    QSet<QString> failingPaths;
    bool refusePrepare = false;
    bool refusePlay = false;
    bool refuseSeek = false;
    bool refuseRelease = false;
    qint64 duration = 10000;
    qint64 position = -1;
    LevelReading level;
    // The mix has played its transport ramp to the end.
    bool rampApplied = true;

    // What was asked and written.
    PreparationStatus prepStatus = PreparationStatus::Idle;
    QString prepError;
    bool offline = false;
    std::optional<DeckSource> source;
    QStringList prepared;  // paths, in order
    QStringList played;    // the path at each play()
    bool playing = false;
    int pauses = 0;
    int releases = 0;
    QList<qint64> seeks;
    double itemVolume = -1.0;
    int delayFrames = -1;
    double control = -1.0;
    double fade = -1.0;
    double transport = -1.0;
    QList<double> transports;
    struct Ramp {
        double from = 0.0;
        double to = 0.0;
        qint64 durationMs = 0;
    };
    QList<Ramp> ramps;
    bool muted = false;
    bool metering = false;

    // Ends the running preparation: ready, or failed for a failing path.
    void finishPreparation()
    {
        if (!source)
            return;
        if (failingPaths.contains(source->source)) {
            prepStatus = PreparationStatus::Failed;
            prepError = QStringLiteral("decoder failed");
            return;
        }
        prepStatus = PreparationStatus::Ready;
        position = source->inMs;
    }
    void endOfStream()
    {
        m_event = EndOfStream;
        playing = false;
        position = duration;
    }
    void raiseError(const QString &text, bool isOffline = false)
    {
        m_event = Error;
        m_text = text;
        m_offline = isOffline;
    }
    int playsOf(const QString &path) const { return int(played.count(path)); }
    int preparesOf(const QString &path) const { return int(prepared.count(path)); }

    bool isAvailable() const override { return available; }
    Output output() const override { return out; }
    bool prepare(const DeckSource &request, QString *error) override
    {
        if (refusePrepare) {
            if (error)
                *error = QStringLiteral("prepare refused");
            return false;
        }
        source = request;
        prepared.append(request.source);
        prepStatus = PreparationStatus::Preparing;
        prepError.clear();
        playing = false;
        position = -1;
        m_event = NoEvent;
        return true;
    }
    PreparationStatus status() const override { return prepStatus; }
    QString error() const override { return prepError; }
    bool isOffline() const override { return offline; }
    bool play() override
    {
        if (refusePlay || prepStatus != PreparationStatus::Ready)
            return false;
        played.append(source->source);
        playing = true;
        return true;
    }
    bool pause() override
    {
        ++pauses;
        playing = false;
        return prepStatus == PreparationStatus::Ready;
    }
    bool seek(qint64 ms) override
    {
        if (refuseSeek)
            return false;
        seeks.append(ms);
        position = ms;
        return true;
    }
    bool release(QString *error) override
    {
        if (refuseRelease) {
            if (error)
                *error = QStringLiteral("release refused");
            return false;
        }
        ++releases;
        source.reset();
        prepStatus = PreparationStatus::Idle;
        playing = false;
        position = -1;
        m_event = NoEvent;
        return true;
    }
    bool isPlaying() const override { return playing; }
    qint64 positionMs() const override { return prepStatus == PreparationStatus::Ready ? position : -1; }
    qint64 durationMs() const override { return prepStatus == PreparationStatus::Ready ? duration : -1; }
    int takeEvent(QString *text, bool *isOffline) override
    {
        const int event = std::exchange(m_event, int(NoEvent));
        if (text)
            *text = m_text;
        if (isOffline)
            *isOffline = m_offline;
        return event;
    }
    void setItemVolume(double gain) override { itemVolume = gain; }
    void setItemEq(double, double, double) override {}
    void setItemDelayFrames(int frames) override { delayFrames = frames; }
    void setControlVolume(double gain) override { control = gain; }
    void setManualFadeVolume(double gain) override { fade = gain; }
    void setTransportVolume(double gain) override
    {
        transport = gain;
        transports.append(gain);
    }
    void rampTransportVolume(double from, double to, qint64 durationMs) override
    {
        ramps.append({from, to, durationMs});
    }
    bool isTransportRampApplied() const override { return rampApplied; }
    void setPathMuted(bool value) override { muted = value; }
    void setMetering(bool on) override { metering = on; }
    LevelReading inputLevel() const override { return level; }

private:
    int m_event = NoEvent;
    QString m_text;
    bool m_offline = false;
};

} // namespace tarnix::test
