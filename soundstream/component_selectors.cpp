#include "soundstream/component_selectors.h"

#include "plugin/release.h"
#include "soundstream/component_info.h"
#include "soundstream/render_scope.h"

#include <memory>

namespace soundstream {

namespace {

constexpr ComponentResult version = 0x00010000;

// The mixer delivers little-endian samples, but the converter reads them as big-endian samples. Therefore
// only big-endian samples that are labelled little-endian play correctly. Existing programs rely on that.
constexpr SoundComponentData mixerRequest = {
    0, k16BitLittleEndianFormat, channelCount, sampleBits, sampleRate44100, 1024, nullptr, 0};

void setActive(QTSoundStreamGlobals* globals, bool isActive)
{
    if (globals && globals->refcon) storeRelaxed(globals->refcon->state->streamActive, HostBoolean{isActive});
}

void closeInstance(QTSoundStreamGlobals* globals)
{
    if (!liveInstances.remove(*globals)) return; // another thread closes the instance already
    if (globals->refcon) storeInOrder<QTSoundStreamGlobals*>(globals->refcon->globals, nullptr);
    endAfterRender(*globals);
}

/// Open a mixer and close the former mixer of the instance. Must not run while another thread renders the
/// instance.
ComponentResult replaceMixer(QTSoundStreamGlobals& globals)
{
    closeMixer(globals);
    globals.description = mixerRequest;
    ComponentInstance mixer = nullptr;
    const OSErr status = OpenMixerSoundComponent(&globals.description, 0, &mixer);
    if (status == noErr) storeInOrder(globals.mixer, mixer);
    // Close() may have run while the mixer was being opened, before it could see the new mixer.
    if (!liveInstances.find(&globals)) closeMixer(globals);
    return status;
}

/// Forward a call to the instance's mixer, then set the state's `streamActive` flag to `isActive`.
template <class Call, class... Arguments>
ComponentResult forward(Call call, QTSoundStreamGlobals* globals, bool isActive, Arguments... arguments)
{
    const ComponentResult result = call(mixerOf(globals), arguments...);
    setActive(globals, isActive);
    return result;
}

} // namespace

ComponentResult Version(QTSoundStreamGlobals*) { return version; }

ComponentResult Open(QTSoundStreamGlobals* former, ComponentInstance self)
{
    Close(former, self);
    std::unique_ptr<QTSoundStreamGlobals, Releases<closeInstance>> globals(
        liveInstances.create([self](QTSoundStreamGlobals& created) { created.self = self; }));
    if (!globals) return memFullErr;
    const long refcon = GetComponentRefcon(reinterpret_cast<Component>(self));
    globals->refcon = liveRefcons.find(reinterpret_cast<const void*>(refcon)).release();
    if (globals->refcon) storeInOrder(globals->refcon->globals, globals.get());
    SetComponentInstanceStorage(self, reinterpret_cast<Handle>(globals.get()));
    globals.release();
    return noErr;
}

ComponentResult Close(QTSoundStreamGlobals* globals, ComponentInstance self)
{
    // After Close the platform still sends the instance's former storage pointer, and another instance may
    // have the same storage address by now.
    if (!globals || globals->self != self) return noErr;
    setActive(globals, false);
    closeInstance(globals);
    return noErr;
}

ComponentResult InitOutputDevice(QTSoundStreamGlobals* globals, long)
{
    if (!globals) return paramErr;
    if (swapInOrder(globals->isMixerChanging, true)) return channelBusy;
    if (globals->refcon) waitForRender(*globals->refcon->state);
    const ComponentResult status = catchAll([globals] { return replaceMixer(*globals); }, memFullErr);
    storeInOrder(globals->isMixerChanging, false);
    return status;
}

ComponentResult StartSource(QTSoundStreamGlobals* globals, short count, SoundSource* sources)
{
    return forward(SoundComponentStartSource, globals, true, count, sources);
}

ComponentResult StopSource(QTSoundStreamGlobals* globals, short count, SoundSource* sources)
{
    return forward(SoundComponentStopSource, globals, false, count, sources);
}

ComponentResult PauseSource(QTSoundStreamGlobals* globals, short count, SoundSource* sources)
{
    return forward(SoundComponentPauseSource, globals, false, count, sources);
}

ComponentResult PlaySourceBuffer(QTSoundStreamGlobals* globals, SoundSource source, SoundParamBlockPtr block,
                                 long actions)
{
    const ComponentResult result = SoundComponentPlaySourceBuffer(mixerOf(globals), source, block, actions);
    if (!(actions & kSourcePaused)) setActive(globals, true);
    return result;
}

} // namespace soundstream
