// Loads of files that are missing, damaged, not sound, or changed during the load: a load returns a stated
// status, nothing leaks, and the file player remains usable.
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

Bytes readBytes(const std::string& path)
{
    std::ifstream in(path, std::ios::binary);
    return Bytes(std::istreambuf_iterator<char>(in), {});
}

void writeBytes(const std::string& path, const Bytes& bytes)
{
    std::ofstream out(path, std::ios::binary);
    out.write(bytes.data(), std::streamsize(bytes.size()));
}

Bytes changed(Bytes bytes, std::size_t at, std::uint64_t value, int count)
{
    for (int i = 0; i < count; ++i) bytes[at + std::size_t(i)] = char(value >> 8 * i);
    return bytes;
}

/// Load a file. Returns "true", "false", or class and message of the exception.
std::string loadResult(const host::Object& player, const char* method, const std::string& path, int channels)
{
    try {
        return player.call(method, host::FolderItem::at(path), channels, channels).boolean() ? "true"
                                                                                             : "false";
    } catch (const host::HostException& error) {
        return error.className() + ": " + error.message();
    }
}

/// Read and write the properties of a player and call its methods, whether or not a file is loaded.
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

struct FilePlayerBadFiles : testing::Test {
    const support::TemporaryFolder folder;
    const std::string path = folder / "x.wav";

    /// Return the bytes of a WAV file of 1,000 frames: a header of 44 bytes, then PCM16 stereo samples.
    Bytes makeWav()
    {
        support::writeSound(support::makeNoise(44100, 2, 1000), path, wav16);
        Bytes bytes = readBytes(path);
        EXPECT_EQ(bytes.size(), 4044u);
        return bytes;
    }
};

/// Expect that both load methods refuse the file with `status`, and that a second load raises an exception.
void expectRefused(const std::string& path, OSStatus status, int channels = 2)
{
    for (const char* method : {"LoadFile", "LoadFileMT"}) {
        SCOPED_TRACE(method);
        LoadedHost loaded;
        {
            const host::Object player = loaded.host.create(filePlayerClass);
            EXPECT_EQ(loadResult(player, method, path, channels), "false");
            EXPECT_EQ(player.get("Lasterror").integer(), status);
            EXPECT_TRUE(player.call("Data").isNil());
            EXPECT_EQ(player.get("SampleRate").number(), 0.0);
            useAll(player);
        }
        expectCleanHost(loaded.host);
        {
            const host::Object player = loaded.host.create(filePlayerClass);
            EXPECT_EQ(loadResult(player, method, path, channels), "false");
            EXPECT_EQ(loadResult(player, method, path, channels),
                      "UnsupportedOperationException: This class can only load one file.");
        }
        // The refused second load replaces the player's folder item without releasing the former item.
        EXPECT_EQ(liveObjects(loaded.host), "1 folder item\n") << "a known leak";
    }
}

/// Expect that both load methods load `frames` frames, and that the player plays them and then runs on past
/// the end of the file.
void expectLoaded(const std::string& path, std::size_t frames, int channels)
{
    for (const char* method : {"LoadFile", "LoadFileMT"}) {
        SCOPED_TRACE(method);
        LoadedHost loaded;
        {
            SteppedDevice device(44100, 2);
            const host::Object player = loaded.host.create(filePlayerClass);
            EXPECT_EQ(loadResult(player, method, path, channels), "true");
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
        expectCleanHost(loaded.host);
    }
}

TEST_F(FilePlayerBadFiles, WithoutSoundAreRefused)
{
    fs::create_directory(folder / "folder");
    ASSERT_EQ(mkfifo((folder / "pipe").c_str(), 0600), 0);
    fs::create_symlink("missing", folder / "dangling");
    fs::create_symlink("folder", folder / "linked folder");
    writeBytes(folder / "empty.wav", "");
    writeBytes(folder / "zeros.wav", Bytes(5000, '\0'));
    writeBytes(folder / "text.wav", Bytes(5000, 'a'));
    Bytes noise(5000, '\0');
    std::uint32_t state = 1;
    for (char& byte : noise) byte = char((state = state * 1664525 + 1013904223) >> 24);
    writeBytes(folder / "noise.wav", noise);
    const struct {
        std::string path;
        OSStatus status;
        const char* why;
    } facts[] = {
        // clang-format off
        {folder / "missing.wav",   fnfErr,                             "missing; the folder exists"},
        {folder / "dangling",      fnfErr,                             "a dangling link"},
        {folder / "folder",        kAudioFileInvalidFileError,         "a folder"},
        {folder / "linked folder", kAudioFileInvalidFileError,         "a folder"},
        {folder / "pipe",          kAudioFileInvalidFileError,         "a pipe; the load does not wait for a writer"},
        {"/dev/zero",              kAudioFileInvalidFileError,         "a device without an end"},
        {"/",                      kAudioFileInvalidFileError,         "a folder without a name"},
        {folder / "empty.wav",     kAudioFileUnsupportedFileTypeError, "0 bytes"},
        {folder / "zeros.wav",     kAudioFileUnsupportedFileTypeError, "no known format"},
        {folder / "text.wav",      kAudioFileUnsupportedFileTypeError, "no known format"},
        {folder / "noise.wav",     kAudioFileUnsupportedFileTypeError, "no known format"},
        // clang-format on
    };
    for (const auto& fact : facts) {
        SCOPED_TRACE(fact.path + ": " + fact.why);
        expectRefused(fact.path, fact.status);
    }
}

TEST_F(FilePlayerBadFiles, WithoutAPathRaise)
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
        // The player accepts another load after an exception during a load.
        EXPECT_EQ(loadResult(player, "LoadFile", folder / "no/such/folder.wav", 2),
                  "NilObjectException: File is invalid path");
        useAll(player);
    }
    expectCleanHost(loaded.host);
}

