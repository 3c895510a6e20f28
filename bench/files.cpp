#include "bench/files.h"

#include "bench/music.h"

#include <sndfile.h>

#include <filesystem>
#include <stdexcept>

namespace bench {

// clang-format off
const FileKind fileKinds[6] = {
    {"WAV",  "wav",  SF_FORMAT_WAV  | SF_FORMAT_PCM_16},
    {"AIFF", "aiff", SF_FORMAT_AIFF | SF_FORMAT_PCM_16},
    {"CAF",  "caf",  SF_FORMAT_CAF  | SF_FORMAT_PCM_16},
    {"FLAC", "flac", SF_FORMAT_FLAC | SF_FORMAT_PCM_16},
    {"MP3",  "mp3",  SF_FORMAT_MPEG | SF_FORMAT_MPEG_LAYER_III},
    {"Ogg",  "ogg",  SF_FORMAT_OGG  | SF_FORMAT_VORBIS},
};
// clang-format on

std::string fileOf(const FileKind& kind)
{
    namespace fs = std::filesystem;
    const fs::path folder = fs::path(KVX_BINARY_DIR) / "bench-files";
    const fs::path path = folder / (std::string("music.") + kind.extension);
    if (fs::exists(path)) return path.string();

    fs::create_directories(folder);
    const fs::path unfinished = folder / (std::string("unfinished.") + kind.extension);
    SF_INFO info = {};
    info.samplerate = static_cast<int>(musicRate);
    info.channels = 2;
    info.format = kind.format;
    SNDFILE* const file = sf_open(unfinished.c_str(), SFM_WRITE, &info);
    if (!file) throw std::runtime_error(unfinished.string() + ": " + sf_strerror(nullptr));
    constexpr sf_count_t piece = 4410; // Vorbis takes no minute at once
    bool isWritten = true;
    for (int minute = 0; minute < fileMinutes; ++minute)
        for (std::size_t at = 0; at < musicFrames; at += piece)
            isWritten = isWritten && sf_writef_float(file, music(2).data() + 2 * at, piece) == piece;
    if (sf_close(file) != 0 || !isWritten)
        throw std::runtime_error(unfinished.string() + " could not be written");
    fs::rename(unfinished, path);
    return path.string();
}

} // namespace bench
