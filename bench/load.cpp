// Measures loading three minutes of stereo as 32-bit floats into zeroed memory, with the platform's calls and
// with the whole method LoadFile. The comparison is one read call of libsndfile.
#include "bench/file_player.h"
#include "bench/sound_files.h"
#include "bench/test_signal.h"

#include <AudioToolbox/AudioToolbox.h>

#include <benchmark/benchmark.h>

#include <sndfile.h>

#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>

namespace {

constexpr std::size_t frames = bench::longFileMinutes * bench::signalFrames;

struct FreeMemory {
    void operator()(void* memory) const { std::free(memory); }
};
using Samples = std::unique_ptr<float[], FreeMemory>;

Samples zeroed(std::size_t count)
{
    return Samples(static_cast<float*>(std::calloc(count, 2 * sizeof(float))));
}

/// Read a whole file with the platform's calls. Return the number of frames that were read; 0 on failure.
std::size_t readThroughPlatform(const std::string& path)
{
    const CFURLRef url = CFURLCreateFromFileSystemRepresentation(
        nullptr, reinterpret_cast<const UInt8*>(path.data()), static_cast<CFIndex>(path.size()), false);
    ExtAudioFileRef file = nullptr;
    if (ExtAudioFileOpenURL(url, &file) != noErr) return 0;
    CFRelease(url);
    AudioStreamBasicDescription format = {};
    UInt32 size = sizeof format;
    ExtAudioFileGetProperty(file, kExtAudioFileProperty_FileDataFormat, &size, &format);
    SInt64 length = 0;
    size = sizeof length;
    ExtAudioFileGetProperty(file, kExtAudioFileProperty_FileLengthFrames, &size, &length);
    format = {
        format.mSampleRate, kAudioFormatLinearPCM, kAudioFormatFlagsNativeFloatPacked, 8, 1, 8, 2, 32, 0};
    ExtAudioFileSetProperty(file, kExtAudioFileProperty_ClientDataFormat, sizeof format, &format);
    const Samples samples = zeroed(static_cast<std::size_t>(length));
    AudioBufferList list;
    list.mNumberBuffers = 1;
    list.mBuffers[0] = {2, static_cast<UInt32>(length * 8), samples.get()};
    auto read = static_cast<UInt32>(length);
    const OSStatus status = ExtAudioFileRead(file, &read, &list);
    ExtAudioFileDispose(file);
    return status == noErr ? read : 0;
}

std::size_t readThroughLibsndfile(const std::string& path)
{
    SF_INFO info = {};
    SNDFILE* const file = sf_open(path.c_str(), SFM_READ, &info);
    if (!file) return 0;
    const Samples samples = zeroed(static_cast<std::size_t>(info.frames));
    const sf_count_t read = sf_readf_float(file, samples.get(), info.frames);
    sf_close(file);
    return static_cast<std::size_t>(read);
}

std::size_t loadIntoPlayer(const std::string& path)
{
    const host::Object player = bench::loadedHost().create("AUPlayerKVX");
    return player.call("LoadFile", host::FolderItem::at(path), 2, 2).boolean() ? frames : 0;
}

void load(benchmark::State& state, const bench::FileFormat* kind, std::size_t (*read)(const std::string&))
{
    const std::string path = bench::longFile(*kind);
    for (auto _ : state)
        if (read(path) < frames) return state.SkipWithError("the file cannot be read to its end");
    state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(frames));
}

/// Load a file of 0.1 s, so that the creation and disposal of object, graph and units take most of the time.
void loadShort(benchmark::State& state)
{
    const std::string path = bench::shortFile();
    for (auto _ : state)
        if (!loadIntoPlayer(path)) return state.SkipWithError("the file cannot be loaded");
}

const bool registered = [] {
    for (const bench::FileFormat& kind : bench::fileFormats) {
        const std::string name = std::string("load/") + kind.name + "/";
        const auto add = [&](const char* subject, std::size_t (*read)(const std::string&)) {
            benchmark::RegisterBenchmark((name + subject).c_str(), load, &kind, read)
                ->Unit(benchmark::kMillisecond);
        };
        add("ours", readThroughPlatform);
        add("libsndfile", readThroughLibsndfile);
        add("LoadFile", loadIntoPlayer);
    }
    benchmark::RegisterBenchmark("load/short/LoadFile", loadShort)->Unit(benchmark::kMillisecond);
    return true;
}();

} // namespace
