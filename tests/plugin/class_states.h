// The initial state of the five class definitions, restored after a registration has written into them.
#pragma once

#include "abi/class_definition.h"

#include <vector>

/// One class definition of the library. The list is in registration order.
struct ClassFact {
    REALclassDefinition* definition;
    const char* name;
    Word declaredSize; ///< bytes of class data
    Word roundedSize;
};
const std::vector<ClassFact>& classFacts();

/// The words of a definition.
std::vector<Word> wordsOf(const REALclassDefinition& definition);

/// `count` words at an address; none at null.
std::vector<Word> wordsAt(const void* first, std::size_t count);

/// The initial words of a definition, and the initial records of an array (an index into arrayFacts).
std::vector<Word> freshWordsOf(const REALclassDefinition& definition);
std::vector<Word> freshRecordsOf(const REALclassDefinition& definition, std::size_t array);

/// An array of a definition: the indexes of the words with its address and its count, and the words per
/// record in the newest layout and in layout 9.
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

/// Restore all five definitions and free the copies of a registration for layout 9.
void makeClassesFresh();
