// The text of a host string in the encodings that the platform reads.
// All functions: [main].
#pragma once

#include "plugin/owned.h"
#include "plugin/zeroed.h"

/// Holds one host string and returns views of its text.
/// Owner   a view stays valid for the life of this object. It points to the host's memory, a private copy or
///         a shared empty text.
/// Errors  text that cannot be converted gives an empty view.
class rbText {
public:
    explicit rbText(REALstringStruct* text);
    ~rbText();
    rbText(const rbText&) = delete;
    rbText& operator=(const rbText&) = delete;

    /// Zero-terminated UTF-8, converted on the first call. Part of the published interface; unused here.
    const char* GetUTF8();
    HostInteger lengthUTF8() const { return slots_[utf8].length; }

    /// Zero-terminated Mac Roman, converted on the first call; at least four bytes can be read.
    const char* ConvertMacRoman();
    HostInteger lengthMacRoman() const { return slots_[macRoman].length; }

    // Two flags of the published interface; unused here.
    /// The text is ASCII in an unknown encoding: a view is the string's own bytes.
    bool isRaw() const { return isRaw_; }
    /// A conversion failed: a view is empty.
    bool isEmptyText() const { return isEmptyText_; }

private:
    enum SlotIndex { utf8, macRoman, slotCount = 7 }; ///< the published interface has seven; five are unused

    /// One target encoding: its view, and the memory that the view points to.
    struct Slot {
        OwnedString converted;
        REALstringData data = {};
        bool hasData = false; ///< `data` must be released
        Zeroed<char> copy;
        const char* bytes;
        HostInteger length = 0; ///< negative until computed
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
