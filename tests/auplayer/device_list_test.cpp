// The property that returns the list of output devices as a host Dictionary.
#include "tests/auplayer/watched_player_fixture.h"

#include "plugin/process_state.h"
#include "plugin/services.h"
#include "tests/support/service_caches.h"

#include <algorithm>
#include <functional>
#include <map>
#include <string_view>

namespace {

using namespace auplayer_test;
using Dictionary = REALobjectStruct*;

// A method of the host Dictionary that stores a value. The method records keys and values under the names
// that the fake host's call record gives them.
fake::Host* theHost;
Notes stored;
std::function<void()> inStore;

void store(Dictionary dictionary, REALobjectStruct* key, REALobjectStruct* value)
{
    stored.push_back(theHost->nameOf(dictionary) + "[" + theHost->nameOf(key) +
                     "] = " + theHost->nameOf(value));
    if (inStore) inStore();
}

void storeDifferently(Dictionary dictionary, REALobjectStruct*, REALobjectStruct*)
{
    stored.push_back(theHost->nameOf(dictionary) + ", differently");
}

const char* const setter = "Value(key As Variant, Assigns _value As Variant)";

class DeviceList : public WatchedPlayerTest {
protected:
    ~DeviceList() override
    {
        stored.clear();
        inStore = nullptr;
        theHost = nullptr;
    }

    /// Start with a system of two devices that both have an output.
    void beginList()
    {
        beginEmpty();
        graph_spy::platform().devices = {{40, "Built-in Output"}, {41, "USB"}};
        host().objectMethods[setter] = reinterpret_cast<AnyFunction>(&store);
        theHost = &host();
        stored.clear();
        inStore = nullptr;
    }

    Dictionary list() { return members.get<Dictionary>(object(), "OuputDevices"); }

    /// Expect this device list, and that the test then holds the only reference to the Dictionary.
    void expectList(const Notes& expected)
    {
        const Dictionary dictionary = list();
        ASSERT_NE(dictionary, nullptr);
        EXPECT_EQ(contents(), expected);
        EXPECT_EQ(host().references(dictionary), 1);
        host().drop(dictionary);
        expectNothingHeld();
    }

    /// Expect that only the test's folder item still has a reference, and that all memory is freed.
    void expectNothingHeld()
    {
        EXPECT_EQ(host().live(), Notes{"f1: 1"});
        EXPECT_EQ(host().faults(), Notes());
        EXPECT_EQ(c_library_spy::liveBlocks(), blocks_) << "the list is freed";
    }

    void SetUp() override
    {
        beginList();
        blocks_ = c_library_spy::liveBlocks();
    }

private:
    /// Return the stored pairs with the contents of keys and values instead of their names.
    Notes contents()
    {
        // Contents of each platform object, by the name that the recorded calls give the object.
        std::map<std::string, std::string> known;
        for (const std::string& note : host().calls()) {
            const std::size_t open = note.find('('), equals = note.rfind(" = ");
            if (equals == std::string::npos) continue;
            const std::string service = note.substr(0, open), result = note.substr(equals + 3);
            const std::string arguments = note.substr(open + 1, note.rfind(')', equals) - open - 1);
            if (service == "IntegerToVariant") known[result] = arguments;
            if (service == "StringToVariant")
                known[result] = arguments == "null" ? "no string" : known[arguments];
            if (service.rfind("REALBuildString", 0) == 0)
                known[result] = arguments.substr(0, arguments.find(','));
        }
        Notes texts;
        for (const std::string& each : stored) {
            const std::size_t open = each.find('['), close = each.find("] = ");
            texts.push_back(known[each.substr(open + 1, close - open - 1)] + ": " +
                            known[each.substr(close + 4)]);
        }
        return texts;
    }

