// Plain fields of C records that two threads touch. On the target these are the plain loads and stores that
// they look like; they only keep the compiler, and any other processor, from reordering or tearing them.
//
// A field must be aligned to its own size: a record says so for its 64-bit fields, whose type alone asks for
// 4 bytes on the target. That promise is what makes each of these one instruction, and not a call of a
// library with a lock.
#pragma once

namespace shared_word {

/// The field's type with the alignment that the record promises.
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

/// A value whose order against other memory does not matter (a position, a rate, a wish).
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

/// A flag or pointer behind which other memory changes hands: what was written before storeReleased is seen
/// after the loadAcquired that reads its value.
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
