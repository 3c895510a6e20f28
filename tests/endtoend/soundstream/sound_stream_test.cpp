// A classic sound client and the sound component of the library in one process: mixed sources, commands to
// single sources, several component instances, and released objects.
#include "host/kvx/library/library.h"
#include "host/kvx/play/classic_play.h"
#include "host/soundclient/sound_output.h"
#include "tests/endtoend/loaded_host.h"
#include "tests/support/live_objects.h"

#include <Carbon/Carbon.h>

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <vector>

namespace {

using namespace endtoend;
using soundclient::SoundOutput;

constexpr double pi = 3.14159265358979323846;

std::uint16_t swapBytes(std::uint16_t bits) { return std::uint16_t(bits << 8 | bits >> 8); }

/// The interleaved 16-bit samples that the mixer renders. The converter after the mixer swaps the bytes of
/// each sample.
std::vector<int> mixerSamples(const std::vector<float>& rendered)
{
    std::vector<int> values;
    for (const float sample : rendered) {
        const auto bits = std::uint16_t(std::int16_t(sample * 32768.0f));
        values.push_back(std::int16_t(swapBytes(bits)));
    }
    return values;
}

/// A buffer of samples, with the parameter block that describes the buffer to the component.
struct Buffer {
    std::vector<std::uint8_t> bytes;
    SoundParamBlock block = {};
    int timesDone = 0;

    Buffer(OSType format, int channels, int bits, double rate, const std::vector<int>& samples)
    {
        for (const int sample : samples) {
            if (bits == 8) {
                bytes.push_back(std::uint8_t(format == kOffsetBinary ? sample + 128 : sample));
                continue;
            }
            const auto value = std::uint16_t(sample);
            const bool isLittle = format == k16BitLittleEndianFormat;
            bytes.push_back(std::uint8_t(isLittle ? value & 0xFF : value >> 8));
            bytes.push_back(std::uint8_t(isLittle ? value >> 8 : value & 0xFF));
        }
        block.recordSize = sizeof block;
        block.desc.format = format;
        block.desc.numChannels = short(channels);
        block.desc.sampleSize = short(bits);
        block.desc.sampleRate = UnsignedFixed(rate * 65536);
        block.desc.sampleCount = long(samples.size()) / channels;
        block.desc.buffer = bytes.data();
        block.rateMultiplier = 0x10000;
        block.leftVolume = block.rightVolume = kFullVolume;
        block.completionRtn = [](SoundParamBlockPtr* done) -> Boolean {
            ++reinterpret_cast<Buffer*>((*done)->refCon)->timesDone;
            return true;
        };
        block.refCon = reinterpret_cast<long>(this);
    }
    Buffer(const Buffer&) = delete;
};

/// The library with the registered component, a client that has opened the component, and a stepped device.
struct ClassicClient : testing::Test {
    const std::uint32_t convertersBefore =
        support::liveObjects("AudioConverter"); // number of converters of earlier tests
    SteppedDevice device;
    kvx::Library library{options()};
    std::unique_ptr<kvx::SoundComponent> bridge;
    std::unique_ptr<SoundOutput> output;

    ClassicClient()
    {
        EXPECT_EQ(KVXPlatformChooseOutputDevice("Stepped"), 0) << KVXPlatformErrorText();
        bridge = std::make_unique<kvx::SoundComponent>(library.host());
        output = std::make_unique<SoundOutput>(kvx::componentSubType, kvx::componentManufacturer);
        bridge->start();
    }
    ~ClassicClient() override
    {
        output.reset();
        bridge.reset();
        EXPECT_EQ(library.leaks({{"AudioConverter", convertersBefore + 1}}), "");
    }

    static kvx::LibraryOptions options()
    {
        kvx::LibraryOptions options;
        options.path = libraryPath;
        return options;
    }

