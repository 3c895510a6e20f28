// The records as this program has them are those of the platform.
#include "host/kvx/library/audio_records.h"

#include <CoreAudio/CoreAudio.h>

#include <gtest/gtest.h>

#include <cstddef>

namespace {

template <class Ours, class Theirs>
constexpr bool sameSize = sizeof(Ours) == sizeof(Theirs) && alignof(Ours) == alignof(Theirs);

static_assert(sameSize<kvx::ValueRange, AudioValueRange>);
static_assert(sameSize<kvx::StreamFormat, AudioStreamBasicDescription>);
static_assert(sameSize<kvx::RangedFormat, AudioStreamRangedDescription>);
static_assert(sameSize<kvx::Buffer, AudioBuffer>);
static_assert(sameSize<kvx::BufferList, AudioBufferList>);
static_assert(sameSize<kvx::Translation, AudioValueTranslation>);

TEST(AudioRecords, HaveTheirFieldsWhereThePlatformHasThem)
{
    const struct {
        std::size_t ours, theirs;
        const char* field;
    } facts[] = {
        {offsetof(kvx::StreamFormat, format), offsetof(AudioStreamBasicDescription, mFormatID), "format"},
        {offsetof(kvx::StreamFormat, flags), offsetof(AudioStreamBasicDescription, mFormatFlags), "flags"},
        {offsetof(kvx::StreamFormat, bytesPerPacket), offsetof(AudioStreamBasicDescription, mBytesPerPacket),
         "bytes/packet"},
        {offsetof(kvx::StreamFormat, framesPerPacket),
         offsetof(AudioStreamBasicDescription, mFramesPerPacket), "frames/packet"},
        {offsetof(kvx::StreamFormat, bytesPerFrame), offsetof(AudioStreamBasicDescription, mBytesPerFrame),
         "bytes/frame"},
        {offsetof(kvx::StreamFormat, channels), offsetof(AudioStreamBasicDescription, mChannelsPerFrame),
         "channels"},
        {offsetof(kvx::StreamFormat, bits), offsetof(AudioStreamBasicDescription, mBitsPerChannel), "bits"},
        {offsetof(kvx::RangedFormat, rates), offsetof(AudioStreamRangedDescription, mSampleRateRange),
         "rates"},
        {offsetof(kvx::BufferList, buffers), offsetof(AudioBufferList, mBuffers), "buffers"},
        {offsetof(kvx::Buffer, bytes), offsetof(AudioBuffer, mDataByteSize), "bytes"},
        {offsetof(kvx::Buffer, data), offsetof(AudioBuffer, mData), "data"},
        {offsetof(kvx::Translation, answer), offsetof(AudioValueTranslation, mOutputData), "answer"},
        {offsetof(kvx::Translation, answerBytes), offsetof(AudioValueTranslation, mOutputDataSize),
         "answer's"},
        {offsetof(kvx::ChannelLayout, descriptionCount),
         offsetof(AudioChannelLayout, mNumberChannelDescriptions), "descriptions"},
    };
    for (const auto& fact : facts) EXPECT_EQ(fact.ours, fact.theirs) << fact.field;
}

} // namespace
