#include "host/kvx/files/sound_writer.h"

#include "host/kvx/files/atomic_file.h"
#include "host/kvx/files/streams.h"
#include "host/kvx/files/wave_header.h"
#include "host/kvx/text/failure.h"

#include <fmt/core.h>

#include <cerrno>
#include <fcntl.h>
#include <iterator>

namespace kvx {
namespace {

// Speakers of each channel, for 1 to 8 channels.
constexpr int left = SF_CHANNEL_MAP_LEFT, right = SF_CHANNEL_MAP_RIGHT, centre = SF_CHANNEL_MAP_CENTER,
              lowFrequencies = SF_CHANNEL_MAP_LFE, backLeft = SF_CHANNEL_MAP_REAR_LEFT,
              backRight = SF_CHANNEL_MAP_REAR_RIGHT, backCentre = SF_CHANNEL_MAP_REAR_CENTER,
              sideLeft = SF_CHANNEL_MAP_SIDE_LEFT, sideRight = SF_CHANNEL_MAP_SIDE_RIGHT;
const std::vector<int> speakers[] = {
    {SF_CHANNEL_MAP_MONO},
    {left, right},
    {left, right, centre},
    {left, right, backLeft, backRight},
    {left, right, centre, backLeft, backRight},
    {left, right, centre, lowFrequencies, backLeft, backRight},
    {left, right, centre, lowFrequencies, backLeft, backRight, backCentre},
    {left, right, centre, lowFrequencies, backLeft, backRight, sideLeft, sideRight},
};

int createFile(const std::string& temporary, const std::string& path)
{
    const int file = open(temporary.c_str(), O_CREAT | O_EXCL | O_WRONLY | O_CLOEXEC, 0666);
    if (file < 0) throw cannotWrite(path, errno);
    return file;
}

/// Prepare the header of an encoder before the first sample.
void prepare(SNDFILE* encoder, const OutputFormat& format, int channels)
{
    // The chunk of peaks contains the time, so it would make each file different.
    sf_command(encoder, SFC_SET_ADD_PEAK_CHUNK, nullptr, SF_FALSE);
    if (channels < 3 || channels > static_cast<int>(std::size(speakers)) || !isExact(format)) return;
    std::vector<int> map = speakers[channels - 1];
    sf_command(encoder, SFC_SET_CHANNEL_MAP_INFO, map.data(), static_cast<int>(map.size() * sizeof(int)));
}

} // namespace

SoundWriter::SoundWriter(const std::string& path, const OutputFormat& format, int rate, int channels,
                         bool isDithered, const std::function<bool()>& isStopped)
    : path_(path), format_(format), rate_(rate), channels_(static_cast<std::size_t>(channels)),
      order_(channelOrder(format, channels)), temporary_(isOutputStream(path) ? "" : temporaryPathFor(path)),
      output_(temporary_.empty() ? openOutputStream(path, isStopped) : createFile(temporary_, path),
              temporary_.empty(), isStopped),
      quantizer_(format.bits > 0 ? format.bits : 32, isDithered)
{
    SF_INFO info = {};
    info.samplerate = rate;
    info.channels = channels;
    info.format = libraryFormat(format);
    SF_VIRTUAL_IO functions = EncodedOutput::functions();
    encoder_.reset(sf_open_virtual(&functions, SFM_WRITE, &info, &output_));
    if (!encoder_) {
        const std::string problem = sf_strerror(nullptr);
        if (!temporary_.empty()) std::remove(temporary_.c_str());
        throw Failure(fmt::format("{} cannot be written as {}: {}; write a .wav file", path,
                                  formatName(format), problem));
    }
    prepare(encoder_.get(), format, channels);
    output_.start(prefix(unknownLength));
}

SoundWriter::~SoundWriter()
{
    encoder_.reset();
    if (!temporary_.empty()) std::remove(temporary_.c_str());
}

/// The bytes before those of the encoder, for a file of this length.
std::string SoundWriter::prefix(std::uint64_t frames) const
{
    return isWave(format_)
               ? waveHeader(static_cast<std::uint32_t>(rate_), static_cast<std::uint32_t>(channels_),
                            static_cast<std::uint32_t>(format_.bits), frames)
               : std::string();
}

void SoundWriter::checkWritten(bool isGood)
{
    if (isGood && output_.error() == 0) return;
    if (path_ == standardStream) throw OutputFailure();
    throw cannotWrite(path_, output_.error() != 0 ? output_.error() : EIO);
}

void SoundWriter::write(const float* samples, std::size_t frames)
{
    const std::size_t count = frames * channels_;
    if (order_) {
        ordered_.resize(count);
        for (std::size_t i = 0; i < count; ++i)
            ordered_[i] = samples[i - i % channels_ + static_cast<std::size_t>(order_[i % channels_])];
        samples = ordered_.data();
    }
    const auto wanted = static_cast<sf_count_t>(frames);
    if (format_.bits > 0) {
        integers_.resize(count);
        quantizer_.round(samples, count, integers_.data());
        checkWritten(sf_writef_int(encoder_.get(), integers_.data(), wanted) == wanted);
    } else {
        checkWritten(sf_writef_float(encoder_.get(), samples, wanted) == wanted);
    }
    frames_ += frames;
}

void SoundWriter::finish()
{
    const bool isClosed = sf_close(encoder_.release()) == 0;
    output_.finish(prefix(frames_));
    checkWritten(isClosed);
    if (temporary_.empty()) return;
    moveIntoPlace(temporary_, path_);
    temporary_.clear();
}

} // namespace kvx
