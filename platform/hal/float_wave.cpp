#include "platform/hal/float_wave.h"

#include <algorithm>
#include <cerrno>
#include <iterator>

namespace kvxplatform::hal {
namespace {

constexpr std::uint32_t floatTag = 3, extensibleTag = 0xFFFE;
constexpr std::uint32_t sampleBytes = sizeof(float);
// Size of the file's buffer. It stays in the near processor caches, and makes one system call of many slices.
constexpr std::size_t bufferBytes = 1u << 17;

// The bytes of the WAV sub-format identifier after its format tag.
constexpr unsigned char subFormatTail[] = {0, 0, 0, 0, 0x10, 0, 0x80, 0, 0, 0xAA, 0, 0x38, 0x9B, 0x71};

// Speaker masks, indexed by the number of channels: left, right, centre, low frequencies, then back and side
// speakers.
constexpr std::uint32_t speakerMasks[] = {0, 0x4, 0x3, 0x7, 0x33, 0x37, 0x3F, 0x13F, 0x63F};

std::uint32_t maskOf(std::uint32_t channels)
{
    return channels < std::size(speakerMasks) ? speakerMasks[channels] : 0; // a mask of 0 assigns no speakers
}

void append(std::string& bytes, std::uint64_t value, std::size_t width)
{
    constexpr std::uint64_t unknown = 0xFFFFFFFF;
    for (std::uint64_t left = width == 4 ? std::min(value, unknown) : value; width > 0; --width, left >>= 8)
        bytes.push_back(static_cast<char>(left & 0xFF));
}

std::string formatChunk(std::uint32_t sampleRate, std::uint32_t channels)
{
    const bool isExtensible = channels > 2;
    std::string bytes = "fmt ";
    append(bytes, isExtensible ? 40 : 18, 4);
    append(bytes, isExtensible ? extensibleTag : floatTag, 2);
    append(bytes, channels, 2);
    append(bytes, sampleRate, 4);
    append(bytes, std::uint64_t{sampleRate} * channels * sampleBytes, 4);
    append(bytes, channels * sampleBytes, 2);
    append(bytes, 8 * sampleBytes, 2);
    append(bytes, isExtensible ? 22 : 0, 2); // number of bytes that follow in the format chunk
    if (!isExtensible) return bytes;
    append(bytes, 8 * sampleBytes, 2);
    append(bytes, maskOf(channels), 4);
    append(bytes, floatTag, 2);
    bytes.append(std::begin(subFormatTail), std::end(subFormatTail));
    return bytes;
}

/// All bytes of a file of `samples` samples that precede the samples.
std::string headerOf(std::uint64_t samples, std::uint32_t sampleRate, std::uint32_t channels)
{
    const std::uint64_t dataBytes = samples * sampleBytes;
    std::string rest = "WAVE" + formatChunk(sampleRate, channels) + "fact";
    append(rest, 4, 4);
    append(rest, samples / channels, 4);
    rest += "data";
    append(rest, dataBytes, 4);
    std::string bytes = "RIFF";
    append(bytes, rest.size() + dataBytes, 4);
    return bytes + rest;
}

} // namespace

int FloatWave::writeHeader(const std::string& header)
{
    if (std::fwrite(header.data(), 1, header.size(), file_.get()) != header.size()) error_ = errno;
    return error_;
}

int FloatWave::create(const std::string& path, std::uint32_t sampleRate, std::uint32_t channels)
{
    constexpr std::uint64_t unknown = std::uint64_t{1} << 60;
    const std::string header = headerOf(unknown, sampleRate, channels);
    buffer_.resize(bufferBytes);
    file_.reset(std::fopen(path.c_str(), "wxe"));
    if (!file_) return error_ = errno;
    std::setvbuf(file_.get(), buffer_.data(), _IOFBF, buffer_.size());
    sampleRate_ = sampleRate;
    channels_ = channels;
    if (writeHeader(header) != 0) std::remove(path.c_str());
    return error_;
}

int FloatWave::write(const float* samples, std::size_t count)
{
    if (error_ != 0) return error_;
    if (std::fwrite(samples, sampleBytes, count, file_.get()) != count) error_ = errno;
    samples_ += count;
    return error_;
}

int FloatWave::finish()
{
    if (!file_) return error_;
    if (error_ == 0 && std::fseek(file_.get(), 0, SEEK_SET) != 0) error_ = errno;
    if (error_ == 0) writeHeader(headerOf(samples_, sampleRate_, channels_));
    if (std::fclose(file_.release()) != 0 && error_ == 0) error_ = errno;
    return error_;
}

} // namespace kvxplatform::hal
