// The command in a process that lacks threads, memory, standard streams or disk space, or in which a load
// hangs. The command prints one line that names the cause of the failure, and leaves no unfinished file.
#include "tests/endtoend/command/kvx_runner.h"
#include "tests/support/sanitizers.h"
#include "tests/support/sound_samples.h"

#include <chrono>
#include <csignal>
#include <filesystem>
#include <thread>

namespace {

using namespace endtoend;
namespace fs = std::filesystem;
using Environment = support::Child::Environment;

void pause() { std::this_thread::sleep_for(std::chrono::milliseconds(5)); }

struct InjectedFailures : KvxTest {
    InjectedFailures() { support::writeSound(support::makeNoise(44100, 2, 44100), folder / "good.wav"); }

    /// Run the command from a shell, after shell commands that change the environment of the process.
    support::ChildResult runPrepared(const std::string& prepare, const std::string& command)
    {
        return support::runChild({"sh", "-c", prepare + " exec " + kvxPath + " " + command}, {},
                                 folder.path());
    }

    void expectFailure(const support::ChildResult& result, const std::string& command)
    {
        EXPECT_EQ(result.exitCode, 1) << "signal " << result.signal;
        expectMessage(result, command);
    }
};

Environment withFault(const char* name, const std::string& value)
{
    return {{"LD_PRELOAD", KVX_BINARY_DIR "/tests/libkvxfaults.so"}, {name, value}};
}

// ---- threads ----

TEST_F(InjectedFailures, EachMissingThreadFailsOrIsReplaced)
{
    if (support::hasAddressSanitizer || support::hasThreadSanitizer)
        GTEST_SKIP() << "the sanitizers need threads";
    const Arguments commands[] = {{"play", "--fast", "--background", "--capture", "out.wav", "good.wav"},
                                  {"play", "--background", "good.wav"},
                                  {"render", "good.wav", "out.wav"},
                                  {"devices"},
                                  {"devices", "--json"},
                                  {"get", "0", "lnam"}};
    for (const Arguments& command : commands) {
        bool isGood = false;
        for (int started = 0; !isGood && started < 20; ++started) {
            SCOPED_TRACE(testing::PrintToString(command) + " with " + std::to_string(started) + " threads");
            const auto result = support::runChild(
                kvxCommand(command), withFault("KVX_FAULT_THREADS", std::to_string(started)), folder.path());
            isGood = result.exitCode == 0;
            if (isGood) {
                EXPECT_EQ(result.err, "");
            } else {
                expectFailure(result, command.front());
                EXPECT_EQ(folder.count(), 1u);
            }
            fs::remove(folder / "out.wav");
        }
        EXPECT_TRUE(isGood);
    }
}

// If the background thread cannot start, a load runs on the main thread.
TEST_F(InjectedFailures, OneMissingThreadLosesNoSound)
{
    if (support::hasAddressSanitizer || support::hasThreadSanitizer)
        GTEST_SKIP() << "the sanitizers need threads";
    const Arguments play = {"play", "--fast", "--background", "good.wav", "--capture"};
    Arguments plain = play, faulty = play;
    plain.push_back("plain.wav");
    faulty.push_back("out.wav");
    ASSERT_EQ(run(plain).exitCode, 0);
    int good = 0;
    for (int refused = 1; refused <= 8; ++refused) {
        SCOPED_TRACE("thread " + std::to_string(refused));
        const auto result = support::runChild(
            kvxCommand(faulty), withFault("KVX_FAULT_THREAD", std::to_string(refused)), folder.path());
        if (result.exitCode == 0) {
            ++good;
            EXPECT_TRUE(bytesOf(folder / "out.wav") == bytesOf(folder / "plain.wav"));
        } else {
            expectFailure(result, "play");
        }
        fs::remove(folder / "out.wav");
        EXPECT_EQ(folder.count(), 2u);
    }
    EXPECT_GE(good, 1);
}

// ---- memory ----

TEST_F(InjectedFailures, TooLittleMemoryPrintsAMessage)
{
    if (support::hasAddressSanitizer || support::hasThreadSanitizer)
        GTEST_SKIP() << "the sanitizers replace malloc";
    const auto result = support::runChild(kvxCommand({"tune", "out.wav"}),
                                          withFault("KVX_FAULT_BLOCK", "1000000"), folder.path());
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_EQ(result.err, "kvx: tune: there is not enough memory; close other programs and try again\n");
    EXPECT_EQ(folder.count(), 1u);
}

// ---- hardware ----

TEST_F(InjectedFailures, SimulatedDeviceDoesNotOpenTheHardware)
{
    auto environment = withFault("KVX_FAULT_HARDWARE", "1");
    for (const char* device : {"", "some other device"}) {
        environment.push_back({"KVX_AUDIO_DEVICE", device});
        const auto result = support::runChild(
            kvxCommand({"play", "--fast", "--device", "simulated", "good.wav"}), environment, folder.path());
        EXPECT_EQ(result.exitCode, 0) << result.err;
        EXPECT_EQ(result.err, "");
    }
    const auto other = support::runChild(kvxCommand({"devices"}), environment);
    EXPECT_EQ(other.exitCode, 99) << "opening the hardware must fail here";
}

TEST_F(InjectedFailures, GetReadsTheSizeAndTheDataOfAPropertyOnce)
{
    const auto result =
        support::runChild(kvxCommand({"get", "0", "nsrt"}), withFault("KVX_FAULT_READS", "1"));
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_EQ(result.out, "44100\n");
    EXPECT_EQ(result.err, "AudioObjectGetPropertyDataSize\nAudioObjectGetPropertyData\n");
}

TEST_F(InjectedFailures, DoctorFailsWithoutHardware)
{
    auto environment = withFault("KVX_FAULT_DEVICES", "1");
    environment.push_back({"KVX_AUDIO_DEVICE", ""}); // an empty KVX_AUDIO_DEVICE chooses no device
    const auto result = support::runChild(kvxCommand({"doctor"}), environment);
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_EQ(result.err, "");
    // The advice depends on the sound cards of the machine.
    EXPECT_EQ(result.out.rfind(
                  "problem  output                no sound hardware opens, so nothing is audible; ", 0),
              0u)
        << result.out;
    EXPECT_NE(result.out.find("`kvx play --device simulated` plays without hardware\n"), std::string::npos)
        << result.out;
}

// ---- standard streams ----

TEST_F(InjectedFailures, CaptureIsIntactWithClosedStandardStreams)
{
    const std::string play = "play --fast --capture ";
    ASSERT_EQ(runPrepared("", play + "plain.wav good.wav").exitCode, 0);
    for (const char* closed : {"<&-", ">&-", "2>&-", "<&- >&-", "<&- >&- 2>&-"}) {
        SCOPED_TRACE(closed);
        const auto result = runPrepared("", play + "out.wav good.wav " + closed);
        EXPECT_EQ(result.exitCode, 0) << result.err;
        EXPECT_TRUE(bytesOf(folder / "out.wav") == bytesOf(folder / "plain.wav"));
        fs::remove(folder / "out.wav");
    }
}

// ---- disk space ----

TEST_F(InjectedFailures, FileSizeLimitFailsAndLeavesNoFile)
{
    const struct {
        std::string command, arguments;
    } facts[] = {{"play", "--fast --capture out.wav good.wav"},
                 {"render", "good.wav out.wav"},
                 {"tune", "out.wav"},
                 {"soundstream", "--fast --capture out.wav good.wav"}};
    for (const auto& fact : facts) {
        SCOPED_TRACE(fact.command);
        const auto result = runPrepared("ulimit -f 100;", fact.command + " " + fact.arguments);
        expectFailure(result, fact.command);
        EXPECT_NE(result.err.find("out.wav"), std::string::npos) << result.err;
        EXPECT_EQ(result.err.find("out.wav."), std::string::npos)
            << "the message names the temporary file: " << result.err;
        EXPECT_NE(result.err.find("File too large; write to a disk that takes larger files"),
                  std::string::npos)
            << result.err;
        EXPECT_EQ(folder.count(), 1u);
    }
}

TEST_F(InjectedFailures, CaptureInARemovedFolderFailsWithAMessage)
{
    fs::create_directory(folder / "captures");
    support::Child child(kvxCommand({"play", "--capture", "captures/out.wav", "good.wav"}), {},
                         folder.path());
    while (child.isRunning() && unfinishedFiles().empty()) pause();
    fs::remove_all(folder / "captures");
    const auto result = child.wait();
    expectFailure(result, "play");
    EXPECT_EQ(result.err, "kvx: play: captures/out.wav cannot be finished: No such file or directory; "
                          "see that its folder still exists\n");
}

// ---- loads that hang ----

struct HangingLoad : InjectedFailures, testing::WithParamInterface<Arguments> {
    static Arguments command()
    {
        Arguments words = {"play", "--capture", "out.wav", "good.wav"};
        words.insert(words.end(), GetParam().begin(), GetParam().end());
        return kvxCommand(words);
    }
    support::Child child{command(), withFault("KVX_FAULT_LOAD", "1"), folder.path()};

    HangingLoad()
    {
        while (child.isRunning() && child.outSoFar().find("the load hangs") == std::string::npos) pause();
        EXPECT_FALSE(unfinishedFiles().empty());
    }
};

TEST_P(HangingLoad, FirstTerminateSignalEndsItWithoutHangingOrFiles)
{
    child.send(SIGTERM);
    const auto result = child.wait();
    EXPECT_EQ(result.signal, SIGTERM) << "exit code " << result.exitCode << " " << result.err;
    EXPECT_EQ(folder.count(), 1u);
}

TEST_P(HangingLoad, SecondInterruptEndsItWithoutHangingOrFiles)
{
    while (child.isRunning()) {
        child.send(SIGINT);
        pause();
    }
    const auto result = child.wait();
    EXPECT_EQ(result.signal, SIGINT) << "exit code " << result.exitCode << " " << result.err;
    EXPECT_EQ(folder.count(), 1u);
}

INSTANTIATE_TEST_SUITE_P(Each, HangingLoad, testing::Values(Arguments{}, Arguments{"--background"}));

} // namespace
