// Handles that outlive what they name: a number made of kind, slot and the slot's generation, so that a
// closed handle is recognised for as long as the program lives, whatever was opened since. A slot whose
// generations are used up is never used again.
//
// A use keeps what a handle names whole; who closes it meanwhile takes the handle away at once, and the last
// use to end frees it. Finding a use neither locks nor allocates.
#pragma once

#include <atomic>
#include <cstdint>
#include <memory>
#include <mutex>
#include <vector>

namespace kvxplatform {

using HandleNumber = std::uint32_t; // 0 names nothing

/// A handle as it goes by: a pointer that points at nothing. What cannot be a number names nothing.
template <class T>
HandleNumber numberOf(T* handle)
{
    const auto value = reinterpret_cast<std::uintptr_t>(handle);
    const auto number = static_cast<HandleNumber>(value);
    return value == number ? number : 0;
}
template <class Handle>
Handle handleOf(HandleNumber number)
{
    return reinterpret_cast<Handle>(static_cast<std::uintptr_t>(number));
}

/// A table of up to 4,096 things at a time. `kind` (1 to 3) tells the handles of different tables apart; a
/// slot serves 2^generationBits - 1 times.
template <class T, std::uint32_t kind, unsigned generationBits = 18>
class HandleTable {
    static_assert(kind >= 1 && kind <= 3 && generationBits <= 18, "a handle has 32 bits");
    struct Slot;

public:
    static constexpr std::uint32_t capacity = 1 << 12;

    /// What a handle names, for as long as this lives; empty for a handle that names nothing.
    class Use {
    public:
        Use() = default;
        Use(Use&& other) noexcept : table(other.table), slot(other.slot) { other.slot = nullptr; }
        Use(const Use&) = delete;
        Use& operator=(const Use&) = delete;
        Use& operator=(Use&&) = delete;
        ~Use()
        {
            if (slot) table->release(*slot);
        }
        explicit operator bool() const { return slot; }
        T& operator*() const { return *slot->thing; }
        T* operator->() const { return slot->thing.get(); }

    private:
        friend HandleTable;
        Use(HandleTable* t, Slot* s) : table(t), slot(s) {}
        HandleTable* table = nullptr;
        Slot* slot = nullptr;
    };

    HandleTable()
    {
        slots.reserve(capacity);
        freeSlots.reserve(capacity); // so that giving a slot back never allocates
    }

    /// A handle for `thing`, which `prepare(thing, handle)` may finish before any other thread can use it; 0
    /// when the table is full or `prepare` returns false, and `thing` is gone then. Thread [any].
    template <class Prepare>
    HandleNumber add(std::unique_ptr<T> thing, Prepare prepare)
    {
        Slot* slot = takeSlot();
        if (!slot) return 0;
        slot->thing = std::move(thing);
        const std::uint32_t generation = generationOf(slot->word.load(std::memory_order_relaxed));
        const HandleNumber handle = generation << 14 | slot->index << 2 | kind;
        slot->word.store(word(generation, isOpen, 1), std::memory_order_release); // one use: this call's
        const Use opening(this, slot);
        bool isKept = false;
        try {
            isKept = prepare(*slot->thing, handle);
        } catch (...) {
            slot->word.fetch_and(~isOpen);
            throw;
        }
        if (!isKept) slot->word.fetch_and(~isOpen);
        return isKept ? handle : 0;
    }

    /// Thread [any], [audio] too.
    Use use(HandleNumber handle)
    {
        Slot* slot = slotOf(handle);
        if (!slot) return {};
        std::uint64_t now = slot->word.load(std::memory_order_acquire);
        do {
            if (generationOf(now) != handle >> 14 || !(now & isOpen)) return {};
        } while (!slot->word.compare_exchange_weak(now, now + 1, std::memory_order_acq_rel,
                                                   std::memory_order_acquire));
        return Use(this, slot);
    }

    /// The use of the one caller who closes `handle`; empty for a handle that names nothing or that somebody
    /// else is closing. The handle stays good until endClose, so that what is closed can still be spoken to.
    Use beginClose(HandleNumber handle)
    {
        Slot* slot = slotOf(handle);
        if (!slot) return {};
        std::uint64_t now = slot->word.load(std::memory_order_acquire);
        do {
            if (generationOf(now) != handle >> 14 || !(now & isOpen) || now & isClosing) return {};
        } while (!slot->word.compare_exchange_weak(now, (now | isClosing) + 1, std::memory_order_acq_rel,
                                                   std::memory_order_acquire));
        return Use(this, slot);
    }

    /// From here on the handle names nothing; the last use, perhaps this one, frees the thing.
    void endClose(Use use) { use.slot->word.fetch_and(~isOpen, std::memory_order_acq_rel); }

private:
    // A slot's word: generation in the upper half; open, closing and the number of uses in the lower.
    static constexpr std::uint64_t isOpen = 1u << 31;
    static constexpr std::uint64_t isClosing = 1u << 30;
    static constexpr std::uint64_t usesMask = isClosing - 1;
    static constexpr std::uint32_t generations = 1 << generationBits;

    struct Slot {
        std::atomic<std::uint64_t> word{0};
        std::uint32_t index = 0;
        std::unique_ptr<T> thing;
    };

    static std::uint64_t word(std::uint32_t generation, std::uint64_t flags, std::uint32_t uses)
    {
        return static_cast<std::uint64_t>(generation) << 32 | flags | uses;
    }
    static std::uint32_t generationOf(std::uint64_t word) { return static_cast<std::uint32_t>(word >> 32); }

    Slot* slotOf(HandleNumber handle)
    {
        const std::uint32_t index = handle >> 2 & (capacity - 1);
        if ((handle & 3) != kind || index >= slotCount.load(std::memory_order_acquire)) return nullptr;
        return slots[index].get();
    }

    Slot* takeSlot()
    {
        const std::lock_guard<std::mutex> guard(lock);
        Slot* slot = nullptr;
        if (!freeSlots.empty() && (freeSlots.size() > 64 || slots.size() == capacity)) {
            slot = freeSlots.front(); // the longest unused: its old handles are the likeliest to be forgotten
            freeSlots.erase(freeSlots.begin());
        } else if (slots.size() < capacity) {
            slots.push_back(std::make_unique<Slot>());
            slot = slots.back().get();
            slot->index = static_cast<std::uint32_t>(slots.size() - 1);
            slot->word.store(word(1, 0, 0), std::memory_order_relaxed);
            slotCount.store(slot->index + 1, std::memory_order_release);
        } else {
            return nullptr;
        }
        return slot;
    }

    void release(Slot& slot)
    {
        const std::uint64_t before = slot.word.fetch_sub(1, std::memory_order_acq_rel);
        if ((before & usesMask) != 1 || before & isOpen) return;
        // Closed and the last use: nobody can find the slot any more.
        slot.thing.reset();
        const std::uint32_t next = generationOf(before) + 1;
        slot.word.store(word(next, 0, 0), std::memory_order_release);
        if (next == generations) return;
        const std::lock_guard<std::mutex> guard(lock);
        freeSlots.push_back(&slot);
    }

    std::mutex lock; // of the two lists; slots never move
    std::vector<std::unique_ptr<Slot>> slots;
    std::vector<Slot*> freeSlots;
    std::atomic<std::uint32_t> slotCount{0};
};

} // namespace kvxplatform
