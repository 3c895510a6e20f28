#include "tests/support/failing_memory.h"

#include <new>

// In front of the library's own.
void* operator new(std::size_t size)
{
    void* memory = support::mayAllocate() ? std::malloc(size ? size : 1) : nullptr;
    if (!memory) throw std::bad_alloc();
    return memory;
}
void* operator new(std::size_t size, const std::nothrow_t&) noexcept
{
    return support::mayAllocate() ? std::malloc(size ? size : 1) : nullptr;
}
void operator delete(void* memory) noexcept { std::free(memory); }
void operator delete(void* memory, std::size_t) noexcept { std::free(memory); }
