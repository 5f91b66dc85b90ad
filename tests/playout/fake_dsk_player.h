#pragma once

#include "playout/dsk_player.h"

#include <QList>
#include <QString>

#include <optional>

namespace tarnix::test {

// A DSK player the test scripts: preparations finish, fail or hit their end
// when told, and every command is recorded.
class FakeDskPlayer : public DskPlayer
{
public:
    struct Take {
        bool paused = false;
        bool crossfade = false;
        float level = 1.0f;
    };

    bool isAvailable() const override { return true; }
    bool prepare(const DeckSource &request, QString *error) override
    {
        if (!refusePrepare.isEmpty()) {
            *error = refusePrepare;
            return false;
        }
        prepared.append(request);
        preparing = true;
        ready = false;
        failure.clear();
        return true;
    }
    int status() const override
    {
        if (visible)
            return playing ? Visible : VisiblePaused;
        return preparing ? (ready ? Ready : Preparing) : None;
    }
    bool isPreparationReady() const override { return preparing && ready; }
    QString preparationError() const override { return failure; }
    bool isPreparedStill() const override { return still; }
    bool cancelPreparation(QString *) override
    {
        preparing = ready = false;
        return true;
    }
    bool take(bool paused, bool crossfade, float startLevel, QString *error) override
    {
        if (!refuseTake.isEmpty()) {
            *error = refuseTake;
            return false;
        }
        takes.append({paused, crossfade, startLevel});
        preparing = ready = false;
        visible = true;
        playing = !paused;
        level = startLevel;
        transition = crossfade;
        return true;
    }
    bool transitionStep(float progress, QString *) override
    {
        transitionProgress = progress;
        if (progress >= 1.0f)
            transition = false;
        return true;
    }
    bool isTransitionActive() const override { return transition; }
    void setLevel(float value) override { level = value; }
    bool hide(QString *) override
    {
        ++hides;
        visible = playing = preparing = ready = transition = false;
        return true;
    }
    bool play(QString *) override
    {
        ++plays;
        playing = true;
        return true;
    }
    bool pause(QString *) override
    {
        ++pauses;
        playing = false;
        return true;
    }
    bool seek(qint64 ms) override
    {
        seeks.append(ms);
        return true;
    }
    bool isPlaying() const override { return visible && playing; }
    qint64 positionMs() const override { return position; }
    qint64 durationMs() const override { return duration; }
    int takeEvent(QString *text) override
    {
        const int kind = std::exchange(event, int(NoEvent));
        *text = eventText;
        return kind;
    }
    void poll() override {}

    // Scripting.
    void finishPreparation() { ready = true; }
    void failPreparation(const QString &text)
    {
        failure = text;
        ready = false;
    }
    void endOfStream() { event = EndOfStream; }

    QList<DeckSource> prepared;
    QList<Take> takes;
    QList<qint64> seeks;
    QString refusePrepare;
    QString refuseTake;
    QString failure;
    QString eventText;
    int event = NoEvent;
    int plays = 0;
    int pauses = 0;
    int hides = 0;
    bool preparing = false;
    bool ready = false;
    bool visible = false;
    bool playing = false;
    bool still = false;
    bool transition = false;
    float level = 1.0f;
    float transitionProgress = 0.0f;
    qint64 position = -1;
    qint64 duration = -1;
};

} // namespace tarnix::test
