#include "shell/health_monitor.h"

#include "shell/application_log.h"
#include "shell/log_categories.h"
#include "shell/pipeline_release.h"
#include "shell/user_info_center.h"

#include <QElapsedTimer>

#include <cmath>

namespace tarnix {

namespace {

constexpr qint64 kRateWindowMs = 5000;

qint64 steadyMs()
{
    static const QElapsedTimer timer = [] {
        QElapsedTimer started;
        started.start();
        return started;
    }();
    return timer.elapsed();
}

// A count over the window, scaled to 5 s: the window is 5 s once the
// history is that long, and shorter in the first seconds.
qint64 perFiveSeconds(quint64 count, qint64 windowMs)
{
    return std::llround(double(count) * double(kRateWindowMs) / double(windowMs));
}

std::optional<qint64> known(qint64 figure)
{
    return figure >= 0 ? std::optional<qint64>(figure) : std::nullopt;
}

} // namespace

HealthMonitor::HealthMonitor(HealthMonitorOptions options, QObject *parent)
    : QObject(parent)
    , m_options(std::move(options))
    , m_process(m_options.sampleInterval, m_options.processReader)
{
    m_startMs = nowMs();
    m_sampleTimer.setInterval(m_options.sampleInterval);
    m_recordTimer.setInterval(m_options.recordInterval);
    connect(&m_sampleTimer, &QTimer::timeout, this, &HealthMonitor::sample);
    connect(&m_recordTimer, &QTimer::timeout, this, &HealthMonitor::writeRecord);
}

HealthMonitor::~HealthMonitor() = default;

void HealthMonitor::setProgramCounters(ProgramCounterSource source)
{
    m_programCounters = std::move(source);
}

void HealthMonitor::setOperatorMessages(const UserInfoCenter *center)
{
    m_operatorMessages = center;
}

void HealthMonitor::start()
{
    if (m_started)
        return;
    m_started = true;
    m_process.start();
    sample();
    m_sampleTimer.start();
    m_recordTimer.start();
}

qint64 HealthMonitor::nowMs() const
{
    return m_options.monotonicMs ? m_options.monotonicMs() : steadyMs();
}

void HealthMonitor::sample()
{
    const std::optional<ProgramFrameCounters> counters =
        m_programCounters ? m_programCounters() : std::nullopt;
    if (!counters) {
        m_samples.clear();
        return;
    }
    const Sample now{nowMs(), counters->renders, counters->presents};
    // Counters that went back belong to another picture: its history starts
    // again.
    if (!m_samples.empty()
        && (now.renders < m_samples.back().renders || now.presents < m_samples.back().presents
            || now.atMs < m_samples.back().atMs))
        m_samples.clear();
    m_samples.push_back(now);
    while (m_samples.size() > 2 && m_samples[1].atMs <= now.atMs - kRateWindowMs)
        m_samples.pop_front();
}

HealthFigures HealthMonitor::figures() const
{
    HealthFigures figures;
    figures.uptimeMs = nowMs() - m_startMs;
    if (m_samples.size() >= 2) {
        const Sample &oldest = m_samples.front();
        const Sample &newest = m_samples.back();
        const qint64 windowMs = newest.atMs - oldest.atMs;
        if (windowMs > 0) {
            figures.renders5s = perFiveSeconds(newest.renders - oldest.renders, windowMs);
            figures.presents5s = perFiveSeconds(newest.presents - oldest.presents, windowMs);
        }
    }
    if (const std::optional<ProgramFrameCounters> counters =
            m_programCounters ? m_programCounters() : std::nullopt) {
        figures.largestRenderGapMs = counters->largestRenderGapMs;
        figures.mailboxMisses = qint64(counters->mailboxMisses);
    }
    figures.retainedPipelines = retainedCountByOwner();
    figures.logRecordsDropped = logRecordsDropped();
    if (const std::optional<ProcessFigures> process = m_process.latest()) {
        figures.rssBytes = known(process->rssBytes);
        figures.openFds = known(process->openFds);
        figures.threads = known(process->threads);
    }
    figures.operatorWarnings = m_operatorMessages ? qint64(m_operatorMessages->warningsShown()) : 0;
    return figures;
}

QString HealthMonitor::json() const
{
    return healthJson(figures());
}

void HealthMonitor::writeRecord() const
{
    qCInfo(lcSystem).noquote() << QStringLiteral("HEALTH ") + json();
}

} // namespace tarnix
