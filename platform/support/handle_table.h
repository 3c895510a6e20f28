// Handles that stay invalid after their object is closed. A handle is a number made of the kind of object, a
// slot of the table and that slot's generation. A slot that has used all of its generations is retired.
//
// A use (a `Use` object) keeps the object of a handle alive. Closing makes the handle invalid at once; the
// end of the last use frees the object.
#pragma once

#include <atomic>
#include <cstdint>
#include <memory>
#include <mutex>
#include <vector>

namespace kvxplatform {

using HandleNumber = std::uint32_t; ///< number of a handle; 0 names no object

/// Returns  the number in a handle, which is a pointer type that holds no address; 0 if the value is too
///          large for a number.
/// [any]
template <class T>
HandleNumber numberOf(T* handle)
{
    const auto value = reinterpret_cast<std::uintptr_t>(handle);
    const auto number = static_cast<HandleNumber>(value);
    return value == number ? number : 0;
}

/// [any]
template <class Handle>
Handle handleOf(HandleNumber number)
{
    return reinterpret_cast<Handle>(static_cast<std::uintptr_t>(number));
}

/// A table of up to 4,096 objects at a time. `kind` (1 to 3) distinguishes the handles of different tables. A
/// slot serves 2^generationBits - 1 objects, one after another.
template <class T, std::uint32_t kind, unsigned generationBits = 18>
class HandleTable {
    static_assert(kind >= 1 && kind <= 3 && generationBits <= 18, "a handle has 32 bits");
    struct Slot;

public:
    static constexpr std::uint32_t capacity = 1 << 12;

    /// A use: the object of a handle, kept alive while the use exists. Empty for an invalid handle.
    class Use {
    public:
        Use() = default;
        Use(Use&& other) noexcept : table_(other.table_), slot_(other.slot_) { other.slot_ = nullptr; }
        Use(const Use&) = delete;
        Use& operator=(const Use&) = delete;
        Use& operator=(Use&&) = delete;
        ~Use()
        {
            if (slot_) table_->release(*slot_);
        }
        explicit operator bool() const { return slot_; }
        T& operator*() const { return *slot_->object; }
        T* operator->() const { return slot_->object.get(); }

    private:
        friend HandleTable;
        Use(HandleTable* table, Slot* slot) : table_(table), slot_(slot) {}
        HandleTable* table_ = nullptr;
        Slot* slot_ = nullptr;
    };

    HandleTable()
    {
        slots_.reserve(capacity);
        freeSlots_.reserve(capacity); // reserved, so that release() never allocates
    }

    /// Add an object. `prepare(object, handle)` completes the object; the handle is already valid during that
    /// call.
    /// Returns  the handle; 0 if the table is full or `prepare` returns false, and the object is freed in
    ///          that case.
    /// [any]
    template <class Prepare>
    HandleNumber add(std::unique_ptr<T> object, Prepare prepare)
    {
        Slot* slot = takeSlot();
        if (!slot) return 0;
        slot->object = std::move(object);
        const std::uint32_t generation = generationOf(slot->word.load(std::memory_order_relaxed));
        const HandleNumber handle = generation << 14 | slot->index << 2 | kind;
        // This call counts as one use.
        slot->word.store(word(generation, isOpen, 1), std::memory_order_release);
        const Use opening(this, slot);
        Rollback step{*slot};
        step.isKept = prepare(*slot->object, handle);
        return step.isKept ? handle : 0;
    }

    /// Returns  a use of the handle's object; empty for an invalid handle. Neither locks nor allocates.
    /// [any]
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

    /// Start closing an object. Until endClose(), the handle stays valid and the object can still be used.
    /// Returns  a use of the object; empty for an invalid handle or an object that is already closing.
    /// [any]
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

    /// Make the handle of a closing object invalid. The end of the object's last use, which may be `use`,
    /// frees the object.
    /// [any]
    void endClose(Use use) { use.slot_->word.fetch_and(~isOpen, std::memory_order_acq_rel); }

private:
    // The state of a slot in one 64-bit number: the generation in the upper half, two flags and the number of
    // uses in the lower half.
    static constexpr std::uint64_t isOpen = 1u << 31;
    static constexpr std::uint64_t isClosing = 1u << 30;
    static constexpr std::uint64_t usesMask = isClosing - 1;
    static constexpr std::uint32_t generations = 1 << generationBits;

    struct Slot {
        std::atomic<std::uint64_t> word{0};
        std::uint32_t index = 0;
        std::unique_ptr<T> object;
    };

    /// Makes the handle of a slot invalid again on destruction, unless isKept is true.
    struct Rollback {
        Slot& slot;
        bool isKept = false;
        ~Rollback()
        {
            if (!isKept) slot.word.fetch_and(~isOpen);
        }
    };

    static std::uint64_t word(std::uint32_t generation, std::uint64_t flags, std::uint32_t uses)
    {
        return static_cast<std::uint64_t>(generation) << 32 | flags | uses;
    }
    static std::uint32_t generationOf(std::uint64_t word) { return static_cast<std::uint32_t>(word >> 32); }

    Slot* slotOf(HandleNumber handle)
    {
        const std::uint32_t index = handle >> 2 & (capacity - 1);
        if ((handle & 3) != kind || index >= slotCount_.load(std::memory_order_acquire)) return nullptr;
        return slots_[index].get();
    }

    Slot* takeSlot()
    {
        const std::lock_guard<std::mutex> guard(lock_);
        Slot* slot = nullptr;
        if (!freeSlots_.empty() && (freeSlots_.size() > 64 || slots_.size() == capacity)) {
            slot =
                // The slot that has been unused for the longest time, because clients are least likely to
                // still hold its handles.
                freeSlots_.front();
            freeSlots_.erase(freeSlots_.begin());
        } else if (slots_.size() < capacity) {
            slots_.push_back(std::make_unique<Slot>());
            slot = slots_.back().get();
            slot->index = static_cast<std::uint32_t>(slots_.size() - 1);
            slot->word.store(word(1, 0, 0), std::memory_order_relaxed);
            slotCount_.store(slot->index + 1, std::memory_order_release);
        } else {
            return nullptr;
        }
        return slot;
    }

    void release(Slot& slot)
    {
        const std::uint64_t before = slot.word.fetch_sub(1, std::memory_order_acq_rel);
        if ((before & usesMask) != 1 || before & isOpen) return;
        // The handle is closed and the last use has ended, so no other thread can find the slot.
        slot.object.reset();
        const std::uint32_t next = generationOf(before) + 1;
        slot.word.store(word(next, 0, 0), std::memory_order_release);
        if (next == generations) return;
        const std::lock_guard<std::mutex> guard(lock_);
        freeSlots_.push_back(&slot);
    }

    /// The lock of slots_ and freeSlots_. Slots never move, so readers of a slot need no lock.
    std::mutex lock_;
    std::vector<std::unique_ptr<Slot>> slots_;
    std::vector<Slot*> freeSlots_;
    std::atomic<std::uint32_t> slotCount_{0};
};

} // namespace kvxplatform
