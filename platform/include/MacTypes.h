/*
 * The platform's basic types. C; structs are 2-byte packed, as in all Carbon headers.
 *
 * UInt32 is `unsigned long` on 32-bit targets, because the type decides C++ overloads and printf formats. On
 * 64-bit targets UInt32 is `unsigned int`, so that it has 32 bits there too.
 */
#ifndef MACTYPES_H
#define MACTYPES_H

#include <KVXPlatform/export.h>

#include <stddef.h>

KVX_PLATFORM_BEGIN

typedef unsigned char UInt8;
typedef signed char SInt8;
typedef unsigned short UInt16;
typedef signed short SInt16;
#if defined(__LP64__)
typedef unsigned int UInt32;
typedef signed int SInt32;
#else
typedef unsigned long UInt32;
typedef signed long SInt32;
#endif
typedef unsigned long long UInt64;
typedef signed long long SInt64;
typedef float Float32;
typedef double Float64;

typedef UInt8 Byte;
typedef SInt8 SignedByte;
typedef unsigned char Boolean;
typedef UInt16 UniChar; /* a UTF-16 unit */
typedef unsigned long UniCharCount;
typedef unsigned long ItemCount;
typedef unsigned long ByteCount;
typedef UInt32 OptionBits;

typedef SInt32 Fixed;         /* 16.16 fixed point */
typedef UInt32 UnsignedFixed; /* 16.16 fixed point */
typedef SInt32 Duration;      /* positive: milliseconds; negative: microseconds */

typedef SInt16 OSErr;        /* a status; 0 is success */
typedef SInt32 OSStatus;     /* a status; 0 is success */
typedef UInt32 FourCharCode; /* the first character is the most significant byte */
typedef FourCharCode OSType;

typedef char* Ptr;
typedef Ptr* Handle; /* handle from NewHandle: a pointer to the pointer to a memory block */
typedef long Size;   /* size in bytes */

typedef unsigned char Str255[256]; /* Pascal text: a length byte, then the bytes */
typedef unsigned char* StringPtr;
typedef StringPtr* StringHandle;
typedef const unsigned char* ConstStringPtr;
typedef const unsigned char* ConstStr255Param;

typedef long (*ProcPtr)();
typedef ProcPtr UniversalProcPtr; /* an ordinary function pointer */

#pragma pack(push, 2)

/* An unsigned 64-bit number in two 32-bit halves. */
typedef struct UnsignedWide {
    UInt32 lo;
    UInt32 hi;
} UnsignedWide;
typedef UnsignedWide AbsoluteTime; /* units of the host clock */
typedef UnsignedWide Nanoseconds;

/* An 80-bit floating-point number: sign and exponent, then the mantissa. */
typedef struct Float80 {
    SInt16 exp;
    UInt16 man[4];
} Float80;
typedef Float80 extended80;

#pragma pack(pop)

enum { noErr = 0 };

KVX_PLATFORM_ASSERT(sizeof(UInt32) == 4 && sizeof(SInt32) == 4, "32 bits on every target");
KVX_PLATFORM_ASSERT(sizeof(UInt64) == 8 && sizeof(SInt64) == 8, "64 bits on every target");
KVX_PLATFORM_SIZE(UnsignedWide, 8);
KVX_PLATFORM_SIZE(Float80, 10);

KVX_PLATFORM_END

#endif
