// Failing loads: refused platform calls, unreachable files, missing memory, and exceptions of host and
// platform.
#include "tests/auplayer/good_load.h"

#include <Carbon/Carbon.h>

#include <algorithm>
#include <cstring>

namespace {

using namespace auplayer_test;

constexpr char secondLoad[] = "UnsupportedOperationException: This class can only load one file.";
constexpr char badPath[] = "NilObjectException: File is invalid path";

bool startsWith(const std::string& text, const std::string& beginning)
{
    return text.compare(0, beginning.size(), beginning) == 0;
}

std::ptrdiff_t countOf(const Notes& calls, const std::string& beginning)
{
    return std::count_if(calls.begin(), calls.end(),
                         [&](const std::string& call) { return startsWith(call, beginning); });
}

/// Return the index of the first call whose text begins with `beginning`.
std::size_t indexOf(const Notes& calls, const std::string& beginning)
{
    const auto found = std::find_if(calls.begin(), calls.end(),
                                    [&](const std::string& call) { return startsWith(call, beginning); });
    return static_cast<std::size_t>(found - calls.begin());
}

class FailingLoad : public PlayerTest {
protected:
    /// Expect that a second load is refused. Then destroy the object. The spy's call record then contains
    /// only the calls of the destructor.
    void expectNoSecondLoad()
    {
        FolderItem const another = host().newFolderItem();
        host().startOver();
        spy::forgetCalls();
        EXPECT_EQ(members.call<HostBoolean>("LoadFile(", object(), another, HostInteger{2}, HostInteger{2}),
                  0);
        EXPECT_EQ(raised(), Notes{secondLoad});
        EXPECT_EQ(spy::calls(), Notes());
        EXPECT_EQ(data().lasterror, -1);
        EXPECT_EQ(data().file, another);
        EXPECT_EQ(host().references(another), 2);
        EXPECT_EQ(host().references(item()), 2) << "the reference of the first load leaks, by design";
        host().drop(item());
        destruct();
        EXPECT_EQ(host().references(another), 1);
        host().drop(another);
    }

