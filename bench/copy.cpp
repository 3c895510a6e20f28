// kvx_copy IN OUT: copies a sound file into a WAV file of 32-bit float samples. A player that loads whole
// files needs at least these two steps: one read call into zeroed memory, and one write call.
#include <sndfile.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <memory>

namespace {

// Longer writes take up to four times as long in some runs.
constexpr sf_count_t framesPerWrite = 1 << 17;

struct Close {
    void operator()(SNDFILE* file) const { sf_close(file); }
};
using File = std::unique_ptr<SNDFILE, Close>;

struct Free {
    void operator()(void* memory) const { std::free(memory); }
};

bool copy(const char* path, const char* to)
{
    SF_INFO info = {};
    const File in(sf_open(path, SFM_READ, &info));
    if (!in) return false;
    const auto size = static_cast<std::size_t>(info.frames) * static_cast<std::size_t>(info.channels);
    const std::unique_ptr<float, Free> samples(static_cast<float*>(std::calloc(size, sizeof(float))));
    if (!samples || sf_readf_float(in.get(), samples.get(), info.frames) != info.frames) return false;

    SF_INFO format = {};
    format.samplerate = info.samplerate;
    format.channels = info.channels;
    format.format = SF_FORMAT_WAV | SF_FORMAT_FLOAT;
    File out(sf_open(to, SFM_WRITE, &format));
    if (!out) return false;
    // The peak chunk needs another pass over all samples.
    sf_command(out.get(), SFC_SET_ADD_PEAK_CHUNK, nullptr, SF_FALSE);
    for (sf_count_t done = 0; done < info.frames; done += framesPerWrite) {
        const sf_count_t frames = std::min(framesPerWrite, info.frames - done);
        const float* const from = samples.get() + done * info.channels;
        if (sf_writef_float(out.get(), from, frames) != frames) return false;
    }
    return sf_close(out.release()) == 0;
}

} // namespace

int main(int count, char** arguments)
{
    if (count != 3) {
        std::fputs("usage: kvx_copy IN OUT\n", stderr);
        return 2;
    }
    return copy(arguments[1], arguments[2]) ? 0 : 1;
}
