#include "platform/support/normal_form.h"

#include "platform/support/free_deleter.h"

#include <iterator>
#include <new>

#include <utf8proc.h>

namespace kvxplatform {
namespace {

constexpr int common = UTF8PROC_STABLE; // stable option: later versions of Unicode give the same result

constexpr int optionsOfForm[] = {
    common | UTF8PROC_DECOMPOSE,                   // D
    common | UTF8PROC_DECOMPOSE | UTF8PROC_COMPAT, // KD
    common | UTF8PROC_COMPOSE,                     // C
    common | UTF8PROC_COMPOSE | UTF8PROC_COMPAT,   // KC
};

} // namespace

bool isNormalForm(CFStringNormalizationForm form)
{
    return form >= 0 && form < static_cast<CFIndex>(std::size(optionsOfForm));
}

std::optional<std::string> inNormalForm(std::string_view utf8, CFStringNormalizationForm form)
{
    if (!isNormalForm(form)) return {};
    utf8proc_uint8_t* output = nullptr;
    const utf8proc_ssize_t size = utf8proc_map(reinterpret_cast<const utf8proc_uint8_t*>(utf8.data()),
                                               static_cast<utf8proc_ssize_t>(utf8.size()), &output,
                                               static_cast<utf8proc_option_t>(optionsOfForm[form]));
    const Freed<utf8proc_uint8_t> owner(output);
    if (size == UTF8PROC_ERROR_INVALIDUTF8) return {};
    if (size < 0) throw std::bad_alloc();
    return std::string(reinterpret_cast<char*>(output), static_cast<std::size_t>(size));
}

} // namespace kvxplatform
