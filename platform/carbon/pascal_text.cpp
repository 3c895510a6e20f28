// Pascal strings, which consist of a length byte and the text.
#include <Carbon/Carbon.h>

#include <algorithm>
#include <cstring>

namespace {
constexpr std::size_t longest = 255;
}

StringHandle NewString(ConstStr255Param text)
{
    if (!text) return nullptr;
    const std::size_t bytes = 1 + std::size_t{text[0]};
    const Handle made = NewHandle(static_cast<Size>(bytes));
    if (made) std::memcpy(*made, text, bytes);
    return reinterpret_cast<StringHandle>(made);
}

void CopyCStringToPascal(const char* source, Str255 target)
{
    const std::size_t length = strnlen(source, longest);
    std::memmove(target + 1, source, length); // the source and the target may overlap
    target[0] = static_cast<unsigned char>(length);
}

void CopyPascalStringToC(ConstStr255Param source, char* target)
{
    const std::size_t length = source[0];
    std::memmove(target, source + 1, length);
    target[length] = 0;
}
