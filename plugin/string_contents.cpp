#include "plugin/string_contents.h"

#include "plugin/services.h"

StringContents::StringContents(REALstringStruct* text) : text_(text)
{
    if (!text) return;
    if (rbversion_rbversion >= hostWithOpaqueRecords) {
        bytes_ = REALGetStringBytes(text);
        count_ = hostLength(text);
        REALLockString(text);
    } else {
        REALLockString(text);
        bytes_ = recordBytes(text);
        count_ = text->length;
    }
}

StringContents::~StringContents()
{
    if (text_) REALUnlockString(text_);
}
