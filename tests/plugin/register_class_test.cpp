// Registration of a class, compared word by word. The class definitions have a different value in each word,
// and each of their arrays is present or missing.
#include "plugin/register_class.h"
#include "tests/plugin/class_states.h"
#include "tests/plugin/host_fixture.h"

#include <array>
#include <cstdlib>
#include <cstring>
#include <iterator>

namespace {

constexpr std::size_t arrayCount = std::size(arrayFacts);
constexpr Word recordCount = 2;
const char className[] = "Made";

/// State of one array of a class definition: which of the array's address, count and contents are present.
enum State { nothing, countAlone, addressAlone, records, stateCount };

/// A class definition with a different value in each word, and the contents of its arrays.
struct MadeClass {
    REALclassDefinition definition;
    std::array<std::vector<Word>, arrayCount> made, original;

    MadeClass(const std::array<State, arrayCount>& states, Word dataSize)
    {
        std::vector<Word> words(sizeof definition / sizeof(Word));
        for (std::size_t i = 0; i < words.size(); ++i) words[i] = 0xD0000000u + i;
        words[1] = reinterpret_cast<Word>(className);
        words[3] = dataSize;
        for (std::size_t a = 0; a < arrayCount; ++a) {
            const bool hasRecords = states[a] == addressAlone || states[a] == records;
            if (hasRecords)
                for (Word w = 0; w < recordCount * arrayFacts[a].currentWords; ++w)
                    made[a].push_back(0xE0000000u + 0x10000u * static_cast<Word>(a) + w);
            words[arrayFacts[a].address] = hasRecords ? reinterpret_cast<Word>(made[a].data()) : 0;
            words[arrayFacts[a].count] = states[a] == records      ? recordCount
                                         : states[a] == countAlone ? Word(3)
                                                                   : 0;
        }
        std::memcpy(static_cast<void*>(&definition), words.data(), sizeof definition);
        original = made;
    }
};

class RegisterClassTest : public HostTest {
protected:
    /// Register a class in the class-definition layout `layout`. Returns the words that the host received.
    std::vector<Word> registered(MadeClass& made, int layout)
    {
        CurrentREALControlVersion = layout;
        host.startOver();
        MyREALRegisterClass(&made.definition);
        EXPECT_EQ(host.calls(), Notes{"PluginRegisterClass(Made)"});
        if (host.registrations().size() != 1) return {};
        EXPECT_EQ(host.registrations()[0].definition, &made.definition);
        EXPECT_EQ(host.registrations()[0].words, wordsOf(made.definition))
            << "changed after the registration";
        return host.registrations()[0].words;
    }
};

/// Call `check` with each combination of states of the six arrays.
template <class Check>
void forEachCombination(Check check)
{
    for (int code = 0; code < 4 * 4 * 4 * 4 * 4 * 4; ++code) {
        std::array<State, arrayCount> states;
        int rest = code;
        for (State& state : states) {
            state = static_cast<State>(rest % stateCount);
            rest /= stateCount;
        }
        SCOPED_TRACE(code);
        check(states);
        if (testing::Test::HasFailure()) return;
    }
}

TEST_F(RegisterClassTest, NewerLayoutsReceiveTheDefinitionItself)
{
    for (int layout : {10, 11, 12, 13})
        forEachCombination([&](const auto& states) {
            MadeClass made(states, 1664);
            std::vector<Word> expected = wordsOf(made.definition);
            expected[0] = static_cast<Word>(layout);
            EXPECT_EQ(registered(made, layout), expected);
            EXPECT_EQ(made.made, made.original) << "the records are unchanged";
        });
}

TEST_F(RegisterClassTest, Layout9ReceivesCopiesWithoutTheTrailingWords)
{
    forEachCombination([&](const auto& states) {
        MadeClass made(states, 20);
        std::vector<Word> expected = wordsOf(made.definition);
        const std::vector<Word> got = registered(made, 9);
        ASSERT_EQ(got.size(), 32u);
        expected[0] = 9;
        expected[3] = 32;
        expected[16] = expected[17] = 0; // the two unused words after the interfaces
        for (std::size_t a = 0; a < arrayCount; ++a) {
            const ArrayFact& array = arrayFacts[a];
            SCOPED_TRACE(array.name);
            const auto* copy = reinterpret_cast<const Word*>(got[array.address]);
            if (states[a] == records) {
                ASSERT_NE(copy, nullptr);
                EXPECT_NE(copy, made.made[a].data());
                for (Word record = 0; record < recordCount; ++record)
                    EXPECT_EQ(wordsAt(copy + record * array.olderWords, array.olderWords),
                              wordsAt(&made.original[a][record * array.currentWords], array.olderWords));
            } else {
                EXPECT_EQ(copy, nullptr);
            }
            expected[array.address] = reinterpret_cast<Word>(copy);
            if (array.isEvents && copy)
                for (Word record = 0; record < recordCount; ++record)
                    made.original[a][record * 4 + 1] = reinterpret_cast<Word>(copy + record * 2);
            EXPECT_EQ(made.made[a], made.original[a])
                << "only an event's second word changes: to the address of its copy";
            std::free(const_cast<Word*>(copy));
        }
        EXPECT_EQ(got, expected) << "counts and the words after the 25th are unchanged";
    });
}

TEST_F(RegisterClassTest, TheDefinitionIsAdaptedAlsoWithoutTheService)
{
    withhold("PluginRegisterClass");
    for (int layout : {9, 10, 13}) {
        SCOPED_TRACE(layout);
        MadeClass made({records, records, records, records, records, records}, 17);
        std::vector<Word> expected = wordsOf(made.definition);
        CurrentREALControlVersion = layout;
        host.startOver();
        MyREALRegisterClass(&made.definition);
        EXPECT_EQ(host.notes(), Notes{"? PluginRegisterClass: none"}) << "no message";
        const std::vector<Word> got = wordsOf(made.definition);
        expected[0] = static_cast<Word>(layout);
        expected[3] = 32;
        if (layout == 9) expected[16] = expected[17] = 0;
        for (const ArrayFact& array : arrayFacts) {
            EXPECT_EQ(got[array.address] != expected[array.address], layout == 9);
            if (layout == 9) std::free(reinterpret_cast<void*>(got[array.address]));
            expected[array.address] = got[array.address];
        }
        EXPECT_EQ(got, expected);
    }
}

TEST_F(RegisterClassTest, TheServiceIsLookedUpOnceForAllClasses)
{
    MadeClass first({}, 0), second({}, 0);
    CurrentREALControlVersion = 13;
    MyREALRegisterClass(&first.definition);
    MyREALRegisterClass(&second.definition);
    EXPECT_EQ(host.notes(),
              (Notes{"? PluginRegisterClass", "PluginRegisterClass(Made)", "PluginRegisterClass(Made)"}));
}

TEST_F(RegisterClassTest, TheDataSizeIsRoundedUpToSixteen)
{
    // clang-format off
    const struct { Word declared, rounded; } facts[] = {
        {0, 0}, {1, 16}, {4, 16}, {15, 16}, {16, 16}, {17, 32}, {20, 32}, {31, 32}, {32, 32},
        {184, 192}, {1663, 1664}, {1664, 1664}, {1665, 1680},
    };
    // clang-format on
    for (int layout : {9, 10, 11, 12, 13})
        for (const auto& fact : facts) {
            SCOPED_TRACE(testing::Message() << layout << ": " << fact.declared);
            MadeClass made({}, fact.declared);
            const std::vector<Word> words = registered(made, layout);
            ASSERT_FALSE(words.empty());
            EXPECT_EQ(words[3], fact.rounded);
        }
}

TEST_F(RegisterClassTest, ASecondRegistrationPassesTheSameWords)
{
    MadeClass made({records, records, records, records, records, records}, 20);
    const std::vector<Word> once = registered(made, 13);
    EXPECT_EQ(registered(made, 13), once);
}

// ---- the function FixProperties ----

TEST(FixProperties, ReturnsTheFirstTenWordsOfEachRecord)
{
    std::vector<Word> current;
    for (Word w = 0; w < 3 * 12; ++w) current.push_back(0x100 + w);
    REALproperty records3[3];
    std::memcpy(static_cast<void*>(records3), current.data(), sizeof records3);

    REALproperty9* older = FixProperties(records3, 3);
    ASSERT_NE(older, nullptr);
    std::vector<Word> expected;
    for (Word w = 0; w < 3 * 12; ++w)
        if (w % 12 < 10) expected.push_back(0x100 + w);
    EXPECT_EQ(wordsAt(older, 3 * 10), expected);
    EXPECT_EQ(wordsAt(records3, 3 * 12), current);
    std::free(older);
}

TEST(FixProperties, ReturnsNullWithoutRecords)
{
    REALproperty record = {};
    EXPECT_EQ(FixProperties(nullptr, 0), nullptr);
    EXPECT_EQ(FixProperties(nullptr, 1), nullptr);
    EXPECT_EQ(FixProperties(&record, 0), nullptr);
}

} // namespace
