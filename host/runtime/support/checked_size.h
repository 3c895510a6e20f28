// Overflow-checked memory sizes, for sizes computed from numbers in a file, of a user or of a plug-in.
#pragma once

#include <cstddef>
#include <new>

namespace host {

/// Multiply all factors. Throws std::bad_alloc if the product does not fit into std::size_t.
/// [any]
template <class... Factors>
std::size_t checkedSize(Factors... factors)
{
    std::size_t product = 1;
    const bool isTooLarge = (__builtin_mul_overflow(product, factors, &product) || ...);
    if (isTooLarge) throw std::bad_alloc();
    return product;
}

} // namespace host