    /// Render the next frames, and return the samples of the mixer.
    std::vector<int> render(std::uint32_t frames)
    {
        device.clearOutput();
        EXPECT_EQ(device.step(frames), frames);
        return mixerSamples(device.output());
    }
};

std::vector<int> ramp(std::size_t count, int first, int step)
{
    std::vector<int> values(count);
    for (std::size_t i = 0; i < count; ++i) values[i] = std::int16_t(first + int(i) * step);
    return values;
}

int rounded(double value) { return int(std::clamp(std::nearbyint(value), -32768.0, 32767.0)); }

TEST_F(ClassicClient, IsSilentWithoutASource)
{
    EXPECT_EQ(render(3000), std::vector<int>(6000));
    EXPECT_FALSE(bridge->isActive());
}

TEST_F(ClassicClient, SumsSourcesAtTheirVolumes)
{
    constexpr std::size_t frames = 3000;
    const std::vector<int> one = ramp(frames * 2, -32768, 11), two = ramp(frames * 2, 7, 313);
    Buffer first(kTwosComplement, 2, 16, 44100, one);
    first.block.leftVolume = 0x80;
    first.block.rightVolume = 0x40;
    Buffer second(k16BitLittleEndianFormat, 2, 16, 44100, two);
    const soundclient::Source a = output->addSource(), b = output->addSource();
    // The second source has a quarter of its volume on the left channel, and is silent on the right channel.
    ASSERT_EQ(SoundComponentSetInfo(output->instance(), b, siVolume, reinterpret_cast<void*>(0x00000040)),
              noErr);
    output->play(a, first.block);
    output->play(b, second.block);
    EXPECT_TRUE(bridge->isActive());

    const std::vector<int> rendered = render(frames + 500);
    for (std::size_t i = 0; i < frames; ++i) {
        ASSERT_EQ(rendered[2 * i], rounded(one[2 * i] * 0.5 + two[2 * i] * 0.25)) << "left " << i;
        ASSERT_EQ(rendered[2 * i + 1], rounded(one[2 * i + 1] * 0.25)) << "right " << i;
    }
    for (std::size_t i = 2 * frames; i < rendered.size(); ++i) ASSERT_EQ(rendered[i], 0) << i;
    EXPECT_EQ(first.timesDone, 1);
    EXPECT_EQ(second.timesDone, 1);
}

TEST_F(ClassicClient, ClipsSumsAbove16Bits)
{
    const std::vector<int> loud = {32767, -32768, 20000, -20000, 32767, -32768};
    Buffer first(kTwosComplement, 2, 16, 44100, loud), second(kTwosComplement, 2, 16, 44100, loud);
    output->play(output->addSource(), first.block);
    output->play(output->addSource(), second.block);
    const std::vector<int> rendered = render(3);
    EXPECT_EQ(rendered, (std::vector<int>{32767, -32768, 32767, -32768, 32767, -32768}));
}

TEST_F(ClassicClient, ConvertsSampleSizesAndChannels)
{
    const std::vector<int> eight = {-128, -1, 0, 1, 127, 64}, sixteen = {-32768, 5, 32767, -7, 100, -100};
    const struct {
        OSType format;
        int channels, bits;
        const std::vector<int>& samples;
        int scale;
    } facts[] = {
        {kOffsetBinary, 1, 8, eight, 256},    {kOffsetBinary, 2, 8, eight, 256},
        {kTwosComplement, 1, 8, eight, 256},  {kTwosComplement, 2, 8, eight, 256},
        {kTwosComplement, 1, 16, sixteen, 1}, {k16BitLittleEndianFormat, 1, 16, sixteen, 1},
    };
    const soundclient::Source source = output->addSource();
    for (const auto& fact : facts) {
        SCOPED_TRACE(testing::Message() << fact.format << " " << fact.channels << " " << fact.bits);
        Buffer buffer(fact.format, fact.channels, fact.bits, 44100, fact.samples);
        output->play(source, buffer.block);
        std::vector<int> expected;
        for (const int sample : fact.samples)
            expected.insert(expected.end(), fact.channels == 1 ? 2 : 1, sample * fact.scale);
        EXPECT_EQ(render(std::uint32_t(expected.size() / 2)), expected);
        EXPECT_EQ(render(2000), std::vector<int>(4000));
        EXPECT_EQ(buffer.timesDone, 1);
    }
}

TEST_F(ClassicClient, ConvertsSampleRatesAndRateMultipliers)
{
    const struct {
        double rate;
        UnsignedFixed multiplier;
    } facts[] = {{22050, 0x10000}, {11025, 0x10000}, {48000, 0x10000}, {44100, 0x8000}, {22050, 0x20000}};
    const soundclient::Source source = output->addSource();
    for (const auto& fact : facts) {
        SCOPED_TRACE(testing::Message() << fact.rate << " times " << fact.multiplier);
        const double rate = fact.rate * fact.multiplier / 65536;
        constexpr double hertz = 441, amplitude = 20000;
        const auto framesIn = std::size_t(rate / 5); // 0.2 s
        std::vector<int> samples;
        for (std::size_t i = 0; i < framesIn; ++i)
            samples.push_back(rounded(amplitude * std::sin(2 * pi * hertz * double(i) / rate)));
        Buffer buffer(kTwosComplement, 1, 16, fact.rate, samples);
        buffer.block.rateMultiplier = fact.multiplier;
        output->play(source, buffer.block);
        const std::vector<int> rendered = render(44100 / 4);
        for (std::size_t i = 1000; i < 7800; ++i) {
            ASSERT_NEAR(rendered[2 * i], amplitude * std::sin(2 * pi * hertz * double(i) / 44100), 3) << i;
            ASSERT_EQ(rendered[2 * i], rendered[2 * i + 1]) << i;
        }
        for (std::size_t i = 44100 / 5 * 2; i < rendered.size(); ++i)
            ASSERT_EQ(rendered[i], 0) << "after the end";
        EXPECT_EQ(buffer.timesDone, 1);
    }
}

TEST_F(ClassicClient, StartsPausesAndStopsSources)
{
    // The mixer renders 1024 frames at a time, so a command applies to the next 1024 frames.
    constexpr std::uint32_t block = 1024;
    const std::vector<int> samples = ramp(8 * block * 2, 1, 3);
    Buffer buffer(kTwosComplement, 2, 16, 44100, samples);
    const soundclient::Source source = output->addSource();
    const auto part = [&samples](std::size_t index) {
        const auto begin = samples.begin() + std::ptrdiff_t(index * block * 2);
        return std::vector<int>(begin, begin + block * 2);
    };
    const std::vector<int> silence(block * 2);

    output->play(source, buffer.block, true);
    EXPECT_FALSE(bridge->isActive());
    EXPECT_EQ(render(block), silence);
    output->start(source);
    EXPECT_TRUE(bridge->isActive());
    EXPECT_EQ(render(block), part(0));
    EXPECT_EQ(render(block), part(1));
    output->pause(source);
    EXPECT_FALSE(bridge->isActive());
    EXPECT_EQ(render(block), silence);
    output->start(source);
    EXPECT_EQ(render(block), part(2));
    output->stop(source);
    EXPECT_FALSE(bridge->isActive());
    EXPECT_EQ(render(block), silence);
    output->start(source);
    EXPECT_EQ(render(block), silence) << "stop has dropped the buffer";
    EXPECT_EQ(buffer.timesDone, 0);
    output->play(source, buffer.block);
    EXPECT_EQ(render(block), part(0)) << "from the start";
    output->removeSource(source);
    EXPECT_EQ(render(block), silence);
    EXPECT_THROW(output->play(source, buffer.block), soundclient::Refusal) << "the source is removed";
}

TEST_F(ClassicClient, ReportsItsOutputForm)
{
    const soundclient::OutputForm form = output->form();
    EXPECT_EQ(form.channels, 2);
    EXPECT_EQ(form.bits, 16);
    EXPECT_EQ(form.rate, 44100);
}

TEST_F(ClassicClient, RendersTheInstanceOpenedLast)
{
    const std::vector<int> one = ramp(2048, 1, 3), two = ramp(2048, 2, 5);
    Buffer first(kTwosComplement, 2, 16, 44100, one), second(kTwosComplement, 2, 16, 44100, two);
    {
        SoundOutput later(kvx::componentSubType, kvx::componentManufacturer);
        output->play(output->addSource(), first.block);
        later.play(later.addSource(), second.block);
        EXPECT_EQ(render(1024), two);
    }
    EXPECT_EQ(render(1024), std::vector<int>(2048)) << "the earlier instance stays silent";
    output.reset();
    output = std::make_unique<SoundOutput>(kvx::componentSubType, kvx::componentManufacturer);
    output->play(output->addSource(), second.block);
    EXPECT_EQ(render(1024), two);
}

// If the host program unregisters the component while a client has it open, the client's output is silent,
// and the client can close the component.
TEST_F(ClassicClient, ClosesAfterTheHostProgramUnregisteredTheComponent)
{
    Buffer buffer(kTwosComplement, 2, 16, 44100, ramp(20000, 1, 3));
    output->play(output->addSource(), buffer.block);
    render(1024);
    bridge.reset();
    EXPECT_EQ(device.step(1024), 0u) << "the device is stopped";
    EXPECT_EQ(output->form().bits, 16);
    output.reset();
    // A component that was open when it was unregistered stays in the platform's list of components.
    ComponentDescription wanted = {kSoundOutputDeviceType, kvx::componentSubType, kvx::componentManufacturer,
                                   0, 0};
    const Component left = FindNextComponent(nullptr, &wanted);
    ASSERT_NE(left, nullptr);
    EXPECT_EQ(CountComponentInstances(left), 0);
    EXPECT_EQ(UnregisterComponent(left), noErr);
}

TEST(SoundComponentDeathTest, OpensInBuiltProgramsOnly)
{
    for (const bool isDevelopment : {false, true}) {
        kvx::LibraryOptions options = ClassicClient::options();
        options.isDevelopment = isDevelopment;
        const auto tryIt = [&options] {
            kvx::Library library(options);
            const kvx::SoundComponent bridge(library.host());
            try {
                const SoundOutput output(kvx::componentSubType, kvx::componentManufacturer);
                std::exit(10);
            } catch (const soundclient::NoEntryPoint&) {
                std::exit(11);
            }
        };
        EXPECT_EXIT(tryIt(), testing::ExitedWithCode(isDevelopment ? 11 : 10), "");
    }
}

} // namespace
