// The host exception for each type of C++ exception, one table row per type.
#include "abi/host_values.h"
#include "plugin/host_exceptions.h"
#include "plugin/host_string.h"
#include "tests/plugin/host_fixture.h"

#include <any>
#include <functional>
#include <future>
#include <ios>
#include <memory>
#include <new>
#include <optional>
#include <regex>
#include <stdexcept>
#include <system_error>
#include <typeinfo>
#include <variant>

namespace {

struct Custom : std::exception {
    const char* what() const noexcept override { return "a derived class's text"; }
};
struct Wordless : std::exception {
    const char* what() const noexcept override { return nullptr; }
};
struct CustomMemory : std::bad_alloc {
    const char* what() const noexcept override { return "never shown"; }
};
struct CustomRange : std::out_of_range {
    using out_of_range::out_of_range;
};
struct CustomCast : std::bad_cast {
    const char* what() const noexcept override { return "cast by hand"; }
};
struct LogicAndCast : std::bad_cast, std::logic_error {
    LogicAndCast() : std::logic_error("logic first") {}
};
struct RuntimeAndCast : std::bad_cast, std::runtime_error {
    RuntimeAndCast() : std::runtime_error("runtime first") {}
};
struct RangeAndRuntime : std::out_of_range, std::underflow_error {
    RangeAndRuntime() : std::out_of_range("range first"), std::underflow_error("underflow") {}
};
struct NoException {};

constexpr char memory[] = "OutOfMemoryException", bounds[] = "OutOfBoundsException";
constexpr char runtime[] = "RuntimeException", cast[] = "IllegalCastException";
constexpr char unnamed[] = "Sorry, but there was an unnamed C++ Exception.";

struct Row {
    const char* type;
    std::function<void()> throwIt;
    const char* className;
    std::optional<std::string> message;
};

/// Row of an exception type whose host exception has the message `message`.
template <class T>
Row row(const char* type, T exception, const char* className, const char* message)
{
    return {type, [exception] { throw exception; }, className, message};
}

/// Row of an exception type whose host exception has the text of what() as its message.
template <class T>
Row ownText(const char* type, T exception, const char* className)
{
    return row(type, exception, className, exception.what());
}

std::vector<Row> rows()
{
    // clang-format off
    return {
        //  type                           exception                                                          host class  message
        row("bad_alloc",                   std::bad_alloc(),                                                  memory,     "Failed to allocate memory."),
        row("bad_array_new_length",        std::bad_array_new_length(),                                       memory,     "Failed to allocate memory."),
        row("derived from bad_alloc",      CustomMemory(),                                                    memory,     "Failed to allocate memory."),
        row("range_error",                 std::range_error("r e"),                                           bounds,     "r e"),
        row("out_of_range",                std::out_of_range("o r"),                                          bounds,     "o r"),
        row("overflow_error",              std::overflow_error("o e"),                                        bounds,     "o e"),
        row("underflow_error",             std::underflow_error("u e"),                                       bounds,     "u e"),
        row("derived from out_of_range",   CustomRange("c r"),                                                bounds,     "c r"),
        row("logic_error",                 std::logic_error("l e"),                                           runtime,    "l e"),
        row("invalid_argument",            std::invalid_argument("i a"),                                      runtime,    "i a"),
        row("domain_error",                std::domain_error("d e"),                                          runtime,    "d e"),
        row("length_error",                std::length_error("le e"),                                         runtime,    "le e"),
        ownText("future_error",            std::future_error(std::future_errc::no_state),                     runtime),
        row("runtime_error",               std::runtime_error("r"),                                           runtime,    "r"),
        ownText("system_error",            std::system_error(std::make_error_code(std::errc::io_error), "s"), runtime),
        ownText("ios_base::failure",       std::ios_base::failure("f"),                                       runtime),
        ownText("regex_error",             std::regex_error(std::regex_constants::error_brack),               runtime),
        ownText("bad_cast",                std::bad_cast(),                                                   cast),
        ownText("bad_any_cast",            std::bad_any_cast(),                                               cast),
        row("derived from bad_cast",       CustomCast(),                                                      cast,       "cast by hand"),
        row("logic_error and bad_cast",    LogicAndCast(),                                                    runtime,    "logic first"),
        row("runtime_error and bad_cast",  RuntimeAndCast(),                                                  runtime,    "runtime first"),
        ownText("bad_typeid",              std::bad_typeid(),                                                 runtime),
        ownText("bad_weak_ptr",            std::bad_weak_ptr(),                                               runtime),
        ownText("bad_function_call",       std::bad_function_call(),                                          runtime),
        ownText("bad_optional_access",     std::bad_optional_access(),                                        runtime),
        ownText("bad_variant_access",      std::bad_variant_access(),                                         runtime),
        ownText("bad_exception",           std::bad_exception(),                                              runtime),
        ownText("exception",               std::exception(),                                                  runtime),
        row("derived from exception",      Custom(),                                                          runtime,    "a derived class's text"),
        row("int",                         42,                                                                runtime,    unnamed),
        row("text",                        "a text",                                                          runtime,    unnamed),
        row("a record",                    NoException(),                                                     runtime,    unnamed),
        row("a pointer to an exception",   static_cast<std::exception*>(nullptr),                             runtime,    unnamed),
        {"an exception without a text",    [] { throw Wordless(); },                                          runtime,    {}},
        {"two range errors in one class",       [] { throw RangeAndRuntime(); },                                   bounds,     "range first"},
    };
    // clang-format on
}

class TranslationTest : public HostTest {
protected:
    void expectRaised(const Row& expected)
    {
        ASSERT_EQ(host.raised().size(), 1u);
        EXPECT_EQ(host.raised()[0].className, expected.className);
        EXPECT_EQ(host.raised()[0].message, expected.message);
        EXPECT_EQ(host.raised()[0].number, 0);
        EXPECT_EQ(host.live(), Notes{});
    }
};

TEST_F(TranslationTest, RaisesTheHostExceptionForTheHandledException)
{
    for (const Row& fact : rows()) {
        SCOPED_TRACE(fact.type);
        enter(2016.0);
        try {
            fact.throwIt();
            ADD_FAILURE() << "no exception was thrown";
        } catch (...) {
            RaiseHandledException();
        }
        expectRaised(fact);
    }
}

TEST_F(TranslationTest, RaisesTheHostExceptionForAFailedString)
{
    for (const Row& fact : rows()) {
        SCOPED_TRACE(fact.type);
        enter(2016.0);
        host.inNext("REALBuildString", fact.throwIt);
        EXPECT_EQ(REALBuildUnicodeString("abc", 3, encodingUTF8), nullptr);
        expectRaised(fact);
    }
}

TEST_F(TranslationTest, ReleasesAllHostValues)
{
    // clang-format off
    const struct { double version; std::uint32_t encoding; const char* service; } facts[] = {
        {2016.0, encodingUTF8,  "REALBuildString"},
        {2016.0, encodingUTF8,  "REALSetStringEncoding"},
        {2016.0, encodingUTF16, "REALBuildStringWithEncoding"},
        {2016.0, encodingUTF16, "REALConvertString"},
        {2011.5, encodingUTF16, "REALBuildString"},
        {2011.5, encodingUTF16, "REALSetStringEncoding"},
        {2011.5, encodingUTF16, "REALConvertString"},
        {2013.0, encodingUTF32, "REALBuildStringWithEncoding"},
        {2013.0, encodingUTF32, "REALConvertString"},
        {2012.0, encodingUTF32, "REALConvertString"},
        {2011.5, encodingUTF32, "REALConvertString"},
    };
    // clang-format on
    const std::string longText(4000, 'a'); // text so long that UTF-32 is converted on the heap
    for (const auto& fact : facts) {
        SCOPED_TRACE(testing::Message() << fact.service << " on host " << fact.version);
        enter(fact.version);
        host.inNext(fact.service, [] { throw std::out_of_range("thrown"); });
        EXPECT_EQ(REALBuildUnicodeString(longText.data(), 4000, fact.encoding), nullptr);
        expectRaised({"", {}, bounds, "thrown"});
    }
}

} // namespace
