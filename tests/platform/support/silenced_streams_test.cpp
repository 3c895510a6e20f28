// The output of decoders is dropped; the output of other threads passes.
#include "platform/support/silenced_streams.h"
#include "tests/platform/audiofile/sound_files.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <future>
#include <memory>
#include <thread>

#include <fcntl.h>
#include <unistd.h>

namespace {

using kvxplatform::SilencedStreams;
using sound::Bytes;

/// Get the text that `body` writes to stdout and stderr, up to the capacity of a pipe.
template <class Body>
std::string written(Body body)
{
    std::fflush(stdout);
    int ends[2];
    if (pipe(ends) != 0) return "no pipe";
    fcntl(ends[1], F_SETFL, O_NONBLOCK);
    const int saved[] = {dup(1), dup(2)};
    dup2(ends[1], 1);
    dup2(ends[1], 2);
    body();
    std::fflush(stdout);
    dup2(saved[0], 1);
    dup2(saved[1], 2);
    close(saved[0]);
    close(saved[1]);
    close(ends[1]);
    std::string text;
    char block[4096];
    for (ssize_t got; (got = ::read(ends[0], block, sizeof block)) > 0;)
        text.append(block, static_cast<std::size_t>(got));
    close(ends[0]);
    return text;
}

TEST(SilencedStreams, DropWarningsOfTheMp3Decoder)
{
    const sound::Folder folder;
    Bytes damaged = sound::varyingMp3(folder / "v.mp3");
    damaged.resize(damaged.size() / 2);
    std::uint32_t state = 1;
    for (std::size_t i = 3000; i < damaged.size(); i += 37)
        damaged[i] = static_cast<std::uint8_t>((state = state * 1664525 + 1013904223) >> 24);
    sound::save(folder / "x.mp3", damaged);
    ASSERT_NE(written([&] { sound::decode(folder / "x.mp3"); }), "") << "libsndfile alone prints warnings";
    EXPECT_EQ(written([&] {
                  const sound::File file(folder / "x.mp3");
                  EXPECT_EQ(file.status, noErr);
                  file.setClient(sound::floats(44100, 2));
                  file.readFloats(2);
                  ExtAudioFileSeek(file, 100000);
                  file.readFloats(2);
              }),
              "");
    EXPECT_EQ(written([] { std::fputs("hello", stderr); }), "hello") << "stderr is restored";
}

TEST(SilencedStreams, DropWarningsOfTheSdsDecoder)
{
    const sound::Folder folder;
    sound::write(folder / "x.sds", SF_FORMAT_SDS | SF_FORMAT_PCM_16, 44100, 1, sound::music(1, 1000));
    Bytes damaged = sound::load(folder / "x.sds");
    for (std::size_t i = 300; i < damaged.size(); i += 50) damaged[i] ^= 0x2A;
    // Damage to the first byte of each block.
    for (std::size_t i = 21; i < damaged.size(); i += 127) damaged[i] = 0;
    sound::save(folder / "x.sds", damaged);
    ASSERT_NE(written([&] { sound::decode(folder / "x.sds"); }), "") << "libsndfile alone prints to stdout";
    EXPECT_EQ(written([&] {
                  const sound::File file(folder / "x.sds");
                  file.setClient(sound::floats(44100, 1));
                  file.readFloats(1);
              }),
              "");
}

TEST(SilencedStreams, PassOutputOfOtherThreads)
{
    const sound::Folder folder;
    sound::varyingMp3(folder / "v.mp3");
    std::string expected;
    for (int i = 0; i < 2000; ++i) expected += "a line of another thread\n";
    EXPECT_EQ(written([&] {
                  std::thread other([] {
                      for (int i = 0; i < 2000; ++i) std::fputs("a line of another thread\n", stderr);
                  });
                  const sound::File file(folder / "v.mp3");
                  file.setClient(sound::floats(44100, 2));
                  file.readFloats(2, 100);
                  other.join();
              }),
              expected);
}

TEST(SilencedStreams, OverlapOnTwoThreads)
{
    std::FILE* const former[] = {stdout, stderr};
    EXPECT_EQ(written([] {
                  std::promise<void> secondBegan, firstEnded;
                  auto first = std::make_unique<SilencedStreams>();
                  std::thread other([&] {
                      auto second = std::make_unique<SilencedStreams>();
                      secondBegan.set_value();
                      firstEnded.get_future().wait();
                      std::fputs("other thread, silenced\n", stderr);
                      std::fputs("other thread, silenced\n", stdout);
                      second.reset();
                      std::fputs("other thread, restored\n", stderr);
                  });
                  secondBegan.get_future().wait();
                  std::fputs("first thread, silenced\n", stderr);
                  first.reset();
                  std::fputs("first thread, restored\n", stderr);
                  firstEnded.set_value();
                  other.join();
              }),
              "first thread, restored\nother thread, restored\n");
    EXPECT_EQ(stdout, former[0]);
    EXPECT_EQ(stderr, former[1]);
}

} // namespace
