#include "soundstream/selectors.h"

#include "plugin/shared_word.h"
#include "soundstream/info.h"

#include <memory>

namespace soundstream {

namespace {

constexpr ComponentResult version = 0x00010000;

// The mixer is asked for little-endian samples, and the converter takes what comes as big-endian: kept as it
// always was. What is heard right is a source that says little-endian and holds big-endian.
constexpr SoundComponentData wanted = {
    0, k16BitLittleEndianFormat, channelCount, sampleBits, sampleRate44100, 1024, nullptr, 0};

void setActive(QTSoundStreamGlobals* globals, bool isActive)
{
    if (globals && globals->refcon) storeRelaxed(globals->refcon->state->streamActive, HostBoolean{isActive});
}

/// An instance hidden from the render thread while this lives; false where another thread is at it, and where
/// one renders it that is not waited for.
class Hidden {
public:
    explicit Hidden(QTSoundStreamGlobals& globals)
        : globals_(globals), isOurs_(!swapInOrder(globals.isHidden, true)),
          isIt_(isOurs_ && (!globals.refcon || waitForRender(*globals.refcon->state->entrance)))
    {
    }
    ~Hidden()
    {
        if (isOurs_) storeInOrder(globals_.isHidden, false);
    }
    Hidden(const Hidden&) = delete;
    Hidden& operator=(const Hidden&) = delete;
    explicit operator bool() const { return isIt_; }

private:
    QTSoundStreamGlobals& globals_;
    const bool isOurs_, isIt_;
};

/// While nobody renders, or on the render thread.
void closeMixer(QTSoundStreamGlobals& globals)
{
    const auto mixer = swapInOrder<ComponentInstance>(globals.mixer, nullptr);
    if (!mixer) return;
    storeRelaxed(globals.sourceData, SoundComponentDataPtr{nullptr}); // the mixer's
    __atomic_add_fetch(&globals.mixersClosed, 1, __ATOMIC_RELAXED);
    try {
        CloseMixerSoundComponent(mixer);
    } catch (...) { // there is nothing left to undo
    }
}

/// What Open made goes again, once. The render thread loses it first, so that nothing is freed that is in
/// use.
struct End {
    void operator()(QTSoundStreamGlobals* globals) const
    {
        if (!closePlace(*globals)) return;
        RefconRecord* const record = globals->refcon;
        if (!record) return end(globals);
        storeInOrder<QTSoundStreamGlobals*>(record->globals, nullptr);
        afterRender(*record->state->entrance, globals->end, end, globals);
    }

private:
    static void end(void* record)
    {
        auto* const globals = static_cast<QTSoundStreamGlobals*>(record);
        closeMixer(*globals);
        drop(globals);
    }
};

} // namespace

ComponentResult Version(QTSoundStreamGlobals*) { return version; }

ComponentResult Open(QTSoundStreamGlobals* before, ComponentInstance self)
{
    Close(before, self);
    std::unique_ptr<QTSoundStreamGlobals, End> globals(newGlobals());
    if (!globals) return memFullErr;
    globals->self = self;
    globals->refcon = findRefconRecord(GetComponentRefcon(reinterpret_cast<Component>(self)));
    if (globals->refcon) storeInOrder(globals->refcon->globals, globals.get());
    SetComponentInstanceStorage(self, reinterpret_cast<Handle>(globals.get()));
    globals.release();
    return noErr;
}

ComponentResult Close(QTSoundStreamGlobals* globals, ComponentInstance)
{
    if (!globals) return noErr;
    setActive(globals, false);
    const ComponentInstance self = globals->self;
    End()(globals);                             // whoever calls holds them
    SetComponentInstanceStorage(self, nullptr); // for a client that asks again
    return noErr;
}

ComponentResult InitOutputDevice(QTSoundStreamGlobals* globals, long)
{
    if (!globals) return paramErr;
    const Hidden hidden(*globals);
    if (!hidden) return channelBusy;
    closeMixer(*globals);
    globals->description = wanted;
    ComponentInstance mixer = nullptr;
    const OSErr status = OpenMixerSoundComponent(&globals->description, 0, &mixer);
    if (status == noErr) storeInOrder(globals->mixer, mixer);
    if (!isOpen(*globals)) closeMixer(*globals); // closed meanwhile: this one is ours to close
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
