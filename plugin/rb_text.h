// A host string's text, as bytes in the encoding that the platform wants.
#pragma once

#include "plugin/owned.h"
#include "plugin/zeroed.h"

/// Holds one host string and hands out views of it.
/// Owner   the views stay valid until this is destroyed; they point into the host's storage, into a private
///         copy, or at a shared empty text.
/// Errors  text that cannot be converted gives the empty view.
/// Thread  [main].
class rbText {
public:
    explicit rbText(REALstringStruct* text);
    ~rbText();
    rbText(const rbText&) = delete;
    rbText& operator=(const rbText&) = delete;

    /// Zero-terminated UTF-8. Converted once; later calls return the same view. Stated by the
    /// interface; unused here.
    const char* GetUTF8();
    HostInteger lengthUTF8() const { return slots_[utf8].length; }

    /// Zero-terminated Mac Roman, likewise.
    const char* ConvertMacRoman();
    HostInteger lengthMacRoman() const { return slots_[macRoman].length; }

    // The interface states these two flags; they are unused here.
    /// The text has no known encoding and is ASCII: its views are its own bytes.
    bool isRaw() const { return isRaw_; }
    /// A conversion failed, so a view is empty.
    bool isEmptyText() const { return isEmptyText_; }

private:
    enum SlotIndex { utf8, macRoman, slotCount = 7 }; ///< the interface states seven; five are unused

    /// One target encoding: the view, and the storage that it points into.
    struct Slot {
        OwnedString converted;
        REALstringData data = {};
        bool hasData = false; ///< `data` is the host's, to be given back
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
