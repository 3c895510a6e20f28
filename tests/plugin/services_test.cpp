// The service wrappers, compared with a table: the names in each look-up, the repetition of a look-up, and
// the unchanged passing of arguments and result.
#include "plugin/services.h"
#include "tests/support/service_caches.h"

#include <gtest/gtest.h>

#include <fstream>
#include <functional>
#include <map>
#include <string>
#include <tuple>
#include <vector>

namespace {

using Names = std::vector<std::string>;

// ---- a host that exports functions by name ----

Names lookedUp;
std::map<std::string, AnyFunction> known;

void* resolve(const char* name)
{
    lookedUp.push_back(name);
    const auto found = known.find(name);
    return found == known.end() ? nullptr : reinterpret_cast<void*>(found->second);
}

Names takeLookUps() { return std::exchange(lookedUp, {}); }

/// A value of the argument or result type `T`, different for each seed.
template <class T>
T valueOf(unsigned seed)
{
    // The top bit is set, so that a narrowing conversion changes the value.
    const std::uintptr_t bits = 0x81234560u + 0x1010u * seed;
    if constexpr (std::is_pointer_v<T>)
        return reinterpret_cast<T>(bits);
    else
        return static_cast<T>(bits + seed);
}

/// A host function with the given signature, which records its arguments.
template <class Signature>
struct Recorder;
template <class Result, class... Arguments>
struct Recorder<Result(Arguments...)> {
    static inline int calls = 0;
    static inline std::tuple<Arguments...> seen;

