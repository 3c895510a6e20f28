#include "host/kvx/sound_file.h"

#include "host/kvx/container.h"
#include "host/kvx/name_on_disk.h"
#include "host/kvx/quiet.h"

#include <fmt/format.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <string_view>
#include <sys/stat.h>
#include <unistd.h>

namespace kvx {
namespace {

// What the file system has to say, before the decoder is asked.
void checkReadable(const std::string& path)
{
    struct stat status = {};
    if (stat(path.c_str(), &status) != 0)
        throw Failure(fmt::format("{}: {}; check the name and the folder", path, std::strerror(errno)));
    if (S_ISDIR(status.st_mode))
        throw Failure(fmt::format("{} is a folder; name the sound files in it", path));
    if (!S_ISREG(status.st_mode))
        throw Failure(fmt::format("{} is not a plain file; copy it into a file first", path));
    if (access(path.c_str(), R_OK) != 0)
        throw Failure(fmt::format("{}: {}; change its permissions or copy it", path, std::strerror(errno)));
    if (status.st_size == 0) throw Failure(fmt::format("{} is empty; get the file again", path));
}

SNDFILE* openQuietly(const std::string& path, SF_INFO& info)
{
    const Quiet quiet;
    return sf_open(path.c_str(), SFM_READ, &info);
}

sf_count_t readQuietly(SNDFILE* file, float* out, std::size_t frames)
{
    const Quiet quiet;
    return sf_readf_float(file, out, sf_count_t(frames));
}

// Words of the decoder that would mislead: how they begin, and what they come of.
constexpr struct {
    std::string_view words, meaning;
} misleading[] = {
    {"File does not exist or is not a regular file", "it is no sound file"},
    {"Internal error : SF_INFO struct incomplete", "it names no sample rate"},
};

std::string reasonOfDecoder()
{
    std::string reason = sf_strerror(nullptr);
    for (const auto& each : misleading)
        if (reason.rfind(each.words, 0) == 0) return std::string(each.meaning);
    while (!reason.empty() && (reason.back() == '.' || reason.back() == '\n')) reason.pop_back();
    return reason;
}

} // namespace

Failure cutShort(const std::string& path)
{
    return Failure(
        fmt::format("{} is cut short: it ends before the sound that it promises; get the file again", path));
}

SoundFile::SoundFile(const std::string& path) : path_(nameOnDisk(path))
{
    checkReadable(path_);
    if (isCutShort(path_)) throw cutShort(path_);
    SF_INFO info = {};
    file_.reset(openQuietly(path_, info));
    if (!file_)
        throw Failure(
            fmt::format("{} cannot be decoded ({}); kvx plays WAV, AIFF, CAF, FLAC, Ogg Vorbis, Opus, MP3 "
                        "and whatever else libsndfile reads",
                        path_, reasonOfDecoder()));
    if (info.samplerate < 1 || info.channels < 1)
        throw Failure(fmt::format("{} names no sample rate or no channels; get the file again", path_));

    if (info.frames < 1) throw Failure(fmt::format("{} holds no sound; choose another file", path_));

    format_ = {info.samplerate, info.channels, std::min(info.channels, 2), info.frames};
}

std::size_t SoundFile::read(float* out, std::size_t frames)
{
    sf_count_t got;
    if (format_.fileChannels == format_.channels) {
        got = readQuietly(file_.get(), out, frames);
    } else {
        wide_.resize(frames * std::size_t(format_.fileChannels));
        got = readQuietly(file_.get(), wide_.data(), frames);
        for (sf_count_t frame = 0; frame < got; ++frame)
            std::copy_n(&wide_[std::size_t(frame * format_.fileChannels)], format_.channels,
                        out + frame * format_.channels);
    }
    framesRead_ += got;
    const bool isEnd = got < sf_count_t(frames);
    if (isEnd && (framesRead_ < format_.frames || sf_error(file_.get()) != SF_ERR_NO_ERROR))
        throw cutShort(path_);
    return std::size_t(got);
}

} // namespace kvx
