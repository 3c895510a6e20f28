#include "host/kvx/terminal/key.h"

#include <algorithm>
#include <iterator>
#include <optional>

namespace kvx {
namespace {

constexpr char escape = '\x1b';

// clang-format off
constexpr struct { char byte; Key key; } plainKeys[] = {
    {' ', Key::pause},  {'[', Key::loopIn}, {']', Key::loopOut}, {'l', Key::loop},  {'L', Key::loop},
    {'+', Key::faster}, {'=', Key::faster}, {'-', Key::slower},  {'_', Key::slower},
    {'>', Key::higher}, {'.', Key::higher}, {'<', Key::lower},   {',', Key::lower},
    {'q', Key::quit},   {'Q', Key::quit},
};

constexpr struct { char last; Key key; } arrows[] = {
    {'A', Key::louder}, {'B', Key::softer}, {'C', Key::forward}, {'D', Key::back},
};
// clang-format on

std::optional<Key> plainKey(char byte)
{
    const auto* found = std::find_if(std::begin(plainKeys), std::end(plainKeys),
                                     [byte](const auto& each) { return each.byte == byte; });
    return found == std::end(plainKeys) ? std::nullopt : std::optional(found->key);
}

// An arrow is ESC [ A or ESC O A; with modifiers held there are numbers in between, and it means the same.
std::optional<Key> arrow(char last)
{
    const auto* found = std::find_if(std::begin(arrows), std::end(arrows),
                                     [last](const auto& each) { return each.last == last; });
    return found == std::end(arrows) ? std::nullopt : std::optional(found->key);
}

bool isLastOfSequence(char byte) { return byte >= 0x40 && byte <= 0x7e; }

} // namespace

const char* keyHelp()
{
    return "Keys: space pause, arrows seek and volume, [ ] loop points, l loop, + - rate, < > pitch, q quit";
}

std::vector<Key> KeyReader::read(std::string_view bytes)
{
    std::vector<Key> keys;
    for (char byte : bytes) {
        std::optional<Key> key;
        if (byte == escape) {
            unfinished_ = byte; // also behind a lone Escape, which means nothing
        } else if (unfinished_.empty()) {
            key = plainKey(byte);
        } else if (unfinished_.size() == 1) {
            unfinished_ += byte;
            if (byte == '[' || byte == 'O') continue;
            unfinished_.clear(); // a key with Alt held
        } else if (isLastOfSequence(byte)) {
            key = arrow(byte);
            unfinished_.clear();
        }
        if (key) keys.push_back(*key);
    }
    return keys;
}

} // namespace kvx
