// Atomic access to plain fields of C structures that two threads share. On the target processor, each
// function is one load, store or exchange instruction.
//
// A field must be aligned to its own size because the compiler would otherwise call a library function that
// may lock. A structure must align its 64-bit fields explicitly, because their type alone is aligned to only
// 4 bytes on the target processor.
// All functions: [any].
#pragma once

namespace shared_word {

/// The field's type with an alignment equal to its size, which the structure must declare.
template <class T>
struct Aligned {
    typedef T Whole __attribute__((aligned(sizeof(T))));
};

template <int order, class T>
T load(const T& field)
{
    typename Aligned<T>::Whole value;
    __atomic_load(reinterpret_cast<const typename Aligned<T>::Whole*>(&field), &value, order);
    return value;
}

template <int order, class T>
void store(T& field, T value)
{
    typename Aligned<T>::Whole whole = value;
    __atomic_store(reinterpret_cast<typename Aligned<T>::Whole*>(&field), &whole, order);
}

} // namespace shared_word

// Relaxed memory order, for a value that does not order other memory accesses, such as a position or a rate.

template <class T>
T loadRelaxed(const T& field)
{
    return shared_word::load<__ATOMIC_RELAXED>(field);
}

template <class T>
void storeRelaxed(T& field, T value)
{
    shared_word::store<__ATOMIC_RELAXED>(field, value);
}

// Release and acquire memory order, for a flag or pointer that publishes other memory. A thread that loads
// the stored value sees all earlier writes of the storing thread.

template <class T>
T loadAcquired(const T& field)
{
    return shared_word::load<__ATOMIC_ACQUIRE>(field);
}

template <class T>
void storeReleased(T& field, T value)
{
    shared_word::store<__ATOMIC_RELEASE>(field, value);
}

// Sequentially consistent memory order, for two fields and two threads. Example: thread A clears a pointer,
// then reads the reader count; thread B raises the count, then reads the pointer. One of the two threads sees
// the other's write. Acquire and release order is not enough because it lets a read overtake an earlier
// write.

template <class T>
T loadInOrder(const T& field)
{
    return shared_word::load<__ATOMIC_SEQ_CST>(field);
}

template <class T>
void storeInOrder(T& field, T value)
{
    shared_word::store<__ATOMIC_SEQ_CST>(field, value);
}

/// Store `value` and return the field's former value.
template <class T>
T swapInOrder(T& field, T value)
{
    typename shared_word::Aligned<T>::Whole whole = value, before;
    __atomic_exchange(reinterpret_cast<typename shared_word::Aligned<T>::Whole*>(&field), &whole, &before,
                      __ATOMIC_SEQ_CST);
    return before;
}

/// If the field equals `expected`, store `value` and return true. Otherwise leave the field unchanged and
/// return false.
template <class T>
bool replaceInOrder(T& field, T expected, T value)
{
    typename shared_word::Aligned<T>::Whole before = expected, after = value;
    return __atomic_compare_exchange(reinterpret_cast<typename shared_word::Aligned<T>::Whole*>(&field),
                                     &before, &after, false, __ATOMIC_SEQ_CST, __ATOMIC_SEQ_CST);
}
