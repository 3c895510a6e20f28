// Refused calls of the four adding functions: the order of the checks, and the exceptions.
#include "player/ingestion.h"

#include "tests/player/fresh_platform.h"
#include "tests/player/player_object.h"
#include "tests/support/c_library_spy.h"
#include "tests/support/device_spy.h"

#include <gtest/gtest.h>

#include <limits>
#include <memory>

namespace {

using namespace player;
using test::PlayerObject;
using Bytes = std::vector<unsigned char>;
using OwnedBlock = std::unique_ptr<test::Block>;

enum Kind { good, nil, noMemory }; // kind of a memory block

constexpr float infinity = std::numeric_limits<float>::infinity();
constexpr float notANumber = std::numeric_limits<float>::quiet_NaN();

class PlayerIngestion : public test::FreshPlatform {
protected:
    static OwnedBlock blockOf(Kind kind, std::size_t bytes = 64)
    {
        if (kind == nil) return nullptr;
        auto block = std::make_unique<test::Block>(Bytes(bytes, 0x40));
        if (kind == noMemory) fake::Host::current().takeMemory(*block);
        return block;
    }

    static REALmemoryBlockStruct* handle(const OwnedBlock& block)
    {
        return block ? static_cast<REALmemoryBlockStruct*>(*block) : nullptr;
    }

