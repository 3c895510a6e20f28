// The five class definitions as the library was loaded, to be had again after a registration has written into
// them.
#pragma once

#include "abi/class_definition.h"

#include <vector>

/// The definitions that are static in the library, in the order in which they are registered.
struct ClassFact {
    REALclassDefinition* definition;
    const char* name;
    Word declaredSize; ///< bytes of class data
    Word roundedSize;
};
const std::vector<ClassFact>& classFacts();

/// A definition as words.
std::vector<Word> wordsOf(const REALclassDefinition& definition);

/// `count` words at an address, which may be null for none.
std::vector<Word> wordsAt(const void* first, std::size_t count);

/// The definition as it was before main, and the records of its array number `array` of the table below.
std::vector<Word> freshWordsOf(const REALclassDefinition& definition);
std::vector<Word> freshRecordsOf(const REALclassDefinition& definition, std::size_t array);

/// An array of a definition: the words in which its address and count stand (counted from 0), and the size of
/// one record, in words, in the newest layout and in layout 9.
struct ArrayFact {
    const char* name;
    std::size_t address, count;
    std::size_t currentWords, olderWords;
    bool isEvents;
};
constexpr ArrayFact arrayFacts[] = {
    // clang-format off
    {"properties",        7,  8, 12, 10, false},
    {"methods",           9, 10,  6,  4, false},
    {"events",           11, 12,  4,  2, true},
    {"constants",        18, 19,  5,  3, false},
    {"shared properties", 21, 22, 12, 10, false},
    {"shared methods",   23, 24,  6,  4, false},
    // clang-format on
};

/// Free what a registration for layout 9 has allocated, and make all five definitions fresh again.
void makeClassesFresh();
