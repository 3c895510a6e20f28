// Sequentially consistent throughout: whoever closes a place and then looks for seekers, and whoever seeks
// and then looks whether it is open, cannot both miss the other.
#include "soundstream/open_instances.h"

#include "plugin/shared_word.h"
#include "soundstream/stream_state.h"

#include <cstdlib>

#include <sched.h>

namespace soundstream {

namespace {

OpenPlace* places = nullptr; // published; the list only grows

} // namespace

OpenPlace* openPlace(QTSoundStreamGlobals& globals)
{
    for (OpenPlace* free = loadInOrder(places); free; free = free->next)
        if (replaceInOrder<QTSoundStreamGlobals*>(free->globals, nullptr, &globals)) return free;
    auto* const made = static_cast<OpenPlace*>(std::calloc(1, sizeof(OpenPlace)));
    if (!made) return nullptr;
    made->globals = &globals;
    do made->next = loadInOrder(places);
    while (!replaceInOrder(places, made->next, made));
    return made;
}

QTSoundStreamGlobals* holdOpen(const void* storage)
{
    if (!storage) return nullptr;
    for (OpenPlace* place = loadInOrder(places); place; place = place->next) {
        if (loadInOrder(place->globals) != storage) continue;
        __atomic_add_fetch(&place->seekers, 1, __ATOMIC_SEQ_CST);
        QTSoundStreamGlobals* const found = loadInOrder(place->globals);
        const bool isIt = found == storage;
        if (isIt) hold(*found);
        __atomic_sub_fetch(&place->seekers, 1, __ATOMIC_SEQ_CST);
        if (isIt) return found;
    }
    return nullptr;
}

bool isOpen(const QTSoundStreamGlobals& globals) { return loadInOrder(globals.place->globals) == &globals; }

bool closePlace(QTSoundStreamGlobals& globals)
{
    OpenPlace& place = *globals.place;
    if (!replaceInOrder<QTSoundStreamGlobals*>(place.globals, &globals, nullptr)) return false;
    while (loadInOrder(place.seekers) != 0) sched_yield(); // for the few instructions that a hold takes
    return true;
}

} // namespace soundstream
