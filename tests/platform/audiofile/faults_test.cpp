// Files that cannot be opened, contradict themselves or change while they are read.
#include "tests/platform/audiofile/sound_files.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>

#include <fcntl.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

using sound::Bytes;
namespace fs = std::filesystem;

constexpr int wav16 = SF_FORMAT_WAV | SF_FORMAT_PCM_16;

/// Make a WAV file of 1000 frames. Offsets of its header fields: 22 channels, 24 rate, 28 bytes per second,
/// 32 bytes per frame, 40 data size.
Bytes waveBytes(const sound::Folder& folder)
{
    sound::write(folder / "whole.wav", wav16, 44100, 2, sound::music(2, 1000));
    Bytes bytes = sound::load(folder / "whole.wav");
    EXPECT_EQ(bytes.size(), 4044u);
    return bytes;
}

void put(Bytes& bytes, std::size_t at, std::uint64_t value, int count)
{
    for (int i = 0; i < count; ++i)
        bytes[at + static_cast<std::size_t>(i)] = static_cast<std::uint8_t>(value >> 8 * i);
}

TEST(OpeningFaults, ItemsThatAreNotSoundFilesAreRefused)
{
    const sound::Folder folder;
    fs::create_directory(folder / "folder");
    ASSERT_EQ(mkfifo((folder / "pipe").c_str(), 0600), 0);
    const int listener = socket(AF_UNIX, SOCK_STREAM, 0);
    sockaddr_un address = {};
    address.sun_family = AF_UNIX;
    std::snprintf(address.sun_path, sizeof address.sun_path, "%s", (folder / "socket").c_str());
    ASSERT_EQ(bind(listener, reinterpret_cast<sockaddr*>(&address), sizeof address), 0);
    fs::create_symlink("missing", folder / "dangling");
    fs::create_symlink("loop", folder / "loop");
    fs::create_symlink("folder", folder / "linked folder");
    sound::save(folder / "empty", {});
    sound::save(folder / "zeros", Bytes(5000, 0));
    sound::save(folder / "text", Bytes(5000, 'a'));
    Bytes noise(5000);
    std::uint32_t state = 1;
    for (auto& byte : noise) byte = static_cast<std::uint8_t>((state = state * 1664525 + 1013904223) >> 24);
    sound::save(folder / "noise", noise);
    sound::save(folder / "noise.au", noise);

    const struct {
        std::string path;
        OSStatus status;
        const char* why;
    } facts[] = {
        // clang-format off
        {folder / "missing.wav",            fnfErr,                             "missing"},
        {folder / "no folder/x.wav",        fnfErr,                             "missing folder"},
        {folder / "empty/x.wav",            fnfErr,                             "a file as a folder"},
        {folder / "dangling",               fnfErr,                             "a link to nothing"},
        {folder / "loop",                   fnfErr,                             "a link to itself"},
        {folder / std::string(300, 'x'),    errFSNameTooLong,                   "the name is too long"},
        {folder / "folder",                 kAudioFileInvalidFileError,         "a folder"},
        {folder / "linked folder",          kAudioFileInvalidFileError,         "a folder"},
        {folder / "pipe",                   kAudioFileInvalidFileError,         "a pipe"},
        {folder / "socket",                 kAudioFileInvalidFileError,         "a socket"},
        {"/dev/zero",                       kAudioFileInvalidFileError,         "a device"},
        {"/",                               kAudioFileInvalidFileError,         "a folder"},
        {folder / "empty",                  kAudioFileUnsupportedFileTypeError, "empty"},
        {folder / "zeros",                  kAudioFileUnsupportedFileTypeError, "unknown contents"},
        {folder / "text",                   kAudioFileUnsupportedFileTypeError, "unknown contents"},
        {folder / "noise",                  kAudioFileUnsupportedFileTypeError, "unknown contents"},
        {folder / "noise.au",               kAudioFileUnsupportedFileTypeError, "the name suffix is ignored"},
        // clang-format on
    };
    for (const auto& fact : facts) {
        SCOPED_TRACE(fact.path + ": " + fact.why);
        EXPECT_EQ(sound::statusOfOpening(fact.path), fact.status);
        const CFURLRef url = sound::urlOf(fact.path);
        AudioFileID file = nullptr;
        EXPECT_EQ(AudioFileOpenURL(url, kAudioFileReadPermission, 0, &file), fact.status);
        EXPECT_EQ(file, nullptr);
        CFRelease(url);
    }
    close(listener);
    EXPECT_EQ(sound::alive(), 0u);
}

