// A load under way, and its steps. Each returns whether the load goes on; a platform's refusal is kept in
// `Lasterror`. Thread: [load].
#pragma once

#include "auplayer/loading.h"
#include "auplayer/owned_platform_object.h"
#include "plugin/shared_word.h"
#include "plugin/zeroed.h"

#include <utility>

namespace auplayer::load_steps {

/// The units, in the order in which they become nodes.
enum UnitIndex { output, varispeed, timePitch, equalizer, mixer, converter, unitCount };

/// Its end, wherever that is, closes the file and frees samples that were not read.
struct Load {
    explicit Load(LoadRequest& r) : request(r), player(*r.player) {}
    ~Load() { closeFile(); }
    Load(const Load&) = delete;
    Load& operator=(const Load&) = delete;

    bool succeeded(OSStatus status) const { return keepStatus(player, status); }

    void closeFile()
    {
        if (file) giveBack(ExtAudioFileDispose, std::exchange(file, nullptr));
    }

    LoadRequest& request;
    AUPlayerData& player;
    ExtAudioFileRef file = nullptr;
    CAStreamBasicDescription fileFormat = {};
    UInt64 frames = 0;            ///< of the file, at its own rate
    Zeroed<float> samples;        ///< until they have been read
    AUNode nodes[unitCount] = {}; ///< by UnitIndex; until all are there
};

// The file into memory: file_steps.cpp.
bool openFile(Load& load);
bool readFileFormat(Load& load);
bool chooseFormats(Load& load);
bool readLength(Load& load);
bool setClientFormat(Load& load);
bool allocateSamples(Load& load);
bool describeData(Load& load);
bool readSamples(Load& load);
bool readDuration(Load& load);

// The graph around it: graph_steps.cpp.
bool makeGraph(Load& load);
bool addNodes(Load& load);
bool connectNodes(Load& load);
bool openGraph(Load& load);
bool fetchUnits(Load& load);
bool setMixer(Load& load);
bool bypassOtherRateUnit(Load& load);
bool giveCallback(Load& load);
bool setFormats(Load& load);
bool setSliceLimit(Load& load);
bool chooseBands(Load& load);
bool initializeGraph(Load& load);
bool setQuality(Load& load);

} // namespace auplayer::load_steps
