// Plain fields of C records that two threads touch. On the target these are the plain loads and stores that
// they look like; they only keep the compiler, and any other processor, from reordering or tearing them.
#pragma once

/// A value whose order against other memory does not matter (a position, a rate, a wish).
template <class T>
T loadRelaxed(const T& field)
{
    T value;
    __atomic_load(&field, &value, __ATOMIC_RELAXED);
    return value;
}

template <class T>
void storeRelaxed(T& field, T value)
{
    __atomic_store(&field, &value, __ATOMIC_RELAXED);
}

/// A flag or pointer behind which other memory changes hands: what was written before storeReleased is seen
/// after the loadAcquired that reads its value.
template <class T>
T loadAcquired(const T& field)
{
    T value;
    __atomic_load(&field, &value, __ATOMIC_ACQUIRE);
    return value;
}

template <class T>
void storeReleased(T& field, T value)
{
    __atomic_store(&field, &value, __ATOMIC_RELEASE);
}
