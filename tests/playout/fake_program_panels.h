#pragma once

#include "playout/program_playout_panels.h"

#include <QHash>
#include <QList>

namespace tarnix::test {

// A program panel that keeps what it was last told and holds the values an
// operator would have set.
class FakeProgramPanel : public ProgramPanelView
{
public:
    // What the operator has set.
    double item = 0.5;
    double master = 0.8;
    EqGains eq{1.0, -2.0, 3.0};
    int delayFrames = 0;
    EqGains itemEqGains;
    bool dragging = false;

    // What it was told.
    QString fileName = QStringLiteral("(never told)");
    QString filePath;
    bool hasItem = false;
    bool playing = false;
    qint64 position = -2;
    qint64 duration = -2;
    qint64 remaining = -2;
    bool live = false;
    qint64 in = -2;
    qint64 out = -2;
    double rate = 0.0;
    bool rateControl = false;
    int repeatCount = -1;
    double videoLevel = -1.0;
    bool ftbLit = false;
    QString status;
    QList<std::pair<bool, bool>> mutes;
    int meterClears = 0;
    int itemMeterShows = 0;

    double itemGain() const override { return item; }
    double masterGain() const override { return master; }
    EqGains masterEq() const override { return eq; }
    int itemDelayFrames() const override { return delayFrames; }
    EqGains itemEq() const override { return itemEqGains; }
    bool isSeekDragging() const override { return dragging; }

    void showMute(bool explicitMute, bool effectiveMute) override { mutes.append({explicitMute, effectiveMute}); }
    void showItemMeter(const MeterBallistics &) override { ++itemMeterShows; }
    void showMasterMeter(const MeterBallistics &) override {}
    void showBgmMeter(double, double, bool) override {}
    void showInputIndicator(bool, bool) override {}
    void clearMeters() override { ++meterClears; }
    void showOnAirFile(const QString &name, const QString &path) override
    {
        fileName = name;
        filePath = path;
    }
    void showItemAudio(int, const EqGains &) override {}
    void showTransport(bool item_, bool playing_) override
    {
        hasItem = item_;
        playing = playing_;
    }
    void showTimes(qint64 position_, qint64 duration_, qint64 remaining_, bool live_) override
    {
        position = position_;
        duration = duration_;
        remaining = remaining_;
        live = live_;
    }
    void showInOut(qint64 in_, qint64 out_) override
    {
        in = in_;
        out = out_;
    }
    void showRate(double rate_, bool control) override
    {
        rate = rate_;
        rateControl = control;
    }
    void showRepeatCount(int count) override { repeatCount = count; }
    void showVideoLevel(double level) override { videoLevel = level; }
    void showFtb(bool lit) override { ftbLit = lit; }
    void showStatus(const QString &text) override { status = text; }
};

// A playlist panel with a manual crossfade and the levels it shows per row.
class FakePlaylistPanel : public PlaylistPanelView
{
public:
    bool crossfade = false;
    qint64 crossfadeMs = 1000;
    QHash<quint64, double> levels;

    bool manualCrossfadeEnabled() const override { return crossfade; }
    qint64 manualCrossfadeDurationMs() const override { return crossfadeMs; }
    void showItemLevel(quint64 itemId, double level) override { levels.insert(itemId, level); }
};

} // namespace tarnix::test