    static Result answer(Arguments... arguments)
    {
        ++calls;
        seen = std::tuple<Arguments...>(arguments...);
        return result();
    }
    static Result result()
    {
        if constexpr (!std::is_void_v<Result>) return valueOf<Result>(99);
    }
    static std::tuple<Arguments...> distinct()
    {
        unsigned seed = 0;
        return std::tuple<Arguments...>{valueOf<Arguments>(++seed)...};
    }
};

// ---- the table of services ----

struct Row {
    const char* wrapper;
    const char* first;
    const char* second; // second name; null if the service has one name
    AnyFunction function;
    std::function<void()> expectNeutral; // check that a call returns 0 without a host function
    std::function<void()> expectThrough; // check that a call passes arguments and result
};

template <class Signature, class Wrapper>
Row row(const char* name, Wrapper& wrapper, const char* first, const char* second = nullptr)
{
    static_assert(std::is_same_v<Wrapper, Service<Signature>>, "the service has another signature");
    using Host = Recorder<Signature>;
    const auto use = [&wrapper](auto check) {
        Host::calls = 0;
        const auto arguments = Host::distinct();
        if constexpr (std::is_void_v<decltype(std::apply(wrapper, arguments))>) {
            std::apply(wrapper, arguments);
            check(true);
        } else {
            check(std::apply(wrapper, arguments));
        }
    };
    return {name,
            first,
            second,
            reinterpret_cast<AnyFunction>(&Host::answer),
            [use] {
                use([](auto answer) {
                    if constexpr (!std::is_void_v<decltype(Host::result())>)
                        EXPECT_TRUE(answer == decltype(answer){}) << "the result is not zero";
                    EXPECT_EQ(Host::calls, 0);
                });
            },
            [use] {
                use([](auto answer) {
                    if constexpr (!std::is_void_v<decltype(Host::result())>)
                        EXPECT_TRUE(answer == Host::result()) << "the result differs";
                    EXPECT_EQ(Host::calls, 1);
                    EXPECT_TRUE(Host::seen == Host::distinct()) << "the arguments differ";
                });
            }};
}

using Object = REALobjectStruct*;
using String = REALstringStruct*;
using Block = REALmemoryBlockStruct*;
using Array = REALarrayStruct*;
using Insert = void (*)(Array, HostInteger, HostInteger);
template <class T>
using Get = T (*)(Array, HostInteger);

std::vector<Row> rows()
{
    // clang-format off
    return {
        //  signature                                              wrapper                                                     names
        row<HostBoolean()>                                         ("REALinRuntime",               REALinRuntime,               "REALinRuntime"),
        row<void(REALclassDefinition*)>                            ("REALRegisterClass",           REALRegisterClass,           "PluginRegisterClass"),
        row<Object(const char*)>                                   ("REALnewInstance",             REALnewInstance,             "PluginNewInstance"),
        row<void(Object)>                                          ("REALLockObject",              REALLockObject,              "REALLockObject"),
        row<void(Object)>                                          ("REALUnlockObject",            REALUnlockObject,            "REALUnlockObject"),
        row<void(String)>                                          ("REALLockString",              REALLockString,              "REALLockString"),
        row<void(String)>                                          ("REALUnlockString",            REALUnlockString,            "REALUnlockString"),
        row<String(const void*, HostInteger)>                      ("REALBuildString",             REALBuildString,             "REALBuildString"),
        row<String(const void*, HostInteger, std::uint32_t)>       ("REALBuildStringWithEncoding", REALBuildStringWithEncoding, "REALBuildStringWithEncoding"),
        row<std::uint32_t(String)>                                 ("REALGetStringEncoding",       REALGetStringEncoding,       "REALGetStringEncoding"),
        row<void(String, std::uint32_t)>                           ("REALSetStringEncoding",       REALSetStringEncoding,       "REALSetStringEncoding"),
        row<String(String, std::uint32_t)>                         ("REALConvertString",           REALConvertString,           "REALConvertString"),
        row<const char*(String)>                                   ("REALGetStringBytes",          REALGetStringBytes,          "StringGetCString"),
        row<AnyFunction(const void*, const char*)>                 ("REALLoadFrameworkMethod",     REALLoadFrameworkMethod,     "REALLoadGlobalMethod"),
        row<HostBoolean(String, std::uint32_t, REALstringData*)>   ("REALGetStringData",           REALGetStringData,           "PluginGetStringData"),
        row<void(REALstringData*)>                                 ("REALDisposeStringData",       REALDisposeStringData,       "PluginDisposeStringData"),
        row<Block(HostInteger)>                                    ("REALNewMemoryBlock",          REALNewMemoryBlock,          "newMemoryBlock"),
        row<void*(Block)>                                          ("REALMemoryBlockGetPtr",       REALMemoryBlockGetPtr,       "memoryBlockGetPtr"),
        row<HostInteger(Block)>                                    ("REALMemoryBlockGetSize",      REALMemoryBlockGetSize,      "memoryBlockGetSize"),
        row<Array(HostInteger, HostInteger)>                       ("REALCreateArray",             REALCreateArray,             "RuntimeArrayCreateSingleDimBoundedArray"),
        row<HostInteger(Array)>                                    ("REALGetArrayUBound",          REALGetArrayUBound,          "RuntimeUBound"),
        row<Insert(Array)>                                         ("REALInsertArrayValueInteger", REALInsertArrayValueInteger, "PluginIntegerArrayInsertProc", "RuntimeArrayDirectGetInsertProc"),
        row<Get<HostInteger>(Array)>                               ("REALGetArrayValueInteger",    REALGetArrayValueInteger,    "PluginIntegerArrayGetProc",    "RuntimeArrayDirectGetGetProc"),
        row<Get<float>(Array)>                                     ("REALGetArrayValueSingle",     REALGetArrayValueSingle,     "PluginSingleArrayGetProc",     "RuntimeArrayDirectGetGetProc"),
        row<Get<double>(Array)>                                    ("REALGetArrayValueDouble",     REALGetArrayValueDouble,     "PluginDoubleArrayGetProc",     "RuntimeArrayDirectGetGetProc"),
        row<Object(String)>                                        ("REALNewVariantString",        REALNewVariantString,        "StringToVariant"),
        row<Object(HostInteger)>                                   ("REALNewVariantInteger",       REALNewVariantInteger,       "IntegerToVariant",             "Int32ToVariant"),
        row<void(Object, const char*, String)>                     ("REALSetPropValueString",      REALSetPropValueString,      "REALSetPropValueString"),
        row<void(Object, const char*, HostInteger)>                ("REALSetPropValueInteger",     REALSetPropValueInteger,     "REALSetPropValueInteger",      "REALSetPropValueInt"),
        row<AnyFunction(Object, const char*)>                      ("REALLoadObjectMethod",        REALLoadObjectMethod,        "REALLoadObjectMethod"),
        row<AnyFunction(Object, Word)>                             ("REALGetEventInstance",        REALGetEventInstance,        "GetEventInstance"),
        row<void(Object)>                                          ("REALRaiseException",          REALRaiseException,          "RuntimeRaiseException"),
        row<void()>                                                ("REALYieldToRB",               REALYieldToRB,               "REALYieldToRB"),
        row<HostBoolean(REALfolderItemStruct*, FSRef*, void*)>     ("REALFSRefFromFolderItem",     REALFSRefFromFolderItem,     "REALFSRefFromFolderItem"),
    };
    // clang-format on
}

Names allNames(const Row& service)
{
    Names names = {service.first};
    if (service.second) names.push_back(service.second);
    return names;
}

/// Call `check` with each row of the table, before any look-up, in a host without functions.
template <class Check>
void forEachService(Check check)
{
    for (const Row& service : rows()) {
        SCOPED_TRACE(service.wrapper);
        forgetServices();
        known.clear();
        lookedUp.clear();
        gResolver = resolve;
        check(service);
    }
    gResolver = nullptr;
}

// ---- the rules of the look-up ----

TEST(Services, AreLookedUpOnceByTheirFirstName)
{
    forEachService([](const Row& service) {
        known[service.first] = service.function;
        service.expectThrough();
        EXPECT_EQ(takeLookUps(), Names{service.first})
            << "the second name is used only if the first is unknown";
        service.expectThrough();
        EXPECT_EQ(takeLookUps(), Names{}) << "the address is kept";
    });
}

TEST(Services, FallBackToTheSecondNameInTheSameCall)
{
    int withSecondName = 0;
    forEachService([&](const Row& service) {
        if (!service.second) return;
        ++withSecondName;
        known[service.second] = service.function;
        service.expectThrough();
        EXPECT_EQ(takeLookUps(), allNames(service));
        known[service.first] = nullptr;
        service.expectThrough();
        EXPECT_EQ(takeLookUps(), Names{}) << "the address is kept under either name";
    });
    EXPECT_EQ(withSecondName, 6);
}

TEST(Services, ReturnZeroAndRepeatTheLookUpWhileMissing)
{
    forEachService([](const Row& service) {
        service.expectNeutral();
        EXPECT_EQ(takeLookUps(), allNames(service));
        service.expectNeutral();
        EXPECT_EQ(takeLookUps(), allNames(service)) << "the look-up is repeated in the same order";

        known[service.first] = service.function;
        service.expectThrough();
        EXPECT_EQ(takeLookUps(), Names{service.first}) << "the host has the service now";
        service.expectThrough();
        EXPECT_EQ(takeLookUps(), Names{});
    });
}

TEST(Services, ReturnZeroBeforeTheLibraryIsEntered)
{
    forEachService([](const Row& service) {
        known[service.first] = service.function;
        gResolver = nullptr;
        service.expectNeutral();
        EXPECT_EQ(takeLookUps(), Names{});

        gResolver = resolve;
        service.expectThrough();
    });
}

TEST(Services, CanBeFoundWithoutACall)
{
    known.clear();
    lookedUp.clear();
    forgetServices();
    gResolver = resolve;
    EXPECT_EQ(REALYieldToRB.find(), nullptr);
    using Yield = Recorder<void()>;
    Yield::calls = 0;
    known["REALYieldToRB"] = reinterpret_cast<AnyFunction>(&Yield::answer);
    EXPECT_EQ(REALYieldToRB.find(), &Yield::answer);
    EXPECT_EQ(REALYieldToRB.find(), &Yield::answer);
    EXPECT_EQ(takeLookUps(), (Names{"REALYieldToRB", "REALYieldToRB"}));
    EXPECT_EQ(Yield::calls, 0);
    gResolver = nullptr;
}

TEST(Services, AreAllInTheTableAbove)
{
    std::ifstream source(KVX_SOURCE_DIR "/plugin/services.h");
    ASSERT_TRUE(source);
    std::size_t services = 0;
    for (std::string line; std::getline(source, line);) services += line.rfind("inline Service<", 0) == 0;
    EXPECT_EQ(services, rows().size());
}

// ---- the length method, which is found through a service ----

Names declarations;
AnyFunction offeredMethod;

AnyFunction loadMethod(const void* none, const char* declaration)
{
    EXPECT_EQ(none, nullptr);
    declarations.push_back(declaration);
    return offeredMethod;
}

HostInteger lengthOf(REALstringStruct* text)
{
    EXPECT_EQ(text, valueOf<String>(1));
    return 1234567;
}

TEST(LengthMethod, IsFoundByItsDeclarationAndKept)
{
    const std::string declaration = "LenB( s as string ) as integer";
    known.clear();
    lookedUp.clear();
    declarations.clear();
    offeredMethod = nullptr;
    forgetServices();
    gResolver = resolve;

    EXPECT_EQ(hostLength(valueOf<String>(1)), 0);
    EXPECT_EQ(takeLookUps(), Names{"REALLoadGlobalMethod"}) << "the service is missing";
    EXPECT_EQ(hostLength(valueOf<String>(1)), 0);
    EXPECT_EQ(takeLookUps(), Names{"REALLoadGlobalMethod"});

    known["REALLoadGlobalMethod"] = reinterpret_cast<AnyFunction>(&loadMethod);
    EXPECT_EQ(hostLength(valueOf<String>(1)), 0);
    EXPECT_EQ(std::exchange(declarations, {}), Names{declaration}) << "the method is missing";

    offeredMethod = reinterpret_cast<AnyFunction>(&lengthOf);
    EXPECT_EQ(hostLength(valueOf<String>(1)), 1234567);
    EXPECT_EQ(std::exchange(declarations, {}), Names{declaration});

    offeredMethod = nullptr;
    EXPECT_EQ(hostLength(valueOf<String>(1)), 1234567);
    EXPECT_EQ(declarations, Names{}) << "the method is kept";
    EXPECT_EQ(takeLookUps(), Names{"REALLoadGlobalMethod"}) << "the service is kept";
    gResolver = nullptr;
}

} // namespace