TEST(OpeningFaults, UnreadableFilesArePermissionErrors)
{
    const sound::Folder folder;
    sound::write(folder / "x.wav", wav16, 44100, 2, sound::music(2, 100));
    fs::create_directory(folder / "closed");
    sound::write(folder / "closed/x.wav", wav16, 44100, 2, sound::music(2, 100));
    chmod((folder / "x.wav").c_str(), 0);
    chmod((folder / "closed").c_str(), 0);
    chmod(folder.path().c_str(), 0755);
    const pid_t child = fork();
    if (child == 0) { // the child gives up superuser rights, because the superuser may read every file
        if (geteuid() == 0 && setuid(65534) != 0) _exit(3);
        if (sound::statusOfOpening(folder / "x.wav") != permErr) _exit(1);
        if (sound::statusOfOpening(folder / "closed/x.wav") != permErr) _exit(2);
        _exit(0);
    }
    int status = -1;
    ASSERT_EQ(waitpid(child, &status, 0), child);
    EXPECT_TRUE(WIFEXITED(status));
    EXPECT_EQ(WEXITSTATUS(status), 0);
    chmod((folder / "closed").c_str(), 0755);
}

TEST(OpeningFaults, WavHeadersThatContradictTheFile)
{
    const sound::Folder folder;
    const Bytes whole = waveBytes(folder);
    const auto changed = [&](std::size_t at, std::uint64_t value, int count) {
        Bytes bytes = whole;
        put(bytes, at, value, count);
        return bytes;
    };
    const auto cut = [&](std::size_t size) {
        return Bytes(whole.begin(), whole.begin() + static_cast<long>(size));
    };
    Bytes huge = changed(40, 0xFFFFFFF0, 4);
    put(huge, 4, 0xFFFFFFFF, 4);
    Bytes billions = changed(40, 0x7FFFFFF0, 4); // header that states 2^31 frames of one byte
    put(billions, 22, 1, 2), put(billions, 32, 1, 2), put(billions, 34, 8, 2);
    const struct {
        Bytes bytes;
        OSStatus status;
        SInt64 frames;
        const char* why;
    } facts[] = {
        // clang-format off
        {whole,                       noErr,                      1000, "unchanged"},
        {cut(2044),                   noErr,                      500,  "half of the file"},
        {cut(45),                     noErr,                      0,    "less than a frame"},
        {cut(44),                     noErr,                      0,    "a header without data"},
        {cut(30),                     kAudioFileInvalidFileError, -1,   "half a header"},
        {cut(12),                     kAudioFileInvalidFileError, -1,   "12 bytes"},
        {huge,                        noErr,                      1000, "states 4 GB, has 4 KB"},
        {billions,                    noErr,                      4000, "states 2^31 frames"},
        {changed(40, 0, 4),           noErr,                      0,    "states 0 frames"},
        {changed(22, 0, 2),           kAudioFileInvalidFileError, -1,   "no channels"},
        {changed(22, 64, 2),          noErr,                      31,   "64 channels"},
        {changed(24, 0, 4),           kAudioFileInvalidFileError, -1,   "no rate"},
        {changed(24, 0x80000000, 4),  kAudioFileInvalidFileError, -1,   "a negative rate"},
        // clang-format on
    };
    for (const auto& fact : facts) {
        SCOPED_TRACE(fact.why);
        sound::save(folder / "x.wav", fact.bytes);
        const sound::File file(folder / "x.wav");
        EXPECT_EQ(file.status, fact.status);
        EXPECT_EQ(file.frames(), fact.frames);
        if (fact.status) continue;
        const UInt32 channels = file.format().mChannelsPerFrame;
        ASSERT_EQ(file.setClient(sound::floats(file.format().mSampleRate, channels)), noErr);
        EXPECT_EQ(file.readFloats(channels).size(), static_cast<std::size_t>(fact.frames) * channels);
    }
}

