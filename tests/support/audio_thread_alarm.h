// Rings when memory or a lock is asked for where neither may be: in the platform, in the libraries below it,
// anywhere in the program. The program exports this file's functions, which so stand in front of the C
// library's; under a sanitizer, which owns the allocator, they are hooked instead and locks are not watched.
#pragma once

namespace alarm_ {

/// While `isOn`, the calling thread is one that may not.
void forbid(bool isOn);

int allocations(); // and releases, on forbidden threads
int locks();
bool watchesLocks();

} // namespace alarm_
