#include "platform/builtin_units.h"

#include "platform/audiounit/converter/converter_unit.h"
#include "platform/audiounit/element_format.h"
#include "platform/audiounit/equaliser/equaliser_unit.h"
#include "platform/audiounit/family.h"
#include "platform/audiounit/mixer/mixer_unit.h"
#include "platform/audiounit/output/device_units.h"
#include "platform/audiounit/output/generic_output.h"
#include "platform/audiounit/rate/rate_units.h"

#include <iterator>

namespace kvxplatform {
namespace {

using namespace audiounit;
using namespace audiounit::column;

constexpr ElementCount one = {1, 1, 1}, two = {2, 2, 2};

// Rows in the order in which a search for a component finds them.
// clang-format off
constexpr UnitKind units[] = {
    {kAudioUnitType_Output, kAudioUnitSubType_HALOutput, "HAL Output", Inputs{two}, Outputs{two},
     DeviceProperties<true>::rows, deviceParameters, InputMemory::ofBus, TakesFormat{takesLinearPCM},
     Open{openHALOutput}, Close{closeDeviceOutput}, Destroy{destroyDeviceOutput}, Initialize{nullptr},
     Uninitialize{nullptr}, Renew{renewDeviceOutput}, Reset{nullptr}, Render{nullptr},
     RenderInside{renderInput}, Start{startDevice}, Stop{stopDevice}},

    {kAudioUnitType_Output, kAudioUnitSubType_DefaultOutput, "Default Output", Inputs{one}, Outputs{one},
     DeviceProperties<false>::rows, deviceParameters, InputMemory::ofBus, TakesFormat{takesLinearPCM},
     Open{openDefaultOutput}, Close{closeDeviceOutput}, Destroy{destroyDeviceOutput}, Initialize{nullptr},
     Uninitialize{nullptr}, Renew{renewDeviceOutput}, Reset{nullptr}, Render{nullptr},
     RenderInside{renderInput}, Start{startDevice}, Stop{stopDevice}},

    {kAudioUnitType_Output, kAudioUnitSubType_SystemOutput, "System Output", Inputs{one}, Outputs{one},
     DeviceProperties<false>::rows, deviceParameters, InputMemory::ofBus, TakesFormat{takesLinearPCM},
     Open{openSystemOutput}, Close{closeDeviceOutput}, Destroy{destroyDeviceOutput}, Initialize{nullptr},
     Uninitialize{nullptr}, Renew{renewDeviceOutput}, Reset{nullptr}, Render{nullptr},
     RenderInside{renderInput}, Start{startDevice}, Stop{stopDevice}},

    {kAudioUnitType_Output, kAudioUnitSubType_GenericOutput, "Generic Output", Inputs{one}, Outputs{one},
     genericOutputProperties, nullptr, InputMemory::ofBus, TakesFormat{takesLinearPCM},
     Open{openGenericOutput}, Close{nullptr}, Destroy{destroyGenericOutput},
     Initialize{initializeGenericOutput}, Uninitialize{uninitializeGenericOutput}, Renew{renewGenericOutput},
     Reset{resetGenericOutput}, Render{renderGenericOutput}, RenderInside{nullptr}, Start{startGenericOutput},
     Stop{stopGenericOutput}},

    {kAudioUnitType_FormatConverter, kAudioUnitSubType_AUConverter, "Converter", Inputs{one}, Outputs{one},
     converterProperties, nullptr, InputMemory::ofBus, TakesFormat{takesLinearPCM}, Open{openConverter},
     Close{nullptr}, Destroy{destroyConverter}, Initialize{initializeConverter},
     Uninitialize{uninitializeConverter}, Renew{renewConverter}, Reset{resetConverter},
     Render{renderConverter}, RenderInside{nullptr}, Start{nullptr}, Stop{nullptr}},

    {kAudioUnitType_Mixer, kAudioUnitSubType_MultiChannelMixer, "Multichannel Mixer",
     Inputs{multichannelMixerInputs}, Outputs{one}, mixerProperties, mixerParameters, InputMemory::ofBus,
     TakesFormat{nullptr}, Open{openMixer}, Close{nullptr}, Destroy{destroyMixer},
     Initialize{initializeMixer}, Uninitialize{nullptr}, Renew{nullptr}, Reset{resetMixer},
     Render{renderMixer}, RenderInside{nullptr}, Start{nullptr}, Stop{nullptr}},

    {kAudioUnitType_Effect, kAudioUnitSubType_GraphicEQ, "Graphic Equaliser", Inputs{one}, Outputs{one},
     equaliserProperties, equaliserParameters, InputMemory::ofUnitKind, TakesFormat{nullptr},
     Open{openEqualiser}, Close{nullptr}, Destroy{destroyEqualiser}, Initialize{initializeEqualiser},
     Uninitialize{nullptr}, Renew{nullptr}, Reset{resetEqualiser}, Render{renderEqualiser},
     RenderInside{nullptr}, Start{nullptr}, Stop{nullptr}},

    {kAudioUnitType_FormatConverter, kAudioUnitSubType_NewTimePitch, "New Time Pitch", Inputs{one},
     Outputs{one}, rateProperties, newTimePitchParameters, InputMemory::ofUnitKind,
     TakesFormat{takesRateFormat}, Open{openNewTimePitch}, Close{nullptr}, Destroy{destroyRateUnit},
     Initialize{initializeRateUnit}, Uninitialize{uninitializeRateUnit}, Renew{nullptr}, Reset{resetRateUnit},
     Render{renderRateUnit}, RenderInside{nullptr}, Start{nullptr}, Stop{nullptr}},

    {kAudioUnitType_FormatConverter, kAudioUnitSubType_TimePitch, "Time Pitch", Inputs{one}, Outputs{one},
     rateProperties, timePitchParameters, InputMemory::ofUnitKind, TakesFormat{takesRateFormat},
     Open{openTimePitch}, Close{nullptr}, Destroy{destroyRateUnit}, Initialize{initializeRateUnit},
     Uninitialize{uninitializeRateUnit}, Renew{nullptr}, Reset{resetRateUnit}, Render{renderRateUnit},
     RenderInside{nullptr}, Start{nullptr}, Stop{nullptr}},

    {kAudioUnitType_FormatConverter, kAudioUnitSubType_Varispeed, "Varispeed", Inputs{one}, Outputs{one},
     rateProperties, varispeedParameters, InputMemory::ofUnitKind, TakesFormat{takesRateFormat},
     Open{openVarispeed}, Close{nullptr}, Destroy{destroyRateUnit}, Initialize{initializeRateUnit},
     Uninitialize{uninitializeRateUnit}, Renew{nullptr}, Reset{resetRateUnit}, Render{renderRateUnit},
     RenderInside{nullptr}, Start{nullptr}, Stop{nullptr}},
};
// clang-format on

constexpr bool areComplete()
{
    for (const UnitKind& each : units)
        if (!each.open || !each.destroy || !(each.render || each.start) || !each.start != !each.stop)
            return false;
    return true;
}

static_assert(std::size(units) == 10, "the platform has ten units");
static_assert(areComplete(),
              "a unit opens, is destroyed, renders or is started, and is stopped if it is started");

} // namespace

std::size_t builtInUnitCount() { return std::size(units); }

components::Component describeBuiltInUnit(std::size_t index) { return componentOf(units[index]); }

} // namespace kvxplatform
