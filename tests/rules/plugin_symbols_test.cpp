// Checks the exported and the imported symbols of the plug-in. The oldest supported Mac system has only a
// small part of the C++ library, so a list names the allowed C++ imports; all other imports are platform
// functions or plain C.
#include "tests/rules/elf_file.h"

#include <gtest/gtest.h>

#include <elf.h>
#include <regex>
#include <set>

namespace {

const char* const libraryPath = KVX_BINARY_DIR "/KVXAudio.so";
const char* const platformPath = KVX_BINARY_DIR "/libkvxplatform.so";

// The C++ run-time library of the oldest system: plain new and delete, exception support, and type
// information of the standard exceptions. That library has no sized or aligned forms of new and delete.
const std::regex allowedRuntime(
    "_Zn[wa][jm](RKSt9nothrow_t)?|_Zd[la]Pv(RKSt9nothrow_t)?|_ZSt7nothrow|_ZSt9terminatev"
    "|__gxx_personality_v0|_Unwind_Resume"
    "|__cxa_(allocate_exception|atexit|bad_cast|begin_catch|end_catch|finalize|free_exception"
    "|guard_abort|guard_acquire|guard_release|pure_virtual|rethrow|throw)"
    "|_ZTVN10__cxxabiv1(17__class|20__si_class|21__vmi_class|19__pointer|20__function)_type_infoE"
    "|_ZT[ISV]St(9bad_alloc|8bad_cast|9exception|11logic_error|11range_error|12out_of_range"
    "|13runtime_error|14overflow_error|15underflow_error)"
    "|_ZNSt9exceptionD[012]Ev|_ZNKSt9exception4whatEv");

// Symbols that the compiler adds to any library: start-up code, 64-bit arithmetic, and sanitizer functions.
const std::regex
    allowedCompilerSymbols("__u?(div|mod)di3|_ITM_.*|__gmon_start__|__stack_chk_fail|__(asan|ubsan|"
                           "tsan|sanitizer|lsan)_.*|_GLOBAL_OFFSET_TABLE_"
                           "|__tls_get_addr|___tls_get_addr|__gcc_personality_v0");

// All imports from the C libraries. Before you add a function, make sure that the oldest system has it.
const std::set<std::string> allowedPlainC = {
    // memory and text
    "calloc", "free", "memcpy", "memmove", "memset", "snprintf", "strlen", "vsnprintf",
    // numbers
    "floor",
    // locks
    "pthread_mutex_destroy", "pthread_mutex_init", "pthread_mutex_lock", "pthread_mutex_unlock",
    // background threads
    "pthread_attr_destroy", "pthread_attr_init", "pthread_attr_setstacksize", "pthread_create",
    "pthread_detach", "pthread_join",
    // render scope of the sound bridge: identity of the render thread, and the wait for a render call
    "pthread_self", "sched_yield", "nanosleep",
    // blocks
    "_Block_object_assign", "_Block_object_dispose", "_NSConcreteStackBlock"};

// Weak references: older systems lack these functions, so the plug-in tests their addresses before use.
const std::set<std::string> weakNames = {"dispatch_async", "CGPathCreateCopyByTransformingPath"};

bool isCxxLibraryName(const std::string& name)
{
    return name.rfind("_Z", 0) == 0 || name.rfind("__cxa_", 0) == 0 || name.rfind("__gxx_", 0) == 0 ||
           name.rfind("_Unwind", 0) == 0;
}

bool isAllowed(const std::string& name, const std::set<std::string>& platform)
{
    if (std::regex_match(name, allowedCompilerSymbols) || platform.count(name) || weakNames.count(name))
        return true;
    return isCxxLibraryName(name) ? std::regex_match(name, allowedRuntime) : allowedPlainC.count(name) > 0;
}

TEST(PluginSymbols, ExportTheEntryPointOnly)
{
    EXPECT_EQ(rules::exportsOf(libraryPath), std::set<std::string>{"REALPluginMain"});
}

TEST(PluginSymbols, AreForTheTargetProcessorAndCanBeInterposed)
{
    const rules::ElfFile file = rules::readElf(libraryPath);
    EXPECT_EQ(file.bits, int(sizeof(void*) * 8));
    EXPECT_EQ(file.machine, sizeof(void*) == 4 ? EM_386 : EM_X86_64);
    EXPECT_FALSE(file.isSymbolic) << "a test program must be able to interpose platform functions";
}

TEST(PluginSymbols, ImportPlatformFunctionsFromTheSharedLibrary)
{
    const rules::ElfFile file = rules::readElf(libraryPath);
    EXPECT_NE(std::find(file.needed.begin(), file.needed.end(), "libkvxplatform.so"), file.needed.end());
    const std::set<std::string> platform = rules::exportsOf(platformPath);
    int imported = 0;
    for (const auto& symbol : file.symbols) imported += !symbol.isDefined && platform.count(symbol.name) > 0;
    EXPECT_GT(imported, 5);
}

TEST(PluginSymbols, ImportOnlyWhatTheOldestSystemHas)
{
    const std::set<std::string> platform = rules::exportsOf(platformPath);
    ASSERT_FALSE(platform.empty());
    for (const auto& symbol : rules::readElf(libraryPath).symbols)
        if (!symbol.isDefined)
            EXPECT_TRUE(isAllowed(symbol.name, platform))
                << symbol.name << " is not in the lists of functions that the oldest system has";
}

TEST(PluginSymbols, AreWeakReferencesIfAnOldSystemLacksTheFunction)
{
    std::set<std::string> found;
    for (const auto& symbol : rules::readElf(libraryPath).symbols) {
        if (!weakNames.count(symbol.name)) continue;
        EXPECT_FALSE(symbol.isDefined) << symbol.name;
        EXPECT_TRUE(symbol.isWeak) << symbol.name;
        found.insert(symbol.name);
    }
    EXPECT_TRUE(found.count("dispatch_async")) << "the listener uses the main queue";
}

TEST(PluginSymbols, OfLaterSystemsAreRefused)
{
    // clang-format off
    const struct { const char* name; bool isAllowed; const char* why; } facts[] = {
        {"_Znwj",                     true,  "operator new"},
        {"_ZnajRKSt9nothrow_t",       true,  "operator new[] that returns null on failure"},
        {"_ZdlPv",                    true,  "operator delete"},
        {"_ZdlPvj",                   false, "the oldest system has no sized delete"},
        {"_ZnwjSt11align_val_t",      false, "the oldest system has no over-aligned new"},
        {"_ZTISt9bad_alloc",          true,  "type of a standard exception, to catch it"},
        {"_ZSt17__throw_bad_allocv",  false, "a throw function of the compiled C++ library"},
        {"_ZSt20__throw_length_errorPKc", false, "a throw function of std::vector"},
        {"_ZNSt6chrono3_V212steady_clock3nowEv", false, "a clock of the compiled C++ library"},
        {"__cxa_throw",               true,  "exception support"},
        {"__cxa_throw_bad_array_new_length", false, "the oldest system lacks this check"},
        {"__cxa_thread_atexit",       false, "the oldest system has no thread_local"},
        {"calloc",                    true,  "plain C"},
        {"pthread_mutex_lock",        true,  "the player's queue has a lock"},
        {"dispatch_async",            true,  "a weak reference"},
        {"__asan_init",               true,  "a sanitizer's function"},
        {"AudioDeviceStart",          true,  "a platform function"},
        {"AudioDeviceStarts",         false, "no function has this name"},
        {"pthread_create",            true,  "background threads on systems without a global queue"},
        {"pthread_cancel",            false, "no thread may be cancelled"},
        {"clock_gettime",             false, "the oldest system lacks this clock"},
        {"strnlen",                   false, "the oldest system lacks this function"},
        {"__snprintf_chk",            false, "only the compiler of this system emits checked forms"},
        {"fopen",                     false, "the plug-in reads files through the platform"},
        {"getenv",                    false, "the plug-in has no configuration"},
        {"callo",                     false, "the whole name must match"},
        {"",                          false, "an empty name is refused"},
    };
    // clang-format on
    const std::set<std::string> platform = rules::exportsOf(platformPath);
    for (const auto& fact : facts)
        EXPECT_EQ(isAllowed(fact.name, platform), fact.isAllowed) << fact.name << ": " << fact.why;
}

} // namespace
