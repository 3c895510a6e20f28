// Atomic access to plain fields of C records that two threads share. On the target each function is one
// load, store or exchange instruction.
//
// A field must be aligned to its own size, or the compiler would call a library function that may lock. The
// record declares this alignment for 64-bit fields, whose type alone requires only 4 bytes on the target.
// All functions: [any].
#pragma once

namespace shared_word {

/// The field's type with the alignment that the record declares.
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

// Relaxed: for a value that does not order other memory, such as a position or a rate.

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

// Release and acquire: for a flag or pointer that publishes other memory. A thread that loads the stored
// value sees all earlier writes of the storing thread.

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

// Sequentially consistent: for two fields and two threads. Thread A clears a pointer, then reads the reader
// count; thread B raises the count, then reads the pointer. One of the two sees the other's write. Acquire
// and release are not enough: they let a read overtake an earlier write.

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

/// Store `value` and return the former value.
template <class T>
T swapInOrder(T& field, T value)
{
    typename shared_word::Aligned<T>::Whole whole = value, before;
    __atomic_exchange(reinterpret_cast<typename shared_word::Aligned<T>::Whole*>(&field), &whole, &before,
                      __ATOMIC_SEQ_CST);
    return before;
}

/// Store `value` if the field is `expected`. Returns false, with the field unchanged, if it is not.
template <class T>
bool replaceInOrder(T& field, T expected, T value)
{
    typename shared_word::Aligned<T>::Whole before = expected, after = value;
    return __atomic_compare_exchange(reinterpret_cast<typename shared_word::Aligned<T>::Whole*>(&field),
                                     &before, &after, false, __ATOMIC_SEQ_CST, __ATOMIC_SEQ_CST);
}
