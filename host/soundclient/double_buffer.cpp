#include "host/soundclient/double_buffer.h"

#include <Carbon/Carbon.h>

#include <array>
#include <atomic>
#include <utility>
#include <vector>

namespace soundclient {
namespace {

/// State of a double buffer that the main thread and the audio thread share.
struct Shared {
    std::atomic<std::uint64_t> framesTaken{0};
    std::atomic<int> waiting{0};     // number of buffers in the queue
    std::atomic<bool> isRead{false}; // whether the function Read has written all frames
    std::atomic<bool> hadGap{false};
};

struct Buffer {
    Shared* shared = nullptr;
    SoundParamBlock block = {};
    std::vector<std::uint8_t> bytes;
    std::atomic<bool> isFree{true}; // whether the buffer is not in the queue, so the main thread may fill it
};

/// Mark a buffer as played. The component calls this completion routine after it has played the buffer.
/// [audio]
Boolean completeBuffer(SoundParamBlockPtr* block)
{
    Buffer& buffer = *reinterpret_cast<Buffer*>((*block)->refCon);
    Shared& shared = *buffer.shared;
    shared.framesTaken += static_cast<std::uint64_t>((*block)->desc.sampleCount);
    if (shared.waiting.fetch_sub(1) == 1 && !shared.isRead) shared.hadGap = true;
    buffer.isFree = true; // the last access, because the main thread may refill the buffer after it
    return true;
}

void describe(SoundParamBlock& block, const OutputForm& form, Labelling labelling)
{
    block = {};
    block.recordSize = sizeof block;
    block.desc.format = formatOf(labelling);
    block.desc.numChannels = static_cast<short>(form.channels);
    block.desc.sampleSize = static_cast<short>(form.bits);
    block.desc.sampleRate = static_cast<UnsignedFixed>(form.rate * 65536.0);
    block.rateMultiplier = 0x10000;
    block.leftVolume = block.rightVolume = kFullVolume;
    block.completionRtn = completeBuffer;
}

} // namespace

struct DoubleBuffer::State {
    SoundOutput& output;
    Labelling labelling;
    std::size_t frames;
    Read read;
    std::size_t channels = 0;
    Source source = nullptr;
    std::vector<std::int16_t> samples;
    Shared shared;
    std::uint64_t framesRead = 0;
    std::array<Buffer, 2> buffers;
    std::size_t next = 0; // index of the buffer to fill next

    State(SoundOutput& o, Labelling l, std::size_t f, Read r)
        : output(o), labelling(l), frames(f), read(std::move(r))
    {
        const OutputForm form = output.form();
        if (form.bits != 16) throw Refusal("playing 16-bit samples", siInvalidSampleSize);
        channels = static_cast<std::size_t>(form.channels);
        samples.resize(frames * channels);
        for (Buffer& buffer : buffers) {
            buffer.shared = &shared;
            buffer.bytes.resize(samples.size() * sizeof samples[0]);
            describe(buffer.block, form, labelling);
            buffer.block.desc.buffer = buffer.bytes.data();
            buffer.block.refCon = reinterpret_cast<long>(&buffer);
        }
        source = output.addSource();
    }

    /// Fill a buffer with the next frames.
    /// Returns  false if there are no more frames.
    bool fill(Buffer& buffer)
    {
        const std::size_t got = read(samples.data(), frames);
        if (got < frames) shared.isRead = true;
        framesRead += got;
        writeSamples(labelling, samples.data(), got * channels, buffer.bytes.data());
        buffer.block.desc.sampleCount = static_cast<long>(got);
        return got > 0;
    }

    void queue(Buffer& buffer)
    {
        constexpr bool isPaused = true; // so that the call does not start a paused source
        buffer.isFree = false;
        ++shared.waiting;
        output.play(source, buffer.block, isPaused);
    }
};

DoubleBuffer::DoubleBuffer(SoundOutput& output, Labelling labelling, std::size_t frames, Read read)
    : state_(std::make_unique<State>(output, labelling, frames, std::move(read)))
{
}

DoubleBuffer::~DoubleBuffer()
{
    try {
        state_->output.stop(state_->source);
        state_->output.removeSource(state_->source);
    } catch (const Refusal&) {
        // The error is ignored, because closing the component also removes the source.
    }
}

void DoubleBuffer::feed()
{
    State& state = *state_;
    while (!state.shared.isRead && state.buffers[state.next].isFree) {
        Buffer& buffer = state.buffers[state.next];
        if (!state.fill(buffer)) return;
        state.queue(buffer);
        state.next = (state.next + 1) % state.buffers.size();
    }
}

void DoubleBuffer::start() { state_->output.start(state_->source); }

void DoubleBuffer::pause() { state_->output.pause(state_->source); }

bool DoubleBuffer::isUsedUp() const { return state_->shared.isRead && state_->shared.waiting == 0; }

bool DoubleBuffer::hadGap() const { return state_->shared.hadGap; }

std::uint64_t DoubleBuffer::framesRead() const { return state_->framesRead; }

std::uint64_t DoubleBuffer::framesTaken() const { return state_->shared.framesTaken; }

} // namespace soundclient
