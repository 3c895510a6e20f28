#include "auplayer/stream_description.h"

#include <cstdarg>
#include <cstdio>
#include <iterator>

namespace auplayer {

namespace {

/// Appends formatted text to a buffer of streamTextBytes bytes. `add` returns false if the text does not fit.
class Line {
public:
    explicit Line(char* buffer) : end_(buffer) {}

    __attribute__((format(printf, 2, 3))) bool add(const char* format, ...)
    {
        va_list values;
        va_start(values, format);
        const int length = std::vsnprintf(end_, free_, format, values);
        va_end(values);
        if (length < 0 || static_cast<unsigned long>(length) >= free_) return false;
        end_ += length;
        free_ -= static_cast<unsigned long>(length);
        return true;
    }

private:
    char* end_;
    unsigned long free_ = streamTextBytes;
};

bool isPrintable(unsigned char c) { return c >= 0x20 && c < 0x7F; }

/// The text of a four-character code: 'lpcm' with quotes, or a number like 0x00000001 if a character is not
/// printable.
struct CodeText {
    char text[2 + 2 * 4 + 1];

    explicit CodeText(UInt32 code)
    {
        const auto byte = [code](int index) { return static_cast<unsigned char>(code >> (24 - 8 * index)); };
        bool isText = true;
        for (int i = 0; i < 4; ++i) isText = isText && isPrintable(byte(i)) && byte(i) != '\\';
        if (isText)
            std::snprintf(text, sizeof text, "'%c%c%c%c'", byte(0), byte(1), byte(2), byte(3));
        else
            std::snprintf(text, sizeof text, "0x%02X%02X%02X%02X", byte(0), byte(1), byte(2), byte(3));
    }
};

int number(UInt32 value) { return static_cast<int>(value); }

void addAppleLossless(Line& line, const AudioStreamBasicDescription& format)
{
    static const int sourceBits[] = {16, 20, 24, 32}; // bit depths of the source for format flags 1 to 4
    const UInt32 index = format.mFormatFlags - 1;
    const bool fits = index < std::size(sourceBits) ? line.add("from %d-bit source, ", sourceBits[index])
                                                    : line.add("from UNKNOWN source bit depth, ");
    if (fits) line.add("%d frames/packet", number(format.mFramesPerPacket));
}

void addLinearPCM(Line& line, const AudioStreamBasicDescription& format, UInt32 wordSize)
{
    const auto has = [&](UInt32 flag) { return (format.mFormatFlags & flag) != 0; };
    const UInt32 fraction = (format.mFormatFlags & kLinearPCMFormatFlagsSampleFractionMask) >>
                            kLinearPCMFormatFlagsSampleFractionShift;

    char depth[32];
    if (fraction)
        std::snprintf(depth, sizeof depth, "%d.%d", number(format.mBitsPerChannel - fraction),
                      number(fraction));
    else
        std::snprintf(depth, sizeof depth, "%d", number(format.mBitsPerChannel));

    const bool isFloat = has(kAudioFormatFlagIsFloat);
    const char* const order = wordSize <= 1                      ? ""
                              : has(kAudioFormatFlagIsBigEndian) ? " big-endian"
                                                                 : " little-endian";
    const char* const sign = isFloat ? "" : has(kAudioFormatFlagIsSignedInteger) ? " signed" : " unsigned";

    // The text states packing and alignment only if the sample's bits do not fill the sample's bytes.
    const bool isPadded = wordSize >= 1 && 8 * wordSize != format.mBitsPerChannel;
    char packing[40] = "";
    if (isPadded)
        std::snprintf(packing, sizeof packing,
                      has(kAudioFormatFlagIsPacked) ? "packed in %d bytes" : "unpacked in %d bytes",
                      number(wordSize));
    const char* const alignment = !isPadded                            ? ""
                                  : has(kAudioFormatFlagIsAlignedHigh) ? " high-aligned"
                                                                       : " low-aligned";

    line.add("%s-bit%s%s %s%s%s%s%s", depth, order, sign, isFloat ? "float" : "integer", isPadded ? ", " : "",
             packing, alignment, has(kAudioFormatFlagIsNonInterleaved) ? ", deinterleaved" : "");
}

} // namespace

char* CAStreamBasicDescription::AsString(char* buffer, unsigned long) const
{
    Line line(buffer);
    if (!line.add("%2d ch, %6.0f Hz, %s (0x%08X) ", number(mChannelsPerFrame), mSampleRate,
                  CodeText(mFormatID).text, static_cast<unsigned>(mFormatFlags)))
        return buffer;

    if (mFormatID == kAudioFormatAppleLossless)
        addAppleLossless(line, *this);
    else if (isPCM())
        addLinearPCM(line, *this, bytesAmong(has(kAudioFormatFlagIsNonInterleaved) ? 1 : mChannelsPerFrame));
    else
        line.add("%d bits/channel, %d bytes/packet, %d frames/packet, %d bytes/frame",
                 number(mBitsPerChannel), number(mBytesPerPacket), number(mFramesPerPacket),
                 number(mBytesPerFrame));
    return buffer;
}

} // namespace auplayer