TEST_F(FilePlayerBadFiles, WithoutReadPermissionAreRefused)
{
    if (support::hasThreadSanitizer)
        GTEST_SKIP() << "the thread sanitizer does not support fork with several threads";
    makeWav();
    chmod(path.c_str(), 0);
    chmod(folder.path().c_str(), 0755);
    LoadedHost loaded;
    const pid_t child = fork();
    if (child == 0) { // switch to another user, because the superuser can read every file
        if (geteuid() == 0 && setuid(65534) != 0) _exit(9);
        const host::Object player = loaded.host.create(filePlayerClass);
        if (loadResult(player, "LoadFile", path, 2) != "false") _exit(1);
        if (player.get("Lasterror").integer() != permErr) _exit(2);
        _exit(0);
    }
    int status = -1;
    ASSERT_EQ(waitpid(child, &status, 0), child);
    EXPECT_TRUE(WIFEXITED(status));
    EXPECT_EQ(WEXITSTATUS(status), 0);
}

TEST_F(FilePlayerBadFiles, WithWrongHeadersLoadThePresentFrames)
{
    const Bytes good = makeWav();
    Bytes billions = changed(good, 40, 0x7FFFFFF0, 4); // a header that states 2^31 frames of 1 byte
    billions = changed(changed(changed(billions, 22, 1, 2), 32, 1, 2), 34, 8, 2);
    Bytes huge = changed(changed(good, 40, 0xFFFFFFF0, 4), 4, 0xFFFFFFFF, 4);
    const struct {
        Bytes bytes;
        OSStatus status;
        std::size_t frames;
        const char* why;
    } facts[] = {
        // clang-format off
        {good,                           noErr,                      1000, "unchanged"},
        {good.substr(0, 2044),           noErr,                      500,  "half of the file"},
        {good.substr(0, 48),             noErr,                      1,    "the first frame"},
        {good.substr(0, 45),             noErr,                      0,    "less than a frame"},
        {good.substr(0, 44),             noErr,                      0,    "a header without data"},
        {good.substr(0, 30),             kAudioFileInvalidFileError, 0,    "half a header"},
        {huge,                           noErr,                      1000, "states 4 GiB, has 4 kB"},
        {billions,                       noErr,                      4000, "states 2^31 frames"},
        {changed(good, 40, 0, 4),        noErr,                      0,    "states 0 frames"},
        {changed(good, 22, 0, 2),        kAudioFileInvalidFileError, 0,    "0 channels"},
        {changed(good, 22, 1025, 2),     kAudioFileUnsupportedDataFormatError, 0, "more channels than libsndfile reads"},
        {changed(good, 22, 64, 2),       noErr,                      31,   "64 channels"},
        {changed(good, 24, 0, 4),        kAudioFileInvalidFileError, 0,    "rate 0"},
        {changed(good, 24, 1u << 31, 4), kAudioFileInvalidFileError, 0,    "a negative rate"},
        // clang-format on
    };
    for (const auto& fact : facts) {
        SCOPED_TRACE(fact.why);
        writeBytes(path, fact.bytes);
        if (fact.status)
            expectRefused(path, fact.status);
        else
            expectLoaded(path, fact.frames, 2);
    }
}

TEST_F(FilePlayerBadFiles, AbsurdChannelCountsAreRefused)
{
    makeWav();
    for (const int channels : {0, -1, 1 << 16, INT32_MAX, INT32_MIN}) {
        SCOPED_TRACE(channels);
        LoadedHost loaded;
        {
            const host::Object player = loaded.host.create(filePlayerClass);
            EXPECT_EQ(loadResult(player, "LoadFile", path, channels), "false");
            EXPECT_NE(player.get("Lasterror").integer(), 0);
            useAll(player);
        }
        expectCleanHost(loaded.host);
    }
    // With 2 data channels the load succeeds, but the audio units refuse these numbers of output channels.
    for (const int channels : {0, -1, 1 << 16}) {
        SCOPED_TRACE(channels);
        LoadedHost loaded;
        {
            const host::Object player = loaded.host.create(filePlayerClass);
            EXPECT_FALSE(player.call("LoadFile", host::FolderItem::at(path), 2, channels).boolean());
            EXPECT_NE(player.get("Lasterror").integer(), 0);
            EXPECT_EQ(player.call("Data").memoryBlock().size(), 8000u) << "the loaded data stays";
            useAll(player);
        }
        expectCleanHost(loaded.host);
    }
}

