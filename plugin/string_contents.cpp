#include "plugin/string_contents.h"

StringContents::StringContents(REALstringStruct* text)
{
    if (!text) return;
    const bool isOpaque = rbversion_rbversion >= hostWithOpaqueRecords;
    if (isOpaque) {
        bytes_ = REALGetStringBytes(text);
        count_ = hostLength(text);
    }
    REALLockString(text);
    reference_.reset(text);
    if (!isOpaque) {
        bytes_ = recordBytes(text);
        count_ = text->length;
    }
}
