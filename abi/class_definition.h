// The definition of a class, passed from the plug-in to the host. The plug-in's static records have the
// newest layout, 13. An older host receives copies without the trailing words: the records whose names end
// in 9.
#pragma once

#include "abi/word.h"

struct REALobjectStruct;

struct REALproperty {
    const char* group;
    const char* name;
    const char* type;
    Word flags;
    AnyFunction getter; ///< a function, or a value of abi/accessor_sentinels.h
    AnyFunction setter; ///< the same; null: read-only
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

/// A method or shared method. A method with a setter is an indexed property.
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
    Word systemUse; ///< written by the host at registration; the key for "GetEventInstance"
    Word trailing[2];
};

struct REALevent9 {
    const char* declaration;
    Word systemUse;
};

struct REALconstant {
    const char* declaration; ///< "Name as Type = value"
    Word further[4];
};

struct REALconstant9 {
    const char* declaration;
    Word further[2];
};

/// The words of a class definition that all layouts have.
struct REALclassDefinition9 {
    Word version;
    const char* name;
    const char* superName;
    Word dataSize;   ///< bytes of class data in each object
    Word dataOffset; ///< written by the host at registration; the class data is at object + dataOffset
    AnyFunction constructor;
    AnyFunction destructor;
    void*
        properties; ///< REALproperty[] or REALproperty9[] in layout 9; the other arrays follow the same rule
    Word propertyCount;
    void* methods;
    Word methodCount;
    void* events;
    Word eventCount;
    void* eventInstances;
    Word eventInstanceCount;
    const char* interfaces;
    Word unused[2]; ///< zero in layout 9
    void* constants;
    Word constantCount;
    Word flags;
    void* sharedProperties;
    Word sharedPropertyCount;
    void* sharedMethods;
    Word sharedMethodCount;
};

/// A definition in the newest layout: the common words, then words that only newer hosts read, all zero here.
/// Seven fill the record up to 32 words; confirm the count against the host.
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