TEST_F(FilePlayerBadFiles, SixtyFourChannelsPlay)
{
    const support::Sound sound = support::makeNoise(44100, 64, 2000);
    support::writeSound(sound, path);
    LoadedHost loaded;
    {
        FilePlayer player(loaded, path);
        player.play();
        expectThenSilence(player.render(3000), sound.samples);
    }
    expectCleanHost(loaded.host);
}

// The file is sparse and has all frames that its header states: more samples than a memory block can hold.
TEST_F(FilePlayerBadFiles, LargerThanMemoryRaiseOutOfMemory)
{
    constexpr std::uint64_t frames = 1u << 30; // PCM16 mono
    Bytes header = changed(changed(makeWav(), 22, 1, 2), 32, 2, 2).substr(0, 44);
    header = changed(changed(header, 40, frames * 2, 4), 4, frames * 2 + 36, 4);
    writeBytes(path, header);
    if (truncate64(path.c_str(), off64_t(frames * 2 + 44)) != 0)
        GTEST_SKIP() << "the disk does not store the sparse file";
    for (const char* method : {"LoadFile", "LoadFileMT"}) {
        SCOPED_TRACE(method);
        LoadedHost loaded;
        {
            const host::Object player = loaded.host.create(filePlayerClass);
            EXPECT_EQ(loadResult(player, method, path, 2),
                      "OutOfMemoryException: Failed to allocate buffer for audio data.");
            EXPECT_TRUE(player.call("Data").isNil());
            useAll(player);
        }
        expectCleanHost(loaded.host);
    }
}

// ---- files that change during the load ----

/// Calls a function again and again on another thread, until the destruction of the object.
class RepeatOnThread {
public:
    explicit RepeatOnThread(std::function<void()> work)
        : thread_([this, work = std::move(work)] {
              while (!isOver_) work(), ++rounds_;
          })
    {
    }
    ~RepeatOnThread()
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

TEST_F(FilePlayerBadFiles, ChangedDuringTheLoadLoadOrAreRefused)
{
    const support::Sound sound = support::makeNoise(44100, 2, 200000);
    support::writeSound(sound, folder / "good.wav", wav16);
    support::writeSound(sound, folder / "good.flac", SF_FORMAT_FLAC | SF_FORMAT_PCM_16);
    const struct {
        const char* why;
        std::function<void(const std::string&, const Bytes&)> change;
    } facts[] = {
        {"truncated and rewritten",
         [](const std::string& file, const Bytes& bytes) {
             for (const std::size_t size : {bytes.size() / 2, std::size_t(100), std::size_t(0)})
                 fs::resize_file(file, size);
             writeBytes(file, bytes);
         }},
        {"growing",
         [](const std::string& file, const Bytes& bytes) {
             fs::resize_file(file, fs::file_size(file) + 4096);
             if (fs::file_size(file) > 3 * bytes.size()) fs::resize_file(file, bytes.size());
         }},
        {"replaced",
         [](const std::string& file, const Bytes& bytes) {
             writeBytes(file + ".new", bytes.substr(0, bytes.size() * 3 / 4));
             fs::rename(file + ".new", file);
             writeBytes(file + ".new", bytes);
             fs::rename(file + ".new", file);
         }},
        {"partly overwritten",
         [](const std::string& file, const Bytes& bytes) {
             std::fstream out(file, std::ios::binary | std::ios::in | std::ios::out);
             out.seekp(std::streamoff(bytes.size() / 3));
             out.write(bytes.data(), std::streamsize(bytes.size() / 2));
         }},
    };
    for (const char* name : {"good.wav", "good.flac"})
        for (const auto& fact : facts) {
            SCOPED_TRACE(std::string(name) + " " + fact.why);
            const Bytes bytes = readBytes(folder / name);
            const std::string file = folder / (std::string("changing-") + name);
            writeBytes(file, bytes);
            LoadedHost loaded;
            {
                const RepeatOnThread changes([&] { fact.change(file, bytes); });
                for (int round = 0; round < 10 || changes.rounds() < 10; ++round) {
                    const host::Object player = loaded.host.create(filePlayerClass);
                    const std::string result =
                        loadResult(player, round % 2 ? "LoadFile" : "LoadFileMT", file, 2);
                    EXPECT_TRUE(result == "true" || result == "false") << result;
                    if (result == "true") EXPECT_EQ(player.get("Lasterror").integer(), 0);
                    const auto frames = player.call("Data").memoryBlock().size() / 8;
                    EXPECT_LE(frames, 3 * sound.frames() + 4096);
                    if (round < 2) useAll(player);
                }
            }
            expectCleanHost(loaded.host);
        }
}

} // namespace
