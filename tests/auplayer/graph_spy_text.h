// The text of a call's argument, chosen by the argument's type. The types in this header give plain numbers
// and addresses such a type.
#pragma once

#include "tests/auplayer/graph_spy.h"

#include <Carbon/Carbon.h>

namespace graph_spy {

struct Node {
    AUNode number;
};
struct Scope {
    AudioUnitScope number;
};
struct Code {
    UInt32 word;
};
struct Number {
    unsigned long long value;
};
struct Bytes {
    UInt32 count;
};
struct InOut {
    const UInt32* size;
};
/// The new value of a property.
struct Value {
    const void* bytes;
    UInt32 size;
};
struct Reference {
    const FSRef* of;
};
struct Characters {
    const UniChar* units;
    CFIndex count;
};

std::string text(const void* pointer);
std::string text(CFAllocatorRef allocator);
std::string text(Node node);
std::string text(Scope scope);
std::string text(Code word);
std::string text(Number number);
std::string text(Bytes bytes);
std::string text(InOut size);
std::string text(Float32 number);
std::string text(const AudioObjectPropertyAddress* address);
std::string text(const AudioComponentDescription* d);
std::string text(const AURenderCallbackStruct* given);
std::string text(Value given);
std::string text(Reference reference);
std::string text(Characters characters);
std::string text(const AudioBufferList* list);

} // namespace graph_spy
