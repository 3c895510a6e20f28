// Handles of files: the order of closing, and the status that closed and unknown handles return.
#include "tests/platform/audiofile/sound_files.h"

#include <gtest/gtest.h>

#include <atomic>
#include <dirent.h>
#include <thread>

namespace {

std::string anyFile(const sound::Folder& folder)
{
    sound::write(folder / "x.wav", SF_FORMAT_WAV | SF_FORMAT_PCM_16, 44100, 2, sound::music(2, 1000));
    return folder / "x.wav";
}

ExtAudioFileRef open(const std::string& path)
{
    const CFURLRef url = sound::urlOf(path);
    ExtAudioFileRef file = nullptr;
    EXPECT_EQ(ExtAudioFileOpenURL(url, &file), noErr);
    CFRelease(url);
    return file;
}

AudioFileID audioFileOf(ExtAudioFileRef file)
{
    AudioFileID audioFile = nullptr;
    UInt32 size = sizeof audioFile;
    EXPECT_EQ(ExtAudioFileGetProperty(file, kExtAudioFileProperty_AudioFile, &size, &audioFile), noErr);
    EXPECT_NE(audioFile, nullptr);
    return audioFile;
}

OSStatus durationStatus(AudioFileID file)
{
    Float64 seconds = 0;
    UInt32 size = sizeof seconds;
    return AudioFileGetProperty(file, kAudioFilePropertyEstimatedDuration, &size, &seconds);
}

int openDescriptors()
{
    int count = 0;
    DIR* folder = opendir("/proc/self/fd");
    while (readdir(folder)) ++count;
    closedir(folder);
    return count;
}

/// Expect that all calls with an extended audio file return paramErr.
void expectRefused(ExtAudioFileRef file)
{
    UInt32 size = 8, frames = 1;
    SInt64 value = 0;
    float memory[2];
    AudioBufferList list = {1, {{2, 8, memory}}};
    EXPECT_EQ(ExtAudioFileGetProperty(file, kExtAudioFileProperty_FileLengthFrames, &size, &value), paramErr);
    EXPECT_EQ(ExtAudioFileGetPropertyInfo(file, kExtAudioFileProperty_FileLengthFrames, &size, nullptr),
              paramErr);
    EXPECT_EQ(ExtAudioFileSetProperty(file, kExtAudioFileProperty_ClientDataFormat, size, &value), paramErr);
    EXPECT_EQ(ExtAudioFileRead(file, &frames, &list), paramErr);
    EXPECT_EQ(ExtAudioFileSeek(file, 0), paramErr);
    EXPECT_EQ(ExtAudioFileTell(file, &value), paramErr);
    EXPECT_EQ(ExtAudioFileDispose(file), paramErr);
}

TEST(FileHandles, CloseThenDispose)
{
    const sound::Folder folder;
    const std::string path = anyFile(folder);
    const int before = openDescriptors();
    const ExtAudioFileRef file = open(path);
    const AudioFileID audioFile = audioFileOf(file);
    EXPECT_EQ(AudioFileClose(audioFile), noErr);
    EXPECT_EQ(durationStatus(audioFile), paramErr);
    EXPECT_EQ(AudioFileClose(audioFile), paramErr) << "twice";

    UInt32 frames = 1000;
    std::int16_t memory[2000];
    AudioBufferList list = {1, {{2, sizeof memory, memory}}};
    EXPECT_EQ(ExtAudioFileRead(file, &frames, &list), noErr) << "the extended file stays open";
    EXPECT_EQ(frames, 1000u);
    EXPECT_EQ(ExtAudioFileDispose(file), noErr);
    expectRefused(file);
    EXPECT_EQ(openDescriptors(), before);
    EXPECT_EQ(sound::alive(), 0u);
}

TEST(FileHandles, DisposeThenClose)
{
    const sound::Folder folder;
    const ExtAudioFileRef file = open(anyFile(folder));
    const AudioFileID audioFile = audioFileOf(file);
    EXPECT_EQ(audioFileOf(file), audioFile) << "one handle while it is open";
    EXPECT_EQ(durationStatus(audioFile), noErr);
    EXPECT_EQ(ExtAudioFileDispose(file), noErr);
    EXPECT_EQ(durationStatus(audioFile), paramErr) << "closed with the extended file";
    EXPECT_EQ(AudioFileClose(audioFile), paramErr);
    EXPECT_EQ(sound::alive(), 0u);
}

TEST(FileHandles, AClosedAudioFileIsReplaced)
{
    const sound::Folder folder;
    const sound::File file(anyFile(folder));
    const AudioFileID first = audioFileOf(file);
    EXPECT_EQ(AudioFileClose(first), noErr);
    const AudioFileID second = audioFileOf(file);
    EXPECT_NE(first, second);
    EXPECT_EQ(durationStatus(second), noErr);
    EXPECT_EQ(durationStatus(first), paramErr);
}

TEST(FileHandles, OpenersCloseTheirFiles)
{
    const sound::Folder folder;
    const std::string path = anyFile(folder);
    const CFURLRef url = sound::urlOf(path);
    AudioFileID file = nullptr;
    EXPECT_EQ(AudioFileOpenURL(url, kAudioFileReadPermission, 'AIFF', &file), noErr) << "a wrong hint";
    EXPECT_EQ(sound::alive(), 2u) << "the URL and the file";
    EXPECT_EQ(AudioFileClose(file), noErr);
    EXPECT_EQ(AudioFileClose(file), paramErr);

    for (const SInt8 permission : {0, 2, 3, -1, 127}) {
        file = reinterpret_cast<AudioFileID>(1);
        EXPECT_EQ(AudioFileOpenURL(url, permission, 0, &file), kAudioFilePermissionsError) << int{permission};
        EXPECT_EQ(file, nullptr);
    }
    EXPECT_EQ(AudioFileOpenURL(nullptr, kAudioFileReadPermission, 0, &file), paramErr);
    EXPECT_EQ(AudioFileOpenURL(url, kAudioFileReadPermission, 0, nullptr), paramErr);
    ExtAudioFileRef extended = reinterpret_cast<ExtAudioFileRef>(1);
    EXPECT_EQ(ExtAudioFileOpenURL(nullptr, &extended), paramErr);
    EXPECT_EQ(extended, nullptr);
    EXPECT_EQ(ExtAudioFileOpenURL(url, nullptr), paramErr);
    CFRelease(url);
    EXPECT_EQ(sound::alive(), 0u);
}

TEST(FileHandles, UnknownHandlesAreRefused)
{
    const sound::Folder folder;
    const sound::File file(anyFile(folder));
    const AudioFileID audioFile = audioFileOf(file);
    const auto own = reinterpret_cast<std::uintptr_t>(static_cast<ExtAudioFileRef>(file));
    const std::uintptr_t values[] = {0,
                                     1,
                                     2,
                                     3,
                                     0xFFFFFFFF,
                                     0x80000000,
                                     own + 1,
                                     own - 1,
                                     own + 4,
                                     own + (1 << 14),
                                     reinterpret_cast<std::uintptr_t>(&folder),
                                     reinterpret_cast<std::uintptr_t>(audioFile)};
    for (const std::uintptr_t value : values) expectRefused(reinterpret_cast<ExtAudioFileRef>(value));
    for (const std::uintptr_t value : values)
        if (value != reinterpret_cast<std::uintptr_t>(audioFile)) {
            EXPECT_EQ(AudioFileClose(reinterpret_cast<AudioFileID>(value)), paramErr) << value;
        }
    EXPECT_EQ(AudioFileClose(reinterpret_cast<AudioFileID>(own)), paramErr)
        << "a handle of the other interface";
    EXPECT_EQ(file.frames(), 1000) << "the open file is unaffected";
}

TEST(FileHandles, NumbersAreNotReused)
{
    const sound::Folder folder;
    const std::string path = anyFile(folder);
    const ExtAudioFileRef first = open(path);
    ExtAudioFileDispose(first);
    for (int i = 0; i < 200; ++i) {
        const ExtAudioFileRef file = open(path);
        EXPECT_NE(file, first);
        EXPECT_EQ(ExtAudioFileDispose(file), noErr);
    }
    expectRefused(first);
}

TEST(FileHandles, OpenAndCloseOnFourThreads)
{
    const sound::Folder folder;
    const std::string path = anyFile(folder);
    std::atomic<int> good{0};
    std::vector<std::thread> threads;
    for (int t = 0; t < 4; ++t)
        threads.emplace_back([&] {
            for (int i = 0; i < 50; ++i) {
                const sound::File file(path);
                file.setClient(sound::floats(44100, 2));
                const AudioFileID audioFile = audioFileOf(file);
                if (file.readFloats(2).size() == 2000 && AudioFileClose(audioFile) == noErr) ++good;
            }
        });
    for (std::thread& thread : threads) thread.join();
    EXPECT_EQ(good, 200);
    EXPECT_EQ(sound::alive(), 0u);
}

} // namespace
