#pragma once

#include "shell/health_figures.h"
#include "shell/process_figures.h"

#include <QObject>
#include <QPointer>
#include <QTimer>

#include <chrono>
#include <deque>
#include <functional>
#include <optional>

namespace tarnix {

class UserInfoCenter;

// Intervals and clock of the health figures. The defaults are the product's;
// tests shorten them and move the clock by hand.
struct HealthMonitorOptions {
    // How often the program counters are sampled for the 5 s rates, and the
    // process figures read.
    std::chrono::milliseconds sampleInterval{1000};
    // How often the HEALTH record is written.
    std::chrono::milliseconds recordInterval{60000};
    // Monotonic milliseconds; empty: the steady clock.
    std::function<qint64()> monotonicMs;
    // Replaces the reading of /proc/self.
    ProcessFiguresSampler::Reader processReader;
};

// Keeps the figures of a long run: the program picture's rates over the
// last 5 s, its largest render gap and mailbox misses, the pipelines the
// safe-release helper retained (by owner), the log records lost, the
// process's memory, descriptors and threads, and the warnings the operator
// was shown. Answers them at once as ordered JSON, and writes them as one
// "HEALTH {...}" record (category SYSTEM) every record interval.
//
// Nothing here waits: the program counters are atomics read on the main
// thread, /proc is read by the process figures worker, and the rates come
// from samples the monitor took before.
//
// Main thread only.
class HealthMonitor : public QObject
{
    Q_OBJECT

public:
    // None while the program picture is down.
    using ProgramCounterSource = std::function<std::optional<ProgramFrameCounters>()>;

    explicit HealthMonitor(HealthMonitorOptions options = {}, QObject *parent = nullptr);
    ~HealthMonitor() override;

    void setProgramCounters(ProgramCounterSource source);
    void setOperatorMessages(const UserInfoCenter *center);

    // Takes the first sample, starts the process figures worker and the
    // sample and record timers. Runs once.
    void start();

    // Samples the program counters now; the sample timer calls it.
    void sample();

    HealthFigures figures() const;
    QString json() const;
    // Writes the HEALTH record now; the record timer calls it.
    void writeRecord() const;

private:
    struct Sample {
        qint64 atMs = 0;
        quint64 renders = 0;
        quint64 presents = 0;
    };

    qint64 nowMs() const;

    HealthMonitorOptions m_options;
    qint64 m_startMs = 0;
    ProgramCounterSource m_programCounters;
    QPointer<const UserInfoCenter> m_operatorMessages;
    ProcessFiguresSampler m_process;
    // Oldest first; the oldest is the newest one at least 5 s before the
    // newest, once the history is that long.
    std::deque<Sample> m_samples;
    QTimer m_sampleTimer;
    QTimer m_recordTimer;
    bool m_started = false;
};

} // namespace tarnix
