// KVXPlatformGetLibraries: the loaded libraries, with their versions and files.
#include "platform/hal/copy_text.h"
#include "platform/hal/portaudio_library.h"
#include "platform/support/border.h"

#include <KVXPlatform/KVXPlatform.h>

#include <climits>
#include <cstdlib>
#include <dlfcn.h>
#include <mutex>
#include <string>

using namespace kvxplatform::hal;

namespace {

/// A function of a library. The library is loaded if the function is found.
struct Library {
    const char* name;
    const char* function;
    bool reportsVersion; ///< whether the function returns a text that contains the version
};

// clang-format off
constexpr Library libraries[] = {
    {"libsndfile",    "sf_version_string",       true},
    {"libsoxr",       "soxr_version",            true},
    {"libsamplerate", "src_get_version",         true},
    {"Rubber Band",   "rubberband_new",          false},
    {"PortAudio",     "Pa_GetVersionText",       true},
    {"JACK",          "jack_get_version_string", true},
    {"ALSA",          "snd_asoundlib_version",   true},
    {"utf8proc",      "utf8proc_version",        true},
    {"libffi",        "ffi_call",                false},
};
// clang-format on

/// The version in a text such as "libsndfile-1.2.0" or "PortAudio V19.7.0-devel, revision unknown".
std::string versionIn(const std::string& text)
{
    const std::size_t first = text.find_first_of("0123456789");
    return first == text.npos ? "" : text.substr(first, text.find_first_of(" ,", first) - first);
}

std::string fileOf(const void* function)
{
    Dl_info info = {};
    char path[PATH_MAX];
    return dladdr(function, &info) && info.dli_fname && realpath(info.dli_fname, path) ? path : "";
}

KVXLibraryInfo infoOf(const Library& library, void* function)
{
    KVXLibraryInfo row = {};
    copyText(row.name, library.name);
    copyText(row.path, fileOf(function));
    if (library.reportsVersion)
        copyText(row.version, versionIn(reinterpret_cast<const char* (*)()>(function)()));
    if (library.name == std::string("PortAudio")) {
        const std::lock_guard<std::mutex> lock(portAudioLock);
        copyText(row.systems, hostApiNames());
    }
    return row;
}

} // namespace

uint32_t KVXPlatformGetLibraries(KVXLibraryInfo* rows, uint32_t capacity)
{
    return kvxplatform::withinBorder(uint32_t{0}, [=] {
        uint32_t count = 0;
        for (const Library& library : libraries)
            if (void* const function = dlsym(RTLD_DEFAULT, library.function)) {
                if (count < capacity) rows[count] = infoOf(library, function);
                ++count;
            }
        return count;
    });
}
