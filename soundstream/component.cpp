// The component's life: made, registered, taken back.
#include "plugin/classes.h"
#include "plugin/shared_word.h"
#include "soundstream/sound_stream.h"

#include <memory>

namespace soundstream {

namespace {

constexpr double sampleRate = 44100;

// What the unit takes: 32-bit float, the channels apart.
constexpr AudioStreamBasicDescription unitFormat = {sampleRate,
                                                    kAudioFormatLinearPCM,
                                                    kAudioFormatFlagIsFloat | kAudioFormatFlagIsPacked |
                                                        kAudioFormatFlagIsNonInterleaved,
                                                    4,
                                                    1,
                                                    4,
                                                    2,
                                                    32,
                                                    0};

// What the mixer's samples are taken for: big-endian, although the mixer is asked for little-endian ones.
// Programs have come to rely on the pair.
constexpr AudioStreamBasicDescription mixerFormat = {
    sampleRate,
    kAudioFormatLinearPCM,
    kAudioFormatFlagIsBigEndian | kAudioFormatFlagIsSignedInteger | kAudioFormatFlagIsPacked,
    4,
    1,
    4,
    2,
    16,
    0};

constexpr UInt32 componentFlags = 0xC0C; // 16 bits and stereo, in and out

/// A step of an end: what the platform throws keeps nothing from ending.
template <class Step>
void attempt(Step step)
{
    try {
        step();
    } catch (...) {
    }
}

struct DisposeName {
    void operator()(Ptr* name) const
    {
        attempt([name] { DisposeHandle(name); });
    }
};

Component registerComponent()
{
    ComponentDescription description = {kSoundOutputDeviceType, 'QTso', 'QTso', componentFlags, 0};
    Str255 text;
    CopyCStringToPascal("QTSoundStream", text);
    const std::unique_ptr<Ptr, DisposeName> name(reinterpret_cast<Handle>(NewString(text)));
    const auto entry = reinterpret_cast<ComponentRoutineProcPtr>(soundComponentEntry);
    return RegisterComponent(&description, NewComponentRoutineUPP(entry), 0, name.get(), nullptr, nullptr);
}

/// The render thread finds the record no more, and then it goes.
void dropRefconRecord(StreamState& state) { retire(swapInOrder<RefconRecord*>(state.refconRecord, nullptr)); }

} // namespace

void construct(REALobjectStruct* object) { dataOf(object) = {}; }

void destruct(REALobjectStruct* object)
{
    SoundStreamData& data = dataOf(object);
    CloseComponent(object);
    if (data.state && data.ownsState) {
        dropRefconRecord(*data.state); // of a registration that failed
        drop(data.state);
    }
    data.ownsState = false;
    data.state = nullptr;
}

void InitComponent(REALobjectStruct* object)
{
    SoundStreamData& data = dataOf(object);
    destruct(object);
    data.state = newStreamState();
    if (!data.state) return;
    data.state->outputFormat = unitFormat;
    data.ownsState = true;
}

void OpenComponent(REALobjectStruct* object)
{
    StreamState* const state = dataOf(object).state;
    if (!state || state->component) return;
    state->component = registerComponent();

    dropRefconRecord(*state); // of a registration that failed
    RefconRecord* const record = newRefconRecord(*state);
    storeInOrder(state->refconRecord, record);
    SetComponentRefcon(state->component, reinterpret_cast<long>(record));

    if (state->converter) return;
    AudioConverterRef converter = nullptr;
    if (AudioConverterNew(&mixerFormat, &state->outputFormat, &converter) == noErr)
        storeReleased(state->converter, converter);
}

void CloseComponent(REALobjectStruct* object)
{
    SoundStreamData& data = dataOf(object);
    if (data.attachedUnit) attempt([&] { AudioOutputUnitStop(data.attachedUnit); });
    data.attachedUnit = nullptr;
    if (!data.state || !data.state->component) return;
    StreamState& state = *data.state;
    attempt([&] { CountComponentInstances(state.component); }); // whoever has one open keeps it
    dropRefconRecord(state);
    attempt([&] { UnregisterComponent(state.component); });
    state.component = nullptr;
}

} // namespace soundstream
