// LoadFileMT: the load runs on a background thread while the main thread yields to the host.
#include "plugin/host_array.h"
#include "plugin/shared_word.h"
#include "tests/auplayer/good_load.h"
#include "tests/support/sanitizers.h"

#include <algorithm>
#include <atomic>
#include <iterator>
#include <thread>

namespace {

using namespace auplayer_test;
using fake::Host;

class ThreadedLoad : public PlayerTest {
protected:
    std::ptrdiff_t yields()
    {
        const Notes calls = host().calls();
        return std::count(calls.begin(), calls.end(), "REALYieldToRB()");
    }
};

TEST_F(ThreadedLoad, MakesTheSamePlatformCallsAsLoadFile)
{
    EXPECT_TRUE(load(2, 2, "LoadFileMT"));
    EXPECT_EQ(spy::calls(), goodLoad());
    EXPECT_EQ(data().lasterror, 0);
    EXPECT_EQ(data().endFrame, 1000u);
    EXPECT_EQ(data().loadedAudio->samples[1999], 1999.0f);
    EXPECT_GE(yields(), 2);
}

TEST_F(ThreadedLoad, LoadsOnAnotherThreadAndBuildsTextsOnTheMainThread)
{
    std::thread::id loader;
    spy::answer("ExtAudioFileRead").during = [&] { loader = std::this_thread::get_id(); };
    EXPECT_TRUE(load(2, 2, "LoadFileMT"));
    EXPECT_NE(loader, std::this_thread::get_id());

    // The fake host records calls without a lock, so the thread sanitizer would report a call from the
    // background thread.
    const Notes calls = host().calls();
    const auto lastYield = std::find(calls.rbegin(), calls.rend(), "REALYieldToRB()");
    const Notes afterwards(lastYield.base(), calls.end());
    EXPECT_EQ(spy::countOf(afterwards, "REALBuildString"), 2) << "one text per format, after the load";
    EXPECT_EQ(spy::countOf(calls, "REALBuildString"), 2);
    EXPECT_EQ(host().bytesOf(data().clientFormatString),
              " 2 ch,  48000 Hz, 'lpcm' (0x00000009) 32-bit little-endian float");
    EXPECT_EQ(host().bytesOf(data().outputFormatString),
              " 2 ch,  48000 Hz, 'lpcm' (0x00000029) 32-bit little-endian float, deinterleaved");
}

TEST_F(ThreadedLoad, YieldsUntilTheFileHasBeenRead)
{
    constexpr int readYields = 100; // number of yields to the host for which the read waits
    std::atomic<int> count{0};
    std::function<void()> yield;
    yield = [&] {
        ++count;
        EXPECT_EQ(members.call<REALmemoryBlockStruct*>("Data", object()), nullptr) << "nothing has been read";
        if (count < readYields) host().inNext("REALYieldToRB", yield);
    };
    host().inNext("REALYieldToRB", yield);
    spy::answer("ExtAudioFileRead").during = [&] {
        while (count < readYields) std::this_thread::yield();
    };
    EXPECT_TRUE(load(2, 2, "LoadFileMT"));
    EXPECT_EQ(count, readYields);
    EXPECT_GE(yields(), readYields);
}

TEST_F(ThreadedLoad, RefusesASecondLoadDuringTheFirst)
{
    FolderItem const another = host().newFolderItem();
    HostBoolean inner = 1;
    host().inNext("REALYieldToRB", [&] {
        inner = members.call<HostBoolean>("LoadFileMT(", object(), another, HostInteger{2}, HostInteger{2});
    });
    EXPECT_TRUE(load(2, 2, "LoadFileMT"));
    EXPECT_EQ(inner, 0);
    EXPECT_EQ(raised(), Notes{"UnsupportedOperationException: This class can only load one file."});
    EXPECT_EQ(spy::calls(), goodLoad());
    EXPECT_EQ(data().file, another);
    EXPECT_EQ(host().references(another), 2);
    EXPECT_EQ(host().references(item()), 2);
    host().drop(item());
    destruct();
    host().drop(another);
}

using Array = REALarrayStruct*;

template <class Element>
void update(Object object, Host& host, Array bands)
{
    members.call<void>(sizeof(Element) == sizeof(float) ? "updateEQ(eqBands() as single)"
                                                        : "updateEQ(eqBands() as double)",
                       object, static_cast<ArrayOf<Element>*>(bands));
    host.drop(bands);
}

void setChannelMap(Object object, Host& host)
{
    const Array map = host.newIntegers({1, 0});
    members.call<void>("setChannelMap", object, static_cast<ArrayOf<HostInteger>*>(map));
    host.drop(map);
}

template <class T>
T getIndexed(Object object, std::string_view method)
{
    return members.call<T>(method, object, std::uint32_t{0});
}
template <class T>
void setIndexed(Object object, std::string_view method, T value)
{
    reinterpret_cast<void (*)(Object, std::uint32_t, T)>(members.method(method).setter)(object, 0, value);
}

/// Return a field as the host accesses it: by its offset in the class data. The host uses one load or store.
template <class T>
T& field(Object object, std::string_view property)
{
    char* const data = reinterpret_cast<char*>(&auplayer::dataOf(object));
    return *reinterpret_cast<T*>(data + members.property(property).parameter);
}
template <class T>
void read(Object object, std::string_view property)
{
    loadRelaxed(field<T>(object, property));
}
template <class T>
void write(Object object, std::string_view property, T value)
{
    storeRelaxed(field<T>(object, property), value);
}
/// Write a handle's current value to the handle's property, if the handle is set. Any other value would be an
/// error of the host program.
void rewrite(Object object, std::string_view property)
{
    if (void* const handle = loadRelaxed(field<void*>(object, property)))
        storeRelaxed(field<void*>(object, property), handle);
}

/// One use of a property or method by the host program during a load. The use shares fields with the load.
struct Member {
    const char* name;
    void (*use)(Object, Host&);
};

const Member memberUses[] = {
    // clang-format off
    {"Playing",             [](Object o, Host&) { members.get<HostBoolean>(o, "Playing"); }},
    {"set Playing",         [](Object o, Host&) { members.set<HostBoolean>(o, "Playing", 0); }},
    {"set Playing, true",   [](Object o, Host&) { members.set<HostBoolean>(o, "Playing", 1); }},
    {"Play",                [](Object o, Host&) { members.call<void>("Play", o); }},
    {"Pause",               [](Object o, Host&) { members.call<void>("Pause", o); }},
    {"Reset",               [](Object o, Host&) { members.call<void>("Reset", o); }},
    {"Data",                [](Object o, Host& h) { if (auto* block = members.call<REALmemoryBlockStruct*>("Data", o)) h.drop(block); }},
    {"CurrentTime",         [](Object o, Host&) { members.get<double>(o, "CurrentTime"); }},
    {"set CurrentTime",     [](Object o, Host&) { members.set<double>(o, "CurrentTime", 0); }},
    {"TrackLength",         [](Object o, Host&) { members.get<double>(o, "TrackLength"); }},
    {"SampleRate",          [](Object o, Host&) { members.get<double>(o, "SampleRate"); }},
    {"LoopIn",              [](Object o, Host&) { members.get<double>(o, "LoopIn"); }},
    {"set LoopIn",          [](Object o, Host&) { members.set<double>(o, "LoopIn", 0.5); }},
    {"LoopOut",             [](Object o, Host&) { members.get<double>(o, "LoopOut"); }},
    {"set LoopOut",         [](Object o, Host&) { members.set<double>(o, "LoopOut", 1); }},
    {"Looping",             [](Object o, Host&) { members.get<HostBoolean>(o, "Looping"); }},
    {"set Looping",         [](Object o, Host&) { members.set<HostBoolean>(o, "Looping", 1); }},
    {"Pan",                 [](Object o, Host&) { members.get<double>(o, "Pan"); }},
    {"set Pan",             [](Object o, Host&) { members.set<double>(o, "Pan", 0.5); }},
    {"OutputVolume",        [](Object o, Host&) { members.get<double>(o, "OutputVolume"); }},
    {"set OutputVolume",    [](Object o, Host&) { members.set<double>(o, "OutputVolume", 0.5); }},
    {"InputVolume",         [](Object o, Host&) { getIndexed<double>(o, "InputVolume"); }},
    {"set InputVolume",     [](Object o, Host&) { setIndexed<double>(o, "InputVolume", 0.5); }},
    {"InputEnabled",        [](Object o, Host&) { getIndexed<HostBoolean>(o, "InputEnabled"); }},
    {"set InputEnabled",    [](Object o, Host&) { setIndexed<HostBoolean>(o, "InputEnabled", 1); }},
    {"MeterLevel",          [](Object o, Host&) { members.get<double>(o, "MeterLevel"); }},
    {"TimeRate",            [](Object o, Host&) { members.get<double>(o, "TimeRate"); }},
    {"set TimeRate",        [](Object o, Host&) { members.set<double>(o, "TimeRate", 1); }},
    {"PitchRate",           [](Object o, Host&) { members.get<double>(o, "PitchRate"); }},
    {"set PitchRate",       [](Object o, Host&) { members.set<double>(o, "PitchRate", 0); }},
    {"Overlap",             [](Object o, Host&) { members.get<double>(o, "Overlap"); }},
    {"set Overlap",         [](Object o, Host&) { members.set<double>(o, "Overlap", 8); }},
    {"EnablePeakLocking",   [](Object o, Host&) { members.get<HostBoolean>(o, "EnablePeakLocking"); }},
    {"set EnablePeakLocking", [](Object o, Host&) { members.set<HostBoolean>(o, "EnablePeakLocking", 1); }},
    {"set TimePitchUnit",   [](Object o, Host&) { members.set<HostInteger>(o, "TimePitchUnit", 1); }},
    {"CurrentDeviceID",     [](Object o, Host&) { members.get<std::uint32_t>(o, "CurrentDeviceID"); }},
    {"set CurrentDeviceID", [](Object o, Host&) { members.set<std::uint32_t>(o, "CurrentDeviceID", 2); }},
    {"DefaultDeviceID",     [](Object o, Host&) { members.get<std::uint32_t>(o, "DefaultDeviceID"); }},
    {"ChannelMap",          [](Object o, Host& h) { if (auto* map = members.call<ArrayOf<HostInteger>*>("ChannelMap", o)) h.drop(map); }},
    {"OuputDevices",        [](Object o, Host& h) { if (Object list = members.get<Object>(o, "OuputDevices")) h.drop(list); }},
    {"setChannelMap",       [](Object o, Host& h) { setChannelMap(o, h); }},
    {"updateEQ of doubles", [](Object o, Host& h) { update<double>(o, h, h.newDoubles({6, -6})); }},
    {"updateEQ of singles", [](Object o, Host& h) { update<float>(o, h, h.newSingles({6, -6})); }},
    // properties that the host reads and writes directly as fields
    {"ClientFormatString",  [](Object o, Host&) { read<void*>(o, "ClientFormatString"); }},
    {"OutputFormatString",  [](Object o, Host&) { read<void*>(o, "OutputFormatString"); }},
    {"DataIsInterleaved",   [](Object o, Host&) { read<HostBoolean>(o, "DataIsInterleaved"); }},
    {"DataIsFloat",         [](Object o, Host&) { read<HostBoolean>(o, "DataIsFloat"); }},
    {"DataIsNativeEndian",  [](Object o, Host&) { read<HostBoolean>(o, "DataIsNativeEndian"); }},
    {"DataIsSignedInteger", [](Object o, Host&) { read<HostBoolean>(o, "DataIsSignedInteger"); }},
    {"DataIsPCM",           [](Object o, Host&) { read<HostBoolean>(o, "DataIsPCM"); }},
    {"DataNumberInterleavedChannels", [](Object o, Host&) { read<HostInteger>(o, "DataNumberInterleavedChannels"); }},
    {"DataNumberChannelStreams", [](Object o, Host&) { read<HostInteger>(o, "DataNumberChannelStreams"); }},
    {"DataNumberChannels",  [](Object o, Host&) { read<HostInteger>(o, "DataNumberChannels"); }},
    {"DataSampleWordSize",  [](Object o, Host&) { read<HostInteger>(o, "DataSampleWordSize"); }},
    {"ConverterHandle",     [](Object o, Host&) { read<void*>(o, "ConverterHandle"); }},
    {"set ConverterHandle", [](Object o, Host&) { rewrite(o, "ConverterHandle"); }},
    {"GraphHandle",         [](Object o, Host&) { read<void*>(o, "GraphHandle"); }},
    {"set GraphHandle",     [](Object o, Host&) { rewrite(o, "GraphHandle"); }},
    {"TimePitchHandle",     [](Object o, Host&) { read<void*>(o, "TimePitchHandle"); }},
    {"set TimePitchHandle", [](Object o, Host&) { rewrite(o, "TimePitchHandle"); }},
    {"VariSpeedHandle",     [](Object o, Host&) { read<void*>(o, "VariSpeedHandle"); }},
    {"set VariSpeedHandle", [](Object o, Host&) { rewrite(o, "VariSpeedHandle"); }},
    {"OutputHandle",        [](Object o, Host&) { read<void*>(o, "OutputHandle"); }},
    {"set OutputHandle",    [](Object o, Host&) { rewrite(o, "OutputHandle"); }},
    {"MixerHandle",         [](Object o, Host&) { read<void*>(o, "MixerHandle"); }},
    {"set MixerHandle",     [](Object o, Host&) { rewrite(o, "MixerHandle"); }},
    {"EqualizerHandle",     [](Object o, Host&) { read<void*>(o, "EqualizerHandle"); }},
    {"set EqualizerHandle", [](Object o, Host&) { rewrite(o, "EqualizerHandle"); }},
    {"Lasterror",           [](Object o, Host&) { read<HostInteger>(o, "Lasterror"); }},
    {"set Lasterror",       [](Object o, Host&) { write<HostInteger>(o, "Lasterror", 17); }},
    {"Tag",                 [](Object o, Host&) { read<void*>(o, "Tag"); }},
    {"set Tag",             [](Object o, Host&) { write<void*>(o, "Tag", nullptr); }},
    {"File",                [](Object o, Host&) { read<void*>(o, "File"); }},
    {"MaximumFramesPerSlice", [](Object o, Host&) { read<HostInteger>(o, "MaximumFramesPerSlice"); }},
    {"set MaximumFramesPerSlice", [](Object o, Host&) { write<HostInteger>(o, "MaximumFramesPerSlice", 1156); }},
    {"OutputUnit",          [](Object o, Host&) { read<HostInteger>(o, "OutputUnit"); }},
    {"set OutputUnit",      [](Object o, Host&) { write<HostInteger>(o, "OutputUnit", 2); }},
    {"TimePitchUnit",       [](Object o, Host&) { read<HostInteger>(o, "TimePitchUnit"); }},
    // clang-format on
};

// The load waits for a yield before each platform call. Apart from that, only the plug-in's own atomic
// operations synchronise the two threads, so the thread sanitizer reports any missing synchronisation.
TEST_F(ThreadedLoad, LetsTheHostUseEveryMemberDuringTheLoad)
{
    std::size_t next = 0, uses[std::size(memberUses)] = {};
    for (int round = 0; round < (support::hasThreadSanitizer ? 25 : 2); ++round) {
        startOver();
        graph_spy::platform().devices = {{40, "Built-in Output"}};
        const std::thread::id here = std::this_thread::get_id();
        std::atomic<std::size_t> count{0};
        std::function<void()> yield;
        yield = [&] {
            const std::size_t index = next++ % std::size(memberUses);
            SCOPED_TRACE(memberUses[index].name);
            EXPECT_NO_THROW(memberUses[index].use(object(), host()));
            ++uses[index];
            count.fetch_add(1, std::memory_order_relaxed);
            host().inNext("REALYieldToRB", yield);
        };
        host().inNext("REALYieldToRB", yield);
        spy::script().inEachCall = [&](std::size_t) {
            if (std::this_thread::get_id() == here) return;
            const std::size_t before = count.load(std::memory_order_relaxed);
            while (count.load(std::memory_order_relaxed) == before) std::this_thread::yield();
        };
        EXPECT_TRUE(load(2, 2, "LoadFileMT"));
        spy::script().inEachCall = nullptr;
        EXPECT_GE(count, goodLoad().size() - 2) << "one yield per call of the loading thread";
        EXPECT_EQ(raised(), Notes());
        const Notes calls = spy::calls();
        for (const std::string& expected : goodLoad())
            EXPECT_GE(std::count(calls.begin(), calls.end(), expected), 1) << expected;
    }
    for (std::size_t i = 0; i < std::size(memberUses); ++i) EXPECT_GE(uses[i], 1u) << memberUses[i].name;
}

TEST_F(ThreadedLoad, WorksInAHostThatCannotYield)
{
    withhold("REALYieldToRB");
    EXPECT_TRUE(load(2, 2, "LoadFileMT"));
    EXPECT_EQ(spy::calls(), goodLoad());
    EXPECT_EQ(yields(), 0);
}

TEST_F(ThreadedLoad, FinishesAfterAnExceptionOfTheHost)
{
    std::atomic<bool> hasThrown{false};
    host().inNext("REALYieldToRB", [&] {
        hasThrown = true;
        throw Thrown();
    });
    spy::answer("ExtAudioFileRead").during = [&] {
        while (!hasThrown) std::this_thread::yield();
    };
    bool result = false;
    EXPECT_NO_THROW(result = load(2, 2, "LoadFileMT"));
    EXPECT_TRUE(result);
    EXPECT_EQ(spy::calls(), goodLoad());
}

} // namespace
