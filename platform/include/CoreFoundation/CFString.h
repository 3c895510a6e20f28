/*
 * Strings: arrays of UTF-16 units. C.
 *
 * Units    lengths are in UTF-16 units, sizes in bytes. An allocator argument is ignored.
 * Owner    the caller of a Create function owns the result and releases it. A Create function copies its
 *          text.
 * Errors   a NULL string where a string is required ends the process, with one line on stderr. Conversion is
 *          strict, so no character is replaced, composed or left out.
 * One call at a time per mutable string.
 * All functions: [any].
 */
#ifndef COREFOUNDATION_CFSTRING_H
#define COREFOUNDATION_CFSTRING_H

#include <CoreFoundation/CFBase.h>

KVX_PLATFORM_BEGIN

typedef UInt32 CFStringEncoding;

enum {
    kCFStringEncodingMacRoman = 0,
    kCFStringEncodingWindowsLatin1 = 0x0500,
    kCFStringEncodingISOLatin1 = 0x0201,
    kCFStringEncodingNextStepLatin = 0x0B01, /* refused by every conversion */
    kCFStringEncodingASCII = 0x0600,
    kCFStringEncodingNonLossyASCII = 0x0BFF, /* refused by every conversion */
    kCFStringEncodingUnicode = 0x0100,
    kCFStringEncodingUTF8 = 0x08000100,
    kCFStringEncodingUTF16 = 0x0100, /* native byte order, without a byte order mark */
    kCFStringEncodingUTF16BE = 0x10000100,
    kCFStringEncodingUTF16LE = 0x14000100,
    kCFStringEncodingUTF32 = 0x0C000100, /* native byte order, without a byte order mark */
    kCFStringEncodingUTF32BE = 0x18000100,
    kCFStringEncodingUTF32LE = 0x1C000100
};
#define kCFStringEncodingInvalidId ((CFStringEncoding)0xFFFFFFFF)

typedef CFIndex CFStringNormalizationForm;
enum {
    kCFStringNormalizationFormD = 0,
    kCFStringNormalizationFormKD = 1,
    kCFStringNormalizationFormC = 2,
    kCFStringNormalizationFormKC = 3
};

/*
 * Make a string from the bytes of cStr up to the first zero byte.
 * Returns  NULL if cStr is NULL, the bytes are not valid in the encoding, the encoding is unknown, or there
 *          is no memory.
 */
KVX_PLATFORM_EXPORT CFStringRef CFStringCreateWithCString(CFAllocatorRef alloc, const char* cStr,
                                                          CFStringEncoding encoding);

/*
 * Make a string from any UTF-16 units, including unpaired surrogates.
 * Returns  NULL if numChars is negative, chars is NULL while numChars is above 0, or there is no memory.
 */
KVX_PLATFORM_EXPORT CFStringRef CFStringCreateWithCharacters(CFAllocatorRef alloc, const UniChar* chars,
                                                             CFIndex numChars);

/*
 * Make a mutable copy of a whole string. maxLength is ignored.
 * Returns  NULL if there is no memory.
 */
KVX_PLATFORM_EXPORT CFMutableStringRef CFStringCreateMutableCopy(CFAllocatorRef alloc, CFIndex maxLength,
                                                                 CFStringRef theString);

/* Get the length of a string in UTF-16 units. */
KVX_PLATFORM_EXPORT CFIndex CFStringGetLength(CFStringRef theString);

/*
 * Write the text of a string, and one zero byte, to a buffer.
 * Shape    bufferSize includes the zero byte.
 * Returns  false, with an empty text in the buffer, if the text does not fit, a character does not exist in
 *          the encoding, the encoding is unknown, or there is no memory. False, with nothing written, if
 *          buffer is NULL or bufferSize is below 1.
 */
KVX_PLATFORM_EXPORT Boolean CFStringGetCString(CFStringRef theString, char* buffer, CFIndex bufferSize,
                                               CFStringEncoding encoding);

/*
 * Get an upper limit of the bytes that `length` UTF-16 units need, without a zero byte.
 * Returns  kCFNotFound if length is negative, the encoding is unknown, or the limit exceeds CFIndex.
 */
KVX_PLATFORM_EXPORT CFIndex CFStringGetMaximumSizeForEncoding(CFIndex length, CFStringEncoding encoding);

/*
 * Convert a mutable string to a Unicode normal form, in place. Unpaired surrogates stay. If the form is
 * unknown or there is no memory, the string stays unchanged.
 * Errors   a NULL string, or a string that is not mutable, ends the process.
 */
KVX_PLATFORM_EXPORT void CFStringNormalize(CFMutableStringRef theString, CFStringNormalizationForm theForm);

KVX_PLATFORM_END

#endif