    long blocks_ = 0;
};

const char* const askSize = "AudioObjectGetPropertyDataSize(1, {'#dev', 'glob', 0}, 0, null)";
const char* const askSizeBySecondSelector = "AudioObjectGetPropertyDataSize(1, {'dev#', 'glob', 0}, 0, null)";

std::string readList(const char* selector, int bytes)
{
    return std::string("AudioObjectGetPropertyData(1, {") + selector + ", 'glob', 0}, 0, null, size " +
           std::to_string(bytes) + ")";
}
std::string askOutput(int device)
{
    return "AudioDeviceGetPropertyInfo(" + std::to_string(device) + ", 0, 0, 'sfmt', no size, null)";
}
std::string readName(int device)
{
    return "AudioObjectGetPropertyData(" + std::to_string(device) +
           ", {'name', 'glob', 0}, 0, null, size 200)";
}

TEST_F(DeviceList, CallsPlatformAndHostInThisOrder)
{
    const Dictionary dictionary = list();
    ASSERT_NE(dictionary, nullptr);
    EXPECT_EQ(spy::calls(), (Notes{askSize, readList("'#dev'", 8), askOutput(40), readName(40), askOutput(41),
                                   readName(41)}));
    EXPECT_EQ(host().calls(),
              (Notes{"PluginNewInstance(Dictionary) = o1", "REALBuildString(\"Built-in Output\", 15) = s1",
                     "REALSetStringEncoding(s1, 0x8000100)", "IntegerToVariant(40) = o2",
                     "StringToVariant(s1) = o3",
                     "REALLoadObjectMethod(o1, Value(key As Variant, Assigns _value As Variant))",
                     "REALLoadObjectMethod(o1, Value(key As Variant) As Variant)",
                     "REALLoadObjectMethod(o1, Key(index As Integer) As Variant)", "REALUnlockObject(o2)",
                     "REALUnlockObject(o3)", "REALUnlockString(s1)", "REALBuildString(\"USB\", 3) = s2",
                     "REALSetStringEncoding(s2, 0x8000100)", "IntegerToVariant(41) = o4",
                     "StringToVariant(s2) = o5", "REALUnlockObject(o4)", "REALUnlockObject(o5)",
                     "REALUnlockString(s2)"}));
    EXPECT_EQ(stored, (Notes{"o1[o2] = o3", "o1[o4] = o5"}));
    EXPECT_EQ(seen().front(), 4711) << "the status of the size is not kept";
    EXPECT_EQ(seen()[1], -1);
    EXPECT_EQ(data().lasterror, 0);
    EXPECT_EQ(raised(), Notes());
    host().drop(dictionary);
    expectNothingHeld();
    EXPECT_EQ(members.property("OuputDevices").setter, nullptr);
}

TEST_F(DeviceList, MapsIdentifiersToNames)
{
    const std::string longest(200, 'x'), almost(199, 'y');
    const struct {
        const char* why;
        std::vector<graph_spy::Device> devices;
        Notes list;
    } rows[] = {
        {"two", {{40, "Built-in Output"}, {41, "USB"}}, {"40: \"Built-in Output\"", "41: \"USB\""}},
        {"in the platform's order", {{41, "b"}, {7, "c"}, {40, "a"}}, {"41: \"b\"", "7: \"c\"", "40: \"a\""}},
        {"an input is left out", {{40, "Microphone", false}, {41, "USB"}}, {"41: \"USB\""}},
        {"nothing but inputs", {{40, "Microphone", false}}, {}},
        {"a device whose name cannot be read", {{40, "", true, 'who?'}, {41, "USB"}}, {"41: \"USB\""}},
        {"the last device's name cannot be read", {{40, "a"}, {41, "b", true, -50}}, {"40: \"a\""}},
        {"a device is listed twice", {{40, "a"}, {40, "a"}}, {"40: \"a\"", "40: \"a\""}},
        {"large identifiers",
         {{0x7FFFFFFF, "a"}, {0xFFFFFFFF, "b"}},
         {"2147483647: \"a\"", std::to_string(static_cast<HostInteger>(0xFFFFFFFF)) + ": \"b\""}},
        {"identifier 0", {{0, "a"}}, {"0: \"a\""}},
        {"a name ends at its terminator", {{40, std::string("ab\0cd", 5)}}, {"40: \"ab\""}},
        {"an empty name is not a string", {{40, ""}}, {"40: no string"}},
        {"more than ASCII", {{40, "G\xC3\xBCte"}}, {"40: \"G\\xC3\\xBCte\""}},
        {"199 bytes", {{40, almost}}, {"40: <199 bytes>"}},
        {"200 bytes without a terminator", {{40, longest}}, {"40: <200 bytes>"}},
        {"cut at 200", {{40, longest + "more"}}, {"40: <200 bytes>"}},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.why);
        beginList();
        graph_spy::platform().devices = row.devices;
        expectList(row.list);
        EXPECT_EQ(data().lasterror, 0) << "the status of an omitted device is not kept";
    }
}

