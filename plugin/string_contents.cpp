#include "plugin/string_contents.h"

StringContents REALGetStringContents(REALstringStruct* text)
{
    StringContents contents;
    if (!text) return contents;
    const bool isOpaque = rbversion_rbversion >= hostWithOpaqueRecords;
    if (isOpaque) {
        contents.bytes = REALGetStringBytes(text);
        contents.count = hostLength(text);
    }
    REALLockString(text);
    contents.reference.reset(text);
    if (!isOpaque) {
        contents.bytes = recordBytes(text);
        contents.count = text->length;
    }
    return contents;
}
