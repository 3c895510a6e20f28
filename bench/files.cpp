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

namespace {

constexpr sf_count_t piece = 4410; // frames written at once: Vorbis takes no minute

std::string writtenOnce(const char* name, const FileKind& kind, std::size_t pieces)
{
    namespace fs = std::filesystem;
    const fs::path folder = fs::path(KVX_BINARY_DIR) / "bench-files";
    const fs::path path = folder / (std::string(name) + kind.extension);
    if (fs::exists(path)) return path.string();

    fs::create_directories(folder);
    const fs::path unfinished = folder / (std::string("unfinished.") + kind.extension);
    SF_INFO info = {};
    info.samplerate = static_cast<int>(musicRate);
    info.channels = 2;
    info.format = kind.format;
    SNDFILE* const file = sf_open(unfinished.c_str(), SFM_WRITE, &info);
    if (!file) throw std::runtime_error(unfinished.string() + ": " + sf_strerror(nullptr));
    bool isWritten = true;
    for (std::size_t each = 0; each < pieces; ++each) {
        const float* const from = music(2).data() + 2 * (each * piece % musicFrames);
        isWritten = isWritten && sf_writef_float(file, from, piece) == piece;
    }
    if (sf_close(file) != 0 || !isWritten)
        throw std::runtime_error(unfinished.string() + " could not be written");
    fs::rename(unfinished, path);
    return path.string();
}

} // namespace

std::string fileOf(const FileKind& kind)
{
    static_assert(musicFrames % piece == 0);
    return writtenOnce("music.", kind, fileMinutes * musicFrames / piece);
}

std::string shortFile() { return writtenOnce("short.", fileKinds[0], 1); }

} // namespace bench
