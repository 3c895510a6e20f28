// Parses arbitrary text as the declaration of a method and of a constant. If the parser accepts a method, it
// must also accept the printed declaration and find the same signature in it.
#include "fuzz/require.h"
#include "host/runtime/classes/declaration.h"
#include "host/runtime/support/errors.h"

#include <cstddef>
#include <cstdint>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size)
{
    const std::string_view text(reinterpret_cast<const char*>(bytes), size);
    try {
        const host::Declaration declaration = host::parseDeclaration(text);
        require(host::requiredCount(declaration.parameters) <= declaration.parameters.size(),
                "a call requires at most as many arguments as there are parameters");
        const std::string printed = host::print(declaration);
        const host::Declaration again = host::parseDeclaration(printed);
        require(host::sameSignature(declaration, again), "a printed declaration has the same signature");
        require(host::print(again) == printed,
                "a printed declaration, parsed and printed again, is the same text");
    } catch (const host::ProgramError&) {
    }
    try {
        require(!host::parseConstant(text).name.empty(), "a constant has a name");
    } catch (const host::ProgramError&) {
    }
    return 0;
}
