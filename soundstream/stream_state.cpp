#include "soundstream/stream_state.h"

#include "plugin/release.h"

#include <cstdlib>

namespace soundstream {

LiveRecords<StreamState> liveStates;
LiveRecords<RefconRecord> liveRefcons;
LiveRecords<QTSoundStreamGlobals> liveInstances;

void destroy(StreamState* state) { std::free(state); }

void destroy(RefconRecord* record)
{
    leave(record->state);
    std::free(record);
}

void destroy(QTSoundStreamGlobals* globals)
{
    leave(globals->refcon);
    std::free(globals);
}

void closeMixer(QTSoundStreamGlobals& globals)
{
    const auto mixer = swapInOrder<ComponentInstance>(globals.mixer, nullptr);
    if (!mixer) return;
    endInput(globals);
    release(CloseMixerSoundComponent, mixer);
}

void endInput(QTSoundStreamGlobals& globals)
{
    storeRelaxed(globals.sourceData, SoundComponentDataPtr{nullptr});
    __atomic_add_fetch(&globals.inputsEnded, 1, __ATOMIC_RELAXED);
}

} // namespace soundstream
