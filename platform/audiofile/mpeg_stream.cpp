#include "platform/audiofile/mpeg_stream.h"

#include <algorithm>
#include <cstdio>
#include <cstring>

#include <unistd.h>

namespace kvxplatform::audiofile {

namespace {
constexpr sf_count_t lastTag = 128; // bytes at the very end, which the decoder looks at before all else
}

MpegStream::MpegStream(int descriptor, SInt64 fileBytes, const MpegFrames& frames)
    : descriptor_(descriptor), start_(frames.start), there_(fileBytes - frames.start),
      told_(std::max<sf_count_t>(there_, (SInt64{frames.count} + 1) * (frames.first.bytes + 1)))
{
}

sf_count_t MpegStream::read(void* out, sf_count_t bytes)
{
    const auto wanted = static_cast<std::size_t>(std::max<sf_count_t>(bytes, 0));
    if (told_ > there_ && place_ == told_ - lastTag && bytes <= lastTag) { // no tag there
        std::memset(out, 0, wanted);
        place_ += bytes;
        return bytes;
    }
    std::size_t done = 0;
    while (done < wanted) {
        const ssize_t got = pread(descriptor_, static_cast<char*>(out) + done, wanted - done,
                                  static_cast<off_t>(start_ + place_));
        if (got <= 0) break;
        done += static_cast<std::size_t>(got);
        place_ += got;
    }
    return static_cast<sf_count_t>(done);
}

SF_VIRTUAL_IO MpegStream::calls()
{
    SF_VIRTUAL_IO io = {};
    io.get_filelen = [](void* user) { return of(user).told_; };
    io.seek = [](sf_count_t offset, int whence, void* user) {
        MpegStream& stream = of(user);
        const sf_count_t base = whence == SEEK_CUR ? stream.place_ : whence == SEEK_END ? stream.told_ : 0;
        if (base + offset >= 0) stream.place_ = base + offset;
        return stream.place_;
    };
    io.read = [](void* out, sf_count_t bytes, void* user) { return of(user).read(out, bytes); };
    io.write = [](const void*, sf_count_t, void*) -> sf_count_t { return 0; };
    io.tell = [](void* user) { return of(user).place_; };
    return io;
}

SNDFILE* MpegStream::open(SF_INFO& info)
{
    place_ = 0;
    SF_VIRTUAL_IO io = calls();
    return sf_open_virtual(&io, SFM_READ, &info, this);
}

} // namespace kvxplatform::audiofile
