// The host object's methods that create its state and register and unregister its component.
#include "plugin/classes.h"
#include "plugin/release.h"
#include "soundstream/render_scope.h"
#include "soundstream/sound_stream.h"

#include <memory>

namespace soundstream {

namespace {

constexpr double sampleRate = 44100;

// clang-format off
constexpr AudioStreamBasicDescription converterOutput = {
    sampleRate, kAudioFormatLinearPCM,
    kAudioFormatFlagIsFloat | kAudioFormatFlagIsPacked | kAudioFormatFlagIsNonInterleaved,
    4, 1, 4, 2, 32, 0};

// The converter reads big-endian samples although the mixer delivers little-endian ones, because existing
// programs rely on this mismatch.
constexpr AudioStreamBasicDescription converterInput = {
    sampleRate, kAudioFormatLinearPCM,
    kAudioFormatFlagIsBigEndian | kAudioFormatFlagIsSignedInteger | kAudioFormatFlagIsPacked,
    4, 1, 4, 2, 16, 0};
// clang-format on

constexpr UInt32 componentFlags = 0xC0C; // flags for 16-bit and stereo sound, each as input and output

Component registerComponent()
{
    ComponentDescription description = {kSoundOutputDeviceType, 'QTso', 'QTso', componentFlags, 0};
    Str255 text;
    CopyCStringToPascal("QTSoundStream", text);
    const std::unique_ptr<Ptr, Releases<DisposeHandle>> name(reinterpret_cast<Handle>(NewString(text)));
    const auto entry = reinterpret_cast<ComponentRoutineProcPtr>(soundComponentEntry);
    return RegisterComponent(&description, NewComponentRoutineUPP(entry), 0, name.get(), nullptr, nullptr);
}

/// Remove the RefconRecord from the state. After that the render thread and new instances no longer find it.
void withdrawRefcon(StreamState& state)
{
    RefconRecord* const record = swapInOrder<RefconRecord*>(state.refconRecord, nullptr);
    if (!record) return;
    liveRefcons.remove(*record);
    waitForRender(state);
    leave(record);
}

} // namespace

void construct(REALobjectStruct* object) { dataOf(object) = {}; }

void destruct(REALobjectStruct* object)
{
    SoundStreamData& data = dataOf(object);
    CloseComponent(object);
    if (data.state && data.ownsState) {
        withdrawRefcon(*data.state); // a RefconRecord may remain from a registration that failed
        liveStates.remove(*data.state);
        leave(data.state);
    }
    data.ownsState = false;
    data.state = nullptr;
}

void InitComponent(REALobjectStruct* object)
{
    SoundStreamData& data = dataOf(object);
    destruct(object);
    data.state = liveStates.create([](StreamState& state) { state.outputFormat = converterOutput; });
    data.ownsState = data.state != nullptr;
}

void OpenComponent(REALobjectStruct* object)
{
    StreamState* const state = dataOf(object).state;
    if (!state || state->component) return;
    state->component = registerComponent();

    withdrawRefcon(*state); // a RefconRecord may remain from a registration that failed
    RefconRecord* const record = liveRefcons.create([state](RefconRecord& created) {
        use(*state);
        created.state = state;
    });
    storeInOrder(state->refconRecord, record);
    SetComponentRefcon(state->component, reinterpret_cast<long>(record));

    if (state->converter) return;
    AudioConverterRef converter = nullptr;
    if (AudioConverterNew(&converterInput, &state->outputFormat, &converter) == noErr)
        storeReleased(state->converter, converter);
}

void CloseComponent(REALobjectStruct* object)
{
    SoundStreamData& data = dataOf(object);
    if (data.attachedUnit) catchAll([&] { AudioOutputUnitStop(data.attachedUnit); });
    data.attachedUnit = nullptr;
    if (!data.state || !data.state->component) return;
    StreamState& state = *data.state;
    // The count is ignored, because clients may keep their instances open.
    catchAll([&] { CountComponentInstances(state.component); });
    withdrawRefcon(state);
    release(UnregisterComponent, state.component);
    state.component = nullptr;
}

} // namespace soundstream
