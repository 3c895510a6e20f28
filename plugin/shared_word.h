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

/// Two fields with a side each: one writes the first and then reads the second, the other writes the second
/// and then reads the first, and they must not both miss each other (whoever takes a pointer away and looks
/// who is using it; whoever says that he is using it and looks whether it is there). All four steps are in
/// order then: acquire and release do not keep a read behind a write.
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

/// What stood there.
template <class T>
T swapInOrder(T& field, T value)
{
    typename shared_word::Aligned<T>::Whole whole = value, before;
    __atomic_exchange(reinterpret_cast<typename shared_word::Aligned<T>::Whole*>(&field), &whole, &before,
                      __ATOMIC_SEQ_CST);
    return before;
}

/// Put `wanted` in the place of `expected`; false if something else stands there.
template <class T>
bool replaceInOrder(T& field, T expected, T wanted)
{
    typename shared_word::Aligned<T>::Whole before = expected, after = wanted;
    return __atomic_compare_exchange(reinterpret_cast<typename shared_word::Aligned<T>::Whole*>(&field),
                                     &before, &after, false, __ATOMIC_SEQ_CST, __ATOMIC_SEQ_CST);
}
