#include "platform/audiofile/mpeg_stream.h"

#include <algorithm>
#include <cstring>

#include <unistd.h>

namespace kvxplatform::audiofile {
namespace {

void put(UInt8* at, UInt32 word)
{
    for (int i = 0; i < 4; ++i) at[i] = static_cast<UInt8>(word >> (24 - 8 * i));
}

constexpr UInt32 withoutChecksum = 1u << 16;
constexpr UInt32 bitRateBits = 15u << 12, middleBitRate = 9u << 12; // long enough for the note
constexpr UInt32 paddingBit = 1u << 9;
constexpr UInt32 countFollows = 1;

} // namespace

MpegStream::MpegStream(int descriptor, SInt64 fileBytes, const MpegFrames& frames)
    : descriptor_(descriptor), start_(frames.start), end_(fileBytes)
{
    MpegHeader header;
    readMpegHeader((frames.first.word & ~(bitRateBits | paddingBit)) | middleBitRate | withoutChecksum,
                   header);
    const UInt32 info = infoPlace(header);
    put(frame_.data(), header.word);
    std::memcpy(&frame_[info], "Xing", 4);
    put(&frame_[info + 4], countFollows);
    put(&frame_[info + 8], frames.count);
    note_ = header.bytes;
}

sf_count_t MpegStream::read(void* out, sf_count_t bytes)
{
    auto* to = static_cast<UInt8*>(out);
    sf_count_t done = 0;
    if (place_ < note_) {
        done = std::min(bytes, note_ - place_);
        std::memcpy(to, &frame_[static_cast<std::size_t>(place_)], static_cast<std::size_t>(done));
    }
    while (done < bytes) {
        const sf_count_t at = start_ + place_ + done - note_;
        const auto left = std::min(bytes - done, end_ - at);
        const ssize_t got = left > 0 ? pread(descriptor_, to + done, static_cast<std::size_t>(left), at) : 0;
        if (got <= 0) break;
        done += got;
    }
    place_ += done;
    return done;
}

SF_VIRTUAL_IO MpegStream::calls()
{
    SF_VIRTUAL_IO io = {};
    io.get_filelen = [](void* user) { return of(user).length(); };
    io.seek = [](sf_count_t offset, int whence, void* user) {
        MpegStream& stream = of(user);
        const sf_count_t base = whence == SEEK_CUR ? stream.place_ : whence == SEEK_END ? stream.length() : 0;
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
