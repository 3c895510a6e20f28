// Parses arbitrary text as a declaration. An accepted declaration must be the same after printing and parsing
// again.
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
                "at most the declared parameters are required");
        const std::string printed = host::print(declaration);
        const host::Declaration again = host::parseDeclaration(printed);
        require(host::sameSignature(declaration, again), "a printed declaration has the same signature");
        require(host::print(again) == printed, "printing again gives the same text");
    } catch (const host::ProgramError&) {
    }
    try {
        require(!host::parseConstant(text).name.empty(), "a constant has a name");
    } catch (const host::ProgramError&) {
    }
    return 0;
}
