#include "bench/sound_files.h"

#include "bench/test_signal.h"

#include <sndfile.h>

#include <filesystem>
#include <stdexcept>

namespace bench {

// clang-format off
const FileFormat fileFormats[6] = {
    {"WAV",  "wav",  SF_FORMAT_WAV  | SF_FORMAT_PCM_16},
    {"AIFF", "aiff", SF_FORMAT_AIFF | SF_FORMAT_PCM_16},
    {"CAF",  "caf",  SF_FORMAT_CAF  | SF_FORMAT_PCM_16},
    {"FLAC", "flac", SF_FORMAT_FLAC | SF_FORMAT_PCM_16},
    {"MP3",  "mp3",  SF_FORMAT_MPEG | SF_FORMAT_MPEG_LAYER_III},
    {"Ogg",  "ogg",  SF_FORMAT_OGG  | SF_FORMAT_VORBIS},
};
// clang-format on

namespace {

constexpr sf_count_t framesPerWrite = 4410; // The Vorbis encoder fails if one call has a minute.

std::string writeOnce(const std::string& name, const FileFormat& format, std::size_t writes)
{
    namespace fs = std::filesystem;
    const fs::path folder = fs::path(KVX_BINARY_DIR) / "bench-files";
    const fs::path path = folder / (name + format.extension);
    if (fs::exists(path)) return path.string();

    fs::create_directories(folder);
    const fs::path unfinished = folder / (std::string("unfinished.") + format.extension);
    SF_INFO info = {};
    info.samplerate = static_cast<int>(signalRate);
    info.channels = 2;
    info.format = format.format;
    SNDFILE* const file = sf_open(unfinished.c_str(), SFM_WRITE, &info);
    if (!file) throw std::runtime_error(unfinished.string() + ": " + sf_strerror(nullptr));
    bool isWritten = true;
    for (std::size_t each = 0; each < writes; ++each) {
        const float* const from = testSignal(2).data() + 2 * (each * framesPerWrite % signalFrames);
        isWritten = isWritten && sf_writef_float(file, from, framesPerWrite) == framesPerWrite;
    }
    if (sf_close(file) != 0 || !isWritten)
        throw std::runtime_error(unfinished.string() + " cannot be written");
    fs::rename(unfinished, path);
    return path.string();
}

} // namespace

std::string longFile(const FileFormat& format)
{
    static_assert(signalFrames % framesPerWrite == 0);
    return writeOnce("long.", format, longFileMinutes * signalFrames / framesPerWrite);
}

std::string fileOfLength(int seconds)
{
    constexpr std::size_t writesPerSecond = 10;
    static_assert(signalRate == writesPerSecond * framesPerWrite);
    return writeOnce(std::to_string(seconds) + " s.", fileFormats[0],
                     static_cast<std::size_t>(seconds) * writesPerSecond);
}

std::string shortFile() { return writeOnce("short.", fileFormats[0], 1); }

} // namespace bench
