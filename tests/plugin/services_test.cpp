// Every service, against a literal table: under which names it is asked for, when it is asked for again, and
// that a call goes through as it is.
#include "plugin/services.h"
#include "tests/plugin/service_caches.h"

#include <gtest/gtest.h>

#include <fstream>
#include <functional>
#include <map>
#include <string>
#include <tuple>
#include <vector>

namespace {

using Names = std::vector<std::string>;

// ---- a host that is only names ----

Names asked;
std::map<std::string, AnyFunction> known;

void* resolve(const char* name)
{
    asked.push_back(name);
    const auto found = known.find(name);
    return found == known.end() ? nullptr : reinterpret_cast<void*>(found->second);
}

Names takeAsked() { return std::exchange(asked, {}); }

/// A value of any type that a service takes or gives, another for each seed.
template <class T>
T valueOf(unsigned seed)
{
    const std::uintptr_t bits = 0x81234560u + 0x1010u * seed; // the top bit set: nothing may be narrowed
    if constexpr (std::is_pointer_v<T>)
        return reinterpret_cast<T>(bits);
    else
        return static_cast<T>(bits + seed);
}

/// The host's function of one signature: it keeps what it is called with.
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

// ---- the table ----

struct Row {
    const char* wrapper;
    const char* first;
    const char* second; // null: there is no other name
    AnyFunction function;
    std::function<void()> expectNeutral; // use it: nothing is called, the answer is zero
    std::function<void()> expectThrough; // use it: the function gets the arguments, its result comes back
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
                        EXPECT_TRUE(answer == decltype(answer){}) << "not zero";
                    EXPECT_EQ(Host::calls, 0);
                });
            },
            [use] {
                use([](auto answer) {
                    if constexpr (!std::is_void_v<decltype(Host::result())>)
                        EXPECT_TRUE(answer == Host::result()) << "another result";
                    EXPECT_EQ(Host::calls, 1);
                    EXPECT_TRUE(Host::seen == Host::distinct()) << "other arguments";
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

/// Walk the table, each row with no service looked up yet and a host that knows nothing.
template <class Check>
void forEachService(Check check)
{
    for (const Row& service : rows()) {
        SCOPED_TRACE(service.wrapper);
        forgetServices();
        known.clear();
        asked.clear();
        gResolver = resolve;
        check(service);
    }
    gResolver = nullptr;
}

// ---- the rules ----

TEST(Services, AreAskedForByTheirFirstNameOnceAndCallThrough)
{
    forEachService([](const Row& service) {
        known[service.first] = service.function;
        service.expectThrough();
        EXPECT_EQ(takeAsked(), Names{service.first})
            << "another name is asked for only when this one is unknown";
        service.expectThrough();
        EXPECT_EQ(takeAsked(), Names{}) << "found once, never asked for again";
    });
}

TEST(Services, FallBackToTheSecondNameWithinTheSameUse)
{
    int withFallBack = 0;
    forEachService([&](const Row& service) {
        if (!service.second) return;
        ++withFallBack;
        known[service.second] = service.function;
        service.expectThrough();
        EXPECT_EQ(takeAsked(), allNames(service));
        known[service.first] = nullptr;
        service.expectThrough();
        EXPECT_EQ(takeAsked(), Names{}) << "whichever answered is kept";
    });
    EXPECT_EQ(withFallBack, 6);
}

TEST(Services, ThatAreMissingAnswerZeroAndAreAskedForAgainOnTheNextUse)
{
    forEachService([](const Row& service) {
        service.expectNeutral();
        EXPECT_EQ(takeAsked(), allNames(service));
        service.expectNeutral();
        EXPECT_EQ(takeAsked(), allNames(service)) << "a failed look-up is repeated, in the same order";

        known[service.first] = service.function;
        service.expectThrough();
        EXPECT_EQ(takeAsked(), Names{service.first}) << "known by now";
        service.expectThrough();
        EXPECT_EQ(takeAsked(), Names{});
    });
}

TEST(Services, AnswerZeroBeforeTheHostHasIntroducedItself)
{
    forEachService([](const Row& service) {
        known[service.first] = service.function;
        gResolver = nullptr;
        service.expectNeutral();
        EXPECT_EQ(takeAsked(), Names{});

        gResolver = resolve;
        service.expectThrough();
    });
}

TEST(Services, AreFoundWithoutBeingCalled)
{
    known.clear();
    asked.clear();
    forgetServices();
    gResolver = resolve;
    EXPECT_EQ(REALYieldToRB.find(), nullptr);
    using Yield = Recorder<void()>;
    Yield::calls = 0;
    known["REALYieldToRB"] = reinterpret_cast<AnyFunction>(&Yield::answer);
    EXPECT_EQ(REALYieldToRB.find(), &Yield::answer);
    EXPECT_EQ(REALYieldToRB.find(), &Yield::answer);
    EXPECT_EQ(takeAsked(), (Names{"REALYieldToRB", "REALYieldToRB"}));
    EXPECT_EQ(Yield::calls, 0);
    gResolver = nullptr;
}

TEST(Services, AllStandInTheTableAbove)
{
    std::ifstream source(KVX_SOURCE_DIR "/plugin/services.h");
    ASSERT_TRUE(source);
    std::size_t services = 0;
    for (std::string line; std::getline(source, line);) services += line.rfind("inline Service<", 0) == 0;
    EXPECT_EQ(services, rows().size());
}

// ---- the length method, which comes through a service ----

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

TEST(LengthMethod, IsLoadedByItsDeclarationAndKeptOnceFound)
{
    const std::string declaration = "LenB( s as string ) as integer";
    known.clear();
    asked.clear();
    declarations.clear();
    offeredMethod = nullptr;
    forgetServices();
    gResolver = resolve;

    EXPECT_EQ(hostLength(valueOf<String>(1)), 0);
    EXPECT_EQ(takeAsked(), Names{"REALLoadGlobalMethod"}) << "no service";
    EXPECT_EQ(hostLength(valueOf<String>(1)), 0);
    EXPECT_EQ(takeAsked(), Names{"REALLoadGlobalMethod"});

    known["REALLoadGlobalMethod"] = reinterpret_cast<AnyFunction>(&loadMethod);
    EXPECT_EQ(hostLength(valueOf<String>(1)), 0);
    EXPECT_EQ(std::exchange(declarations, {}), Names{declaration}) << "no such method";

    offeredMethod = reinterpret_cast<AnyFunction>(&lengthOf);
    EXPECT_EQ(hostLength(valueOf<String>(1)), 1234567);
    EXPECT_EQ(std::exchange(declarations, {}), Names{declaration});

    offeredMethod = nullptr;
    EXPECT_EQ(hostLength(valueOf<String>(1)), 1234567);
    EXPECT_EQ(declarations, Names{}) << "kept for good";
    EXPECT_EQ(takeAsked(), Names{"REALLoadGlobalMethod"}) << "the service is kept, too";
    gResolver = nullptr;
}

} // namespace