    /// Expect exactly one NilObjectException if `isRaised` is true, otherwise no exception.
    void expectNilRaised(bool isRaised)
    {
        const std::vector<fake::Raised>& raised = host().raised();
        ASSERT_EQ(raised.size(), isRaised ? 1u : 0u);
        EXPECT_EQ(heldValues(), fake::Notes());
        if (!isRaised) return;
        EXPECT_EQ(raised[0].className, "NilObjectException");
        EXPECT_EQ(raised[0].message, "Memoryblock is nil");
        EXPECT_EQ(raised[0].number, 0);
    }
};

// clang-format off
const struct {
    Kind block;
    HostInteger offset, count, bitSize;
    float sampleRate;
    std::int32_t channels;
    bool isAdded, isRaised;
    int pointerCalls; // number of "memoryBlockGetPtr" calls with one block
    const char* why;
} refusals[] = {
    // block    offset     count      bits  rate          ch   added  raised calls
    { good,     0,         8,         16,   44100.0f,     1,   true,  false, 1, "nothing is wrong" },
    { nil,      0,         8,         16,   44100.0f,     1,   false, true,  0, "a nil block" },
    { nil,      -1,        8,         16,   44100.0f,     1,   false, true,  0, "nil comes before the offset" },
    { nil,      0,         -1,        16,   44100.0f,     1,   false, true,  0, "nil comes before the count" },
    { nil,      -1,        0,         12,   0.0f,         3,   false, true,  0, "nil comes before everything" },
    { good,     -1,        8,         16,   44100.0f,     1,   false, false, 0, "a negative offset" },
    { good,     INT32_MIN, 8,         16,   44100.0f,     1,   false, false, 0, "the most negative offset" },
    { noMemory, -1,        8,         16,   44100.0f,     1,   false, false, 0, "the offset comes before the memory" },
    { good,     0,         0,         16,   44100.0f,     1,   false, false, 0, "no bytes" },
    { good,     0,         -1,        16,   44100.0f,     1,   false, false, 0, "a negative count" },
    { good,     0,         INT32_MIN, 16,   44100.0f,     1,   false, false, 0, "the most negative count" },
    { noMemory, 0,         0,         16,   44100.0f,     1,   false, false, 0, "the count comes before the memory" },
    { noMemory, 0,         -1,        12,   44100.0f,     1,   false, false, 0, "the count comes before the memory" },
    { noMemory, 0,         8,         16,   44100.0f,     1,   false, true,  1, "a block without memory" },
    { noMemory, 4,         8,         16,   44100.0f,     1,   false, true,  1, "a block without memory, with an offset" },
    { noMemory, 0,         8,         12,   44100.0f,     1,   false, true,  1, "the memory comes before the BitSize" },
    { noMemory, 0,         8,         23,   44100.0f,     1,   false, true,  1, "the memory comes before the BitSize 23" },
    { noMemory, 0,         8,         16,   0.0f,         1,   false, true,  1, "the memory comes before the rate" },
    { noMemory, 0,         8,         16,   44100.0f,     3,   false, true,  1, "the memory comes before the channels" },
    { noMemory, 0,         1,         16,   44100.0f,     1,   false, true,  1, "the memory comes before the size" },
    { good,     0,         8,         12,   44100.0f,     1,   false, false, 1, "an unknown BitSize" },
    { good,     0,         8,         23,   44100.0f,     1,   false, false, 1, "23 bits are refused on purpose" },
    { good,     0,         8,         23,   0.0f,         3,   false, false, 1, "23 bits, and everything else is wrong" },
    { good,     0,         8,         16,   0.999f,       1,   false, false, 1, "a rate below 1" },
    { good,     0,         8,         16,   0.99999994f,  1,   false, false, 1, "the next float below 1" },
    { good,     0,         8,         16,   1.0f,         1,   true,  false, 1, "a rate of 1" },
    { good,     0,         8,         16,   0.0f,         1,   false, false, 1, "a rate of 0" },
    { good,     0,         8,         16,   -1.0f,        1,   false, false, 1, "a negative rate" },
    { good,     0,         8,         16,   -44100.0f,    1,   false, false, 1, "a negative rate" },
    { good,     0,         8,         16,   notANumber,   1,   false, false, 1, "not-a-number" },
    { good,     0,         8,         16,   infinity,     1,   true,  false, 1, "infinity is above 1" },
    { good,     0,         8,         16,   -infinity,    1,   false, false, 1, "minus infinity" },
    { good,     0,         8,         16,   44100.0f,     0,   false, false, 1, "no channels" },
    { good,     0,         8,         16,   44100.0f,     2,   true,  false, 1, "two channels" },
    { good,     0,         8,         16,   44100.0f,     3,   false, false, 1, "three channels" },
    { good,     0,         8,         16,   44100.0f,     -1,  false, false, 1, "minus one channel" },
    { good,     0,         8,         16,   44100.0f,     INT32_MAX, false, false, 1, "very many channels" },
    { good,     0,         1,         16,   44100.0f,     1,   false, false, 1, "fewer bytes than one sample" },
    { good,     0,         1,         8,    44100.0f,     1,   true,  false, 1, "one byte is a sample of 8 bits" },
    { good,     0,         2,         24,   44100.0f,     1,   false, false, 1, "two bytes are no sample of 24 bits" },
    { good,     0,         3,         32,   44100.0f,     1,   false, false, 1, "three bytes are no sample of 32 bits" },
    { good,     INT32_MAX, 8,         12,   44100.0f,     1,   false, false, 1, "an offset past the block is not applied before a refusal" },
    { good,     INT32_MAX, 8,         23,   44100.0f,     1,   false, false, 1, "an offset past the block is not applied before a refusal" },
    { good,     INT32_MAX, 1,         16,   44100.0f,     1,   false, false, 1, "an offset past the block is not applied before a refusal" },
    { good,     INT32_MAX, 8,         16,   0.0f,         1,   false, false, 1, "an offset past the block is not applied before a refusal" },
    { good,     INT32_MAX, 8,         16,   notANumber,   1,   false, false, 1, "an offset past the block is not applied before a refusal" },
    { good,     INT32_MAX, 8,         16,   44100.0f,     3,   false, false, 1, "an offset past the block is not applied before a refusal" },
    { good,     INT32_MAX, 0,         16,   44100.0f,     1,   false, false, 0, "an offset past the block is not applied before a refusal" },
    { noMemory, INT32_MAX, 8,         16,   44100.0f,     1,   false, true,  1, "an offset is not applied to missing memory" },
    { nil,      INT32_MAX, 8,         16,   44100.0f,     1,   false, true,  0, "an offset is not applied to missing memory" },
};
// clang-format on

TEST_F(PlayerIngestion, IntegerBlocksAreCheckedInThisOrder)
{
    for (const auto& row : refusals) {
        SCOPED_TRACE(row.why);
        startHost();
        const PlayerObject object;
        object->sampleRate = row.sampleRate;
        object->numberOfChannels = row.channels;
        const OwnedBlock block = blockOf(row.block);
        c_library_spy::begin();
        const bool added =
            AddSomeAudio(object.data(), handle(block), row.offset, row.count, row.bitSize, false);
        const bool isAllocated = !c_library_spy::end().empty();
        EXPECT_EQ(added, row.isAdded);
        EXPECT_EQ(isAllocated, row.isAdded) << "a refused call allocates nothing";
        EXPECT_EQ(object->queueCount, row.isAdded ? 1 : 0);
        EXPECT_EQ(calls("memoryBlockGetPtr"), row.pointerCalls);
        EXPECT_EQ(spy::calls(), std::vector<std::string>());
        expectNilRaised(row.isRaised);
    }
}

// The table `refusals`, with the fault in the first, the second or both blocks. Two faulty blocks raise only
// one exception.
TEST_F(PlayerIngestion, StereoBlocksAreCheckedInThisOrder)
{
    for (const auto& row : refusals)
        for (const int faulty : {1, 2, 3}) {
            SCOPED_TRACE(::testing::Message() << row.why << ", block " << faulty);
            startHost();
            const PlayerObject object;
            object->sampleRate = row.sampleRate;
            object->numberOfChannels = row.channels;
            const OwnedBlock block1 = blockOf(faulty & 1 ? row.block : good),
                             block2 = blockOf(faulty & 2 ? row.block : good);
            EXPECT_EQ(AddSomeAudioStereo(object.data(), handle(block1), handle(block2), row.offset, row.count,
                                         row.bitSize, false),
                      row.isAdded);
            EXPECT_EQ(object->queueCount, row.isAdded ? 1 : 0);
            if (row.pointerCalls == 0) {
                EXPECT_EQ(calls("memoryBlockGetPtr"), 0);
            }
            expectNilRaised(row.isRaised);
        }
}

TEST_F(PlayerIngestion, StereoBlocksAreAcceptedWhileThePlayerIsMono)
{
    const PlayerObject object;
    ASSERT_EQ(object->numberOfChannels, 1);
    const test::Block block(Bytes{0x80, 0x40});
    EXPECT_TRUE(AddSomeAudioStereo(object.data(), block, block, 0, 2, 8, false));
    EXPECT_EQ(object.slot(0), (std::vector<float>{0.5f, 0.5f, 0.25f, 0.25f}));
    EXPECT_EQ(object->numberOfChannels, 1);
}

TEST_F(PlayerIngestion, FloatBlocksAreRefusedWithoutAnException)
{
    // clang-format off
    const struct {
        Kind block;
        HostInteger offset, count;
        bool isAdded;
        const char* why;
    } rows[] = {
        { good,     0,         8,         true,  "nothing is wrong" },
        { good,     -1,        8,         false, "a negative offset" },
        { good,     INT32_MIN, 8,         false, "the most negative offset" },
        { nil,      0,         8,         false, "a nil block raises nothing" },
        { nil,      -1,        -1,        false, "everything at once" },
        { good,     0,         0,         false, "no bytes" },
        { good,     0,         -1,        false, "a negative count" },
        { good,     0,         INT32_MIN, false, "the most negative count" },
        { good,     0,         3,         false, "fewer bytes than one sample" },
        { good,     0,         4,         true,  "one sample" },
        { good,     INT32_MAX, 3,         false, "an offset past the block is not applied before a refusal" },
        { good,     INT32_MAX, 1,         false, "an offset past the block is not applied before a refusal" },
        { good,     INT32_MAX, 0,         false, "an offset past the block is not applied before a refusal" },
        { noMemory, INT32_MAX, 8,         false, "an offset is not applied to missing memory" },
        { nil,      INT32_MAX, 8,         false, "an offset is not applied to missing memory" },
        { noMemory, 0,         8,         false, "a block without memory raises nothing" },
        { noMemory, 0,         3,         false, "a block without memory, and fewer bytes than one sample" },
    };
    // clang-format on
    for (const auto& row : rows)
        // Number of the faulty block, 3 for both, 0 for the function with one block.
        for (const int faulty : {0, 1, 2, 3}) {
            SCOPED_TRACE(::testing::Message() << row.why << ", block " << faulty);
            const PlayerObject object;
            const OwnedBlock faultyBlock = blockOf(row.block), goodBlock = blockOf(good);
            const auto pick = [&](int bit) { return handle(faulty & bit ? faultyBlock : goodBlock); };
            const bool added =
                faulty
                    ? AddSomeFloatAudioStereo(object.data(), pick(1), pick(2), row.offset, row.count, false)
                    : AddSomeFloatAudio(object.data(), handle(faultyBlock), row.offset, row.count, false);
            EXPECT_EQ(added, row.isAdded);
            EXPECT_EQ(object->queueCount, row.isAdded ? 1 : 0);
            expectNilRaised(false);
        }
}

TEST_F(PlayerIngestion, FloatBlocksAreAcceptedAtAnyRateAndChannelCount)
{
    for (const float rate : {0.0f, -1.0f, notANumber, infinity, 0.5f})
        for (const std::int32_t channels : {0, 3, -1}) {
            const PlayerObject object;
            object->sampleRate = rate;
            object->numberOfChannels = channels;
            const OwnedBlock block = blockOf(good);
            EXPECT_TRUE(AddSomeFloatAudio(object.data(), handle(block), 0, 8, false));
            EXPECT_TRUE(AddSomeFloatAudioStereo(object.data(), handle(block), handle(block), 0, 8, false));
            EXPECT_EQ(object->queue[0].count, 2);
            EXPECT_EQ(object->queue[1].count, 4);
        }
}

TEST_F(PlayerIngestion, AcceptsSevenBitSizes)
{
    for (HostInteger bitSize = -1; bitSize <= 40; ++bitSize) {
        SCOPED_TRACE(bitSize);
        const PlayerObject object;
        const OwnedBlock block = blockOf(good);
        const bool isKnown = bitSize == 7 || bitSize == 8 || bitSize == 15 || bitSize == 16 ||
                             bitSize == 24 || bitSize == 31 || bitSize == 32;
        EXPECT_EQ(AddSomeAudio(object.data(), handle(block), 0, 12, bitSize, false), isKnown);
        EXPECT_EQ(AddSomeAudioStereo(object.data(), handle(block), handle(block), 0, 12, bitSize, false),
                  isKnown);
        EXPECT_EQ(object->queueCount, isKnown ? 2 : 0);
        expectNilRaised(false);
    }
    for (const HostInteger bitSize : {INT32_MIN, -16, 64, 16 + 256, INT32_MAX}) {
        const PlayerObject object;
        const OwnedBlock block = blockOf(good);
        EXPECT_FALSE(AddSomeAudio(object.data(), handle(block), 0, 12, bitSize, false)) << bitSize;
    }
}

// ---- sizes ----

// The tests with this table let every allocation fail, so nothing is converted. `request` is the requested
// allocation.
// clang-format off
const struct {
    HostInteger bitSize; // BitSize argument; 0 for the functions that add floats
    int channels;
    HostInteger count;
    const char* request; // allocation call; null if the call is refused before
} sizes[] = {
    {  8, 1, 536870911,  "calloc 2147483644" }, {  8, 1, 536870912,  nullptr },
    {  8, 1, 1073741825, nullptr /* 4 times this count wraps to 4 in 32 bits */ },
    {  8, 1, INT32_MAX,  nullptr },
    {  7, 1, 536870911,  "calloc 2147483644" }, {  7, 1, 536870912,  nullptr },
    {  8, 2, 268435455,  "calloc 2147483640" }, {  8, 2, 268435456,  nullptr },
    {  8, 2, 536870913,  nullptr /* 8 times this count wraps to 8 in 32 bits */ },
    {  8, 2, INT32_MAX,  nullptr },
    { 16, 1, 1073741823, "calloc 2147483644" }, { 16, 1, 1073741824, nullptr }, { 16, 1, INT32_MAX, nullptr },
    { 15, 2, 536870911,  "calloc 2147483640" }, { 15, 2, 536870912,  nullptr }, { 16, 2, INT32_MAX, nullptr },
    { 24, 1, 1610612735, "calloc 2147483644" }, { 24, 1, 1610612736, nullptr },
    { 24, 2, 805306367,  "calloc 2147483640" }, { 24, 2, 805306368,  nullptr }, { 24, 2, INT32_MAX, nullptr },
    { 32, 1, INT32_MAX,  "calloc 2147483644" },
    { 31, 2, 1073741823, "calloc 2147483640" }, { 31, 2, 1073741824, nullptr }, { 32, 2, INT32_MAX, nullptr },
    {  0, 1, INT32_MAX,  "calloc 2147483644" }, {  0, 1, 7, "calloc 4" },
    {  0, 2, 1073741823, "calloc 2147483640" }, {  0, 2, 1073741824, nullptr }, {  0, 2, INT32_MAX, nullptr },
    { 16, 1, 7,          "calloc 12"         }, { 16, 2, 7, "calloc 24" },
};
// clang-format on

TEST_F(PlayerIngestion, RefusesABufferOfMoreThan2147483647BytesBeforeConverting)
{
    for (const auto& row : sizes) {
        SCOPED_TRACE(::testing::Message()
                     << row.bitSize << " bits, " << row.channels << " channels, " << row.count);
        const PlayerObject object;
        const OwnedBlock block = blockOf(good);
        c_library_spy::refuseCalloc(1);
        c_library_spy::begin();
        bool added;
        if (row.bitSize)
            added = row.channels == 1
                        ? AddSomeAudio(object.data(), handle(block), 0, row.count, row.bitSize, false)
                        : AddSomeAudioStereo(object.data(), handle(block), handle(block), 0, row.count,
                                             row.bitSize, false);
        else
            added = row.channels == 1 ? AddSomeFloatAudio(object.data(), handle(block), 0, row.count, false)
                                      : AddSomeFloatAudioStereo(object.data(), handle(block), handle(block),
                                                                0, row.count, false);
        const std::vector<std::string> events = c_library_spy::end();
        c_library_spy::refuseCalloc(0);
        EXPECT_EQ(events, row.request ? std::vector<std::string>{row.request} : std::vector<std::string>());
        EXPECT_FALSE(added);
        EXPECT_EQ(object->queueCount, 0);
        expectNilRaised(false);
    }
}

TEST_F(PlayerIngestion, ARefusedBufferClearsNothing)
{
    const PlayerObject object;
    ASSERT_TRUE(object.add({1, 2}));
    const OwnedBlock block = blockOf(good);
    EXPECT_FALSE(AddSomeAudio(object.data(), handle(block), 0, 8, 12, true));
    EXPECT_FALSE(AddSomeAudio(object.data(), nullptr, 0, 8, 16, true));
    EXPECT_FALSE(AddSomeFloatAudio(object.data(), handle(block), 0, 3, true));
    c_library_spy::refuseCalloc(1);
    EXPECT_FALSE(AddSomeAudio(object.data(), handle(block), 0, 8, 16, true));
    EXPECT_EQ(object.slot(0), (std::vector<float>{1, 2})) << "the waiting buffer stays";
    EXPECT_TRUE(AddSomeAudio(object.data(), handle(block), 0, 2, 16, true));
    EXPECT_EQ(object->queueCount, 1);
    EXPECT_EQ(object.slot(0), std::vector<float>{0x4040 / 65536.0f});
}

// The function need not know the size, because the caller must keep the range inside the block.
TEST_F(PlayerIngestion, DoesNotReadTheBlocksSize)
{
    const PlayerObject object;
    const OwnedBlock block = blockOf(good);
    EXPECT_TRUE(AddSomeAudio(object.data(), handle(block), 2, 8, 16, false));
    EXPECT_EQ(calls("memoryBlockGetSize"), 0);
}

// ---- hosts that do not export a function ----

TEST_F(PlayerIngestion, WithoutThePointerServiceIntegersRaiseAndFloatsReturnFalse)
{
    startHost({"memoryBlockGetPtr"});
    const PlayerObject object;
    const OwnedBlock block = blockOf(good);
    EXPECT_FALSE(AddSomeFloatAudio(object.data(), handle(block), 0, 8, false));
    EXPECT_FALSE(AddSomeFloatAudioStereo(object.data(), handle(block), handle(block), 0, 8, false));
    expectNilRaised(false);
    EXPECT_FALSE(AddSomeAudio(object.data(), handle(block), 0, 8, 16, false));
    expectNilRaised(true);
    startHost({"memoryBlockGetPtr"});
    EXPECT_FALSE(AddSomeAudioStereo(object.data(), handle(block), handle(block), 0, 8, 16, false));
    expectNilRaised(true);
    EXPECT_EQ(object->queueCount, 0);
}

TEST_F(PlayerIngestion, CachesAFoundServiceAndLooksUpAMissingOneAgain)
{
    startHost({"memoryBlockGetPtr"});
    const PlayerObject object;
    const OwnedBlock block = blockOf(good);
    EXPECT_FALSE(AddSomeFloatAudio(object.data(), handle(block), 0, 8, false));
    EXPECT_FALSE(AddSomeFloatAudio(object.data(), handle(block), 0, 8, false));
    EXPECT_EQ(lookUps("memoryBlockGetPtr"), 2);
    host().provideAll();
    EXPECT_TRUE(AddSomeFloatAudio(object.data(), handle(block), 0, 8, false));
    host().withhold("memoryBlockGetPtr");
    EXPECT_TRUE(AddSomeFloatAudio(object.data(), handle(block), 0, 8, false));
    EXPECT_EQ(lookUps("memoryBlockGetPtr"), 3);

    startHost({"memoryBlockGetSize"});
    EXPECT_FALSE(object.add({1}));
    EXPECT_FALSE(object.add({1}));
    host().provideAll();
    EXPECT_TRUE(object.add({1}));
    EXPECT_TRUE(object.add({1}));
    EXPECT_EQ(lookUps("memoryBlockGetSize"), 3);
}

} // namespace
