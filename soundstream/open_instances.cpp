// Sequentially consistent throughout: whoever closes a place and then looks for seekers, and whoever seeks
// and then looks whether it is open, cannot both miss the other.
#include "soundstream/open_instances.h"

#include "soundstream/stream_state.h"

#include <cstdlib>

#include <sched.h>

namespace soundstream {

namespace {

OpenPlace* places = nullptr; // published; the list only grows

template <class T>
T load(const T& word)
{
    return __atomic_load_n(&word, __ATOMIC_SEQ_CST);
}

template <class T>
bool exchange(T& word, T expected, T wanted)
{
    return __atomic_compare_exchange_n(&word, &expected, wanted, false, __ATOMIC_SEQ_CST, __ATOMIC_SEQ_CST);
}

} // namespace

OpenPlace* openPlace(QTSoundStreamGlobals& globals)
{
    for (OpenPlace* free = load(places); free; free = free->next)
        if (exchange<QTSoundStreamGlobals*>(free->globals, nullptr, &globals)) return free;
    auto* const made = static_cast<OpenPlace*>(std::calloc(1, sizeof(OpenPlace)));
    if (!made) return nullptr;
    made->globals = &globals;
    do made->next = load(places);
    while (!exchange(places, made->next, made));
    return made;
}

QTSoundStreamGlobals* holdOpen(const void* storage)
{
    if (!storage) return nullptr;
    for (OpenPlace* place = load(places); place; place = place->next) {
        if (load(place->globals) != storage) continue;
        __atomic_add_fetch(&place->seekers, 1, __ATOMIC_SEQ_CST);
        QTSoundStreamGlobals* const found = load(place->globals);
        const bool isIt = found == storage;
        if (isIt) hold(*found);
        __atomic_sub_fetch(&place->seekers, 1, __ATOMIC_SEQ_CST);
        if (isIt) return found;
    }
    return nullptr;
}

bool isOpen(const QTSoundStreamGlobals& globals) { return load(globals.place->globals) == &globals; }

bool closePlace(QTSoundStreamGlobals& globals)
{
    OpenPlace& place = *globals.place;
    if (!exchange<QTSoundStreamGlobals*>(place.globals, &globals, nullptr)) return false;
    while (load(place.seekers) != 0) sched_yield(); // for the few instructions that a hold takes
    return true;
}

} // namespace soundstream
