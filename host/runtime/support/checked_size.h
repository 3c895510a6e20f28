// Sizes in memory that are computed from numbers of a file, a user or a plug-in.
#pragma once

#include <cstddef>
#include <new>

namespace host {

/// The product of all factors. Throws std::bad_alloc where it does not fit: so much memory does not exist.
template <class... Factors>
std::size_t checkedSize(Factors... factors)
{
    std::size_t product = 1;
    const bool isTooLarge = (__builtin_mul_overflow(product, factors, &product) || ...);
    if (isTooLarge) throw std::bad_alloc();
    return product;
}

} // namespace host
