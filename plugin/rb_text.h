// The text of a host string in the encodings that the platform reads (UTF-8 and Mac Roman).
// All functions: [main].
#pragma once

#include "plugin/owned.h"
#include "plugin/zeroed.h"

/// An rbText holds one host string and returns views of the string's text in other encodings.
/// Owner   a view stays valid for the life of the rbText object. The view points to the host's memory, a
///         private copy or a shared empty text.
/// Errors  the view of a text that cannot be converted is empty.
class rbText {
public:
    explicit rbText(REALstringStruct* text);
    ~rbText();
    rbText(const rbText&) = delete;
    rbText& operator=(const rbText&) = delete;

    /// Zero-terminated UTF-8 text, converted on the first call. The library itself does not call this
    /// function, which belongs to the published interface.
    const char* GetUTF8();
    HostInteger lengthUTF8() const { return slots_[utf8].length; }

    /// Zero-terminated Mac Roman text, converted on the first call. At least four bytes are readable.
    const char* ConvertMacRoman();
    HostInteger lengthMacRoman() const { return slots_[macRoman].length; }

    // Two flags of the published interface, which the library itself does not read.
    /// Whether the text is ASCII in an unknown encoding, so that every view is the string's own bytes.
    bool isRaw() const { return isRaw_; }
    /// Whether a conversion failed, so that a view is empty.
    bool isEmptyText() const { return isEmptyText_; }

private:
    /// Indexes of the slots. Of the seven slots in the published interface, five are unused.
    enum SlotIndex { utf8, macRoman, slotCount = 7 };

    /// Slot of one target encoding: the view, and the memory to which the view points.
    struct Slot {
        OwnedString converted;
        REALstringData data = {};
        bool hasData = false; ///< whether `data` must be released
        Zeroed<char> copy;
        const char* bytes;
        HostInteger length = 0; ///< length of the view in bytes; negative until the text is converted
    };

    void hold(REALstringStruct* text);
    void holdUnknown(REALstringStruct* text);
    const char* view(Slot& slot, std::uint32_t encoding, bool mayReadRecord);
    void viewOwnBytes(Slot& slot);
    bool viewConverted(Slot& slot, std::uint32_t encoding);
    void terminate(Slot& slot);

    OwnedString held_;
    Slot slots_[slotCount];
    bool isRaw_ = false;
    bool isEmptyText_ = false;
};
