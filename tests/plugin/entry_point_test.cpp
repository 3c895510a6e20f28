// REALPluginMain: the calls to the host, the chosen class-definition layout and the registered classes.
#include "abi/entry_point.h"
#include "plugin/classes.h"
#include "tests/plugin/class_states.h"
#include "tests/plugin/host_fixture.h"
#include "tests/support/null_call.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <iterator>
#include <limits>

extern "C" void REALPluginMain(REALResolver resolver);

namespace {

class EntryPointTest : public HostTest {
protected:
    EntryPointTest() { asLoaded(); }
    ~EntryPointTest() override { asLoaded(); }

    /// Restore the library's initial state.
    void asLoaded()
    {
        makeClassesFresh();
        forgetServices();
        gResolver = nullptr;
        rbversion_rbversion = 0.0;
        CurrentREALControlVersion = 13;
        soundComponentEntry = nullptr;
        host.startOver();
    }

    void load() { REALPluginMain(fake::Host::resolve); }
};

const Notes registerAll = {
    "PluginRegisterClass(AUPlayerKVX)",          "PluginRegisterClass(CoreAudioKVX)",
    "PluginRegisterClass(CoreAudioListenerKVX)", "PluginRegisterClass(CoreAudioPlayerKVX)",
    "PluginRegisterClass(QTSoundStreamKVX)",
};

Notes operator+(Notes left, const Notes& right)
{
    left.insert(left.end(), right.begin(), right.end());
    return left;
}

TEST_F(EntryPointTest, CallsTheHostInOrder)
{
    load();
    EXPECT_EQ(host.notes(), (Notes{"? REALGetRBVersion", "REALGetRBVersion()", "? RegisterPluginVersion",
                                   "RegisterPluginVersion(13)", "? REALinRuntime", "REALinRuntime()",
                                   "? PluginRegisterClass"} +
                             registerAll));
    EXPECT_EQ(gResolver, &fake::Host::resolve);
}

TEST_F(EntryPointTest, StoresAllStateBeforeTheFirstRegistration)
{
    bool ran = false;
    host.version = 2013.03;
    host.inNext("PluginRegisterClass", [&] {
        ran = true;
        EXPECT_EQ(rbversion_rbversion, 2013.03);
        EXPECT_EQ(CurrentREALControlVersion, 12);
        EXPECT_EQ(soundComponentEntry, soundStreamDispatcher);
    });
    load();
    EXPECT_TRUE(ran);
}

TEST_F(EntryPointTest, ChoosesTheLayoutFromTheHostsVersion)
{
    constexpr double infinity = std::numeric_limits<double>::infinity();
    // clang-format off
    const struct { double version; int layout; const char* why; } facts[] = {
        {infinity,                         13, "above all versions"},
        {2016.0,                           13, "a newer host"},
        {2013.041,                         13, "just above the next"},
        {2013.04,                          13, "the first that reads layout 13"},
        {std::nextafter(2013.04, 0),       12, "the number below it"},
        {2013.03,                          12, "the first that reads layout 12"},
        {std::nextafter(2013.03, 0),       11, "the number below it"},
        {2013.02,                          11, "between"},
        {2013.0,                           11, "the first that reads layout 11"},
        {std::nextafter(2013.0, 0),        10, "the number below it"},
        {2012.99,                          10, "between"},
        {2012.0,                           10, "the first that reads layout 10"},
        {std::nextafter(2012.0, 0),         9, "the number below it"},
        {2011.5,                            9, "between"},
        {2010.5,                            9, "an old host"},
        {0.0,                               9, "no version"},
        {-0.0,                              9, "no version"},
        {-1.0,                              9, "not a version"},
        {-infinity,                         9, "not a version"},
        {std::nan(""),                      9, "NaN compares false with every number"},
    };
    // clang-format on
    for (const auto& fact : facts) {
        SCOPED_TRACE(testing::Message() << fact.version << ": " << fact.why);
        asLoaded();
        host.version = fact.version;
        load();
        EXPECT_EQ(CurrentREALControlVersion, fact.layout);
        EXPECT_TRUE(rbversion_rbversion == fact.version || std::isnan(fact.version));
        EXPECT_EQ(std::isnan(rbversion_rbversion), std::isnan(fact.version));
        EXPECT_EQ(host.calls(),
                  (Notes{"REALGetRBVersion()", "RegisterPluginVersion(" + std::to_string(fact.layout) + ")",
                         "REALinRuntime()"} +
                   registerAll));
        ASSERT_EQ(host.registrations().size(), 5u);
        for (const auto& registration : host.registrations())
            EXPECT_EQ(registration.words[0], static_cast<Word>(fact.layout));
    }
}

TEST_F(EntryPointTest, UsesTheOldestLayoutForAHostWithoutAVersion)
{
    host.withhold("REALGetRBVersion");
    load();
    EXPECT_EQ(CurrentREALControlVersion, 9);
    EXPECT_EQ(rbversion_rbversion, 0.0);
    EXPECT_EQ(host.notes(),
              (Notes{"? REALGetRBVersion: none", "? RegisterPluginVersion", "RegisterPluginVersion(9)",
                     "? REALinRuntime", "REALinRuntime()", "? PluginRegisterClass"} +
               registerAll));
}

TEST_F(EntryPointTest, KeepsTheStoredVersionWithoutTheService)
{
    host.withhold("REALGetRBVersion");
    rbversion_rbversion = 2010.25;
    load();
    EXPECT_EQ(rbversion_rbversion, 2010.25);
    EXPECT_EQ(CurrentREALControlVersion, 9);
}

using EntryPointDeathTest = EntryPointTest;

TEST_F(EntryPointDeathTest, NeedsRegisterPluginVersion)
{
    testing::FLAGS_gtest_death_test_style = "threadsafe";
    host.withhold("RegisterPluginVersion");
    host.inNext("REALinRuntime",
                [] { std::exit(0); }); // runs only if the missing service did not end the program
    EXPECT_EXIT(load(), support::endedByNullCall, support::nullCallText);
    EXPECT_EQ(host.registrations().size(), 0u);
}

TEST_F(EntryPointTest, SetsTheComponentEntryInABuiltProgramOnly)
{
    enum class Answer { yes, no, missing };
    // clang-format off
    const struct { Answer answer; bool offers; const char* why; } facts[] = {
        {Answer::yes,     true,  "a built program"},
        {Answer::no,      false, "the development environment"},
        {Answer::missing, false, "a missing service returns false"},
    };
    // clang-format on
    ASSERT_NE(soundStreamDispatcher, nullptr);
    for (const auto& fact : facts) {
        SCOPED_TRACE(fact.why);
        asLoaded();
        host.isBuiltProgram = fact.answer == Answer::yes;
        if (fact.answer == Answer::missing) host.withhold("REALinRuntime");
        load();
        EXPECT_EQ(soundComponentEntry, fact.offers ? soundStreamDispatcher : nullptr);
        EXPECT_EQ(host.registrations().size(), 5u);
    }
}

TEST_F(EntryPointTest, PreparesTheClassesForAHostWithoutTheRegistrationService)
{
    for (double version : {2011.5, 2016.0}) {
        asLoaded();
        host.version = version;
        host.withhold("PluginRegisterClass");
        load();
        const Notes lookUps = host.lookUps();
        EXPECT_EQ(std::count(lookUps.begin(), lookUps.end(), "PluginRegisterClass"), 5) << "once per class";
        EXPECT_EQ(host.calls().size(), 3u) << "no message";
        for (const ClassFact& fact : classFacts()) EXPECT_EQ(fact.definition->dataSize, fact.roundedSize);
    }
}

// ---- the five classes ----

TEST_F(EntryPointTest, TheClassesHaveTheNewestLayoutAndNoSuperclass)
{
    for (const ClassFact& fact : classFacts()) {
        SCOPED_TRACE(fact.name);
        const std::vector<Word> words = freshWordsOf(*fact.definition);
        EXPECT_EQ(words[0], 13u) << "layout version";
        EXPECT_STREQ(reinterpret_cast<const char*>(words[1]), fact.name);
        EXPECT_EQ(words[2], 0u) << "superclass";
        EXPECT_EQ(words[3], fact.declaredSize);
        EXPECT_EQ(words[20], 4u) << "flags";
        for (std::size_t newer = 25; newer < words.size(); ++newer) EXPECT_EQ(words[newer], 0u);
        for (std::size_t i = 0; i < std::size(arrayFacts); ++i) {
            SCOPED_TRACE(arrayFacts[i].name);
            EXPECT_EQ(words[arrayFacts[i].address] != 0, words[arrayFacts[i].count] != 0);
            const std::vector<Word> records = freshRecordsOf(*fact.definition, i);
            for (std::size_t at = 0; at < records.size(); ++at)
                if (at % arrayFacts[i].currentWords >= arrayFacts[i].olderWords)
                    EXPECT_EQ(records[at], 0u)
                        << "trailing word of record " << at / arrayFacts[i].currentWords;
        }
    }
    EXPECT_NE(coreAudioPlayerClass.constructor, nullptr);
    EXPECT_NE(coreAudioPlayerClass.destructor, nullptr);
}

TEST_F(EntryPointTest, NewerHostsReceiveTheDefinitionsWithRoundedSizes)
{
    // clang-format off
    const struct { double version; Word layout; } facts[] = {{2016.0, 13}, {2013.04, 13}, {2013.03, 12}, {2013.02, 11}, {2012.99, 10}};
    // clang-format on
    for (const auto& fact : facts) {
        SCOPED_TRACE(fact.version);
        asLoaded();
        host.version = fact.version;
        load();
        ASSERT_EQ(host.registrations().size(), 5u);
        for (std::size_t i = 0; i < 5; ++i) {
            const ClassFact& expected = classFacts()[i];
            SCOPED_TRACE(expected.name);
            const fake::Registration& registration = host.registrations()[i];
            EXPECT_EQ(registration.definition, expected.definition) << "the static definition itself";
            std::vector<Word> words = freshWordsOf(*expected.definition);
            words[0] = fact.layout;
            words[3] = expected.roundedSize;
            EXPECT_EQ(registration.words, words);
            for (std::size_t array = 0; array < std::size(arrayFacts); ++array)
                EXPECT_EQ(wordsAt(reinterpret_cast<void*>(words[arrayFacts[array].address]),
                                  words[arrayFacts[array].count] * arrayFacts[array].currentWords),
                          freshRecordsOf(*expected.definition, array));
        }
    }
}

TEST_F(EntryPointTest, TheOldestHostsReceiveShorterRecords)
{
    host.version = 2011.5;
    load();
    ASSERT_EQ(host.registrations().size(), 5u);
    for (std::size_t i = 0; i < 5; ++i) {
        const ClassFact& expected = classFacts()[i];
        SCOPED_TRACE(expected.name);
        const std::vector<Word>& words = host.registrations()[i].words;
        std::vector<Word> rest = freshWordsOf(*expected.definition);
        rest[0] = 9;
        rest[3] = expected.roundedSize;
        for (std::size_t a = 0; a < std::size(arrayFacts); ++a) {
            const ArrayFact& array = arrayFacts[a];
            SCOPED_TRACE(array.name);
            const std::vector<Word> current = freshRecordsOf(*expected.definition, a);
            std::vector<Word> older;
            for (std::size_t at = 0; at < current.size(); ++at)
                if (at % array.currentWords < array.olderWords) older.push_back(current[at]);
            const auto* copy = reinterpret_cast<const Word*>(words[array.address]);
            EXPECT_EQ(wordsAt(copy, older.size()), older) << "the copy, or null without records";
            EXPECT_EQ(copy != nullptr, rest[array.count] != 0);
            if (array.isEvents) {
                const auto* events = reinterpret_cast<const REALevent*>(rest[array.address]);
                for (Word event = 0; event < rest[array.count]; ++event)
                    EXPECT_EQ(events[event].systemUse, reinterpret_cast<Word>(copy + 2 * event))
                        << "the address of the copy, into which the host writes the key";
            }
            rest[array.address] = words[array.address];
        }
        EXPECT_EQ(words, rest) << "only the arrays, the layout and the size differ";
    }
    EXPECT_EQ(coreAudioListenerClass.eventCount, 1u) << "its single event";
}

} // namespace
