// tarnix-pfl-output: the EDIT PFL player.
//
//   tarnix-pfl-output --list                 prints the PulseAudio sinks as
//       {"devices":[{"id":…,"name":…}],"default":…} and exits 0
//   tarnix-pfl-output <map> <device> <pid>   plays the shared ring <map> on
//       the sink <device> (matched without regard to case;
//       "@system-default": the server's default sink) for the
//       application with process id <pid>
//
// Before it talks to anything it forbids itself to run programs or start
// processes. Failures go to the ring's state and result fields and to
// standard error.

#include "audio/pfl_ring_layout.h"
#include "pulse_connection.h"
#include "ring_player.h"
#include "syscall_filter.h"

#include <algorithm>
#include <cctype>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

namespace pfl = tarnix::pfl;
using namespace pfl_helper;

#ifdef TARNIX_PFL_HELPER_FAULTS
// The fault tests' build: misbehaviour chosen by the environment, once the
// helper has locked itself down and once it plays.
namespace pfl_helper::faults {
void afterFilter();
void whilePlaying();
} // namespace pfl_helper::faults
#define PFL_HELPER_FAULT(point) pfl_helper::faults::point()
#else
#define PFL_HELPER_FAULT(point) ((void)0)
#endif

namespace {

constexpr int kServerTimeoutMs = 3000;
// The device id that stands for whatever the server's default sink is.
constexpr char kSystemDefault[] = "@system-default";

std::string jsonString(const std::string &text)
{
    std::string out = "\"";
    for (const unsigned char c : text) {
        switch (c) {
        case '"': out += "\\\""; break;
        case '\\': out += "\\\\"; break;
        case '\n': out += "\\n"; break;
        case '\r': out += "\\r"; break;
        case '\t': out += "\\t"; break;
        default:
            if (c < 0x20) {
                char escaped[8];
                std::snprintf(escaped, sizeof escaped, "\\u%04x", c);
                out += escaped;
            } else {
                out += char(c);
            }
        }
    }
    return out + "\"";
}

bool sameId(const std::string &a, const std::string &b)
{
    return a.size() == b.size()
           && std::equal(a.begin(), a.end(), b.begin(), [](unsigned char x, unsigned char y) {
                  return std::tolower(x) == std::tolower(y);
              });
}

int list()
{
    std::string error;
    if (!installSyscallFilter(&error)) {
        std::fprintf(stderr, "%s\n", error.c_str());
        return 2;
    }
    PFL_HELPER_FAULT(afterFilter);
    PulseConnection pulse;
    std::vector<Sink> sinks;
    std::string defaultSink;
    if (!pulse.connect(kServerTimeoutMs, &error) || !pulse.listSinks(&sinks, &defaultSink, kServerTimeoutMs, &error)) {
        std::fprintf(stderr, "%s\n", error.c_str());
        return 1;
    }
    std::string out = "{\"devices\":[";
    for (std::size_t i = 0; i < sinks.size(); ++i) {
        if (i)
            out += ',';
        out += "{\"id\":" + jsonString(sinks[i].name) + ",\"name\":" + jsonString(sinks[i].description) + '}';
    }
    out += "],\"default\":" + jsonString(defaultSink) + "}\n";
    std::fputs(out.c_str(), stdout);
    return 0;
}

pfl::Shared *mapRing(const char *name)
{
    const int fd = shm_open(name, O_RDWR | O_CLOEXEC, 0);
    if (fd < 0)
        return nullptr;
    void *view = mmap(nullptr, pfl::kMappingBytes, PROT_READ | PROT_WRITE, MAP_SHARED, fd, 0);
    ::close(fd);
    if (view == MAP_FAILED)
        return nullptr;
    auto *shared = static_cast<pfl::Shared *>(view);
    if (pfl::load(shared->header.version) != pfl::kVersion) {
        munmap(view, pfl::kMappingBytes);
        return nullptr;
    }
    return shared;
}

int fail(pfl::Shared *shared, FailureCode code, const std::string &why)
{
    std::fprintf(stderr, "%s\n", why.c_str());
    pfl::store(shared->header.hresult, std::uint32_t(code));
    pfl::store(shared->header.state, std::uint32_t(pfl::StateFailed));
    return 1;
}

int play(const char *mapName, const std::string &device, int parentPid)
{
    pfl::Shared *shared = mapRing(mapName);
    if (!shared) {
        std::fprintf(stderr, "cannot map %s\n", mapName);
        return 1;
    }
    std::string error;
    if (!installSyscallFilter(&error))
        return fail(shared, FailureFilter, error);
    PulseConnection pulse;
    if (!pulse.connect(kServerTimeoutMs, &error))
        return fail(shared, FailureServer, error);
    std::vector<Sink> sinks;
    std::string defaultSink;
    if (!pulse.listSinks(&sinks, &defaultSink, kServerTimeoutMs, &error))
        return fail(shared, FailureServer, error);
    const std::string wanted = device == kSystemDefault ? defaultSink : device;
    const auto sink = std::find_if(sinks.begin(), sinks.end(), [&](const Sink &s) { return sameId(s.name, wanted); });
    if (sink == sinks.end())
        return fail(shared, FailureDevice, "no sink " + device);
    if (!pulse.openStream(sink->name, kServerTimeoutMs, &error))
        return fail(shared, FailureStream, error);
    std::printf("playing on %s\n", sink->name.c_str());
    std::fflush(stdout);
    PFL_HELPER_FAULT(whilePlaying);
    return RingPlayer(shared, &pulse, parentPid).run();
}

} // namespace

int main(int argc, char **argv)
{
    if (argc == 2 && std::string(argv[1]) == "--list")
        return list();
    if (argc != 4) {
        std::fprintf(stderr, "usage: tarnix-pfl-output --list | <map> <device> <pid>\n");
        return 2;
    }
    char *end = nullptr;
    const long pid = std::strtol(argv[3], &end, 10);
    if (!end || *end || pid <= 1) {
        std::fprintf(stderr, "bad process id %s\n", argv[3]);
        return 2;
    }
    return play(argv[1], argv[2], int(pid));
}