TEST_F(DeviceList, DoesNotReadTheNameOfAnInput)
{
    graph_spy::platform().devices = {{40, "Microphone", false}};
    expectList({});
    EXPECT_EQ(spy::calls(), (Notes{askSize, readList("'#dev'", 4), askOutput(40)}));
}

TEST_F(DeviceList, UsesTheSecondSelectorIfTheFirstIsUnknown)
{
    graph_spy::platform().deviceLists = {'dev#'};
    graph_spy::platform().devices.pop_back();
    expectList({"40: \"Built-in Output\""});
    EXPECT_EQ(spy::calls(),
              (Notes{askSize, askSizeBySecondSelector, readList("'dev#'", 4), askOutput(40), readName(40)}));
    EXPECT_EQ(data().lasterror, 0);
}

TEST_F(DeviceList, IsNilIfTheSizeIsRefused)
{
    const struct {
        std::size_t refused; ///< number of the refused platform call
        std::set<AudioObjectPropertySelector> known;
        OSStatus status;
        Notes calls;
        const char* why;
    } rows[] = {
        {0, {'#dev', 'dev#'}, 'stop', {askSize}, "any other status stops"},
        {0, {'#dev', 'dev#'}, 1, {askSize}, "a positive status"},
        {9, {}, 0, {askSize, askSizeBySecondSelector}, "both selectors are unknown"},
        {1, {'dev#'}, 'stop', {askSize, askSizeBySecondSelector}, "the second selector is refused"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.why);
        beginList();
        graph_spy::platform().deviceLists = row.known;
        spy::script().refusals = {{row.refused, row.status}};
        EXPECT_EQ(list(), nullptr);
        EXPECT_EQ(spy::calls(), row.calls);
        EXPECT_EQ(host().calls(), Notes());
        EXPECT_EQ(data().lasterror, 4711) << "the status is not kept";
        expectNothingHeld();
    }
}

TEST_F(DeviceList, RaisesForAnEmptyOrTooLongList)
{
    for (const UInt32 size : {0u, 0x80000000u, 0xFFFFFFFFu}) {
        SCOPED_TRACE(size);
        beginList();
        spy::answer("AudioObjectGetPropertyDataSize").size = size;
        EXPECT_EQ(list(), nullptr);
        EXPECT_EQ(raised(), Notes{"OutOfMemoryException: Failed to allocate buffer for device IDs."});
        EXPECT_EQ(spy::calls(), Notes{askSize});
        EXPECT_EQ(data().lasterror, -1);
        expectNothingHeld();
    }
}

TEST_F(DeviceList, RaisesWithoutMemory)
{
    for (const UInt32 size : {8u, 0x7FFFFFFFu}) {
        beginList();
        spy::answer("AudioObjectGetPropertyDataSize").size = size;
        c_library_spy::begin();
        c_library_spy::refuseCalloc(1);
        EXPECT_EQ(list(), nullptr);
        EXPECT_EQ(c_library_spy::end().front(), "calloc " + std::to_string(size));
        EXPECT_EQ(raised(), Notes{"OutOfMemoryException: Failed to allocate buffer for device IDs."});
        EXPECT_EQ(spy::calls(), Notes{askSize});
        EXPECT_EQ(data().lasterror, -1);
        expectNothingHeld();
    }
}

