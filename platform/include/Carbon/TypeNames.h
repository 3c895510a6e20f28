/*
 * Further type names that <Carbon/Carbon.h> declares on the target system. Nothing uses these types. They are
 * declared so that a plug-in name that collides with one of them does not compile. C; structs are 2-byte
 * packed, as in all Carbon headers.
 */
#ifndef CARBON_TYPENAMES_H
#define CARBON_TYPENAMES_H

#include <KVXPlatform/export.h>
#include <MacTypes.h>

KVX_PLATFORM_BEGIN

typedef UInt32 TextEncoding;
typedef UInt32 TextEncodingBase;
typedef UInt32 TextEncodingVariant;
typedef UInt32 TextEncodingFormat;
typedef SInt16 ScriptCode;
typedef SInt16 LangCode;
typedef SInt16 RegionCode;
typedef SInt32 Fract; /* 2.30 fixed point */
typedef unsigned char Style;
typedef struct OpaqueCollection* Collection;

#pragma pack(push, 2)

typedef struct Point {
    short v;
    short h;
} Point;

typedef struct Rect {
    short top;
    short left;
    short bottom;
    short right;
} Rect;

typedef struct FSSpec {
    short vRefNum;
    SInt32 parID;
    unsigned char name[64];
} FSSpec;

typedef struct Marker {
    short id;
    UInt32 position;
    Str255 markerName;
} Marker;

typedef struct Cursor {
    short data[16];
    short mask[16];
    Point hotSpot;
} Cursor;

typedef struct Pattern {
    UInt8 pat[8];
} Pattern;

#pragma pack(pop)

KVX_PLATFORM_SIZE(Point, 4);
KVX_PLATFORM_SIZE(Rect, 8);
KVX_PLATFORM_SIZE(FSSpec, 70);
KVX_PLATFORM_SIZE(Marker, 262);
KVX_PLATFORM_SIZE(Cursor, 68);
KVX_PLATFORM_SIZE(Pattern, 8);

KVX_PLATFORM_END

#endif
