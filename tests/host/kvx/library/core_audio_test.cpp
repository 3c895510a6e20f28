// The structs of property values have the layout of the platform's structs, as the compiler checks here.
#include "host/kvx/library/core_audio.h"

#include <CoreAudio/CoreAudio.h>

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

#define SAME_OFFSET(record, field, platformRecord, platformField)                                            \
    static_assert(offsetof(kvx::record, field) == offsetof(platformRecord, platformField))

SAME_OFFSET(StreamFormat, format, AudioStreamBasicDescription, mFormatID);
SAME_OFFSET(StreamFormat, flags, AudioStreamBasicDescription, mFormatFlags);
SAME_OFFSET(StreamFormat, bytesPerPacket, AudioStreamBasicDescription, mBytesPerPacket);
SAME_OFFSET(StreamFormat, framesPerPacket, AudioStreamBasicDescription, mFramesPerPacket);
SAME_OFFSET(StreamFormat, bytesPerFrame, AudioStreamBasicDescription, mBytesPerFrame);
SAME_OFFSET(StreamFormat, channels, AudioStreamBasicDescription, mChannelsPerFrame);
SAME_OFFSET(StreamFormat, bits, AudioStreamBasicDescription, mBitsPerChannel);
SAME_OFFSET(RangedFormat, rates, AudioStreamRangedDescription, mSampleRateRange);
SAME_OFFSET(BufferList, buffers, AudioBufferList, mBuffers);
SAME_OFFSET(Buffer, bytes, AudioBuffer, mDataByteSize);
SAME_OFFSET(Buffer, data, AudioBuffer, mData);
SAME_OFFSET(Translation, answer, AudioValueTranslation, mOutputData);
SAME_OFFSET(Translation, answerBytes, AudioValueTranslation, mOutputDataSize);
SAME_OFFSET(ChannelLayout, descriptionCount, AudioChannelLayout, mNumberChannelDescriptions);

} // namespace
