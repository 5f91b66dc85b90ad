#include "syscall_filter.h"

#include <seccomp.h>

#include <cerrno>
#include <cstring>
#include <sched.h>

namespace pfl_helper {

bool installSyscallFilter(std::string *error)
{
    scmp_filter_ctx filter = seccomp_init(SCMP_ACT_ALLOW);
    if (!filter) {
        *error = "seccomp_init failed";
        return false;
    }
    int result = 0;
    auto deny = [&](int syscall, int answer) {
        if (result == 0)
            result = seccomp_rule_add(filter, SCMP_ACT_ERRNO(answer), syscall, 0);
    };
    deny(SCMP_SYS(execve), EPERM);
    deny(SCMP_SYS(execveat), EPERM);
    deny(SCMP_SYS(fork), EPERM);
    deny(SCMP_SYS(vfork), EPERM);
    deny(SCMP_SYS(clone3), ENOSYS);
    // clone without CLONE_THREAD makes a process.
    if (result == 0)
        result = seccomp_rule_add(filter, SCMP_ACT_ERRNO(EPERM), SCMP_SYS(clone), 1,
                                  SCMP_A0(SCMP_CMP_MASKED_EQ, CLONE_THREAD, 0));
    if (result == 0)
        result = seccomp_load(filter);
    seccomp_release(filter);
    if (result != 0) {
        *error = std::string("seccomp filter: ") + std::strerror(-result);
        return false;
    }
    return true;
}

} // namespace pfl_helper
