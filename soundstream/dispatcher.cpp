#include "soundstream/dispatcher.h"

#include "plugin/classes.h"
#include "plugin/exception_border.h"
#include "soundstream/component_info.h"
#include "soundstream/component_selectors.h"

namespace soundstream {

namespace {

ComponentResult CanDo(QTSoundStreamGlobals* globals, SInt16 selector);

// Result after a platform call has thrown an exception, which means that the platform is out of memory.
constexpr ComponentResult failure = memFullErr;

struct Selector {
    SInt16 what;
    ProcPtr handler;
    ProcInfoType procInfo; ///< sizes of the result and of the arguments; the first argument is the storage
    bool canDo;            ///< result of CanDo for this selector
};

template <auto function>
ProcPtr handler()
{
    return reinterpret_cast<ProcPtr>(catchingAll<function, failure>);
}

// CanDo denies stop and pause although the component supports both, because clients rely on that result.
// clang-format off
const Selector selectors[] = {
    // selector                                  handler                      sizes    can do
    {kComponentVersionSelect,                    handler<Version>(),          0x00F0,  true},
    {kComponentCanDoSelect,                      handler<CanDo>(),            0x02F0,  true},
    {kComponentCloseSelect,                      handler<Close>(),            0x03F0,  true},
    {kComponentOpenSelect,                       handler<Open>(),             0x03F0,  true},
    {kSoundComponentInitOutputDeviceSelect,      handler<InitOutputDevice>(), 0x03F0,  true},
    {kSoundComponentGetInfoSelect,               handler<GetInfo>(),          0x3FF0,  true},
    {kSoundComponentSetInfoSelect,               handler<SetInfo>(),          0x3FF0,  true},
    {kSoundComponentStartSourceSelect,           handler<StartSource>(),      0x0EF0,  true},
    {kSoundComponentStopSourceSelect,            handler<StopSource>(),       0x0EF0,  false},
    {kSoundComponentPauseSourceSelect,           handler<PauseSource>(),      0x0EF0,  false},
    {kSoundComponentPlaySourceBufferSelect,      handler<PlaySourceBuffer>(), 0x3FF0,  true},
};
// clang-format on

const Selector* find(SInt16 what)
{
    for (const Selector& row : selectors)
        if (row.what == what) return &row;
    return nullptr;
}

ComponentResult CanDo(QTSoundStreamGlobals*, SInt16 selector)
{
    const Selector* const row = find(selector);
    return row && row->canDo;
}

ComponentResult dispatch(ComponentParameters* parameters, Handle storage)
{
    const Used<QTSoundStreamGlobals> globals = liveInstances.find(storage);
    if (const Selector* const row = find(parameters->what))
        return CallComponentFunctionWithStorageProcInfo(reinterpret_cast<Handle>(globals.get()), parameters,
                                                        row->handler, row->procInfo);
    if (parameters->what < kDelegatedSoundComponentSelectors) return badComponentSelector;
    return DelegateComponentCall(parameters, mixerOf(globals.get()));
}

} // namespace

ComponentResult QTSoundStreamDispatch(ComponentParameters* parameters, Handle storage)
{
    return catchingAll<dispatch, failure>(parameters, storage);
}

} // namespace soundstream

const AnyFunction soundStreamDispatcher = reinterpret_cast<AnyFunction>(soundstream::QTSoundStreamDispatch);
