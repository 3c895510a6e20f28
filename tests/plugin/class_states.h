// The initial state of the library's five class definitions, restored after a registration has changed the
// definitions.
#pragma once

#include "abi/class_definition.h"

#include <vector>

/// Facts about one class definition of the library. classFacts() lists the classes in registration order.
struct ClassFact {
    REALclassDefinition* definition;
    const char* name;
    Word declaredSize; ///< size of the class data in bytes
    Word roundedSize;
};
const std::vector<ClassFact>& classFacts();

/// Machine words of a class definition.
std::vector<Word> wordsOf(const REALclassDefinition& definition);

/// `count` machine words at the address `first`; no words if `first` is null.
std::vector<Word> wordsAt(const void* first, std::size_t count);

/// Initial words of a class definition, and initial words of one of its arrays; `array` is an index into
/// arrayFacts.
std::vector<Word> freshWordsOf(const REALclassDefinition& definition);
std::vector<Word> freshRecordsOf(const REALclassDefinition& definition, std::size_t array);

/// An array of a class definition: the indexes of the words with the array's address and length, and the
/// number of words per element in the newest layout and in layout 9.
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

/// Restore all five class definitions, and free the copies that a registration in layout 9 made.
void makeClassesFresh();
