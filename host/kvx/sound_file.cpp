#include "host/kvx/sound_file.h"

#include "host/kvx/failure.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
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
    if (access(path.c_str(), R_OK) != 0)
        throw Failure(fmt::format("{}: {}; change its permissions or copy it", path, std::strerror(errno)));
    if (S_ISREG(status.st_mode) && status.st_size == 0)
        throw Failure(fmt::format("{} is empty; get the file again", path));
}

std::string decoderLog(SNDFILE* file)
{
    std::array<char, 16384> log{};
    sf_command(file, SFC_GET_LOG_INFO, log.data(), int(log.size()));
    return log.data();
}

// Writers that cannot go back to fill in the length leave one of these; such a file ends where it ends.
bool isLengthPlaceholder(unsigned long long bytes) { return bytes >= 0x7FFFF000ULL; }

// The decoder takes a data chunk that ends too early for a shorter one, and only its log tells:
// "data : 176400 (should be 90000)".
bool isDataChunkCut(const std::string& log)
{
    for (std::size_t at = log.find("(should be "); at != log.npos; at = log.find("(should be ", at + 1)) {
        const std::size_t start = log.rfind('\n', at) + 1;
        const std::string line = log.substr(start, at - start);
        const std::size_t colon = line.find(':');
        if (colon == line.npos) continue;
        std::string chunk = line.substr(0, colon);
        chunk.erase(std::remove(chunk.begin(), chunk.end(), ' '), chunk.end());
        if (chunk != "data" && chunk != "SSND" && chunk != "DataSize") continue;
        const auto promised = std::strtoull(line.c_str() + colon + 1, nullptr, 10);
        const auto present = std::strtoull(log.c_str() + at + std::strlen("(should be "), nullptr, 10);
        if (promised > present && !isLengthPlaceholder(promised)) return true;
    }
    return false;
}

// An Ogg stream marks its last page. The page begins within the last 64 KiB, its greatest length.
bool isOggCut(const std::string& path)
{
    const int file = open(path.c_str(), O_RDONLY | O_CLOEXEC);
    if (file < 0) return false;
    const off_t length = lseek(file, 0, SEEK_END);
    const off_t start = std::max<off_t>(0, length - 65536 - 512);
    std::string tail(std::size_t(length - start), '\0');
    const ssize_t count = pread(file, tail.data(), tail.size(), start);
    close(file);
    if (count != ssize_t(tail.size())) return false;

    constexpr std::size_t flagsAt = 5;
    constexpr unsigned char lastPage = 0x04;
    const std::size_t page = tail.rfind("OggS");
    return page == tail.npos || page + flagsAt >= tail.size() || !(tail[page + flagsAt] & lastPage);
}

Failure cutShort(const std::string& path)
{
    return Failure(
        fmt::format("{} is cut short: it ends before the sound that it promises; get the file again", path));
}

} // namespace

SoundFile::SoundFile(const std::string& path) : path_(path)
{
    checkReadable(path);
    SF_INFO info = {};
    file_.reset(sf_open(path.c_str(), SFM_READ, &info));
    if (!file_) {
        std::string reason = sf_strerror(nullptr);
        while (!reason.empty() && (reason.back() == '.' || reason.back() == '\n')) reason.pop_back();
        throw Failure(
            fmt::format("{} cannot be decoded ({}); kvx plays WAV, AIFF, CAF, FLAC, Ogg Vorbis, Opus, MP3 "
                        "and whatever else libsndfile reads",
                        path, reason));
    }
    if (info.samplerate < 1 || info.channels < 1)
        throw Failure(fmt::format("{} names no sample rate or no channels; get the file again", path));

    const bool isOgg = (info.format & SF_FORMAT_TYPEMASK) == SF_FORMAT_OGG;
    if (isOgg ? isOggCut(path) : isDataChunkCut(decoderLog(file_.get()))) throw cutShort(path);
    if (info.frames < 1) throw Failure(fmt::format("{} holds no sound; choose another file", path));

    format_ = {info.samplerate, info.channels, std::min(info.channels, 2), info.frames};
}

std::size_t SoundFile::read(float* out, std::size_t frames)
{
    sf_count_t got;
    if (format_.fileChannels == format_.channels) {
        got = sf_readf_float(file_.get(), out, sf_count_t(frames));
    } else {
        wide_.resize(frames * std::size_t(format_.fileChannels));
        got = sf_readf_float(file_.get(), wide_.data(), sf_count_t(frames));
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
