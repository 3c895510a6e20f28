// Successful loads: the platform calls, and the object's fields after the load.
#include "tests/auplayer/good_load.h"

#include "auplayer/render.h"

#include <algorithm>
#include <cstring>

namespace {

using namespace auplayer_test;

class Loading : public PlayerTest {
protected:
    REALmemoryBlockStruct* samplesBlock() { return members.call<REALmemoryBlockStruct*>("Data", object()); }
};

TEST_F(Loading, CallsThePlatformInThisOrder)
{
    EXPECT_TRUE(load());
    EXPECT_EQ(spy::calls(), goodLoad());
    EXPECT_EQ(data().lasterror, 0);
    EXPECT_EQ(graph_spy::callback().inputProc, &auplayer::renderInput);
    EXPECT_EQ(graph_spy::callback().inputProcRefCon, &data());
}

TEST_F(Loading, ChoosesTheOutputUnitByNumber)
{
    const struct {
        HostInteger choice;
        const char* subType;
        const char* why;
    } facts[] = {
        {0, "'ahal'", "the default"},         {1, "'genr'", "generic"},
        {2, "'ahal'", "the HAL's"},           {3, "'def '", "the default device's"},
        {4, "'sys '", "the system device's"}, {-1, "'ahal'", "an unknown number"},
        {5, "'ahal'", "an unknown number"},   {7, "'ahal'", "an unknown number"},
    };
    for (const auto& fact : facts) {
        SCOPED_TRACE(fact.why);
        startOver();
        data().outputUnit = fact.choice;
        EXPECT_TRUE(load());
        Choices choices;
        choices.outputUnit = fact.subType;
        EXPECT_EQ(spy::calls(), goodLoad(choices));
        EXPECT_EQ(data().outputUnit, fact.choice);
    }
}

TEST_F(Loading, BypassesTheRateUnitThatIsNotChosen)
{
    const struct {
        HostInteger choice;
        const char* bypassed;
    } facts[] = {
        {0, "varispeed"}, {1, "varispeed"}, {2, "timePitch"}, {-1, ""}, {5, ""}, {7, ""},
    };
    for (const auto& fact : facts) {
        SCOPED_TRACE(fact.choice);
        startOver();
        data().timePitchUnit = fact.choice;
        EXPECT_TRUE(load());
        Choices choices;
        choices.bypassed = fact.bypassed;
        EXPECT_EQ(spy::calls(), goodLoad(choices));
        EXPECT_EQ(data().timePitchUnit, fact.choice);
    }
}

TEST_F(Loading, SetsASliceLimitAboveTheDefault)
{
    const struct {
        HostInteger limit;
        const char* set;
        const char* why;
    } facts[] = {
        {0, "", "the initial value"},      {-1, "", "negative"},
        {-2147483647 - 1, "", "negative"}, {1, "", "less than the units' default"},
        {1156, "", "the units' default"},  {1157, "1157", "one above the default"},
        {8192, "8192", "a usual limit"},   {2147483647, "2147483647", "the largest"},
    };
    for (const auto& fact : facts) {
        SCOPED_TRACE(fact.why);
        startOver();
        data().maximumFramesPerSlice = fact.limit;
        EXPECT_TRUE(load());
        Choices choices;
        choices.sliceLimit = fact.set;
        EXPECT_EQ(spy::calls(), goodLoad(choices));
    }
}

TEST_F(Loading, FillsTheObjectsFields)
{
    EXPECT_TRUE(load());
    EXPECT_EQ(data().sampleRate, 48000.0);
    EXPECT_EQ(data().trackLength, 2.5);
    EXPECT_EQ(data().loopIn, -1.0);
    EXPECT_EQ(data().loopOut, -1.0);
    EXPECT_EQ(data().isLooping, 0);
    EXPECT_EQ(data().position, 0u);
    EXPECT_EQ(data().endFrame, 1000u);
    EXPECT_EQ(data().file, item());
    EXPECT_EQ(host().references(item()), 2);
    EXPECT_EQ(data().isFileLoaded, 1);

    EXPECT_EQ(data().dataIsPCM, 1);
    EXPECT_EQ(data().dataIsInterleaved, 1);
    EXPECT_EQ(data().dataIsFloat, 1);
    EXPECT_EQ(data().dataIsNativeEndian, 1);
    EXPECT_EQ(data().dataIsSignedInteger, 0);
    EXPECT_EQ(data().dataNumberInterleavedChannels, 2);
    EXPECT_EQ(data().dataNumberChannelStreams, 1);
    EXPECT_EQ(data().dataNumberChannels, 2);
    EXPECT_EQ(data().dataSampleWordSize, 4);

    EXPECT_EQ(host().bytesOf(data().clientFormatString),
              " 2 ch,  48000 Hz, 'lpcm' (0x00000009) 32-bit little-endian float");
    EXPECT_EQ(host().encodingOf(data().clientFormatString), encodingUTF8);
    EXPECT_EQ(host().bytesOf(data().outputFormatString),
              " 2 ch,  48000 Hz, 'lpcm' (0x00000029) 32-bit little-endian float, deinterleaved");
    EXPECT_EQ(host().references(data().clientFormatString), 1);
    EXPECT_EQ(host().references(data().outputFormatString), 1);
    EXPECT_EQ(raised(), Notes());

    ASSERT_NE(data().loadedAudio, nullptr);
    EXPECT_EQ(data().loadedAudio->frameCount, 1000u);
    EXPECT_EQ(data().loadedAudio->byteSize, 8000u);
    EXPECT_EQ(std::memcmp(&data().loadedAudio->format, data().clientFormat, 40), 0);
    EXPECT_EQ(data().loadedAudio->samples[1999], 1999.0f);
}

TEST_F(Loading, HasNoFormatTextsWithoutTheStringService)
{
    withhold("REALBuildString");
    EXPECT_TRUE(load());
    EXPECT_EQ(spy::calls(), goodLoad());
    EXPECT_EQ(data().clientFormatString, nullptr);
    EXPECT_EQ(data().outputFormatString, nullptr);
    EXPECT_EQ(raised(), Notes());
}

TEST_F(Loading, ResetsPositionAndLoop)
{
    data().position = data().lastRenderOffset = 77;
    data().endFrame = 5;
    data().loopIn = 10;
    data().loopOut = 20;
    data().isLooping = 1;
    spy::answer("ExtAudioFileRead").during = [this] {
        EXPECT_EQ(data().position, 0u) << "reset before the read";
        EXPECT_EQ(data().endFrame, 0u);
        EXPECT_EQ(data().loopIn, 10.0) << "reset after the read";
        EXPECT_EQ(data().loopOut, 20.0);
        EXPECT_EQ(data().isLooping, 1);
    };
    EXPECT_TRUE(load());
    EXPECT_EQ(data().position, 0u);
    EXPECT_EQ(data().endFrame, 1000u);
    EXPECT_EQ(data().loopIn, -1.0);
    EXPECT_EQ(data().loopOut, -1.0);
    EXPECT_EQ(data().isLooping, 0);
}

TEST_F(Loading, StoresEachUnitWithItsNode)
{
    EXPECT_TRUE(load());
    const struct {
        AudioUnit unit;
        AUNode node;
        const char* name;
    } facts[] = {
        {data().output, data().outputNode, "output"},
        {data().varispeed, data().varispeedNode, "varispeed"},
        {data().timePitch, data().timePitchNode, "timePitch"},
        {data().equalizer, data().equalizerNode, "equalizer"},
        {data().mixer, data().mixerNode, "mixer"},
        {data().converter, data().converterNode, "converter"},
    };
    for (const auto& fact : facts) {
        SCOPED_TRACE(fact.name);
        spy::forgetCalls();
        AudioUnit unit = nullptr;
        AUGraphNodeInfo(data().graph, fact.node, nullptr, &unit);
        AudioUnitReset(fact.unit, 0, 0);
        EXPECT_EQ(spy::calls(), (Notes{"AUGraphNodeInfo(graph1, " + std::string(fact.name) + " node, null)",
                                       "AudioUnitReset(" + std::string(fact.name) + ", global, 0)"}));
    }
}

TEST_F(Loading, UsesTheRequestedChannelCounts)
{
    const struct {
        HostInteger input, output;
        const char* client;
        const char* between;
        const char* buffer;
    } facts[] = {
        {1, 2, "0x9, 4, 1, 4, 1, 32, 0}", "0x29, 4, 1, 4, 2, 32, 0}", "{1 channels, 4000 bytes, memory}"},
        {2, 1, "0x9, 8, 1, 8, 2, 32, 0}", "0x29, 4, 1, 4, 1, 32, 0}", "{2 channels, 8000 bytes, memory}"},
        {6, 6, "0x9, 24, 1, 24, 6, 32, 0}", "0x29, 4, 1, 4, 6, 32, 0}", "{6 channels, 24000 bytes, memory}"},
        {64, 0, "0x9, 256, 1, 256, 64, 32, 0}", "0x29, 4, 1, 4, 0, 32, 0}",
         "{64 channels, 256000 bytes, memory}"},
        {2, -1, "0x9, 8, 1, 8, 2, 32, 0}", "0x29, 4, 1, 4, 4294967295, 32, 0}",
         "{2 channels, 8000 bytes, memory}"},
    };
    for (const auto& fact : facts) {
        SCOPED_TRACE(fact.buffer);
        startOver();
        graph_spy::platform().file.format.mSampleRate = 44100;
        EXPECT_TRUE(load(fact.input, fact.output));
        const Notes calls = spy::calls();
        const auto count = [&](const std::string& call) {
            return std::count(calls.begin(), calls.end(), call);
        };
        const std::string client = std::string("{44100, 'lpcm', ") + fact.client;
        const std::string between = std::string("{44100, 'lpcm', ") + fact.between;
        EXPECT_EQ(count("ExtAudioFileSetProperty(file1, 'cfmt', 40 bytes, " + client + ")"), 1);
        EXPECT_EQ(count("ExtAudioFileRead(file1, 1000, " + std::string(fact.buffer) + ")"), 1);
        EXPECT_EQ(count("AudioUnitSetProperty(converter, 8, input, 0, " + client + ", 40 bytes)"), 1);
        EXPECT_EQ(count("AudioUnitSetProperty(varispeed, 8, output, 0, " + between + ", 40 bytes)"), 1);
        EXPECT_EQ(data().dataNumberChannels, fact.input);
        EXPECT_EQ(data().dataNumberInterleavedChannels, fact.input);
    }
}

TEST_F(Loading, ReturnsTheSamplesInANewMemoryBlockEachTime)
{
    EXPECT_EQ(samplesBlock(), nullptr) << "before a load";
    EXPECT_TRUE(load());
    REALmemoryBlockStruct* const first = samplesBlock();
    REALmemoryBlockStruct* const second = samplesBlock();
    ASSERT_NE(first, nullptr);
    ASSERT_NE(second, nullptr);
    EXPECT_NE(first, second);
    const std::string samples(reinterpret_cast<char*>(data().loadedAudio->samples), 8000);
    for (REALmemoryBlockStruct* block : {first, second}) {
        EXPECT_EQ(host().references(block), 1);
        EXPECT_EQ(host().bytesOf(block), samples);
        host().drop(block);
    }
}

TEST_F(Loading, UsesTheNumberOfFramesThatWereRead)
{
    for (const UInt32 read : {0ul, 1ul, 999ul, 1000ul, 1001ul, 0xFFFFFFFFul}) {
        SCOPED_TRACE(read);
        startOver();
        graph_spy::platform().file.framesRead = static_cast<UInt32>(read);
        EXPECT_TRUE(load());
        EXPECT_EQ(data().endFrame, std::min<UInt32>(read, 1000)) << "never more than the buffer holds";
        EXPECT_EQ(data().loadedAudio->frameCount, data().endFrame);
        EXPECT_EQ(data().loadedAudio->byteSize, 8000u) << "the buffer keeps the declared size";
        REALmemoryBlockStruct* const block = samplesBlock();
        ASSERT_NE(block, nullptr);
        EXPECT_EQ(host().bytesOf(block).size(), 8000u);
        host().drop(block);
    }
}

TEST_F(Loading, HasNoSamplesWithoutFramesOrChannels)
{
    const struct {
        SInt64 length;
        HostInteger channels;
        const char* read;
        HostInteger wordSize;
    } facts[] = {
        {0, 2, "ExtAudioFileRead(file1, 0, {2 channels, 0 bytes, null})", 4},
        {1000, 0, "ExtAudioFileRead(file1, 1000, {0 channels, 0 bytes, null})", 0},
        {0, -1, "ExtAudioFileRead(file1, 0, {4294967295 channels, 0 bytes, null})", 0},
    };
    for (const auto& fact : facts) {
        SCOPED_TRACE(fact.read);
        startOver();
        graph_spy::platform().file.length = fact.length;
        EXPECT_TRUE(load(fact.channels));
        const Notes calls = spy::calls();
        EXPECT_EQ(std::count(calls.begin(), calls.end(), fact.read), 1);
        EXPECT_EQ(data().endFrame, static_cast<UInt32>(fact.length));
        EXPECT_EQ(data().loadedAudio->samples, nullptr);
        EXPECT_EQ(data().dataSampleWordSize, fact.wordSize);
        EXPECT_EQ(samplesBlock(), nullptr);
        EXPECT_EQ(raised(), Notes());
    }
}

TEST_F(Loading, IsOutOfMemoryForATooLargeFile)
{
    const struct {
        SInt64 length;
        HostInteger channels;
        double rate;
        UInt32 frameCount, byteSize;
        const char* why;
    } facts[] = {
        {0x20000000, 1, 48000, 0x20000000, 0x80000000, "2^31 bytes: one more than the limit"},
        {0x10000000, 2, 48000, 0x10000000, 0x80000000, "the same in two channels"},
        {0x7FFFFFFF, 64, 48000, 0x7FFFFFFF, 0xFFFFFF00, "far above the limit"},
        {0x80000000, 2, 48000, 0x80000000, 0, "2^31 frames: the size's low 32 bits are 0"},
        {0x100000000, 2, 48000, 0, 0, "2^32 frames: the low 32 bits of their number are 0"},
        {0x100000001, 1, 48000, 1, 4, "2^32 + 1 frames"},
        {0x4000000000000000, 1, 48000, 0, 0, "a size above 64 bits"},
        {-1, 2, 48000, 0xFFFFFFFF, 0xFFFFFFF8, "a negative length"},
        {1000, -1, 48000, 1000, 0xFFFFF060, "a negative number of channels"},
        {1000, 2147483647, 48000, 1000, 0xFFFFF060, "the largest number of channels"},
        {1000, 2, 0, 0, 0, "a rate of 0: the ratio is not-a-number"},
    };
    for (const auto& fact : facts)
        for (const char* method : {"LoadFile", "LoadFileMT"}) {
            SCOPED_TRACE(std::string(method) + ": " + fact.why);
            startOver();
            graph_spy::platform().file.length = fact.length;
            graph_spy::platform().file.format.mSampleRate = fact.rate;
            EXPECT_FALSE(load(fact.channels, 2, method));
            EXPECT_EQ(raised(), Notes{"OutOfMemoryException: Failed to allocate buffer for audio data."});
            EXPECT_EQ(spy::calls().size(), 7u) << "only calls of the file";
            EXPECT_EQ(data().lasterror, 0) << "the last platform call succeeded";
            EXPECT_EQ(data().loadedAudio->frameCount, fact.frameCount);
            EXPECT_EQ(data().loadedAudio->byteSize, fact.byteSize);
            EXPECT_EQ(data().loadedAudio->samples, nullptr);
            EXPECT_EQ(data().graph, nullptr);
            EXPECT_EQ(data().clientFormatString, nullptr);
            EXPECT_EQ(data().dataIsPCM, 0) << "the data is not described";
            EXPECT_EQ(samplesBlock(), nullptr);
        }
}

TEST_F(Loading, AllocatesExactlyTheSamples)
{
    const struct {
        SInt64 length;
        const char* allocation;
        const char* why;
    } facts[] = {
        {1, "calloc 4", "the smallest"},
        {1000, "calloc 4000", "a usual one"},
        {0x1FFFFFFF, "calloc 2147483644", "the largest"},
    };
    for (const auto& fact : facts) {
        SCOPED_TRACE(fact.why);
        startOver();
        graph_spy::platform().file.length = fact.length;
        c_library_spy::refuseCalloc(1);
        c_library_spy::begin();
        EXPECT_FALSE(load(1));
        const Notes events = c_library_spy::end();
        EXPECT_EQ(std::count(events.begin(), events.end(), fact.allocation), 1);
        EXPECT_EQ(raised(), Notes{"OutOfMemoryException: Failed to allocate buffer for audio data."});
        EXPECT_EQ(
            spy::calls(),
            (Notes{
                "CFURLCreateFromFSRef(default, \"the item\")", "ExtAudioFileOpenURL(url1)",
                "ExtAudioFileGetProperty(file1, 'ffmt', size 40)",
                "ExtAudioFileGetProperty(file1, '#frm', size 8)",
                "ExtAudioFileSetProperty(file1, 'cfmt', 40 bytes, {48000, 'lpcm', 0x9, 4, 1, 4, 1, 32, 0})",
                "ExtAudioFileDispose(file1)", "CFRelease(url1)"}));
    }
}

} // namespace
