#include "video/program_presenter.h"

#include "shell/log_categories.h"

#include <QElapsedTimer>

#include <algorithm>

namespace tarnix {
namespace {

// Time spent in each step of a presenter round, averaged and maximised over
// one PROGRAM_PRESENT_TIMING interval.
struct StepTimes {
    double total = 0.0;
    double maximum = 0.0;
    void add(double ms)
    {
        total += ms;
        maximum = std::max(maximum, ms);
    }
};

QString yesNo(bool value)
{
    return value ? QStringLiteral("true") : QStringLiteral("false");
}

QString sizeText(QSize size)
{
    if (size.isEmpty())
        return QStringLiteral("none");
    return QStringLiteral("%1x%2").arg(size.width()).arg(size.height());
}

} // namespace

ProgramPresenter::ProgramPresenter(int width, int height,
                                   std::unique_ptr<ProgramPresentOutput> output,
                                   std::chrono::milliseconds timingInterval,
                                   std::chrono::milliseconds repaintInterval)
    : m_width(width)
    , m_height(height)
    , m_timingInterval(timingInterval)
    , m_repaintInterval(repaintInterval)
    , m_output(std::move(output))
    , m_sinkName(m_output ? m_output->sinkName() : QString())
{
}

ProgramPresenter::~ProgramPresenter()
{
    stop();
}

bool ProgramPresenter::start()
{
    if (m_thread.joinable() || !m_output)
        return false;
    m_thread = std::thread([this] { run(); });
    return true;
}

QString ProgramPresenter::failureText() const
{
    std::lock_guard lock(m_mutex);
    return m_failure;
}

bool ProgramPresenter::publish(GstBuffer *frame, qint64 pts, quint64 picture)
{
    if (m_failed.load())
        return false;
    m_mailbox.publish(frame, pts, picture);
    return true;
}

void ProgramPresenter::requestRepaint()
{
    m_repaint.store(true);
    m_mailbox.wake();
}

void ProgramPresenter::setWindowState(const ProgramWindowState &state)
{
    std::lock_guard lock(m_mutex);
    m_window = state;
}

void ProgramPresenter::stop()
{
    m_stop.store(true);
    m_mailbox.wake();
    if (m_thread.joinable())
        m_thread.join();
}

void ProgramPresenter::fail(const QString &text)
{
    {
        std::lock_guard lock(m_mutex);
        if (m_failure.isEmpty())
            m_failure = text;
    }
    qCWarning(lcVideo()).noquote() << text;
    m_failed.store(true);
}

void ProgramPresenter::run()
{
    QString error;
    if (!m_output->open(&error)) {
        fail(error);
        m_output->close();
        return;
    }
    ProgramWindowState window;
    {
        std::lock_guard lock(m_mutex);
        window = m_window;
    }
    const QSize frameSize(m_width, m_height);
    auto scalingOf = [&](const ProgramWindowState &state) {
        return !state.size.isEmpty() && state.size != frameSize;
    };
    qCInfo(lcVideo()).noquote()
        << QStringLiteral("PROGRAM_PRESENT_CONFIG sink=%1 frame=%2 window=%3 scaling=%4 display=%5 "
                          "refresh=%6 exposed=%7 mailbox=%8")
               .arg(m_sinkName, sizeText(frameSize), sizeText(window.size), yesNo(scalingOf(window)),
                    window.display, QString::number(window.refreshHz, 'f', 3), yesNo(window.exposed))
               .arg(ProgramPresentMailbox::kEntries);
    m_ready.store(true);

    // The frame shown last, referenced until a newer one replaces it, and
    // what the window showed when it was last drawn into.
    GstBuffer *latest = nullptr;
    quint64 latestPicture = 0;
    quint64 drawnPicture = 0;
    QSize drawnWindow;
    bool drawnExposed = false;
    QElapsedTimer sinceDraw;
    qint64 lastShownPts = -1;
    QElapsedTimer interval;
    interval.start();
    QElapsedTimer step;
    quint64 loops = 0, misses = 0, occluded = 0, presents = 0;
    const quint64 publishedAtStart = m_mailbox.published();
    quint64 publishedBefore = publishedAtStart;
    StepTimes waitTimes, consumeTimes, presentTimes;

    while (!m_stop.load()) {
        if (loops > 0 && interval.elapsed() >= m_timingInterval.count()) {
            const double seconds = interval.nsecsElapsed() / 1e9;
            const quint64 published = m_mailbox.published();
            const double n = double(std::max<quint64>(loops, 1));
            qCInfo(lcVideo()).noquote()
                << QStringLiteral("PROGRAM_PRESENT_TIMING interval=%1 published=%2 loops=%3 "
                                  "presents=%4 mailboxMisses=%5 occluded=%6 "
                                  "avgMs(wait/consume/present)=%7/%8/%9 maxMs=%10/%11/%12 "
                                  "sink=%13 window=%14 scaling=%15 display=%16 refresh=%17 exposed=%18")
                       .arg(seconds, 0, 'f', 3)
                       .arg((published - publishedBefore) / seconds, 0, 'f', 1)
                       .arg(loops)
                       .arg(presents)
                       .arg(misses)
                       .arg(occluded)
                       .arg(waitTimes.total / n, 0, 'f', 2)
                       .arg(consumeTimes.total / n, 0, 'f', 2)
                       .arg(presentTimes.total / n, 0, 'f', 2)
                       .arg(waitTimes.maximum, 0, 'f', 2)
                       .arg(consumeTimes.maximum, 0, 'f', 2)
                       .arg(presentTimes.maximum, 0, 'f', 2)
                       .arg(m_sinkName, sizeText(window.size), yesNo(scalingOf(window)), window.display,
                            QString::number(window.refreshHz, 'f', 3), yesNo(window.exposed));
            publishedBefore = published;
            loops = misses = occluded = presents = 0;
            waitTimes = consumeTimes = presentTimes = StepTimes();
            interval.restart();
        }

        step.start();
        m_mailbox.waitForSignal();
        if (m_stop.load())
            break;
        waitTimes.add(step.nsecsElapsed() / 1e6);
        ++loops;

        step.start();
        ProgramPresentMailbox::Frame taken;
        const bool newer = m_mailbox.take(m_lastSequence.load(), &taken);
        const bool repaintAsked = m_repaint.exchange(false);
        if (newer) {
            if (latest)
                gst_buffer_unref(latest);
            latest = taken.buffer;
            latestPicture = taken.picture;
        }
        consumeTimes.add(step.nsecsElapsed() / 1e6);
        if (!newer && (!repaintAsked || !latest)) {
            ++misses;
            continue;
        }

        {
            std::lock_guard lock(m_mutex);
            window = m_window;
        }
        step.start();
        const bool windowShowsIt = latestPicture != 0 && latestPicture == drawnPicture
                                   && window.size == drawnWindow && (drawnExposed || !window.exposed)
                                   && sinceDraw.isValid() && sinceDraw.elapsed() < m_repaintInterval.count();
        if (repaintAsked || !windowShowsIt) {
            GstMapInfo map{};
            const bool mapped = gst_buffer_map(latest, &map, GST_MAP_READ);
            if (!mapped || map.size < std::size_t(m_width) * m_height * 4) {
                if (mapped)
                    gst_buffer_unmap(latest, &map);
                fail(QStringLiteral("Program presenter received an unreadable frame"));
                break;
            }
            const bool shown = m_output->present(map.data, m_width, m_height, window.size, &error);
            gst_buffer_unmap(latest, &map);
            if (!shown) {
                fail(error);
                break;
            }
            drawnPicture = latestPicture;
            drawnWindow = window.size;
            drawnExposed = window.exposed;
            sinceDraw.start();
            m_draws.fetch_add(1);
        }
        presentTimes.add(step.nsecsElapsed() / 1e6);
        ++presents;
        if (!window.exposed) {
            ++occluded;
            drawnExposed = false; // what was drawn may be gone when it shows again
        }
        m_presents.fetch_add(1);
        if (!newer)
            continue; // a repaint of the frame already counted
        if (taken.pts >= 0 && taken.pts != lastShownPts)
            m_fresh.fetch_add(1);
        lastShownPts = taken.pts;
        m_lastPts.store(taken.pts);
        m_lastSequence.store(taken.sequence);
    }
    if (latest)
        gst_buffer_unref(latest);
    m_output->close();
}

} // namespace tarnix