TEST_F(DeviceList, IsNilIfTheListCannotBeRead)
{
    spy::script().refusals = {{1, 'stop'}};
    EXPECT_EQ(list(), nullptr);
    EXPECT_EQ(spy::calls(), (Notes{askSize, readList("'#dev'", 8)}));
    EXPECT_EQ(host().calls(), Notes());
    EXPECT_EQ(data().lasterror, 'stop');
    expectNothingHeld();
}

TEST_F(DeviceList, HasTheDevicesThatWereRead)
{
    const struct {
        UInt32 announced; ///< size in bytes that the size query returns
        std::string ids;  ///< bytes that the reading call returns
        UInt32 read;      ///< size in bytes that the reading call returns
        Notes list;
        const char* why;
    } rows[] = {
        {8, graph_spy::bytesOf(UInt32{40}), 4, {"40: \"Built-in Output\""}, "one device has gone since"},
        {8, "", 0, {}, "all devices have gone"},
        {4, "", 400, {"40: \"Built-in Output\""}, "more than the buffer holds"},
        {7, "", 7, {"40: \"Built-in Output\""}, "incomplete entries are ignored"},
        {3, "", 3, {}, "less than one entry"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.why);
        beginList();
        spy::answer("AudioObjectGetPropertyDataSize").size = row.announced;
        spy::answer("AudioObjectGetPropertyData").value = row.ids;
        // AudioObjectGetPropertyData also reads the names, so the scripted size is removed after the list was
        // read.
        spy::answer("AudioObjectGetPropertyData").size = row.read;
        spy::answer("AudioDeviceGetPropertyInfo").during = [] {
            spy::answer("AudioObjectGetPropertyData").size.reset();
        };
        expectList(row.list);
        EXPECT_EQ(spy::count("AudioDeviceGetPropertyInfo"), static_cast<int>(row.list.size()))
            << "no other device is queried";
    }
}

TEST_F(DeviceList, IsNilWithoutADictionary)
{
    host().failNext("PluginNewInstance");
    EXPECT_EQ(list(), nullptr);
    EXPECT_EQ(spy::calls(), (Notes{askSize, readList("'#dev'", 8)}));
    EXPECT_EQ(data().lasterror, 0);
    EXPECT_EQ(raised(), Notes());
    expectNothingHeld();

    beginList();
    host().classes.erase("Dictionary");
    EXPECT_EQ(list(), nullptr);
    expectNothingHeld();

    beginList();
    withhold("PluginNewInstance");
    EXPECT_EQ(list(), nullptr);
    expectNothingHeld();
}

TEST_F(DeviceList, IsEmptyIfTheDictionaryHasNoSetter)
{
    host().objectMethods.clear();
    expectList({});
    EXPECT_EQ(spy::calls().size(), 6u) << "the devices are still queried";

    beginList();
    withhold("REALLoadObjectMethod");
    expectList({});
}

TEST_F(DeviceList, SurvivesAMissingService)
{
    for (const char* service :
         {"REALBuildString", "REALSetStringEncoding", "StringToVariant", "IntegerToVariant"}) {
        SCOPED_TRACE(service);
        beginList();
        withhold(service);
        const Dictionary dictionary = list();
        ASSERT_NE(dictionary, nullptr);
        EXPECT_EQ(stored.size(), 2u);
        host().drop(dictionary);
        expectNothingHeld();
    }
}

TEST_F(DeviceList, WorksInAnOlderHost)
{
    rbversion_rbversion = 2011.0;
    expectList({"40: \"Built-in Output\"", "41: \"USB\""});
}

// ---- the Dictionary's methods ----

