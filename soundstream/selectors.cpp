#include "soundstream/selectors.h"

#include "plugin/shared_word.h"
#include "soundstream/info.h"
#include "soundstream/render.h"

namespace soundstream {

namespace {

constexpr ComponentResult version = 0x00010000;

// The mixer is asked for little-endian samples, and the converter takes what comes as big-endian: kept as it
// always was. What is heard right is a source that says little-endian and holds big-endian.
constexpr SoundComponentData wanted = {
    0, k16BitLittleEndianFormat, channelCount, sampleBits, sampleRate44100, 1024, nullptr, 0};

ComponentInstance mixerOf(const QTSoundStreamGlobals* globals)
{
    return globals ? loadAcquired(globals->mixer) : nullptr;
}

void setActive(QTSoundStreamGlobals* globals, bool isActive)
{
    if (globals && globals->refcon) storeRelaxed(globals->refcon->state->streamActive, HostBoolean{isActive});
}

/// Take the instance away from the render thread, if it is the one that is heard, and wait for the slice that
/// may still use it. Returns whether it was.
bool hide(QTSoundStreamGlobals& globals)
{
    if (!globals.refcon) return false;
    QTSoundStreamGlobals* heard = &globals;
    const bool was = __atomic_compare_exchange_n(&globals.refcon->globals, &heard,
                                                 static_cast<QTSoundStreamGlobals*>(nullptr), false,
                                                 __ATOMIC_SEQ_CST, __ATOMIC_RELAXED);
    waitForRender(*globals.refcon->state);
    return was;
}

void show(QTSoundStreamGlobals& globals)
{
    if (globals.refcon) __atomic_store_n(&globals.refcon->globals, &globals, __ATOMIC_SEQ_CST);
}

/// While the instance is hidden.
void closeMixer(QTSoundStreamGlobals& globals)
{
    const ComponentInstance mixer = globals.mixer;
    storeReleased(globals.mixer, ComponentInstance{nullptr});
    globals.sourceData = nullptr; // the mixer's
    if (mixer) CloseMixerSoundComponent(mixer);
}

} // namespace

ComponentResult Version(QTSoundStreamGlobals*) { return version; }

ComponentResult Open(QTSoundStreamGlobals*, ComponentInstance self)
{
    QTSoundStreamGlobals* const globals = newGlobals();
    if (!globals) return memFullErr;
    globals->self = self;
    globals->refcon = findRefconRecord(GetComponentRefcon(reinterpret_cast<Component>(self)));
    show(*globals);
    SetComponentInstanceStorage(self, reinterpret_cast<Handle>(globals));
    return noErr;
}

ComponentResult Close(QTSoundStreamGlobals* globals, ComponentInstance)
{
    if (!globals) return noErr;
    setActive(globals, false);
    hide(*globals);
    closeMixer(*globals);
    drop(globals);
    return noErr;
}

ComponentResult InitOutputDevice(QTSoundStreamGlobals* globals, long)
{
    if (!globals) return paramErr;
    const bool isHeard = hide(*globals);
    closeMixer(*globals);
    globals->description = wanted;
    ComponentInstance mixer = nullptr;
    const OSErr status = OpenMixerSoundComponent(&globals->description, 0, &mixer);
    storeReleased(globals->mixer, mixer);
    if (isHeard) show(*globals);
    return status;
}

ComponentResult StartSource(QTSoundStreamGlobals* globals, short count, SoundSource* sources)
{
    const ComponentResult result = SoundComponentStartSource(mixerOf(globals), count, sources);
    setActive(globals, true);
    return result;
}

ComponentResult StopSource(QTSoundStreamGlobals* globals, short count, SoundSource* sources)
{
    const ComponentResult result = SoundComponentStopSource(mixerOf(globals), count, sources);
    setActive(globals, false);
    return result;
}

ComponentResult PauseSource(QTSoundStreamGlobals* globals, short count, SoundSource* sources)
{
    const ComponentResult result = SoundComponentPauseSource(mixerOf(globals), count, sources);
    setActive(globals, false);
    return result;
}

ComponentResult PlaySourceBuffer(QTSoundStreamGlobals* globals, SoundSource source, SoundParamBlockPtr block,
                                 long actions)
{
    const ComponentResult result = SoundComponentPlaySourceBuffer(mixerOf(globals), source, block, actions);
    if (!(actions & kSourcePaused)) setActive(globals, true);
    return result;
}

} // namespace soundstream
