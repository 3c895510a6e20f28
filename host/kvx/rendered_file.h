// What a stepped device renders, as a WAV file: a fixed number of frames, whole or not at all.
#pragma once

#include <KVXPlatform/KVXPlatform.h>

#include <sndfile.h>

#include <cstdint>
#include <memory>
#include <string>

namespace kvx {

/// Takes what the device renders from construction on, up to the frames that are wanted. 32-bit float; from 4
/// GiB on the file is RF64, which is WAV with longer lengths. The same samples make the same bytes. The file
/// appears under its name only when keep() is called. The device must outlive it. [main], on which the device
/// is stepped
class RenderedFile {
public:
    /// Throws Failure when nothing can be written there, or not that much.
    RenderedFile(const KVXDeviceInfo& device, const std::string& path, std::uint64_t frames);
    ~RenderedFile(); ///< without keep(), nothing is left behind
    RenderedFile(const RenderedFile&) = delete;
    RenderedFile& operator=(const RenderedFile&) = delete;

    std::uint64_t framesWanted() const { return wanted_; }
    std::uint64_t framesTaken() const { return taken_; }

    /// Throws Failure when a write failed.
    void checkDisk();

    /// Finish the file and give it its name. Throws Failure.
    void keep();

private:
    struct Close {
        void operator()(SNDFILE* file) const { sf_close(file); }
    };
    static void take(void* context, const float* samples, std::uint32_t frames, std::uint32_t channels);

    KVXDeviceID device_;
    std::string path_;
    std::string unfinished_;
    std::uint64_t wanted_;
    std::uint64_t taken_ = 0;
    int failure_ = 0; ///< errno of the write that failed
    std::unique_ptr<SNDFILE, Close> file_;
};

} // namespace kvx
