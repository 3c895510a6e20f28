// A load from its first step to its last.
#include "auplayer/load_steps.h"

#include <algorithm>
#include <iterator>

namespace auplayer {

namespace load_steps {
namespace {

using Step = bool(Load&);

// clang-format off
Step* const inOrder[] = {
    // the file into memory
    openFile,
    readFileFormat,
    chooseFormats,
    readLength,
    setClientFormat,
    allocateSamples,
    describeData,
    readSamples,
    readDuration,
    // the graph around it
    makeGraph,
    addNodes,
    connectNodes,
    openGraph,
    fetchUnits,
    setMixer,
    bypassOtherRateUnit,
    giveCallback,
    setFormats,
    setSliceLimit,
    chooseBands,
    initializeGraph,
    setQuality,
};
// clang-format on

bool run(Load&& load)
{
    return std::all_of(std::begin(inOrder), std::end(inOrder), [&load](Step* step) { return step(load); });
}

} // namespace
} // namespace load_steps

void LoadFileInternal(const void* work)
{
    LoadRequest& request = *static_cast<LoadRequest*>(const_cast<void*>(work));
    const AUPlayerData& player = *request.player;
    if (!player.loadedAudio || !player.clientFormat || !player.outputFormat) {
        request.isOutOfMemory = true; // since the object was made
        return;
    }
    try {
        request.result = load_steps::run(load_steps::Load(request));
    } catch (...) { // the platform's; this thread has nobody else to catch it
        request.result = false;
    }
}

} // namespace auplayer
