/*
 * Text: a counted row of UTF-16 units. C.
 *
 * Lengths are in UTF-16 units, sizes in bytes. Thread: [any]; a mutable string by one thread at a time. A
 * NULL string, or changing one that is not mutable, ends the process.
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
    kCFStringEncodingUTF16 = 0x0100, /* the processor's byte order, as UTF32; no byte order mark */
    kCFStringEncodingUTF16BE = 0x10000100,
    kCFStringEncodingUTF16LE = 0x14000100,
    kCFStringEncodingUTF32 = 0x0C000100,
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

/* Copy the text up to its NUL. NULL if it is NULL, not valid in that encoding, or there is no memory. */
KVX_PLATFORM_EXPORT CFStringRef CFStringCreateWithCString(CFAllocatorRef alloc, const char* cStr,
                                                          CFStringEncoding encoding);

/* Copy any units, unpaired surrogates too. NULL for a negative count, NULL units of a count above 0, no
 * memory. */
KVX_PLATFORM_EXPORT CFStringRef CFStringCreateWithCharacters(CFAllocatorRef alloc, const UniChar* chars,
                                                             CFIndex numChars);

/* A copy that can be changed; maxLength is the caller's own promise, 0 for none. */
KVX_PLATFORM_EXPORT CFMutableStringRef CFStringCreateMutableCopy(CFAllocatorRef alloc, CFIndex maxLength,
                                                                 CFStringRef theString);

KVX_PLATFORM_EXPORT CFIndex CFStringGetLength(CFStringRef theString);

/* Write the text and one NUL byte, which bufferSize counts. False, and an empty text in a buffer of any size,
 * if it does not fit or a character has no place in the encoding. */
KVX_PLATFORM_EXPORT Boolean CFStringGetCString(CFStringRef theString, char* buffer, CFIndex bufferSize,
                                               CFStringEncoding encoding);

/* The bytes that `length` units never exceed, without a NUL. kCFNotFound if a CFIndex does not hold them. */
KVX_PLATFORM_EXPORT CFIndex CFStringGetMaximumSizeForEncoding(CFIndex length, CFStringEncoding encoding);

/* Bring the text into a normal form, in place. An unknown form changes nothing. */
KVX_PLATFORM_EXPORT void CFStringNormalize(CFMutableStringRef theString, CFStringNormalizationForm theForm);

KVX_PLATFORM_END

#endif
