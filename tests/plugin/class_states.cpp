#include "tests/plugin/class_states.h"

#include "plugin/classes.h"

#include <cstdlib>
#include <cstring>
#include <iterator>

namespace {

struct Fresh {
    std::vector<Word> words;
    std::vector<std::vector<Word>> records; // machine words of each array
};

std::vector<Fresh> takeFresh()
{
    std::vector<Fresh> all;
    for (const ClassFact& fact : classFacts()) {
        Fresh fresh{wordsOf(*fact.definition), {}};
        for (const ArrayFact& array : arrayFacts)
            fresh.records.push_back(wordsAt(reinterpret_cast<const void*>(fresh.words[array.address]),
                                            fresh.words[array.count] * array.currentWords));
        all.push_back(fresh);
    }
    return all;
}

/// Initial states of the classes, copied on first use, which must precede any registration.
const std::vector<Fresh>& freshClasses()
{
    static const std::vector<Fresh> all = takeFresh();
    return all;
}

const Fresh& freshOf(const REALclassDefinition& definition)
{
    for (std::size_t i = 0; i < classFacts().size(); ++i)
        if (classFacts()[i].definition == &definition) return freshClasses()[i];
    std::abort();
}

} // namespace

const std::vector<ClassFact>& classFacts()
{
    static const std::vector<ClassFact> facts = [] {
        // clang-format off
        std::vector<ClassFact> rows = {
            // definition             name                    declared  rounded
            {&auPlayerClass,          "AUPlayerKVX",          184,      192},
            {&coreAudioClass,         "CoreAudioKVX",         4,        16},
            {&coreAudioListenerClass, "CoreAudioListenerKVX", 20,       32},
            {&coreAudioPlayerClass,   "CoreAudioPlayerKVX",   1664,     1664},
            {&soundStreamClass,       "QTSoundStreamKVX",     20,       32},
        };
        // clang-format on
        if (sizeof(void*) != 4) // the sizes above are those of 32-bit builds
            for (ClassFact& row : rows) {
                row.declaredSize = row.definition->dataSize;
                row.roundedSize = (row.declaredSize + 15) / 16 * 16;
            }
        return rows;
    }();
    return facts;
}

std::vector<Word> wordsAt(const void* first, std::size_t count)
{
    std::vector<Word> words(first ? count : 0);
    if (!words.empty()) std::memcpy(words.data(), first, words.size() * sizeof(Word));
    return words;
}

std::vector<Word> wordsOf(const REALclassDefinition& definition)
{
    return wordsAt(&definition, sizeof definition / sizeof(Word));
}

std::vector<Word> freshWordsOf(const REALclassDefinition& definition) { return freshOf(definition).words; }

std::vector<Word> freshRecordsOf(const REALclassDefinition& definition, std::size_t array)
{
    return freshOf(definition).records[array];
}

void makeClassesFresh()
{
    for (const ClassFact& fact : classFacts()) {
        const Fresh& fresh = freshOf(*fact.definition);
        const std::vector<Word> words = wordsOf(*fact.definition);
        for (std::size_t i = 0; i < std::size(arrayFacts); ++i) {
            const std::size_t address = arrayFacts[i].address;
            if (words[address] != fresh.words[address]) std::free(reinterpret_cast<void*>(words[address]));
            if (!fresh.records[i].empty())
                std::memcpy(reinterpret_cast<void*>(fresh.words[address]), fresh.records[i].data(),
                            fresh.records[i].size() * sizeof(Word));
        }
        std::memcpy(static_cast<void*>(fact.definition), fresh.words.data(),
                    fresh.words.size() * sizeof(Word));
    }
}