// The file is sparse, so that three gigabytes need no disk space.
TEST(OpeningFaults, ThreeGigabytesOpenAndSeek)
{
    const sound::Folder folder;
    Bytes bytes = waveBytes(folder);
    bytes.resize(44);
    put(bytes, 4, 0xC0000024, 4);
    put(bytes, 40, 0xC0000000, 4);
    const std::string path = folder / "x.wav";
    sound::save(path, bytes);
    fs::resize_file(path, 44 + 0xC0000000u - 4);
    // Samples of the last frame.
    std::ofstream(path, std::ios::binary | std::ios::app).write("\0\x40\0\xC0", 4);
    const sound::File file(path);
    ASSERT_EQ(file.status, noErr);
    EXPECT_EQ(file.frames(), 0x30000000);
    ASSERT_EQ(file.setClient(sound::floats(44100, 2)), noErr);
    ASSERT_EQ(ExtAudioFileSeek(file, 0x30000000 - 2), noErr);
    EXPECT_EQ(sound::File(path).status, noErr);
    Bytes last;
    ASSERT_EQ(file.read(5, 8, 2, last), noErr);
    ASSERT_EQ(last.size(), 16u);
    float samples[4];
    std::memcpy(samples, last.data(), 16);
    EXPECT_EQ(samples[0], 0);
    EXPECT_EQ(samples[2], 0.5f);
    EXPECT_EQ(samples[3], -0.5f);
}

// The stated length of a FLAC file is used if its last frame decodes. Otherwise the frames are counted.
TEST(OpeningFaults, FlacLengthsAreCheckedOrCounted)
{
    const sound::Folder folder;
    const std::string path = folder / "x.flac";
    sound::write(path, SF_FORMAT_FLAC | SF_FORMAT_PCM_16, 44100, 2, std::vector<float>(2 * 441000));
    const Bytes silence = sound::load(path);
    sound::write(path, SF_FORMAT_FLAC | SF_FORMAT_PCM_16, 44100, 2, sound::music(2, 44100));
    const Bytes music = sound::load(path);
    // FLAC states the number of frames in 36 bits, from the middle of byte 21 on.
    const auto stating = [](Bytes bytes, std::uint64_t frames) {
        bytes[21] = static_cast<std::uint8_t>((bytes[21] & 0xF0) | (frames >> 32 & 0x0F));
        for (int i = 0; i < 4; ++i)
            bytes[22 + static_cast<std::size_t>(i)] = static_cast<std::uint8_t>(frames >> (24 - 8 * i));
        return bytes;
    };
    const auto half = [](Bytes bytes) {
        bytes.resize(bytes.size() / 2);
        return bytes;
    };
    const struct {
        Bytes bytes;
        // Expected length (-1: the number of frames read), and lowest number of frames read (0: all).
        SInt64 frames, least;
        const char* why;
    } facts[] = {
        // clang-format off
        {silence,                         441000, 0,      "many frames per byte"},
        {stating(silence, 0),              441000, 0,      "0: unknown, counted"},
        {stating(silence, 0x80000000),     441000, 0,      "states 2^31: counted"},
        {stating(silence, 0xFFFFFFFFF),    441000, 0,      "the largest length"},
        {stating(silence, 1000),           1000,   0,      "states fewer: the rest is ignored"},
        {music,                           44100,  0,      "unchanged"},
        {stating(music, 0),                44100,  0,      "0: unknown, counted"},
        {half(music),                     -1,     10000,  "truncated: counted"},
        {half(stating(music, 1ull << 35)), -1,     10000,  "truncated with a wrong length: counted"},
        // clang-format on
    };
    for (const auto& fact : facts) {
        SCOPED_TRACE(fact.why);
        sound::save(path, fact.bytes);
        const sound::File file(path);
        ASSERT_EQ(file.status, noErr);
        ASSERT_EQ(file.setClient(sound::floats(44100, 2)), noErr);
        const auto read = static_cast<SInt64>(file.readFloats(2).size() / 2);
        if (fact.frames >= 0) {
            EXPECT_EQ(file.frames(), fact.frames);
        } else {
            EXPECT_EQ(file.frames(), read);
        }
        if (fact.least == 0) {
            EXPECT_EQ(read, fact.frames);
        } else {
            EXPECT_GE(read, fact.least);
            EXPECT_LT(read, 44100);
        }
    }
}

// ---- changes while the file is open ----

SInt64 framesRead(const sound::File& file) { return static_cast<SInt64>(file.readFloats(2, 100).size() / 2); }

