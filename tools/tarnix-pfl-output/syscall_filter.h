#pragma once

#include <string>

namespace pfl_helper {

// Forbids this process to run another program or to start another process;
// threads may still be made. glibc makes threads with clone3 when it can:
// clone3's flags sit behind a pointer a filter cannot read, so it answers
// ENOSYS and glibc falls back to clone, whose flags the filter does read.
// False with the reason when the filter could not be installed.
bool installSyscallFilter(std::string *error);

} // namespace pfl_helper
