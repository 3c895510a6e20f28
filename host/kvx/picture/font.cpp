#include "host/kvx/picture/font.h"

// The assembler copies the file, because a C++ array of its size takes seconds to compile.
asm(".pushsection .rodata, \"a\"\n"
    "kvxFontBytes: .incbin \"" KVX_FONT "\"\n"
    ".hidden kvxFontBytes\n"
    ".global kvxFontBytes\n"
    ".popsection\n");

extern "C" __attribute__((visibility("hidden"))) const unsigned char kvxFontBytes[];

namespace kvx {

const unsigned char* fontBytes() { return kvxFontBytes; }

} // namespace kvx