TEST(OpenFileFaults, TruncatedFileEndsAtItsData)
{
    const sound::Folder folder;
    waveBytes(folder);
    const sound::File file(folder / "whole.wav");
    ASSERT_EQ(file.setClient(sound::floats(44100, 2)), noErr);
    ASSERT_EQ(truncate((folder / "whole.wav").c_str(), 44 + 4 * 300), 0);
    EXPECT_EQ(file.frames(), 1000) << "the length at opening";
    const SInt64 read = framesRead(file);
    EXPECT_LE(read, 300);
    EXPECT_EQ(read, 300);
    ASSERT_EQ(truncate((folder / "whole.wav").c_str(), 0), 0);
    ASSERT_EQ(ExtAudioFileSeek(file, 0), noErr);
    EXPECT_EQ(framesRead(file), 0);
}

TEST(OpenFileFaults, TruncatedFileAtAnotherRateEndsAtItsData)
{
    const sound::Folder folder;
    waveBytes(folder);
    const sound::File file(folder / "whole.wav");
    ASSERT_EQ(file.setClient(sound::floats(88200, 2)), noErr);
    ASSERT_EQ(truncate((folder / "whole.wav").c_str(), 44 + 4 * 300), 0);
    EXPECT_EQ(framesRead(file), 600) << "300 frames at twice the rate";
}

TEST(OpenFileFaults, GrownFileKeepsItsLength)
{
    const sound::Folder folder;
    const Bytes whole = waveBytes(folder);
    const sound::File file(folder / "whole.wav");
    ASSERT_EQ(file.setClient(sound::floats(44100, 2)), noErr);
    Bytes longer = whole;
    longer.insert(longer.end(), 4000, 1);
    put(longer, 40, 8000, 4);
    sound::save(folder / "whole.wav", longer);
    EXPECT_EQ(file.frames(), 1000);
    EXPECT_EQ(framesRead(file), 1000) << "the length at opening";
    EXPECT_EQ(sound::File(folder / "whole.wav").frames(), 2000) << "a new opening reads all frames";
}

TEST(OpenFileFaults, ReplacedFileIsReadUnchanged)
{
    const sound::Folder folder;
    waveBytes(folder);
    const std::vector<float> former = sound::decode(folder / "whole.wav").samples;
    const sound::File file(folder / "whole.wav");
    ASSERT_EQ(file.setClient(sound::floats(44100, 2)), noErr);
    sound::write(folder / "other.wav", wav16, 8000, 1, sound::music(1, 10));
    fs::rename(folder / "other.wav", folder / "whole.wav");
    EXPECT_TRUE(sound::isSame(file.readFloats(2), former));
    fs::remove(folder / "whole.wav");
    ASSERT_EQ(ExtAudioFileSeek(file, 0), noErr);
    EXPECT_TRUE(sound::isSame(file.readFloats(2), former));
}

/// Find the descriptor of a file that this process has open. Returns -1 if the file is not open.
int descriptorOf(const std::string& path)
{
    for (int descriptor = 3; descriptor < 1024; ++descriptor) {
        std::error_code none;
        if (fs::read_symlink("/proc/self/fd/" + std::to_string(descriptor), none) == path) return descriptor;
    }
    return -1;
}

TEST(OpenFileFaults, DiskErrorIsReportedUntilTheDiskReads)
{
    const sound::Folder folder;
    const std::string path = folder / "x.wav";
    sound::write(path, wav16, 44100, 2, sound::music(2, 50000));
    for (const double rate : {44100.0, 48000.0}) {
        SCOPED_TRACE(rate);
        const sound::File file(path);
        ASSERT_EQ(file.setClient(sound::floats(rate, 2)), noErr);
        Bytes first, bytes;
        ASSERT_EQ(file.read(1000, 8, 2, first), noErr);
        ASSERT_EQ(first.size(), 8000u);

        const int descriptor = descriptorOf(path);
        ASSERT_GE(descriptor, 0);
        const int saved = dup(descriptor), unreadable = open("/", O_RDONLY | O_DIRECTORY);
        ASSERT_EQ(dup2(unreadable, descriptor), descriptor);
        EXPECT_EQ(file.read(1000, 8, 2, bytes), ioErr);
        EXPECT_EQ(file.read(1000, 8, 2, bytes), ioErr);
        ASSERT_EQ(dup2(saved, descriptor), descriptor);
        close(saved);
        close(unreadable);

        ASSERT_EQ(ExtAudioFileSeek(file, 0), noErr);
        ASSERT_EQ(file.read(1000, 8, 2, bytes), noErr);
        EXPECT_EQ(bytes, first);
    }
}

} // namespace
