// Plain fields of C records that two threads touch. On the target these are the plain loads and stores that
// they look like; they only keep the compiler, and any other processor, from reordering or tearing them.
//
// A field must be aligned to its own size: a record says so for its 64-bit fields, whose type alone asks for
// 4 bytes on the target. That promise is what makes each of these one instruction, and not a call of a
// library with a lock.
#pragma once

#define KVX_WHOLE(T) typedef T Whole __attribute__((aligned(sizeof(T))))

/// A value whose order against other memory does not matter (a position, a rate, a wish).
template <class T>
T loadRelaxed(const T& field)
{
    KVX_WHOLE(T);
    Whole value;
    __atomic_load(reinterpret_cast<const Whole*>(&field), &value, __ATOMIC_RELAXED);
    return value;
}

template <class T>
void storeRelaxed(T& field, T value)
{
    KVX_WHOLE(T);
    Whole whole = value;
    __atomic_store(reinterpret_cast<Whole*>(&field), &whole, __ATOMIC_RELAXED);
}

/// A flag or pointer behind which other memory changes hands: what was written before storeReleased is seen
/// after the loadAcquired that reads its value.
template <class T>
T loadAcquired(const T& field)
{
    KVX_WHOLE(T);
    Whole value;
    __atomic_load(reinterpret_cast<const Whole*>(&field), &value, __ATOMIC_ACQUIRE);
    return value;
}

template <class T>
void storeReleased(T& field, T value)
{
    KVX_WHOLE(T);
    Whole whole = value;
    __atomic_store(reinterpret_cast<Whole*>(&field), &whole, __ATOMIC_RELEASE);
}

#undef KVX_WHOLE
