// The definition of a class, which the plug-in passes to the host. The plug-in's static structures have the
// newest class-definition layout (version 13). A host that reads layout 9 receives copies without the
// trailing fields: the structures whose names end in 9.
#pragma once

#include "abi/word.h"

struct REALobjectStruct;

struct REALproperty {
    const char* group;
    const char* name;
    const char* type;
    Word flags;
    AnyFunction getter; ///< address of a function, or a sentinel of abi/accessor_sentinels.h
    AnyFunction setter; ///< address of a function, a sentinel, or null for a read-only property
    HostInteger parameter;
    const char* editor;
    const void* enumeration;
    Word tenth;
    Word trailing[2];
};

struct REALproperty9 {
    const char* group;
    const char* name;
    const char* type;
    Word flags;
    AnyFunction getter;
    AnyFunction setter;
    HostInteger parameter;
    const char* editor;
    const void* enumeration;
    Word tenth;
};

/// A method or a shared method (method without an object). If `setter` is not null, the structure declares an
/// indexed property with `function` as its getter.
struct REALmethod {
    AnyFunction function;
    AnyFunction setter;
    const char* declaration;
    Word flags;
    Word trailing[2];
};

struct REALmethod9 {
    AnyFunction function;
    AnyFunction setter;
    const char* declaration;
    Word flags;
};

struct REALevent {
    const char* declaration;
    Word systemUse; ///< key for "GetEventInstance", which the host writes at registration
    Word trailing[2];
};

struct REALevent9 {
    const char* declaration;
    Word systemUse;
};

struct REALconstant {
    const char* declaration; ///< declaration in the form "Name as Type = value"
    Word further[4];
};

struct REALconstant9 {
    const char* declaration;
    Word further[2];
};

/// The fields of a class definition that all layouts have.
struct REALclassDefinition9 {
    Word version;
    const char* name;
    const char* superName;
    Word dataSize;   ///< size of the class data in each object, in bytes
    Word dataOffset; ///< offset of the class data in an object, which the host writes at registration
    AnyFunction constructor;
    AnyFunction destructor;
    /// Array of REALproperty, or of REALproperty9 in layout 9. The elements of the other arrays (REALmethod9,
    /// …) change in the same way.
    void* properties;
    Word propertyCount;
    void* methods;
    Word methodCount;
    void* events;
    Word eventCount;
    void* eventInstances;
    Word eventInstanceCount;
    const char* interfaces;
    Word unused[2]; ///< two machine words that are zero in layout 9
    void* constants;
    Word constantCount;
    Word flags;
    void* sharedProperties;
    Word sharedPropertyCount;
    void* sharedMethods;
    Word sharedMethodCount;
};

/// A class definition in the newest layout: the common fields, then seven machine words that only newer hosts
/// read, all zero here. The seven words extend the structure to 32 words; confirm the count against the host.
struct REALclassDefinition : REALclassDefinition9 {
    Word newer[7];
};

static_assert(sizeof(REALproperty) == 12 * sizeof(Word) && sizeof(REALproperty9) == 10 * sizeof(Word));
static_assert(sizeof(REALmethod) == 6 * sizeof(Word) && sizeof(REALmethod9) == 4 * sizeof(Word));
static_assert(sizeof(REALevent) == 4 * sizeof(Word) && sizeof(REALevent9) == 2 * sizeof(Word));
static_assert(sizeof(REALconstant) == 5 * sizeof(Word) && sizeof(REALconstant9) == 3 * sizeof(Word));
static_assert(sizeof(REALclassDefinition9) == 25 * sizeof(Word));

constexpr HostInteger newestLayout = 13;
constexpr HostInteger oldestLayout = 9;

/// Return the newest class-definition layout that a host of this version reads; the oldest layout for NaN.
/// [any]
constexpr HostInteger layoutOfHost(double version)
{
    constexpr struct {
        double version;
        HostInteger layout;
    } rows[] = {{2013.04, 13}, {2013.03, 12}, {2013.0, 11}, {2012.0, 10}};
    for (const auto& row : rows)
        if (version >= row.version) return row.layout;
    return oldestLayout;
}
