// Devices with inputs: the input and output sides, the input buffers of procedures, and switched-off streams.
#include "tests/platform/hal/recording_listener.h"

namespace {

using namespace haltest;

constexpr AudioObjectID systemObject = kAudioObjectSystemObject;
constexpr auto output = kAudioDevicePropertyScopeOutput, input = kAudioDevicePropertyScopeInput;

KVXSimulatedDevice with(uint32_t outputs, uint32_t inputs)
{
    KVXSimulatedDevice description = Device::stepped();
    description.outputChannels = outputs;
    description.inputChannels = inputs;
    return description;
}

bool isZero(const AudioTimeStamp& stamp)
{
    const AudioTimeStamp none = {};
    return std::memcmp(&stamp, &none, sizeof none) == 0;
}

bool isSilent(const AudioBuffer& buffer)
{
    const auto* bytes = static_cast<const char*>(buffer.mData);
    return std::all_of(bytes, bytes + buffer.mDataByteSize, [](char c) { return c == 0; });
}

TEST(Input, HasTheRequestedChannels)
{
    const struct {
        uint32_t outputs, inputs, hasOutputs;
        const char* why;
    } facts[] = {
        {0, 0, 2, "the default"}, {2, 0, 2, "outputs"},     {0, 1, 0, "inputs only"},
        {2, 3, 2, "both"},        {64, 64, 64, "the most"},
    };
    for (const auto& fact : facts) {
        SCOPED_TRACE(fact.why);
        Device device(with(fact.outputs, fact.inputs));
        const UInt32 streams = (fact.hasOutputs ? 1 : 0) + (fact.inputs ? 1 : 0);
        EXPECT_EQ(getAll<AudioStreamID>(device, address('ownd')).size(), streams);
        for (UInt32 scope : {output, input}) {
            const UInt32 channels = scope == input ? fact.inputs : fact.hasOutputs;
            EXPECT_EQ(getAll<AudioStreamID>(device, address('stm#', scope)).size(), channels ? 1u : 0u);
            EXPECT_EQ(get<UInt32>(device, address('dflt', scope)), channels ? 1u : 0u);
            if (channels)
                EXPECT_EQ(get<AudioStreamBasicDescription>(device, address('sfmt', scope)).mChannelsPerFrame,
                          channels);
        }
    }
    const KVXSimulatedDevice tooMany = with(2, 65);
    EXPECT_EQ(KVXPlatformAddSimulatedDevice(&tooMany), 0u);
}

TEST(Input, DuplexDeviceHasSeparateSides)
{
    Device device(with(2, 3));
    const AudioStreamID out = getAll<AudioStreamID>(device, address('stm#', output)).at(0);
    const AudioStreamID in = getAll<AudioStreamID>(device, address('stm#', input)).at(0);
    EXPECT_EQ(get<UInt32>(out, address('sdir')), 0u);
    EXPECT_EQ(get<UInt32>(in, address('sdir')), 1u);
    EXPECT_EQ(text(get<UInt32>(out, address('term'))), "spkr");
    EXPECT_EQ(text(get<UInt32>(in, address('term'))), "micr");
    EXPECT_EQ(get<UInt32>(device, address('bsiz', output)), 64u * 2 * 4);
    EXPECT_EQ(get<UInt32>(device, address('bsiz', input)), 64u * 3 * 4);
    EXPECT_EQ(get<UInt32>(device, address('bsiz')), 64u * 2 * 4) << "the output, if the device has one";
    EXPECT_EQ(text(get<UInt32>(device, address('ssrc', output))), "spkr");
    EXPECT_EQ(text(get<UInt32>(device, address('ssrc', input))), "imic");
    EXPECT_EQ(getAll<UInt32>(device, address('ssc#', output)), (std::vector<UInt32>{'spkr', 'hdpn'}));
    EXPECT_EQ(getAll<UInt32>(device, address('ssc#', input)), std::vector<UInt32>{'imic'});
    EXPECT_EQ(getAll<char>(device, address('ccnm', input, 3)),
              (std::vector<char>{'I', 'n', 'p', 'u', 't', 0}));
    const auto fourth = address('ccnm', input, 4), third = address('ccnm', output, 3);
    EXPECT_FALSE(AudioObjectHasProperty(device, &fourth));
    EXPECT_FALSE(AudioObjectHasProperty(device, &third));
    EXPECT_EQ(set<UInt32>(device, address('ssrc', output), 'hdpn'), noErr);
    EXPECT_EQ(text(get<UInt32>(in, address('term'))), "micr") << "unchanged";
    EXPECT_EQ(text(set<UInt32>(device, address('ssrc', input), 'spkr')), "nope")
        << "a source of the other side";
}

TEST(Input, IsASilentBufferWithATimeStamp)
{
    const struct {
        uint32_t outputs, inputs;
    } facts[] = {{0, 1}, {0, 6}, {2, 0}, {2, 3}};
    for (const auto& fact : facts) {
        SCOPED_TRACE(std::to_string(fact.outputs) + " outputs, " + std::to_string(fact.inputs) + " inputs");
        Device device(with(fact.outputs, fact.inputs));
        int calls = 0;
        Procedure procedure(device, [&](const Call& call) {
            const UInt32 frames = calls ? 36 : 64;
            EXPECT_EQ(call.input->mNumberBuffers, fact.inputs ? 1u : 0u);
            EXPECT_EQ(call.output->mNumberBuffers, fact.outputs ? 1u : 0u);
            EXPECT_EQ(isZero(*call.inputTime), fact.inputs == 0);
            EXPECT_EQ(isZero(*call.outputTime), fact.outputs == 0);
            if (fact.inputs) {
                const AudioBuffer& buffer = call.input->mBuffers[0];
                EXPECT_EQ(buffer.mNumberChannels, fact.inputs);
                EXPECT_EQ(buffer.mDataByteSize, frames * fact.inputs * 4);
                ASSERT_TRUE(buffer.mData);
                EXPECT_TRUE(isSilent(buffer));
                EXPECT_EQ(call.inputTime->mSampleTime, calls * 64.0);
                EXPECT_EQ(call.inputTime->mHostTime, call.now->mHostTime);
            }
            ++calls;
        });
        ASSERT_EQ(procedure.start(), noErr);
        EXPECT_EQ(KVXPlatformStep(device, 100), 100u);
        EXPECT_EQ(calls, 2);
    }
}

TEST(Input, DefaultMovesWhenItsDeviceEnds)
{
    const auto role = address(kAudioHardwarePropertyDefaultInputDevice);
    const auto builtIn = get<AudioDeviceID>(systemObject, role);
    for (uint32_t outputs : {0u, 2u})
        for (bool isKilled : {false, true}) {
            Device device(with(outputs, 1));
            ASSERT_EQ(set<AudioDeviceID>(systemObject, role, device), noErr);
            RecordingListener listener(systemObject, role);
            if (isKilled)
                ASSERT_EQ(KVXPlatformKillDevice(device), 0);
            else
                device.unplug();
            EXPECT_EQ(get<AudioDeviceID>(systemObject, role), builtIn);
            waitForNotifications();
            EXPECT_EQ(listener.count(), 1);
        }
}

// ---- streams that a procedure switches off ----

AudioHardwareIOProcStreamUsage usageOf(AudioDeviceIOProcID id, UInt32 streams, UInt32 isOn)
{
    return {reinterpret_cast<void*>(id), streams, {isOn}};
}

OSStatus readUsage(AudioDeviceID device, UInt32 scope, AudioHardwareIOProcStreamUsage& usage)
{
    const auto at = address('suse', scope);
    UInt32 size = sizeof usage;
    return AudioObjectGetPropertyData(device, &at, 0, nullptr, &size, &usage);
}

TEST(StreamUsage, IsSeparateForEachProcedure)
{
    Device device(with(2, 1));
    struct Seen {
        bool hasInput = false, hasOutput = false;
        UInt32 inputBytes = 0, outputBytes = 0;
    } first, second;
    const auto check = [](Seen& seen, float value) {
        return [&seen, value](const Call& call) {
            const AudioBuffer &in = call.input->mBuffers[0], &out = call.output->mBuffers[0];
            seen = {in.mData != nullptr, out.mData != nullptr, in.mDataByteSize, out.mDataByteSize};
            if (out.mData) call.fill(value);
        };
    };
    Procedure one(device, check(first, 0.25f)), other(device, check(second, 0.5f));
    Recording recording(device);
    ASSERT_EQ(one.start(), noErr);
    ASSERT_EQ(other.start(), noErr);
    const struct {
        UInt32 scope;
        UInt32 isOn;
        bool hasInput, hasOutput;
        float sum;
    } facts[] = {
        {output, 1, true, true, 0.75f},  {output, 0, true, false, 0.5f}, {input, 0, false, false, 0.5f},
        {output, 7, false, true, 0.75f}, {input, 1, true, true, 0.75f},
    };
    for (const auto& fact : facts) {
        ASSERT_EQ(set(device, address('suse', fact.scope), usageOf(one.id(), 1, fact.isOn)), noErr);
        AudioHardwareIOProcStreamUsage read = usageOf(one.id(), 99, 99);
        ASSERT_EQ(readUsage(device, fact.scope, read), noErr);
        EXPECT_EQ(read.mNumberStreams, 1u);
        EXPECT_EQ(read.mStreamIsOn[0], fact.isOn ? 1u : 0u);
        KVXPlatformStep(device, 64);
        EXPECT_EQ(first.hasInput, fact.hasInput);
        EXPECT_EQ(first.hasOutput, fact.hasOutput);
        EXPECT_EQ(first.inputBytes, 64u * 4) << "the size is unchanged";
        EXPECT_EQ(first.outputBytes, 64u * 2 * 4);
        EXPECT_TRUE(second.hasInput && second.hasOutput) << "the other procedure is unchanged";
        EXPECT_EQ(recording.samples.back(), fact.sum);
    }
}

TEST(StreamUsage, RefusesUnknownProceduresAndStreams)
{
    Device device(with(2, 0));
    Procedure procedure(device, [](const Call&) {});
    const auto unknown = reinterpret_cast<AudioDeviceIOProcID>(&device);
    AudioHardwareIOProcStreamUsage of = usageOf(unknown, 1, 1), ofNone = usageOf(nullptr, 1, 1);
    EXPECT_EQ(text(readUsage(device, output, of)), "nope");
    EXPECT_EQ(text(readUsage(device, output, ofNone)), "nope");
    for (const auto& wrong : {usageOf(unknown, 1, 0), usageOf(nullptr, 1, 0), usageOf(procedure.id(), 0, 0),
                              usageOf(procedure.id(), 2, 0)})
        EXPECT_EQ(text(set(device, address('suse', output), wrong)), "nope");
    AudioHardwareIOProcStreamUsage read = usageOf(procedure.id(), 0, 0);
    ASSERT_EQ(readUsage(device, output, read), noErr);
    EXPECT_EQ(read.mStreamIsOn[0], 1u) << "unchanged";
    ASSERT_EQ(readUsage(device, input, read), noErr);
    EXPECT_EQ(read.mNumberStreams, 0u) << "no stream on this side";
}

} // namespace