TEST_F(DeviceList, LooksUpTheMethodsOfEachDictionaryOnce)
{
    graph_spy::platform().devices.clear();
    for (std::uint32_t id = 0; id < 50; ++id) graph_spy::platform().devices.push_back({id, "x"});
    const auto lookUps = [&] {
        const Notes notes = host().calls();
        return std::count_if(notes.begin(), notes.end(), [](const std::string& note) {
            return note.rfind("REALLoadObjectMethod", 0) == 0;
        });
    };
    const Dictionary first = list();
    EXPECT_EQ(lookUps(), 3);
    const Dictionary second = list();
    EXPECT_EQ(lookUps(), 6);
    EXPECT_EQ(stored.size(), 100u);
    host().drop(first);
    host().drop(second);
}

// A host in which every new Dictionary has the same address.
Dictionary onlyDictionary;

Dictionary newInstance(const char*)
{
    theHost->hold(onlyDictionary);
    return onlyDictionary;
}

void* resolve(const char* name)
{
    if (std::string_view(name) == "PluginNewInstance") return reinterpret_cast<void*>(&newInstance);
    return fake::Host::resolve(name);
}

TEST_F(DeviceList, DropsTheCachedMethodsAfterEachList)
{
    onlyDictionary = host().newObject("Dictionary");
    gResolver = resolve;
    forgetServices();
    host().drop(list());
    EXPECT_EQ(stored.size(), 2u);

    host().objectMethods[setter] = reinterpret_cast<AnyFunction>(&storeDifferently);
    host().drop(list());
    EXPECT_EQ(stored.size(), 4u);
    EXPECT_EQ(stored.back(), "o1, differently");
    host().drop(onlyDictionary);
}

TEST_F(DeviceList, DropsTheCachedMethodsAfterAnException)
{
    onlyDictionary = host().newObject("Dictionary");
    gResolver = resolve;
    forgetServices();
    inStore = [] { throw Thrown(); };
    EXPECT_NO_THROW(EXPECT_EQ(list(), nullptr));
    EXPECT_EQ(stored.size(), 1u);

    host().objectMethods[setter] = reinterpret_cast<AnyFunction>(&storeDifferently);
    host().drop(list());
    EXPECT_EQ(stored.back(), "o1, differently");
    host().drop(onlyDictionary);
}

// ---- exceptions ----

TEST_F(DeviceList, CatchesExceptionsAndReleasesEverything)
{
    for (std::size_t throwing = 0; throwing < 6; ++throwing) {
        SCOPED_TRACE(throwing);
        beginList();
        spy::script().inEachCall = [=](std::size_t number) {
            if (number == throwing) throw Thrown();
        };
        EXPECT_NO_THROW(EXPECT_EQ(list(), nullptr));
        EXPECT_EQ(spy::calls().size(), throwing + 1);
        expectNothingHeld();
    }
    for (const char* service :
         {"PluginNewInstance", "IntegerToVariant", "StringToVariant", "REALLoadObjectMethod"}) {
        SCOPED_TRACE(service);
        beginList();
        host().inNext(service, [] { throw Thrown(); });
        EXPECT_NO_THROW(EXPECT_EQ(list(), nullptr));
        expectNothingHeld();
    }
    for (int throwing = 0; throwing < 2; ++throwing) {
        beginList();
        inStore = [=] {
            if (stored.size() == std::size_t(throwing + 1)) throw Thrown();
        };
        EXPECT_NO_THROW(EXPECT_EQ(list(), nullptr));
        expectNothingHeld();
    }
}

TEST_F(DeviceList, ContinuesWithoutANameThatTheHostCannotBuild)
{
    host().inNext("REALBuildString", [] { throw Thrown(); });
    expectList({"40: no string", "41: \"USB\""});
    EXPECT_EQ(raised().size(), 1u);
}

TEST_F(DeviceList, CatchesAnExceptionOfTheRaiseService)
{
    spy::answer("AudioObjectGetPropertyDataSize").size = 0;
    host().inNext("RuntimeRaiseException", [] { throw Thrown(); });
    EXPECT_NO_THROW(EXPECT_EQ(list(), nullptr));
    EXPECT_EQ(data().lasterror, -1);
    expectNothingHeld();
}

} // namespace
