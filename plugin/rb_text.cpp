#include "plugin/rb_text.h"

#include "plugin/ascii.h"
#include "plugin/host_string.h"
#include "plugin/string_contents.h"

#include <cstring>

namespace {

// Number of zero bytes appended to a copied text. Code that reads a four-character code always reads four
// bytes, even of a shorter text.
constexpr int zerosAfterCopy = 4;
constexpr char emptyText[16] = {};

} // namespace

rbText::rbText(REALstringStruct* text)
{
    for (Slot& slot : slots_) slot.bytes = emptyText;
    if (!text) return;
    if (REALGetStringEncoding(text) == encodingUnknown)
        holdUnknown(text);
    else
        hold(text);
    slots_[utf8].length = slots_[macRoman].length = -1;
}

rbText::~rbText()
{
    held_.reset();
    for (Slot& slot : slots_) {
        slot.converted.reset();
        if (slot.hasData) release(REALDisposeStringData, &slot.data);
    }
}

void rbText::hold(REALstringStruct* text)
{
    REALLockString(text);
    held_.reset(text);
}

// Hold text in an unknown encoding. ASCII text is not converted. Other text is read as Mac Roman, which has a
// character for every byte.
void rbText::holdUnknown(REALstringStruct* text)
{
    const StringContents contents = REALGetStringContents(text);
    if (!contents.bytes || isASCII(contents.bytes, contents.count)) {
        hold(text);
        isRaw_ = true;
        return;
    }
    if (contents.count <= largestAllocation - zerosAfterCopy)
        held_.reset(REALBuildUnicodeString(contents.bytes, contents.count, encodingMacRoman));
    isEmptyText_ = !held_;
}

const char* rbText::GetUTF8() { return view(slots_[utf8], encodingUTF8, true); }

const char* rbText::ConvertMacRoman() { return view(slots_[macRoman], encodingMacRoman, false); }

const char* rbText::view(Slot& slot, std::uint32_t encoding, bool mayReadRecord)
{
    if (slot.length >= 0) return slot.bytes;
    slot.length = 0;
    if (!held_) return slot.bytes;
    if (isRaw_) {
        viewOwnBytes(slot);
        return slot.bytes;
    }

    // The version is compared first because `encoding` may be read only in hosts with a readable string
    // structure.
    const bool readsRecord = mayReadRecord && rbversion_rbversion < hostWithMovingBuffers &&
                             (held_->encoding == encodingASCII || held_->encoding == encodingUTF8);
    if (readsRecord) {
        slot.bytes = recordBytes(held_.get());
        slot.length = held_->length;
    } else if (!viewConverted(slot, encoding)) {
        isEmptyText_ = true;
    }
    if (!slot.bytes || slot.length < 0) slot.bytes = emptyText, slot.length = 0;
    terminate(slot);
    return slot.bytes;
}

// View the string's own bytes. The text is ASCII, so the view needs no conversion and no copy.
void rbText::viewOwnBytes(Slot& slot)
{
    const bool byService = rbversion_rbversion >= hostWithStringEncodings;
    const char* bytes = byService ? REALGetStringBytes(held_.get()) : recordBytes(held_.get());
    const HostInteger length = byService ? hostLength(held_.get()) : held_->length;
    if (!bytes || length < 0) return;
    slot.bytes = bytes;
    slot.length = length;
}

bool rbText::viewConverted(Slot& slot, std::uint32_t encoding)
{
    if (rbversion_rbversion >= hostWithStringEncodings) {
        slot.hasData = REALGetStringData(held_.get(), encoding, &slot.data);
        if (!slot.hasData) return false;
        slot.bytes = slot.data.bytes;
        slot.length = slot.data.length;
        return true;
    }
    slot.converted.reset(REALConvertString(held_.get(), encoding));
    if (!slot.converted) return false;
    slot.bytes = recordBytes(slot.converted.get());
    slot.length = slot.converted->length;
    return true;
}

// Terminate the view, because the platform reads terminated text. A private copy ends with enough zeros for
// the terminator and for four-character codes.
void rbText::terminate(Slot& slot)
{
    if (slot.bytes[slot.length] == 0) return;
    slot.copy = allocateZeroed<char>(static_cast<std::int64_t>(slot.length) + zerosAfterCopy);
    if (!slot.copy) {
        slot.bytes = emptyText;
        slot.length = 0;
        return;
    }
    std::memcpy(slot.copy.get(), slot.bytes, static_cast<std::size_t>(slot.length));
    slot.bytes = slot.copy.get();
}
