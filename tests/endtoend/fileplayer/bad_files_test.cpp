// Files that are none, or not what they say, or change under the load: each has its answer, nothing is thrown
// that is not announced, nothing is left behind, and whatever is done to the object afterwards is harmless.
#include "tests/endtoend/fileplayer/file_player.h"

#include "tests/support/sanitizers.h"

#include <AudioToolbox/AudioToolbox.h>
#include <Carbon/MacErrors.h>
#include <sndfile.h>

#include <atomic>
#include <filesystem>
#include <fstream>
#include <functional>
#include <sys/stat.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

namespace {

using namespace endtoend;
namespace fs = std::filesystem;
using Bytes = std::string;

constexpr int wav16 = SF_FORMAT_WAV | SF_FORMAT_PCM_16;

Bytes load(const std::string& path)
{
    std::ifstream in(path, std::ios::binary);
    return Bytes(std::istreambuf_iterator<char>(in), {});
}

void save(const std::string& path, const Bytes& bytes)
{
    std::ofstream out(path, std::ios::binary);
    out.write(bytes.data(), std::streamsize(bytes.size()));
}

Bytes changed(Bytes bytes, std::size_t at, std::uint64_t value, int count)
{
    for (int i = 0; i < count; ++i) bytes[at + std::size_t(i)] = char(value >> 8 * i);
    return bytes;
}

/// What a load says: whether it worked, or the exception.
std::string resultOf(const host::Object& player, const char* method, const std::string& path, int channels)
{
    try {
        return player.call(method, host::FolderItem::at(path), channels, channels).boolean() ? "true"
                                                                                             : "false";
    } catch (const host::HostException& error) {
        return error.className() + ": " + error.message();
    }
}

/// All that a program may do with an object, whatever became of its load.
void useAll(const host::Object& player)
{
    for (const char* name :
         {"Pan", "CurrentTime", "LoopIn", "LoopOut", "OutputVolume", "TimeRate", "PitchRate", "Overlap"}) {
        player.get(name);
        player.set(name, 0.5);
    }
    for (const char* name : {"TrackLength", "MeterLevel", "SampleRate", "ClientFormatString",
                             "OutputFormatString", "OuputDevices", "CurrentDeviceID", "File"})
        player.get(name);
    for (const int unit : {0, 2, 1, 7}) player.set("TimePitchUnit", unit);
    for (const char* name : {"Looping", "EnablePeakLocking", "Playing"}) {
        player.get(name);
        player.set(name, true);
    }
    player.call("Data");
    player.call("ChannelMap");
    player.call("setChannelMap", host::Array::of(std::vector<HostInteger>{1, 0}));
    player.call("updateEQ", host::Array::of(std::vector<float>(31, 3)));
    player.get("InputVolume", 0);
    player.set("InputEnabled", 0, false);
    player.call("Reset");
    player.call("Play");
    player.call("Pause");
}

struct FilePlayerFaults : testing::Test {
    const support::TemporaryFolder folder;
    const std::string path = folder / "x.wav";

