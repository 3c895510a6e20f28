// What the plug-in exports and what it asks of others. The oldest system has little of a C++ library, so
// every undefined C++ symbol must stand in a short list; everything else is the platform's or plain C.
#include "tests/rules/elf_file.h"

#include <gtest/gtest.h>

#include <elf.h>
#include <regex>
#include <set>

namespace {

const char* const libraryPath = KVX_BINARY_DIR "/KVXAudio.so";
const char* const platformPath = KVX_BINARY_DIR "/libkvxplatform.so";

// The C++ run-time library of the oldest system: plain new and delete, exception support, the types of the
// standard exceptions. No sized or aligned forms, nothing that came later.
const std::regex allowedRuntime(
    "_Zn[wa][jm](RKSt9nothrow_t)?|_Zd[la]Pv(RKSt9nothrow_t)?|_ZSt7nothrow|_ZSt9terminatev"
    "|__gxx_personality_v0|_Unwind_Resume"
    "|__cxa_(allocate_exception|atexit|bad_cast|begin_catch|end_catch|finalize|free_exception"
    "|guard_abort|guard_acquire|guard_release|pure_virtual|rethrow|throw)"
    "|_ZTVN10__cxxabiv1(17__class|20__si_class|21__vmi_class|19__pointer|20__function)_type_infoE"
    "|_ZT[ISV]St(9bad_alloc|8bad_cast|9exception|11logic_error|11range_error|12out_of_range"
    "|13runtime_error|14overflow_error|15underflow_error)"
    "|_ZNSt9exceptionD[012]Ev|_ZNKSt9exception4whatEv");

// Found in every shared library: the C start-up code's own, the compiler's 64-bit arithmetic, and the
// sanitizers' where they are built in.
const std::regex allowedMachinery("__u?(div|mod)di3|_ITM_.*|__gmon_start__|__stack_chk_fail|__(asan|ubsan|"
                                  "tsan|sanitizer|lsan)_.*|_GLOBAL_OFFSET_TABLE_"
                                  "|__tls_get_addr|___tls_get_addr|__gcc_personality_v0");

// All that is asked of the C libraries. A name that is missing here may be one that the oldest system lacks:
// look it up there before it is added.
const std::set<std::string> allowedPlainC = {
    // memory and text
    "calloc", "free", "memcpy", "memmove", "memset", "snprintf", "strlen", "vsnprintf",
    // numbers
    "floor",
    // locks
    "pthread_mutex_destroy", "pthread_mutex_init", "pthread_mutex_lock", "pthread_mutex_unlock",
    // work in the background
    "pthread_attr_destroy", "pthread_attr_init", "pthread_attr_setstacksize", "pthread_create",
    "pthread_detach", "pthread_join",
    // who is in the sound bridge's slice, and waiting for its end
    "pthread_self", "sched_yield", "nanosleep",
    // blocks
    "_Block_object_assign", "_Block_object_dispose", "_NSConcreteStackBlock"};

// Must resolve lazily: the oldest system lacks the one, and the other is how a newer one is recognised.
const std::set<std::string> weakNames = {"dispatch_async", "CGPathCreateCopyByTransformingPath"};

bool isCxxLibraryName(const std::string& name)
{
    return name.rfind("_Z", 0) == 0 || name.rfind("__cxa_", 0) == 0 || name.rfind("__gxx_", 0) == 0 ||
           name.rfind("_Unwind", 0) == 0;
}

std::set<std::string> exportsOf(const char* path)
{
    std::set<std::string> names;
    for (const auto& symbol : rules::readElf(path).symbols)
        if (symbol.isDefined) names.insert(symbol.name);
    return names;
}

bool isAllowed(const std::string& name, const std::set<std::string>& platform)
{
    if (std::regex_match(name, allowedMachinery) || platform.count(name) || weakNames.count(name))
        return true;
    return isCxxLibraryName(name) ? std::regex_match(name, allowedRuntime) : allowedPlainC.count(name) > 0;
}

TEST(PluginSymbols, OneNameIsExported)
{
    EXPECT_EQ(exportsOf(libraryPath), std::set<std::string>{"REALPluginMain"});
}

TEST(PluginSymbols, TheTargetIsRight)
{
    const rules::ElfFile file = rules::readElf(libraryPath);
    EXPECT_EQ(file.bits, int(sizeof(void*) * 8));
    EXPECT_EQ(file.machine, sizeof(void*) == 4 ? EM_386 : EM_X86_64);
    EXPECT_FALSE(file.isSymbolic) << "a test program must be able to stand in front of the platform";
}

TEST(PluginSymbols, ThePlatformIsReachedByNameAndNotCopied)
{
    const rules::ElfFile file = rules::readElf(libraryPath);
    EXPECT_NE(std::find(file.needed.begin(), file.needed.end(), "libkvxplatform.so"), file.needed.end());
    const std::set<std::string> platform = exportsOf(platformPath);
    int reached = 0;
    for (const auto& symbol : file.symbols) reached += !symbol.isDefined && platform.count(symbol.name) > 0;
    EXPECT_GT(reached, 5);
}

TEST(PluginSymbols, NothingIsAskedButTheOldestRuntimeAndPlainC)
{
    const std::set<std::string> platform = exportsOf(platformPath);
    ASSERT_FALSE(platform.empty());
    for (const auto& symbol : rules::readElf(libraryPath).symbols)
        if (!symbol.isDefined)
            EXPECT_TRUE(isAllowed(symbol.name, platform)) << symbol.name << " is not in the oldest system";
}

TEST(PluginSymbols, WhatTheOldestSystemLacksIsAWeakReference)
{
    std::set<std::string> found;
    for (const auto& symbol : rules::readElf(libraryPath).symbols) {
        if (!weakNames.count(symbol.name)) continue;
        EXPECT_FALSE(symbol.isDefined) << symbol.name;
        EXPECT_TRUE(symbol.isWeak) << symbol.name;
        found.insert(symbol.name);
    }
    EXPECT_TRUE(found.count("dispatch_async")) << "the listener goes by way of the main queue";
}

TEST(PluginSymbols, TheListsRefuseWhatCameLater)
{
    // clang-format off
    const struct { const char* name; bool isAllowed; const char* why; } facts[] = {
        {"_Znwj",                     true,  "operator new"},
        {"_ZnajRKSt9nothrow_t",       true,  "the array form that gives null"},
        {"_ZdlPv",                    true,  "operator delete"},
        {"_ZdlPvj",                   false, "sized delete came later"},
        {"_ZnwjSt11align_val_t",      false, "over-aligned new came later"},
        {"_ZTISt9bad_alloc",          true,  "type of a standard exception, to catch it"},
        {"_ZSt17__throw_bad_allocv",  false, "a throw helper of the compiled library"},
        {"_ZSt20__throw_length_errorPKc", false, "likewise: std::vector's"},
        {"_ZNSt6chrono3_V212steady_clock3nowEv", false, "a clock of the compiled library"},
        {"__cxa_throw",               true,  "exception support"},
        {"__cxa_throw_bad_array_new_length", false, "came later"},
        {"__cxa_thread_atexit",       false, "thread_local came later"},
        {"calloc",                    true,  "plain C"},
        {"pthread_mutex_lock",        true,  "the queue's lock"},
        {"dispatch_async",            true,  "weak, and tested before each use"},
        {"__asan_init",               true,  "the sanitizers' own"},
        {"AudioDeviceStart",          true,  "the platform's"},
        {"AudioDeviceStarts",         false, "nobody's"},
        {"pthread_create",            true,  "work in the background, where the system has no queue"},
        {"pthread_cancel",            false, "plain C, but nobody is stopped half-way"},
        {"clock_gettime",             false, "plain C, but not in the oldest system"},
        {"strnlen",                   false, "likewise"},
        {"__snprintf_chk",            false, "a hardened form that only this system has"},
        {"fopen",                     false, "files are the platform's to read"},
        {"getenv",                    false, "there is nothing to configure at run time"},
        {"callo",                     false, "the list is matched whole"},
        {"",                          false, "no name at all"},
    };
    // clang-format on
    const std::set<std::string> platform = exportsOf(platformPath);
    for (const auto& fact : facts)
        EXPECT_EQ(isAllowed(fact.name, platform), fact.isAllowed) << fact.name << ": " << fact.why;
}

} // namespace