    REALmemoryBlockStruct* samplesBlock() { return members.call<REALmemoryBlockStruct*>("Data", object()); }
};

/// The effect of a refused platform call on the load.
enum Kind {
    fails,   ///< the load ends and stores the status in `Lasterror`
    reading, ///< the load ends but does not store the status in `Lasterror`
    ignored, ///< the load ignores the refused call and succeeds
};

Kind kindOf(const std::string& call)
{
    if (startsWith(call, "ExtAudioFileRead")) return reading;
    const bool isIgnored = startsWith(call, "AudioFileClose") || startsWith(call, "ExtAudioFileDispose") ||
                           startsWith(call, "CFRelease") || call.find(", 14, global") != std::string::npos;
    return isIgnored ? ignored : fails;
}

class RefusedLoad : public FailingLoad {
protected:
    /// For both load methods and each platform call after the making of the URL, load the file with that call
    /// refused. Returns the number of loads that failed.
    std::size_t refuseEachCall(HostInteger timePitchUnit, const Notes& good);
};

TEST_F(RefusedLoad, EndsAtEachRefusedPlatformCall)
{
    const struct {
        HostInteger timePitchUnit;
        const char* bypassed;
        std::size_t refusals; ///< number of platform calls whose failure ends a load
    } facts[] = {{0, "varispeed", 40}, {2, "timePitch", 40}, {5, "", 39}};
    for (const auto& fact : facts) {
        SCOPED_TRACE(testing::Message() << "TimePitchUnit " << fact.timePitchUnit);
        Choices choices;
        choices.sliceLimit = "4096";
        choices.bypassed = fact.bypassed;
        EXPECT_EQ(refuseEachCall(fact.timePitchUnit, goodLoad(choices)), 2 * fact.refusals);
    }
}

std::size_t RefusedLoad::refuseEachCall(HostInteger timePitchUnit, const Notes& good)
{
    const std::size_t opened = indexOf(good, "ExtAudioFileOpenURL"), read = indexOf(good, "ExtAudioFileRead"),
                      duration = indexOf(good, "AudioFileGetProperty"),
                      disposed = indexOf(good, "ExtAudioFileDispose"), graph = indexOf(good, "NewAUGraph"),
                      open = indexOf(good, "AUGraphOpen"), units = indexOf(good, "AUGraphNodeInfo");
    std::size_t refused = 0;
    for (std::size_t i = pathCalls; i < good.size(); ++i)
        for (const char* method : {"LoadFile", "LoadFileMT"}) {
            SCOPED_TRACE(std::string(method) + " with a refusal of " + good[i]);
            startOver();
            data().maximumFramesPerSlice = 4096;
            data().timePitchUnit = timePitchUnit;
            constexpr OSStatus status = -10868;
            spy::script().refusals[i] = status;
            const Kind kind = kindOf(good[i]);
            EXPECT_EQ(load(2, 2, method), kind == ignored);
            EXPECT_EQ(raised(), Notes());

            const Notes calls = spy::calls();
            if (kind == ignored) {
                EXPECT_EQ(calls, good);
                EXPECT_EQ(data().lasterror, 0);
                continue;
            }
            ++refused;
            EXPECT_EQ(data().lasterror, kind == reading ? 0 : status);

            // After the refused call, the load only releases the files and the URL.
            Notes expected(good.begin(), good.begin() + static_cast<std::ptrdiff_t>(i) + 1);
            if (i == duration) expected.push_back("AudioFileClose(audio1)");
            if (i > opened && i < disposed) expected.push_back("ExtAudioFileDispose(file1)");
            expected.push_back("CFRelease(url1)");
            EXPECT_EQ(calls, expected);

            // The record keeps everything that the load made before the refused call.
            const bool hasSamples = i > read;
            EXPECT_EQ(data().loadedAudio->samples != nullptr, hasSamples);
            EXPECT_EQ(data().endFrame, hasSamples ? 1000u : 0u);
            EXPECT_EQ(data().loadedAudio->byteSize, i >= read ? 8000u : 0u) << "a failed read keeps the size";
            REALmemoryBlockStruct* const block = samplesBlock();
            EXPECT_EQ(block != nullptr, hasSamples);
            if (block) host().drop(block);
            EXPECT_EQ(data().clientFormatString != nullptr, i >= read);
            EXPECT_EQ(data().outputFormatString != nullptr, i >= read);
            EXPECT_EQ(data().dataIsPCM, i >= read);
            EXPECT_EQ(data().sampleRate, i > duration ? 48000.0 : 0.0);
            EXPECT_EQ(data().trackLength, i > duration ? 2.5 : 0.0);
            EXPECT_EQ(data().graph != nullptr, i > graph);
            EXPECT_EQ(data().outputNode != 0, i >= open);
            EXPECT_EQ(data().converterNode != 0, i >= open);
            const AudioUnit inOrder[] = {data().output,    data().converter, data().mixer,
                                         data().timePitch, data().varispeed, data().equalizer};
            for (std::size_t u = 0; u < std::size(inOrder); ++u)
                EXPECT_EQ(inOrder[u] != nullptr, i > units + u) << "unit " << u;

            // A second load is refused. The destructor releases what the failed load made.
            EXPECT_EQ(data().isFileLoaded, 1);
            expectNoSecondLoad();
            EXPECT_EQ(spy::calls(), i > graph ? Notes{"DisposeAUGraph(graph1)"} : Notes());
            expectNothingLeft();
        }
    return refused;
}

TEST_F(FailingLoad, FailsForANullFile)
{
    graph_spy::platform().opensNothing = true;
    EXPECT_FALSE(load());
    EXPECT_EQ(data().lasterror, 0);
    EXPECT_EQ(spy::calls(), (Notes{"CFURLCreateFromFSRef(default, \"the item\")", "ExtAudioFileOpenURL(url1)",
                                   "CFRelease(url1)"}));
}

TEST_F(FailingLoad, RaisesForNilAndChangesNothing)
{
    data().lasterror = 17;
    for (const char* method : {"LoadFile(", "LoadFileMT("}) {
        SCOPED_TRACE(method);
        EXPECT_EQ(members.call<HostBoolean>(method, object(), FolderItem{}, HostInteger{2}, HostInteger{2}),
                  0);
        EXPECT_EQ(raised(), Notes{"NilObjectException: file is nil"});
        EXPECT_EQ(data().lasterror, 17);
        EXPECT_EQ(data().file, nullptr);
        EXPECT_EQ(data().isFileLoaded, 0);
        EXPECT_EQ(spy::calls(), Notes());
        host().startOver();
    }
    EXPECT_TRUE(load()) << "the object can still load";
}

TEST_F(FailingLoad, RefusesASecondLoadAfterAFailure)
{
    spy::answer("ExtAudioFileOpenURL").status = fnfErr;
    EXPECT_FALSE(load());
    EXPECT_EQ(data().lasterror, fnfErr);
    expectNoSecondLoad();
}

TEST_F(FailingLoad, RefusesASecondLoadAfterASuccess)
{
    EXPECT_TRUE(load());
    expectNoSecondLoad();
}

TEST_F(FailingLoad, RefusesASecondLoadAfterAnInvalidPath)
{
    withhold("REALFSRefFromFolderItem");
    EXPECT_FALSE(load());
    EXPECT_EQ(raised(), Notes{badPath});
    expectNoSecondLoad();
}

TEST_F(FailingLoad, HoldsTheItemBeforeTheFirstPlatformCall)
{
    HostInteger statusInLock = 0, statusInPath = 0;
    host().inNext("REALLockObject", [&] { statusInLock = data().lasterror; });
    host().inNext("REALFSRefFromFolderItem", [&] {
        statusInPath = data().lasterror;
        EXPECT_EQ(data().file, item());
        EXPECT_EQ(host().references(item()), 2);
        EXPECT_EQ(data().isFileLoaded, 1);
    });
    EXPECT_TRUE(load());
    EXPECT_EQ(statusInLock, -1);
    EXPECT_EQ(statusInPath, -1);
}

// ---- folder items ----

const Notes viaFolder = {
    "CFURLCreateFromFSRef(default, \"its folder\")",
    "CFStringCreateWithCharacters(default, \"song.wav\", 8)",
    "CFStringCreateMutableCopy(default, 0, string1)",
    "CFStringNormalize(string2, 0)", // 0 is Unicode normalization form D
    "CFURLCreateCopyAppendingPathComponent(default, url1, string2, 0)",
    "CFRelease(string2)",
    "CFRelease(string1)",
    "CFRelease(url1)",
};

TEST_F(FailingLoad, FindsAMissingItemThroughItsFolder)
{
    host().itemsExist = false;
    EXPECT_TRUE(load());
    Notes calls = spy::calls();
    ASSERT_GT(calls.size(), viaFolder.size() + 1);
    EXPECT_EQ(calls[viaFolder.size()], "ExtAudioFileOpenURL(url2)");
    EXPECT_EQ(calls.back(), "CFRelease(url2)");
    calls.resize(viaFolder.size());
    EXPECT_EQ(calls, viaFolder);
    EXPECT_EQ(host().calls()[0], "REALLockObject(f1)");
    EXPECT_EQ(host().calls()[1], "REALFSRefFromFolderItem(f1, null) = false");
    EXPECT_EQ(host().calls()[2], "REALFSRefFromFolderItem(f1, zeros) = true");
}

TEST_F(FailingLoad, KeepsThePlatformsStatusForAMissingItem)
{
    host().itemsExist = false;
    spy::answer("ExtAudioFileOpenURL").status = fnfErr;
    EXPECT_FALSE(load());
    EXPECT_EQ(data().lasterror, fnfErr);
    EXPECT_EQ(raised(), Notes());
    EXPECT_EQ(spy::calls().back(), "CFRelease(url2)");
}

TEST_F(FailingLoad, TriesTheFolderIfTheItemHasNoURL)
{
    spy::script().refusals[0] = 1;
    EXPECT_TRUE(load());
    Notes calls = spy::calls();
    EXPECT_EQ(calls[0], "CFURLCreateFromFSRef(default, \"the item\")");
    calls.erase(calls.begin());
    calls.resize(viaFolder.size());
    EXPECT_EQ(calls, viaFolder);
}

TEST_F(FailingLoad, AcceptsEveryNameThatTheHostCanHold)
{
    const struct {
        std::u16string name;
        std::optional<std::uint16_t> claimed;
        const char* text;
        const char* why;
    } facts[] = {
        {u"a", {}, "\"a\", 1", "the shortest"},
        {std::u16string(255, u'n'), {}, "\"nnnnnnnnnnnnnnnnnnnn...\", 255", "the longest"},
        {u"caf\u00E9", {}, "\"caf<0xE9>\", 4", "a composed letter"},
        {u"\xD83D\xDE00", {}, "\"<0xD83D><0xDE00>\", 2", "a surrogate pair"},
        {u"song.wav", 4, "\"song\", 4", "the length counts"},
    };
    for (const auto& fact : facts) {
        SCOPED_TRACE(fact.why);
        startOver();
        host().itemsExist = false;
        host().itemName = fact.name;
        host().claimedNameUnits = fact.claimed;
        EXPECT_TRUE(load());
        EXPECT_EQ(spy::calls()[1], "CFStringCreateWithCharacters(default, " + std::string(fact.text) + ")");
    }
}

TEST_F(FailingLoad, RaisesWithoutAURL)
{
    const struct {
        const char* why;
        std::function<void()> prepare;
        std::size_t calls; // number of calls from viaFolder that the load makes, including the refused call
        Notes released;
    } facts[] = {
        {"no service", [&] { withhold("REALFSRefFromFolderItem"); }, 0, {}},
        {"the service returns false", [&] { host().failNext("REALFSRefFromFolderItem", 2); }, 0, {}},
        {"no folder", [&] { spy::script().refusals[0] = 1; }, 1, {}},
        {"an empty name", [&] { host().itemName = u""; }, 1, {"CFRelease(url1)"}},
        {"a name longer than the record", [&] { host().claimedNameUnits = 256; }, 1, {"CFRelease(url1)"}},
        {"a name of the largest length", [&] { host().claimedNameUnits = 0xFFFF; }, 1, {"CFRelease(url1)"}},
        {"no text", [&] { spy::script().refusals[1] = 1; }, 2, {"CFRelease(url1)"}},
        {"nothing appended",
         [&] { spy::script().refusals[4] = 1; },
         5,
         {"CFRelease(string2)", "CFRelease(string1)", "CFRelease(url1)"}},
    };
    for (const auto& fact : facts)
        for (const char* method : {"LoadFile", "LoadFileMT"}) {
            SCOPED_TRACE(std::string(method) + ": " + fact.why);
            startOver();
            host().itemsExist = false;
            fact.prepare();
            EXPECT_FALSE(load(2, 2, method));
            EXPECT_EQ(raised(), Notes{badPath});
            Notes expected(viaFolder.begin(), viaFolder.begin() + static_cast<std::ptrdiff_t>(fact.calls));
            expected.insert(expected.end(), fact.released.begin(), fact.released.end());
            EXPECT_EQ(spy::calls(), expected);
            EXPECT_EQ(data().lasterror, -1) << "no platform call with a status was made";
            EXPECT_EQ(data().file, item());
            EXPECT_EQ(data().isFileLoaded, 1);
        }
}

TEST_F(FailingLoad, UsesTheNameUnchangedIfItCannotBeCopied)
{
    host().itemsExist = false;
    spy::script().refusals[2] = 1;
    EXPECT_TRUE(load());
    Notes calls = spy::calls();
    calls.resize(7);
    EXPECT_EQ(calls, (Notes{
                         "CFURLCreateFromFSRef(default, \"its folder\")",
                         "CFStringCreateWithCharacters(default, \"song.wav\", 8)",
                         "CFStringCreateMutableCopy(default, 0, string1)",
                         "CFURLCreateCopyAppendingPathComponent(default, url1, string1, 0)",
                         "CFRelease(string1)",
                         "CFRelease(url1)",
                         "ExtAudioFileOpenURL(url2)",
                     }));
}

// ---- exceptions ----

TEST_F(FailingLoad, CatchesExceptionsOfThePlatform)
{
    for (const bool itemsExist : {true, false})
        for (const char* method : {"LoadFile", "LoadFileMT"}) {
            startOver();
            host().itemsExist = itemsExist;
            EXPECT_TRUE(load());
            const Notes good = spy::calls();
            for (std::size_t i = 0; i < good.size(); ++i) {
                SCOPED_TRACE(std::string(method) + " with an exception of " + good[i]);
                startOver();
                host().itemsExist = itemsExist;
                spy::script().inEachCall = [i](std::size_t number) {
                    if (number == i) throw Thrown();
                };
                const bool isRelease = startsWith(good[i], "CFRelease") ||
                                       startsWith(good[i], "AudioFileClose") ||
                                       startsWith(good[i], "ExtAudioFileDispose");
                bool result = false;
                EXPECT_NO_THROW(result = load(2, 2, method));
                EXPECT_EQ(result, isRelease) << "an exception of a release does not end the load";
                spy::script().inEachCall = nullptr;
                const Notes calls = spy::calls();
                EXPECT_EQ(countOf(calls, "ExtAudioFileDispose"),
                          countOf(calls, "ExtAudioFileGetProperty(file1, 'ffmt'") > 0);
            }
        }
}

TEST_F(FailingLoad, CatchesExceptionsOfTheHost)
{
    for (const char* method : {"LoadFile", "LoadFileMT"})
        for (const char* service : {"REALLockObject", "REALFSRefFromFolderItem", "REALBuildString",
                                    "REALSetStringEncoding", "REALYieldToRB"}) {
            SCOPED_TRACE(std::string(method) + " with an exception of " + service);
            startOver();
            host().inNext(service, [] { throw Thrown(); });
            bool result = true;
            EXPECT_NO_THROW(result = load(2, 2, method));
            const bool isPath = std::string(service) == "REALFSRefFromFolderItem";
            const bool isLock = std::string(service) == "REALLockObject";
            EXPECT_EQ(result, !isPath && !isLock);
            EXPECT_EQ(data().file, isLock ? nullptr : item()) << "no reference, so the item is not stored";
            EXPECT_EQ(host().references(item()), isLock ? 1 : 2);
        }
}

TEST_F(FailingLoad, CatchesExceptionsOfTheHostDuringRaising)
{
    const char* const services[] = {"REALBuildString",         "REALSetStringEncoding",
                                    "PluginNewInstance",       "REALSetPropValueString",
                                    "REALSetPropValueInteger", "RuntimeRaiseException"};
    for (const char* service : services) {
        SCOPED_TRACE(service);
        const auto expectFalse = [&](const char* why, FolderItem file) {
            SCOPED_TRACE(why);
            host().inNext(service, [] { throw Thrown(); });
            HostBoolean result = 1;
            EXPECT_NO_THROW(result = members.call<HostBoolean>("LoadFile(", object(), file, HostInteger{2},
                                                               HostInteger{2}));
            EXPECT_EQ(result, 0);
        };
        startOver();
        expectFalse("nil", nullptr);
        EXPECT_EQ(data().file, nullptr);

        startOver();
        graph_spy::platform().file.length = 0x100000000;
        expectFalse("out of memory", item());

        startOver();
        host().itemsExist = false;
        host().itemName = u"";
        expectFalse("no path", item());
    }
}

// ---- memory ----

TEST_F(FailingLoad, IsOutOfMemoryAfterAConstructorWithoutMemory)
{
    destruct();
    for (int allocation = 0; allocation < 3; ++allocation)
        for (const char* method : {"LoadFile", "LoadFileMT"}) {
            SCOPED_TRACE(allocation);
            startOver();
            destruct();
            if (allocation == 0)
                c_library_spy::refuseCalloc(1);
            else
                c_library_spy::refuseNothrowNew(allocation);
            construct();
            EXPECT_EQ(data().loadedAudio == nullptr, allocation == 0);
            EXPECT_EQ(data().outputFormat == nullptr, allocation == 1);
            EXPECT_EQ(data().clientFormat == nullptr, allocation == 2);
            EXPECT_FALSE(load(2, 2, method));
            EXPECT_EQ(raised(), Notes{"OutOfMemoryException: Failed to allocate buffer for audio data."});
            EXPECT_EQ(spy::calls(),
                      (Notes{"CFURLCreateFromFSRef(default, \"the item\")", "CFRelease(url1)"}));
            EXPECT_EQ(samplesBlock(), nullptr);
            EXPECT_EQ(data().isFileLoaded, 1);
        }
}

} // namespace