    /// 1,000 frames of 16-bit stereo behind a header of 44 bytes.
    Bytes whole()
    {
        support::writeSound(support::makeNoise(44100, 2, 1000), path, wav16);
        Bytes bytes = load(path);
        EXPECT_EQ(bytes.size(), 4044u);
        return bytes;
    }
};

/// A file that is refused: the same answer by both ways of loading, and only once.
void expectRefused(const std::string& path, OSStatus status, int channels = 2)
{
    for (const char* method : {"LoadFile", "LoadFileMT"}) {
        SCOPED_TRACE(method);
        LoadedHost loaded;
        {
            const host::Object player = loaded.host.create(filePlayerClass);
            EXPECT_EQ(resultOf(player, method, path, channels), "false");
            EXPECT_EQ(player.get("Lasterror").integer(), status);
            EXPECT_TRUE(player.call("Data").isNil());
            EXPECT_EQ(player.get("SampleRate").number(), 0.0);
            useAll(player);
        }
        EXPECT_EQ(leftOver(loaded.host), "");
        EXPECT_EQ(loaded.host.misuses(), std::vector<std::string>());
        {
            const host::Object player = loaded.host.create(filePlayerClass);
            EXPECT_EQ(resultOf(player, method, path, channels), "false");
            EXPECT_EQ(resultOf(player, method, path, channels),
                      "UnsupportedOperationException: This class can only load one file.");
        }
        // The refused one took the file's place without giving back the former reference.
        EXPECT_EQ(leftOver(loaded.host), "1 folder item\n") << "a known loss of one";
    }
}

/// A file that loads, with so many frames: played to its end.
void expectLoaded(const std::string& path, std::size_t frames, int channels)
{
    for (const char* method : {"LoadFile", "LoadFileMT"}) {
        SCOPED_TRACE(method);
        LoadedHost loaded;
        {
            SteppedDevice device(44100, 2);
            const host::Object player = loaded.host.create(filePlayerClass);
            EXPECT_EQ(resultOf(player, method, path, channels), "true");
            EXPECT_EQ(player.get("Lasterror").integer(), 0);
            const host::Value data = player.call("Data");
            if (frames == 0)
                EXPECT_TRUE(data.isNil());
            else
                EXPECT_EQ(data.memoryBlock().size(), frames * std::size_t(channels) * sizeof(float));
            player.set("CurrentDeviceID", std::int64_t(device.id()));
            player.call("Play");
            device.step(3000);
            useAll(player);
            player.call("Play");
            device.step(3000);
        }
        EXPECT_EQ(leftOver(loaded.host), "");
        EXPECT_EQ(loaded.host.misuses(), std::vector<std::string>());
    }
}

TEST_F(FilePlayerFaults, WhatIsNoFile)
{
    fs::create_directory(folder / "folder");
    ASSERT_EQ(mkfifo((folder / "pipe").c_str(), 0600), 0);
    fs::create_symlink("nowhere", folder / "dangling");
    fs::create_symlink("folder", folder / "linked folder");
    save(folder / "empty.wav", "");
    save(folder / "zeros.wav", Bytes(5000, '\0'));
    save(folder / "text.wav", Bytes(5000, 'a'));
    Bytes noise(5000, '\0');
    std::uint32_t state = 1;
    for (char& byte : noise) byte = char((state = state * 1664525 + 1013904223) >> 24);
    save(folder / "noise.wav", noise);
    const struct {
        std::string path;
        OSStatus status;
        const char* why;
    } facts[] = {
        // clang-format off
        {folder / "missing.wav",   fnfErr,                             "nothing there: found by its folder"},
        {folder / "dangling",      fnfErr,                             "a link to nothing"},
        {folder / "folder",        kAudioFileInvalidFileError,         "a folder"},
        {folder / "linked folder", kAudioFileInvalidFileError,         "a folder"},
        {folder / "pipe",          kAudioFileInvalidFileError,         "nobody may wait for a writer"},
        {"/dev/zero",              kAudioFileInvalidFileError,         "a device, without end"},
        {"/",                      kAudioFileInvalidFileError,         "a folder without a name"},
        {folder / "empty.wav",     kAudioFileUnsupportedFileTypeError, "nothing in it"},
        {folder / "zeros.wav",     kAudioFileUnsupportedFileTypeError, "nothing known"},
        {folder / "text.wav",      kAudioFileUnsupportedFileTypeError, "nothing known"},
        {folder / "noise.wav",     kAudioFileUnsupportedFileTypeError, "nothing known"},
        // clang-format on
    };
    for (const auto& fact : facts) {
        SCOPED_TRACE(fact.path + ": " + fact.why);
        expectRefused(fact.path, fact.status);
    }
}

TEST_F(FilePlayerFaults, WhatHasNoPath)
{
    LoadedHost loaded;
    {
        const host::Object player = loaded.host.create(filePlayerClass);
        try {
            player.call("LoadFile", nullptr);
            FAIL();
        } catch (const host::HostException& error) {
            EXPECT_EQ(error.className() + ": " + error.message(), "NilObjectException: file is nil");
        }
        // That has not begun a load.
        EXPECT_EQ(resultOf(player, "LoadFile", folder / "no/such/folder.wav", 2),
                  "NilObjectException: File is invalid path");
        useAll(player);
    }
    EXPECT_EQ(leftOver(loaded.host), "");
}

TEST_F(FilePlayerFaults, WhatMayNotBeRead)
{
    if (support::hasThreadSanitizer) GTEST_SKIP() << "which minds a fork beside other threads";
    whole();
    chmod(path.c_str(), 0);
    chmod(folder.path().c_str(), 0755);
    LoadedHost loaded;
    const pid_t child = fork();
    if (child == 0) { // the superuser may read all: somebody else looks
        if (geteuid() == 0 && setuid(65534) != 0) _exit(9);
        const host::Object player = loaded.host.create(filePlayerClass);
        if (resultOf(player, "LoadFile", path, 2) != "false") _exit(1);
        if (player.get("Lasterror").integer() != permErr) _exit(2);
        _exit(0);
    }
    int status = -1;
    ASSERT_EQ(waitpid(child, &status, 0), child);
    EXPECT_TRUE(WIFEXITED(status));
    EXPECT_EQ(WEXITSTATUS(status), 0);
}

TEST_F(FilePlayerFaults, HeadersAtOddsWithTheirFile)
{
    const Bytes good = whole();
    Bytes billions = changed(good, 40, 0x7FFFFFF0, 4); // 2^31 frames of one byte
    billions = changed(changed(changed(billions, 22, 1, 2), 32, 1, 2), 34, 8, 2);
    Bytes huge = changed(changed(good, 40, 0xFFFFFFF0, 4), 4, 0xFFFFFFFF, 4);
    const struct {
        Bytes bytes;
        OSStatus status;
        std::size_t frames;
        const char* why;
    } facts[] = {
        // clang-format off
        {good,                           noErr,                      1000, "as it was written"},
        {good.substr(0, 2044),           noErr,                      500,  "half of it"},
        {good.substr(0, 48),             noErr,                      1,    "one frame"},
        {good.substr(0, 45),             noErr,                      0,    "less than a frame"},
        {good.substr(0, 44),             noErr,                      0,    "a header without data"},
        {good.substr(0, 30),             kAudioFileInvalidFileError, 0,    "half a header"},
        {huge,                           noErr,                      1000, "four gigabytes said, four kilobytes there"},
        {billions,                       noErr,                      4000, "2^31 frames said"},
        {changed(good, 40, 0, 4),        noErr,                      0,    "no frames said"},
        {changed(good, 22, 0, 2),        kAudioFileInvalidFileError, 0,    "no channels"},
        {changed(good, 22, 1025, 2),     kAudioFileUnsupportedDataFormatError, 0, "more channels than are read"},
        {changed(good, 22, 64, 2),       noErr,                      31,   "64 channels"},
        {changed(good, 24, 0, 4),        kAudioFileInvalidFileError, 0,    "no rate"},
        {changed(good, 24, 1u << 31, 4), kAudioFileInvalidFileError, 0,    "a negative rate"},
        // clang-format on
    };
    for (const auto& fact : facts) {
        SCOPED_TRACE(fact.why);
        save(path, fact.bytes);
        if (fact.status)
            expectRefused(path, fact.status);
        else
            expectLoaded(path, fact.frames, 2);
    }
}

TEST_F(FilePlayerFaults, ChannelsThatNoSoundHas)
{
    whole();
    for (const int channels : {0, -1, 1 << 16, INT32_MAX, INT32_MIN}) {
        SCOPED_TRACE(channels);
        LoadedHost loaded;
        {
            const host::Object player = loaded.host.create(filePlayerClass);
            EXPECT_EQ(resultOf(player, "LoadFile", path, channels), "false");
            EXPECT_NE(player.get("Lasterror").integer(), 0);
            useAll(player);
        }
        EXPECT_EQ(leftOver(loaded.host), "");
    }
    // The units refuse what the file could have given.
    for (const int channels : {0, -1, 1 << 16}) {
        SCOPED_TRACE(channels);
        LoadedHost loaded;
        {
            const host::Object player = loaded.host.create(filePlayerClass);
            EXPECT_FALSE(player.call("LoadFile", host::FolderItem::at(path), 2, channels).boolean());
            EXPECT_NE(player.get("Lasterror").integer(), 0);
            EXPECT_EQ(player.call("Data").memoryBlock().size(), 8000u) << "what was loaded stays";
            useAll(player);
        }
        EXPECT_EQ(leftOver(loaded.host), "");
    }
}

TEST_F(FilePlayerFaults, SixtyFourChannelsAreHeard)
{
    const support::Sound sound = support::makeNoise(44100, 64, 2000);
    support::writeSound(sound, path);
    LoadedHost loaded;
    {
        FilePlayer player(loaded, path);
        player.play();
        expectThenSilence(player.hear(3000), sound.samples);
    }
    EXPECT_EQ(leftOver(loaded.host), "");
}

// A sparse file: all its frames are there, but no memory holds them.
TEST_F(FilePlayerFaults, MoreSoundThanMemory)
{
    constexpr std::uint64_t frames = 1u << 30; // of one channel, 16 bits
    Bytes header = changed(changed(whole(), 22, 1, 2), 32, 2, 2).substr(0, 44);
    header = changed(changed(header, 40, frames * 2, 4), 4, frames * 2 + 36, 4);
    save(path, header);
    if (truncate64(path.c_str(), off64_t(frames * 2 + 44)) != 0) GTEST_SKIP() << "no room for a sparse file";
    for (const char* method : {"LoadFile", "LoadFileMT"}) {
        SCOPED_TRACE(method);
        LoadedHost loaded;
        {
            const host::Object player = loaded.host.create(filePlayerClass);
            EXPECT_EQ(resultOf(player, method, path, 2),
                      "OutOfMemoryException: Failed to allocate buffer for audio data.");
            EXPECT_TRUE(player.call("Data").isNil());
            useAll(player);
        }
        EXPECT_EQ(leftOver(loaded.host), "");
        EXPECT_EQ(loaded.host.misuses(), std::vector<std::string>());
    }
}

// ---- files that change under the load ----

/// Something that is done to a file over and over, beside the loads.
class Meanwhile {
public:
    explicit Meanwhile(std::function<void()> work)
        : thread_([this, work = std::move(work)] {
              while (!isOver_) work(), ++rounds_;
          })
    {
    }
    ~Meanwhile()
    {
        isOver_ = true;
        thread_.join();
    }
    int rounds() const { return rounds_; }

private:
    std::atomic<bool> isOver_{false};
    std::atomic<int> rounds_{0};
    std::thread thread_;
};

TEST_F(FilePlayerFaults, FilesThatChangeWhileTheyAreLoaded)
{
    const support::Sound sound = support::makeNoise(44100, 2, 200000);
    support::writeSound(sound, folder / "good.wav", wav16);
    support::writeSound(sound, folder / "good.flac", SF_FORMAT_FLAC | SF_FORMAT_PCM_16);
    const struct {
        const char* why;
        std::function<void(const std::string&, const Bytes&)> change;
    } facts[] = {
        {"cut off and written anew",
         [](const std::string& file, const Bytes& bytes) {
             for (const std::size_t size : {bytes.size() / 2, std::size_t(100), std::size_t(0)})
                 fs::resize_file(file, size);
             save(file, bytes);
         }},
        {"growing",
         [](const std::string& file, const Bytes& bytes) {
             fs::resize_file(file, fs::file_size(file) + 4096);
             if (fs::file_size(file) > 3 * bytes.size()) fs::resize_file(file, bytes.size());
         }},
        {"replaced",
         [](const std::string& file, const Bytes& bytes) {
             save(file + ".new", bytes.substr(0, bytes.size() * 3 / 4));
             fs::rename(file + ".new", file);
             save(file + ".new", bytes);
             fs::rename(file + ".new", file);
         }},
        {"with other bytes in it",
         [](const std::string& file, const Bytes& bytes) {
             std::fstream out(file, std::ios::binary | std::ios::in | std::ios::out);
             out.seekp(std::streamoff(bytes.size() / 3));
             out.write(bytes.data(), std::streamsize(bytes.size() / 2));
         }},
    };
    for (const char* name : {"good.wav", "good.flac"})
        for (const auto& fact : facts) {
            SCOPED_TRACE(std::string(name) + " " + fact.why);
            const Bytes bytes = load(folder / name);
            const std::string file = folder / (std::string("changing-") + name);
            save(file, bytes);
            LoadedHost loaded;
            {
                const Meanwhile meanwhile([&] { fact.change(file, bytes); });
                for (int round = 0; round < 10 || meanwhile.rounds() < 10; ++round) {
                    const host::Object player = loaded.host.create(filePlayerClass);
                    const std::string result =
                        resultOf(player, round % 2 ? "LoadFile" : "LoadFileMT", file, 2);
                    EXPECT_TRUE(result == "true" || result == "false") << result;
                    if (result == "true") EXPECT_EQ(player.get("Lasterror").integer(), 0);
                    const auto frames = player.call("Data").memoryBlock().size() / 8;
                    EXPECT_LE(frames, 3 * sound.frames() + 4096);
                    if (round < 2) useAll(player);
                }
            }
            EXPECT_EQ(leftOver(loaded.host), "");
            EXPECT_EQ(loaded.host.misuses(), std::vector<std::string>());
        }
}

} // namespace
