// The table of the report: all comparisons with other libraries, and all goals.
#include "bench/report.h"

#include <algorithm>
#include <stdexcept>

namespace report {

std::vector<Subject> subjects(const Figures& figures)
{
    // clang-format off
    std::vector<Subject> table = {
        {"Render", "A slice of the buffered player: 512 frames, resampled to the device's rate by linear interpolation. "
                   "The peers are libsamplerate and scalar code with the same arithmetic.", {
            {"mono, 44.1 to 48 kHz",   "render/mono 44100 to 48000/ours",   "render/mono 44100 to 48000/libsamplerate linear",            "libsamplerate linear",          Ratio::speed, 10,  1, "render mono 44.1 linear",     "Render, mono 44.1 to 48 / libsamplerate linear"},
            {"",                       "render/mono 44100 to 48000/ours",   "render/mono 44100 to 48000/libsamplerate zero-order hold",   "libsamplerate zero-order hold", Ratio::speed},
            {"",                       "render/mono 44100 to 48000/ours",   "render/mono 44100 to 48000/one value at a time",             "scalar code",                   Ratio::speed, 1.6, 1, "render mono 44.1 plain",      "Render, mono 44.1 to 48 / scalar code"},
            {"stereo, 44.1 to 48 kHz", "render/stereo 44100 to 48000/ours", "render/stereo 44100 to 48000/libsamplerate linear",          "libsamplerate linear",          Ratio::speed, 10,  1, "render stereo 44.1 linear",   "Render, stereo 44.1 to 48 / libsamplerate linear"},
            {"",                       "render/stereo 44100 to 48000/ours", "render/stereo 44100 to 48000/libsamplerate zero-order hold", "libsamplerate zero-order hold", Ratio::speed},
            {"",                       "render/stereo 44100 to 48000/ours", "render/stereo 44100 to 48000/one value at a time",           "scalar code",                   Ratio::speed, 2,   1, "render stereo 44.1 plain",    "Render, stereo 44.1 to 48 / scalar code"},
            {"mono, 22.05 to 44.1 kHz",   "render/mono 22050 to 44100/ours",   "render/mono 22050 to 44100/libsamplerate linear",            "libsamplerate linear",          Ratio::speed, 10,  1, "render mono 22.05 linear"},
            {"",                          "render/mono 22050 to 44100/ours",   "render/mono 22050 to 44100/libsamplerate zero-order hold",   "libsamplerate zero-order hold", Ratio::speed},
            {"",                          "render/mono 22050 to 44100/ours",   "render/mono 22050 to 44100/one value at a time",             "scalar code",                   Ratio::speed, 1.6, 1, "render mono 22.05 plain"},
            {"stereo, 22.05 to 44.1 kHz", "render/stereo 22050 to 44100/ours", "render/stereo 22050 to 44100/libsamplerate linear",          "libsamplerate linear",          Ratio::speed, 10,  1, "render stereo 22.05 linear"},
            {"",                          "render/stereo 22050 to 44100/ours", "render/stereo 22050 to 44100/libsamplerate zero-order hold", "libsamplerate zero-order hold", Ratio::speed},
            {"",                          "render/stereo 22050 to 44100/ours", "render/stereo 22050 to 44100/one value at a time",           "scalar code",                   Ratio::speed, 2,   1, "render stereo 22.05 plain"},
        }},
        {"Many channels", "A slice of the buffered player, as above, into a buffer with 8 channels: mono data is written to all of them, stereo data to "
                          "the first two. The peer renders into a buffer with the data's channels, then writes the same slots with a plain loop.", {
            {"mono, 44.1 to 48 kHz",      "render/mono 44100 to 48000/8 channels",   "render/mono 44100 to 48000/ours and plain loop",   "rendering and plain loop", Ratio::duration, 1, 1, "8 channels mono",         "Render, mono into 8 channels / plain loop"},
            {"",                          "render/mono 44100 to 48000/8 channels",   "render/mono 44100 to 48000/plain loop",            "plain loop alone",         Ratio::duration},
            {"stereo, 44.1 to 48 kHz",    "render/stereo 44100 to 48000/8 channels", "render/stereo 44100 to 48000/ours and plain loop", "rendering and plain loop", Ratio::duration, 1, 1, "8 channels stereo",       "Render, stereo into 8 channels / plain loop"},
            {"",                          "render/stereo 44100 to 48000/8 channels", "render/stereo 44100 to 48000/plain loop",          "plain loop alone",         Ratio::duration},
            {"mono, 22.05 to 44.1 kHz",   "render/mono 22050 to 44100/8 channels",   "render/mono 22050 to 44100/ours and plain loop",   "rendering and plain loop", Ratio::duration, 1, 1, "8 channels mono 22.05"},
            {"stereo, 22.05 to 44.1 kHz", "render/stereo 22050 to 44100/8 channels", "render/stereo 22050 to 44100/ours and plain loop", "rendering and plain loop", Ratio::duration, 1, 1, "8 channels stereo 22.05"},
        }},
        {"Conversion", "Samples of a memory block, converted to 1 MiB of 32-bit floats. The peer copies 1 MiB; all data fits into the cache.", {
            {"8 bits, signed (BitSize 7)",    "conversion/7 bits",           "conversion/memcpy", "memcpy", Ratio::duration, 1.5, 1, "conversion 7"},
            {"8 bits, unsigned (8)",          "conversion/8 bits",           "conversion/memcpy", "memcpy", Ratio::duration, 1.5, 1, "conversion 8"},
            {"16 bits, signed (15)",          "conversion/15 bits",          "conversion/memcpy", "memcpy", Ratio::duration, 1.5, 1, "conversion 15"},
            {"16 bits, unsigned (16)",        "conversion/16 bits",          "conversion/memcpy", "memcpy", Ratio::duration, 1.5, 1, "conversion 16", "Conversion, 16 bits / memcpy"},
            {"24 bits, big-endian (24)",      "conversion/24 bits",          "conversion/memcpy", "memcpy", Ratio::duration, 3,   1, "conversion 24", "Conversion, 24 bits / memcpy"},
            {"32 bits, signed (31)",          "conversion/31 bits",          "conversion/memcpy", "memcpy", Ratio::duration, 1.5, 1, "conversion 31"},
            {"32 bits, unsigned (32)",        "conversion/32 bits",          "conversion/memcpy", "memcpy", Ratio::duration, 1.5, 1, "conversion 32"},
            {"float, copied",                 "conversion/float copy",       "conversion/memcpy", "memcpy", Ratio::duration, 1.2, 1, "float copy"},
            {"float, two channels interleaved","conversion/float interleave", "conversion/memcpy", "memcpy", Ratio::duration, 1.5, 1, "float interleave", "Interleaving / memcpy"},
            {"memset of 1 MiB",               "conversion/memset",           "conversion/memcpy", "memcpy", Ratio::speed},
        }},
        {"Taking the next buffer", "On the audio thread, at the end of a buffer. Only the used slots of the queue move; the peer moves all 200 slots.", {
            {"1 waiting",   "take front/1 waiting/ours",   "take front/1 waiting/every slot moved",   "all slots moved", Ratio::speed},
            {"20 waiting",  "take front/20 waiting/ours",  "take front/20 waiting/every slot moved",  "all slots moved", Ratio::speed},
            {"200 waiting", "take front/200 waiting/ours", "take front/200 waiting/every slot moved", "all slots moved", Ratio::speed},
        }},
        {"Loading", "Three minutes of 44.1 kHz stereo, loaded as 32-bit floats into zeroed memory. The peer is one read call of libsndfile. "
                    "LoadFile also creates object, graph and units.", {
            {"WAV",  "load/WAV/ours",  "load/WAV/libsndfile",  "libsndfile", Ratio::speed, 0.95, 1, "load WAV",  "Load WAV / libsndfile"},
            {"AIFF", "load/AIFF/ours", "load/AIFF/libsndfile", "libsndfile", Ratio::speed, 0.95, 1, "load AIFF"},
            {"CAF",  "load/CAF/ours",  "load/CAF/libsndfile",  "libsndfile", Ratio::speed, 0.95, 1, "load CAF"},
            {"FLAC", "load/FLAC/ours", "load/FLAC/libsndfile", "libsndfile", Ratio::speed, 0.95, 1, "load FLAC", "Load FLAC / libsndfile"},
            {"MP3",  "load/MP3/ours",  "load/MP3/libsndfile",  "libsndfile", Ratio::speed, 0.95, 1, "load MP3",  "Load MP3 / libsndfile"},
            {"Ogg",  "load/Ogg/ours",  "load/Ogg/libsndfile",  "libsndfile", Ratio::speed, 0.95, 1, "load Ogg"},
            {"LoadFile, WAV",  "load/WAV/LoadFile",  "load/WAV/libsndfile",  "libsndfile", Ratio::speed, 0.95, 1, "LoadFile"},
            {"LoadFile, AIFF", "load/AIFF/LoadFile", "load/AIFF/libsndfile", "libsndfile", Ratio::speed, 0.95, 1, "LoadFile"},
            {"LoadFile, CAF",  "load/CAF/LoadFile",  "load/CAF/libsndfile",  "libsndfile", Ratio::speed, 0.95, 1, "LoadFile"},
            {"LoadFile, FLAC", "load/FLAC/LoadFile", "load/FLAC/libsndfile", "libsndfile", Ratio::speed, 0.95, 1, "LoadFile"},
            {"LoadFile, MP3",  "load/MP3/LoadFile",  "load/MP3/libsndfile",  "libsndfile", Ratio::speed, 0.95, 1, "LoadFile"},
            {"LoadFile, Ogg",  "load/Ogg/LoadFile",  "load/Ogg/libsndfile",  "libsndfile", Ratio::speed, 0.95, 1, "LoadFile"},
            {"LoadFile, 0.1 s of WAV", "load/short/LoadFile", nullptr, nullptr, Ratio::time},
        }},
        {"Graph", "A slice of the file player: 512 stereo frames, from memory through six units to the device's buffer. "
                  "Rubber Band has the engine and settings of the time-pitch unit.", {
            {"unity, per unit", "graph/unity/ours", "graph/unity/memcpy", "6 × memcpy", Ratio::duration, 5, 6, "graph unity", "Graph at unity, per unit / memcpy"},
            {"time rate 1.25",    "graph/rate 1.25/ours",   "graph/rate 1.25/Rubber Band",               "Rubber Band",               Ratio::speed, 0.95, 1, "graph rate",  "Graph at rate 1.25 / Rubber Band"},
            {"",                  "graph/rate 1.25/ours",   "graph/rate 1.25/SoundTouch",                "SoundTouch",                Ratio::speed},
            {"pitch +300 cents",  "graph/pitch +300/ours",  "graph/pitch +300/Rubber Band",              "Rubber Band, stretching",   Ratio::speed, 0.95, 1, "graph pitch", "Graph at pitch +300 / Rubber Band"},
            {"",                  "graph/pitch +300/ours",  "graph/pitch +300/Rubber Band's pitch scale", "Rubber Band's pitch scale", Ratio::speed, 1,    1, "graph pitch scale", "Graph at pitch +300 / Rubber Band's pitch scale"},
            {"",                  "graph/pitch +300/ours",  "graph/pitch +300/SoundTouch",               "SoundTouch",                Ratio::speed},
        }},
        {"Whole jobs", "Commands that read a 16-bit stereo WAV file at 44.1 kHz and write a WAV file of 32-bit float samples: processor time of the process, "
                       "the shortest of three runs. The copy is one read call of libsndfile into zeroed memory, then write calls.", {
            {"unity, 10 minutes",    "jobs/unity/kvx render",     "jobs/unity/copy",       "copy",          Ratio::duration, 1.6, 1, "job unity copy", "kvx render at unity / copy"},
            {"unity, 10 minutes",    "jobs/unity/kvx render",     "jobs/unity/sox",        "sox",           Ratio::duration, 2,   1, "job unity sox",  "kvx render at unity / sox", true},
            {"unity, 10 minutes",    "jobs/unity/kvx render",     "jobs/unity/ffmpeg",     "ffmpeg",        Ratio::duration, 0,   1, "", nullptr, true},
            {"to 48 kHz, 5 minutes", "jobs/48000 Hz/kvx render",  "jobs/48000 Hz/sox",     "sox",           Ratio::duration, 1,   1, "job 48000 Hz",   "kvx render to 48 kHz / sox", true},
            {"to 48 kHz, 5 minutes", "jobs/48000 Hz/kvx render",  "jobs/48000 Hz/ffmpeg",  "ffmpeg",        Ratio::duration, 0,   1, "", nullptr, true},
            {"time rate 1.25, 10 s", "jobs/rate 1.25/kvx render", "jobs/rate 1.25/sox",    "sox tempo",     Ratio::duration, 0,   1, "", nullptr, true},
            {"time rate 1.25, 10 s", "jobs/rate 1.25/kvx render", "jobs/rate 1.25/ffmpeg", "ffmpeg atempo", Ratio::duration, 0,   1, "", nullptr, true},
        }},
        {"Longest slice", "The longest of 20,000 slices of 64 frames of the file player, whose file at 44.1 kHz is converted to the device's 48 kHz: "
                          "processor time of the thread, and its share of the slice's period of 1.33 ms. The figure is the median of the repetitions' longest slices.", {
            {"64 frames at 48 kHz, file at 44.1 kHz", "slice/64 frames to 48000, longest", nullptr, nullptr, Ratio::period, 0.4, 64 * 1e9 / 48000, "longest slice"},
        }},
        {"Start-up", "Loading the library and registering its five classes. The process has loaded the platform's libraries before.", {
            {"dlopen to the return of the entry point", "start-up/load and entry", nullptr, nullptr, Ratio::time, 1e6, 1, "start-up"},
        }},
        {"Property get", "Reading a number by name through the host's dynamic calls, and with the getter from the class table.", {
            {"dynamic call of the getter", "property get/dynamic caller",            "property get/table", "getter from the class table", Ratio::speed},
            {"dynamic call of a method",   "property get/method through the caller", nullptr, nullptr, Ratio::time},
            {"getter from the class table","property get/table",                     nullptr, nullptr, Ratio::time},
        }},
        {"Scale", "An I/O cycle of 512 frames with mono players at 44.1 kHz on one stepped device at 48 kHz. The time should be proportional to the number of players.", {
            {"1 player",      "scale/1 players",    nullptr,            nullptr,       Ratio::time},
            {"10 players",    "scale/10 players",   "scale/1 players",  "10 × 1",      Ratio::duration, 1.2, 10, "scale 10"},
            {"100 players",   "scale/100 players",  "scale/10 players", "10 × 10",     Ratio::duration, 1.2, 10, "scale 100"},
            {"1,000 players", "scale/1000 players", "scale/100 players", "10 × 100",   Ratio::duration, 1.2, 10, "scale 1000"},
            {"memcpy of the samples of 100 players",   "scale/100 memcpy",  "scale/10 memcpy",  "10 × 10",  Ratio::duration, 0,   10},
            {"memcpy of the samples of 1,000 players", "scale/1000 memcpy", "scale/100 memcpy", "10 × 100", Ratio::duration, 0,   10},
        }},
        {"Memory", "Heap in use. A unit has an engine only while it needs one.", {
            {"file of three minutes, without its samples", "memory/file beside its samples",  nullptr, nullptr, Ratio::bytes, 2 << 20, 1, "memory"},
            {"its time-pitch engine", "memory/file's time-pitch engine", nullptr, nullptr, Ratio::bytes},
            {"idle host with the library",                "memory/idle host",                nullptr, nullptr, Ratio::bytes},
            {"Rubber Band, finer engine",                 "memory/Rubber Band, finer",       nullptr, nullptr, Ratio::bytes},
            {"Rubber Band, finer engine with one window",   "memory/Rubber Band, one window",  nullptr, nullptr, Ratio::bytes},
            {"libsamplerate, fastest filter",             "memory/libsamplerate, fastest",   nullptr, nullptr, Ratio::bytes},
            {"libsamplerate, best filter",                "memory/libsamplerate, best",      nullptr, nullptr, Ratio::bytes},
        }},
    };
    // clang-format on
    for (Subject& subject : table) {
        const auto isMissing = [&](const Row& row) {
            return row.isOptional && figures.times.count(row.peer) == 0;
        };
        subject.rows.erase(std::remove_if(subject.rows.begin(), subject.rows.end(), isMissing),
                           subject.rows.end());
    }
    return table;
}

double Figures::time(const std::string& name) const
{
    const auto found = times.find(name);
    if (found == times.end()) throw std::runtime_error(name + " was not measured");
    return found->second;
}

double Figures::counter(const std::string& name) const
{
    const auto found = counters.find(name);
    if (found == counters.end()) throw std::runtime_error(name + " was not measured");
    return found->second;
}

Outcome outcomeOf(const Row& row, const Figures& figures)
{
    Outcome outcome;
    outcome.hasGoal = row.goal > 0;
    if (row.kind == Ratio::bytes || row.kind == Ratio::time) {
        if (!outcome.hasGoal) return outcome;
        const bool isTime = row.kind == Ratio::time;
        outcome.ratio = (isTime ? figures.time(row.ours) : figures.bytesOf(row.ours)) / row.goal;
        outcome.miss = outcome.ratio - 1;
    } else if (row.kind == Ratio::period) {
        outcome.ratio = figures.time(row.ours) / row.factor;
        outcome.miss = outcome.ratio / row.goal - 1;
    } else {
        const double duration = figures.time(row.ours) / (figures.time(row.peer) * row.factor);
        const bool isSpeed = row.kind == Ratio::speed;
        outcome.ratio = isSpeed ? 1 / duration : duration;
        outcome.miss = isSpeed ? 1 - outcome.ratio / row.goal : outcome.ratio / row.goal - 1;
    }
    outcome.isMet = !outcome.hasGoal || outcome.miss <= 0;
    return outcome;
}

} // namespace report
