// Misbehaviour for the fault tests' build of the PFL helper. The file named
// by TARNIX_PFL_HELPER_FAULT_FILE holds the fault for the next start (the
// application's environment is fixed for its run, the file is not):
//   spawn    once locked down, try to start a process every way the C
//            library offers and a thread; exit 0 when every process was
//            refused and the thread ran, 1 otherwise
//   greedy   while playing, allocate and touch memory without bound
//   garbage  once locked down, print what is not a device list, exit 0
// Anything else, or no file: behave.

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <string>
#include <thread>

#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

extern char **environ;

namespace pfl_helper::faults {

namespace {

std::string chosenFault()
{
    const char *path = std::getenv("TARNIX_PFL_HELPER_FAULT_FILE");
    if (!path)
        return {};
    std::ifstream file(path);
    std::string fault;
    file >> fault;
    return fault;
}

// True when the attempt made a process (which is reaped at once).
bool forked()
{
    const pid_t child = fork();
    if (child == 0)
        _exit(0);
    if (child < 0) {
        std::printf("fork refused: %s\n", std::strerror(errno));
        return false;
    }
    waitpid(child, nullptr, 0);
    std::printf("fork made process %d\n", int(child));
    return true;
}

bool spawned()
{
    pid_t child = 0;
    char program[] = "/bin/true";
    char *arguments[] = {program, nullptr};
    const int result = posix_spawn(&child, program, nullptr, nullptr, arguments, environ);
    if (result != 0) {
        std::printf("posix_spawn refused: %s\n", std::strerror(result));
        return false;
    }
    waitpid(child, nullptr, 0);
    std::printf("posix_spawn made process %d\n", int(child));
    return true;
}

bool executed()
{
    char program[] = "/bin/true";
    char *arguments[] = {program, nullptr};
    execve(program, arguments, environ);
    std::printf("execve refused: %s\n", std::strerror(errno));
    return false;
}

} // namespace

void afterFilter()
{
    const std::string fault = chosenFault();
    if (fault == "garbage") {
        std::printf("{\"devices\": oops\n\x01\xff\n");
        std::fflush(stdout);
        std::exit(0);
    }
    if (fault != "spawn")
        return;
    const bool madeProcess = forked() | spawned() | executed();
    bool threadRan = false;
    std::thread([&threadRan] { threadRan = true; }).join();
    std::printf("thread %s\n", threadRan ? "ran" : "did not run");
    std::fflush(stdout);
    std::exit(!madeProcess && threadRan ? 0 : 1);
}

void whilePlaying()
{
    if (chosenFault() != "greedy")
        return;
    std::thread([] {
        for (;;) {
            auto *block = new char[1 << 20];
            std::memset(block, 1, 1 << 20);
        }
    }).detach();
}

} // namespace pfl_helper::faults
