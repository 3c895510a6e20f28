// Tests of the four Unicode normal forms.
#include "tests/platform/corefoundation/text.h"

#include <gtest/gtest.h>

namespace {

using namespace std::string_view_literals;

std::u16string normalized(std::u16string_view units, CFStringNormalizationForm form)
{
    const text::Owned original = text::make(units);
    const CFMutableStringRef copy = CFStringCreateMutableCopy(kCFAllocatorDefault, 0, original.get());
    CFStringNormalize(copy, form);
    const std::u16string result = text::units(copy);
    CFRelease(copy);
    EXPECT_EQ(text::units(original.get()), units) << "the original is unchanged";
    return result;
}

TEST(NormalForms, ComposeAndDecompose)
{
    const struct {
        std::u16string_view text, d, kd, c, kc;
        const char* why;
    } facts[] = {
        // clang-format off
        {u""sv, u""sv, u""sv, u""sv, u""sv, "an empty text"},
        {u"abc"sv, u"abc"sv, u"abc"sv, u"abc"sv, u"abc"sv, "plain letters"},
        {u"a\0b"sv, u"a\0b"sv, u"a\0b"sv, u"a\0b"sv, u"a\0b"sv, "a zero is a character"},
        {u"\u00E9"sv, u"e\u0301"sv, u"e\u0301"sv, u"\u00E9"sv, u"\u00E9"sv, "composed"},
        {u"e\u0301"sv, u"e\u0301"sv, u"e\u0301"sv, u"\u00E9"sv, u"\u00E9"sv, "decomposed"},
        {u"q\u0307\u0323"sv, u"q\u0323\u0307"sv, u"q\u0323\u0307"sv, u"q\u0323\u0307"sv, u"q\u0323\u0307"sv, "marks in canonical order"},
        {u"\u1E9B\u0323"sv, u"\u017F\u0323\u0307"sv, u"s\u0323\u0307"sv, u"\u1E9B\u0323"sv, u"\u1E69"sv, "all four differ"},
        {u"\uFB01"sv, u"\uFB01"sv, u"fi"sv, u"\uFB01"sv, u"fi"sv, "a ligature, which D and C keep"},
        {u"\u2126"sv, u"\u03A9"sv, u"\u03A9"sv, u"\u03A9"sv, u"\u03A9"sv, "the ohm sign is an omega"},
        {u"\u0958"sv, u"\u0915\u093C"sv, u"\u0915\u093C"sv, u"\u0915\u093C"sv, u"\u0915\u093C"sv, "never composed again"},
        {u"\uAC01"sv, u"\u1100\u1161\u11A8"sv, u"\u1100\u1161\u11A8"sv, u"\uAC01"sv, u"\uAC01"sv, "a Korean syllable"},
        {u"\U0001D15E"sv, u"\U0001D157\U0001D165"sv, u"\U0001D157\U0001D165"sv, u"\U0001D157\U0001D165"sv, u"\U0001D157\U0001D165"sv, "past 16 bits"},
        {u"\xD800"sv, u"\xD800"sv, u"\xD800"sv, u"\xD800"sv, u"\xD800"sv, "a high surrogate alone"},
        {u"\xDC00\xD800"sv, u"\xDC00\xD800"sv, u"\xDC00\xD800"sv, u"\xDC00\xD800"sv, u"\xDC00\xD800"sv, "a pair in reverse order"},
        {u"\u00E9\xD800\u00E9"sv, u"e\u0301\xD800" u"e\u0301"sv, u"e\u0301\xD800" u"e\u0301"sv, u"\u00E9\xD800\u00E9"sv, u"\u00E9\xD800\u00E9"sv, "text before and after an unpaired surrogate"},
        {u"\xD800\xD834\xDD5E\xDC00"sv, u"\xD800\U0001D157\U0001D165\xDC00"sv, u"\xD800\U0001D157\U0001D165\xDC00"sv, u"\xD800\U0001D157\U0001D165\xDC00"sv, u"\xD800\U0001D157\U0001D165\xDC00"sv, "a pair between unpaired surrogates"},
        {u"e\xD800\u0301"sv, u"e\xD800\u0301"sv, u"e\xD800\u0301"sv, u"e\xD800\u0301"sv, u"e\xD800\u0301"sv, "a mark does not combine across an unpaired surrogate"},
        // clang-format on
    };
    for (const auto& fact : facts) {
        SCOPED_TRACE(fact.why);
        const struct {
            CFStringNormalizationForm form;
            std::u16string_view expected;
        } forms[] = {{kCFStringNormalizationFormD, fact.d},
                     {kCFStringNormalizationFormKD, fact.kd},
                     {kCFStringNormalizationFormC, fact.c},
                     {kCFStringNormalizationFormKC, fact.kc}};
        for (const auto& each : forms) {
            const std::u16string once = normalized(fact.text, each.form);
            EXPECT_EQ(text::readable(once), text::readable(each.expected)) << "form " << each.form;
            EXPECT_EQ(normalized(once, each.form), once) << "the second time, form " << each.form;
        }
    }
}

TEST(NormalForms, UnknownOnesChangeNothing)
{
    for (const CFStringNormalizationForm form : {-1, 4, 1000})
        EXPECT_EQ(normalized(u"\u00E9", form), u"\u00E9") << form;
}

TEST(NormalForms, ChangeTheLength)
{
    const text::Owned composed = text::make(u"\u00E9");
    const CFMutableStringRef copy = CFStringCreateMutableCopy(kCFAllocatorDefault, 1, composed.get());
    CFStringNormalize(copy, kCFStringNormalizationFormD);
    EXPECT_EQ(CFStringGetLength(copy), 2);
    CFStringNormalize(copy, kCFStringNormalizationFormC);
    EXPECT_EQ(CFStringGetLength(copy), 1);
    EXPECT_EQ(CFGetRetainCount(copy), 1);
    CFRelease(copy);
    EXPECT_EQ(text::alive(), 1u);
}

} // namespace
