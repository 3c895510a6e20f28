// Any text as a declaration: it is parsed or refused, and what is parsed reads the same after printing.
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
                "no more is required than declared");
        const std::string printed = host::print(declaration);
        const host::Declaration again = host::parseDeclaration(printed);
        require(host::sameSignature(declaration, again), "a printed declaration is the same member");
        require(host::print(again) == printed, "printing is settled after the first time");
    } catch (const host::ProgramError&) {
    }
    try {
        require(!host::parseConstant(text).name.empty(), "a constant has a name");
    } catch (const host::ProgramError&) {
    }
    return 0;
}
