#include "shell/process_figures.h"

#include "shell/log_categories.h"

#include <QFile>

#include <atomic>
#include <condition_variable>
#include <cstdlib>
#include <cstring>
#include <mutex>
#include <system_error>
#include <thread>

#include <dirent.h>
#include <fcntl.h>
#include <unistd.h>

namespace tarnix {

namespace {

// The number after "<key>:" on a line of a status file, or -1.
qint64 statusValue(const char *text, const char *key)
{
    const std::size_t keyLength = std::strlen(key);
    for (const char *line = text; line && *line;) {
        if (std::strncmp(line, key, keyLength) == 0 && line[keyLength] == ':')
            return std::strtoll(line + keyLength + 1, nullptr, 10);
        line = std::strchr(line, '\n');
        if (line)
            ++line;
    }
    return -1;
}

void readStatus(const QByteArray &path, ProcessFigures *figures)
{
    const int fd = ::open(path.constData(), O_RDONLY | O_CLOEXEC);
    if (fd < 0)
        return;
    // A status file is about 1.5 KB; what is past the buffer is not needed.
    char text[8192];
    std::size_t length = 0;
    while (length < sizeof(text) - 1) {
        const ssize_t got = ::read(fd, text + length, sizeof(text) - 1 - length);
        if (got <= 0)
            break;
        length += std::size_t(got);
    }
    ::close(fd);
    text[length] = '\0';
    const qint64 rssKb = statusValue(text, "VmRSS");
    if (rssKb >= 0)
        figures->rssBytes = rssKb * 1024;
    figures->threads = statusValue(text, "Threads");
}

qint64 countDescriptors(const QByteArray &path)
{
    DIR *directory = ::opendir(path.constData());
    if (!directory)
        return -1;
    const int own = ::dirfd(directory);
    qint64 count = 0;
    while (const dirent *entry = ::readdir(directory)) {
        if (entry->d_name[0] == '.')
            continue;
        if (std::atoi(entry->d_name) != own)
            ++count;
    }
    ::closedir(directory);
    return count;
}

} // namespace

ProcessFigures readProcessFigures(const QString &procDirectory)
{
    ProcessFigures figures;
    const QByteArray root = QFile::encodeName(procDirectory);
    readStatus(root + "/status", &figures);
    figures.openFds = countDescriptors(root + "/fd");
    return figures;
}

struct ProcessFiguresSampler::Shared {
    std::chrono::milliseconds interval;
    Reader reader;

    std::mutex mutex;
    std::condition_variable wake;
    bool stop = false; // guarded by mutex

    std::atomic<qint64> rssBytes{-1};
    std::atomic<qint64> openFds{-1};
    std::atomic<qint64> threads{-1};
    std::atomic<quint64> readings{0};

    void run()
    {
        for (;;) {
            ProcessFigures figures;
            try {
                figures = reader ? reader() : readProcessFigures();
            } catch (...) {
                // A reading that failed leaves the figures unknown; nothing
                // leaves this thread.
            }
            rssBytes.store(figures.rssBytes, std::memory_order_relaxed);
            openFds.store(figures.openFds, std::memory_order_relaxed);
            threads.store(figures.threads, std::memory_order_relaxed);
            readings.fetch_add(1, std::memory_order_release);
            std::unique_lock lock(mutex);
            if (wake.wait_for(lock, interval, [this] { return stop; }))
                return;
        }
    }
};

ProcessFiguresSampler::ProcessFiguresSampler(std::chrono::milliseconds interval, Reader reader)
    : m_shared(std::make_shared<Shared>())
{
    m_shared->interval = interval;
    m_shared->reader = std::move(reader);
}

ProcessFiguresSampler::~ProcessFiguresSampler()
{
    {
        std::lock_guard lock(m_shared->mutex);
        m_shared->stop = true;
    }
    m_shared->wake.notify_all();
}

bool ProcessFiguresSampler::start()
{
    if (m_started)
        return false;
    m_started = true;
    try {
        std::thread([shared = m_shared] { shared->run(); }).detach();
    } catch (const std::system_error &failure) {
        qCWarning(lcSystem).noquote() << "Could not start the process figures reader:" << failure.what();
        return false;
    }
    return true;
}

std::optional<ProcessFigures> ProcessFiguresSampler::latest() const
{
    if (m_shared->readings.load(std::memory_order_acquire) == 0)
        return std::nullopt;
    ProcessFigures figures;
    figures.rssBytes = m_shared->rssBytes.load(std::memory_order_relaxed);
    figures.openFds = m_shared->openFds.load(std::memory_order_relaxed);
    figures.threads = m_shared->threads.load(std::memory_order_relaxed);
    return figures;
}

quint64 ProcessFiguresSampler::readings() const
{
    return m_shared->readings.load(std::memory_order_acquire);
}

} // namespace tarnix
