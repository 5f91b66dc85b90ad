#include "audio/edit_pfl_feed.h"

#include <QDir>
#include <QUuid>

#include <algorithm>
#include <cstring>
#include <ctime>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/mman.h>
#include <unistd.h>

namespace tarnix {

namespace {

// Where Linux keeps POSIX shared memory names as files.
constexpr char kShmDirectory[] = "/dev/shm";

QString failure(const char *step)
{
    return QStringLiteral("%1 failed: %2").arg(QLatin1String(step), QString::fromLocal8Bit(std::strerror(errno)));
}

} // namespace

std::uint64_t monotonicNowNs()
{
    timespec now{};
    clock_gettime(CLOCK_MONOTONIC, &now);
    return std::uint64_t(now.tv_sec) * 1'000'000'000ull + std::uint64_t(now.tv_nsec);
}

std::shared_ptr<EditPflFeed> EditPflFeed::create(QString *error)
{
    std::shared_ptr<EditPflFeed> feed(new EditPflFeed);
    const QString name = QLatin1Char('/') + QLatin1String(pfl::kNamePrefix)
                         + QUuid::createUuid().toString(QUuid::WithoutBraces);
    const QByteArray encoded = name.toLatin1();
    const int fd = shm_open(encoded.constData(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, 0600);
    if (fd < 0) {
        if (error)
            *error = failure("shm_open");
        return feed;
    }
    auto undo = [&](const char *step) {
        if (error)
            *error = failure(step);
        ::close(fd);
        shm_unlink(encoded.constData());
        return feed;
    };
    if (flock(fd, LOCK_SH | LOCK_NB) != 0)
        return undo("flock");
    if (ftruncate(fd, off_t(pfl::kMappingBytes)) != 0)
        return undo("ftruncate");
    void *view = mmap(nullptr, pfl::kMappingBytes, PROT_READ | PROT_WRITE, MAP_SHARED, fd, 0);
    if (view == MAP_FAILED)
        return undo("mmap");
    feed->m_name = name;
    feed->m_fd = fd;
    feed->m_shared = static_cast<pfl::Shared *>(view);
    // A fresh object reads zero; only the version and generation start set.
    pfl::store(feed->m_shared->header.generation, 1u);
    pfl::store(feed->m_shared->header.version, pfl::kVersion);
    return feed;
}

EditPflFeed::~EditPflFeed()
{
    if (m_shared)
        munmap(m_shared, pfl::kMappingBytes);
    if (m_fd >= 0)
        ::close(m_fd);
    if (!m_name.isEmpty())
        shm_unlink(m_name.toLatin1().constData());
}

int EditPflFeed::sweepStaleNames()
{
    int removed = 0;
    const QDir directory(QString::fromLatin1(kShmDirectory));
    const QStringList names =
        directory.entryList({QLatin1String(pfl::kNamePrefix) + QLatin1Char('*')}, QDir::Files | QDir::System);
    for (const QString &entry : names) {
        const QByteArray name = QByteArray("/") + entry.toLatin1();
        const int fd = shm_open(name.constData(), O_RDWR | O_CLOEXEC, 0600);
        if (fd < 0)
            continue;
        // An owner holds a shared lock for as long as it lives.
        if (flock(fd, LOCK_EX | LOCK_NB) == 0 && shm_unlink(name.constData()) == 0)
            ++removed;
        ::close(fd);
    }
    return removed;
}

std::uint32_t EditPflFeed::generation() const
{
    return m_shared ? pfl::load(m_shared->header.generation) : 0;
}

void EditPflFeed::bumpGeneration()
{
    if (m_shared)
        pfl::field(m_shared->header.generation).fetch_add(1);
}

void EditPflFeed::setSourceActive(bool active)
{
    if (!m_shared)
        return;
    if (pfl::field(m_shared->header.sourceActive).exchange(active ? 1u : 0u) != (active ? 1u : 0u))
        bumpGeneration();
}

bool EditPflFeed::sourceActive() const
{
    return m_shared && pfl::load(m_shared->header.sourceActive) == 1;
}

void EditPflFeed::setAudible(bool audible)
{
    if (m_shared)
        pfl::store(m_shared->header.audible, audible ? 1u : 0u);
}

bool EditPflFeed::audible() const
{
    return m_shared && pfl::load(m_shared->header.audible) == 1;
}

void EditPflFeed::prepareStart()
{
    if (!m_shared)
        return;
    pfl::Header &header = m_shared->header;
    pfl::store(header.readIndex, pfl::load(header.writeIndex));
    pfl::store(header.stopRequested, 0u);
    pfl::store(header.audible, 0u);
    pfl::store(header.state, std::uint32_t(pfl::StateOpening));
    pfl::store(header.hresult, 0u);
    pfl::store(header.heartbeatNs, std::uint64_t(0));
    bumpGeneration();
}

void EditPflFeed::requestStop()
{
    if (!m_shared)
        return;
    pfl::store(m_shared->header.audible, 0u);
    pfl::store(m_shared->header.stopRequested, 1u);
    bumpGeneration();
}

std::uint32_t EditPflFeed::helperState() const { return m_shared ? pfl::load(m_shared->header.state) : 0; }
std::uint32_t EditPflFeed::helperResult() const { return m_shared ? pfl::load(m_shared->header.hresult) : 0; }
std::uint64_t EditPflFeed::heartbeatNs() const { return m_shared ? pfl::load(m_shared->header.heartbeatNs) : 0; }
std::uint32_t EditPflFeed::droppedBlocks() const { return m_shared ? pfl::load(m_shared->header.droppedBlocks) : 0; }
std::uint32_t EditPflFeed::writeIndex() const { return m_shared ? pfl::load(m_shared->header.writeIndex) : 0; }
std::uint32_t EditPflFeed::readIndex() const { return m_shared ? pfl::load(m_shared->header.readIndex) : 0; }

int EditPflFeed::writeBuffer(const float *interleaved, std::uint32_t frames, std::uint64_t firstFrameNs,
                             std::uint32_t generation)
{
    if (!m_shared || !interleaved)
        return 0;
    pfl::Header &header = m_shared->header;
    int written = 0;
    for (std::uint32_t offset = 0; offset < frames;) {
        const std::uint32_t writeIndex = pfl::load(header.writeIndex);
        if (writeIndex - pfl::load(header.readIndex) >= pfl::kSlots) {
            pfl::field(header.droppedBlocks).fetch_add(1);
            break;
        }
        const std::uint32_t count = std::min(pfl::kFramesPerBlock, frames - offset);
        pfl::Block &block = m_shared->ring[writeIndex & (pfl::kSlots - 1)];
        block.generation = generation;
        block.frameCount = count;
        block.presentationNs = firstFrameNs + std::uint64_t(offset) * 1'000'000'000ull / pfl::kSampleRate;
        std::memcpy(block.pcm, interleaved + std::size_t(offset) * pfl::kChannels,
                    std::size_t(count) * pfl::kChannels * sizeof(float));
        // The block is whole before the index hands it over.
        pfl::store(header.writeIndex, writeIndex + 1);
        offset += count;
        ++written;
    }
    return written;
}

} // namespace tarnix
