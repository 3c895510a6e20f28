// Unused type names of the target system, declared so that colliding plug-in names do not compile.
#include <Carbon/Carbon.h>

#include <type_traits>

namespace {

template <class Type, class Declared>
constexpr bool is = std::is_same_v<Type, Declared>;

static_assert(is<TextEncoding, UInt32> && is<TextEncodingBase, UInt32> && is<TextEncodingVariant, UInt32> &&
              is<TextEncodingFormat, UInt32>);
static_assert(is<ScriptCode, SInt16> && is<LangCode, SInt16> && is<RegionCode, SInt16>);
static_assert(sizeof(UniCharCount) == sizeof(ItemCount) && sizeof(ItemCount) == sizeof(ByteCount));
static_assert(std::is_unsigned_v<UniCharCount> && std::is_signed_v<Size>);
static_assert(is<Fixed, SInt32> && is<Fract, SInt32>);
static_assert(sizeof(Style) == 1);
static_assert(sizeof(Point) == 4 && sizeof(Rect) == 8 && sizeof(FSSpec) == 70);
static_assert(sizeof(Cursor) == 68 && sizeof(Pattern) == 8);
static_assert(std::is_pointer_v<Collection> && sizeof(Marker) > 0);

} // namespace
