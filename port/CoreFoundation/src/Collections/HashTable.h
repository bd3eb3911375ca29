// The open-addressing hash table under dictionaries and sets.
#pragma once

#include "AllocatedBlock.h"

#include <CoreFoundation/CFBase.h>

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <iterator>
#include <type_traits>

namespace cf {

// Linear probing over a power-of-two table, with one control byte per slot: zero for an empty
// slot, otherwise the top bit set and seven bits of the mixed hash. A probe walks the dense
// control bytes and looks at a slot (and calls the caller's equality) only when those seven
// bits match, so a lookup touches a cache line or two and never allocates. Deletion shifts
// later entries back instead of leaving tombstones, so probe lengths stay short however the
// table is used.
//
// The table stores each entry's hash code, so growing never calls a hash callback again.
// It knows nothing of retaining: the collection above it decides what an entry holds.
template <class Entry>
class HashTable {
    static_assert(std::is_trivially_copyable_v<Entry>);

    struct Slot {
        CFHashCode hash;
        Entry entry;
    };

public:
    static constexpr std::size_t kNotFound = SIZE_MAX;

    explicit HashTable(CFAllocatorRef inAllocator) : mControl(inAllocator), mSlots(inAllocator) {}

    CFIndex Count() const { return CFIndex(mCount); }
    Entry& At(std::size_t inSlot) const { return mSlots[inSlot].entry; }

    // The slot of the entry with this hash that inMatch accepts, or kNotFound.
    template <class Match>
    std::size_t Find(CFHashCode inHash, Match&& inMatch) const
    {
        if (mCount == 0)
            return kNotFound;
        const std::uint64_t mixed = Mix(inHash);
        const UInt8 tag = Tag(mixed);
        for (std::size_t slot = Home(mixed);; slot = Next(slot)) {
            const UInt8 control = mControl[slot];
            if (control == kEmpty)
                return kNotFound;
            if (control == tag && mSlots[slot].hash == inHash && inMatch(mSlots[slot].entry))
                return slot;
        }
    }

    // Room for inCount entries without growing; false, with the table unchanged, when the
    // allocator refuses memory.
    bool Reserve(std::size_t inCount)
    {
        if (inCount <= MaxLoad(Capacity()))
            return true;
        std::size_t capacity = kMinCapacity;
        while (inCount > MaxLoad(capacity))
            capacity *= 2;
        return Rehash(capacity);
    }

    // Adds an entry that is not in the table yet. The caller has reserved room for it.
    void Insert(CFHashCode inHash, const Entry& inEntry)
    {
        const std::uint64_t mixed = Mix(inHash);
        std::size_t slot = Home(mixed);
        while (mControl[slot] != kEmpty)
            slot = Next(slot);
        mControl[slot] = Tag(mixed);
        mSlots[slot] = Slot{inHash, inEntry};
        ++mCount;
    }

    void Erase(std::size_t inSlot)
    {
        std::size_t hole = inSlot;
        for (std::size_t slot = Next(hole); mControl[slot] != kEmpty; slot = Next(slot)) {
            // An entry may move back into the hole only if the hole is not before its home
            // slot; otherwise a probe from its home would no longer reach it.
            const std::size_t home = Home(Mix(mSlots[slot].hash));
            if (((slot - home) & Mask()) >= ((slot - hole) & Mask())) {
                mControl[hole] = mControl[slot];
                mSlots[hole] = mSlots[slot];
                hole = slot;
            }
        }
        mControl[hole] = kEmpty;
        --mCount;
    }

    // Forgets every entry and gives the memory back.
    void Clear()
    {
        mControl.Reset();
        mSlots.Reset();
        mCount = 0;
    }

    class Iterator {
    public:
        using iterator_category = std::forward_iterator_tag;
        using value_type = Entry;
        using difference_type = std::ptrdiff_t;
        using pointer = Entry*;
        using reference = Entry&;

        Iterator() = default;
        Iterator(const HashTable* inTable, std::size_t inSlot) : mTable(inTable), mSlot(inSlot) { SkipEmpty(); }

        Entry& operator*() const { return mTable->At(mSlot); }
        Entry* operator->() const { return &mTable->At(mSlot); }
        Iterator& operator++()
        {
            ++mSlot;
            SkipEmpty();
            return *this;
        }
        Iterator operator++(int)
        {
            Iterator before = *this;
            ++*this;
            return before;
        }
        bool operator==(const Iterator& inOther) const { return mSlot == inOther.mSlot; }

    private:
        void SkipEmpty()
        {
            while (mSlot < mTable->Capacity() && mTable->mControl[mSlot] == kEmpty)
                ++mSlot;
        }

        const HashTable* mTable = nullptr;
        std::size_t mSlot = 0;
    };

    Iterator begin() const { return Iterator(this, 0); }
    Iterator end() const { return Iterator(this, Capacity()); }

private:
    static constexpr UInt8 kEmpty = 0;
    // Most dictionaries in property lists hold two or three keys; four slots take three.
    static constexpr std::size_t kMinCapacity = 4;

    // Caller-supplied hashes can be poor in any bits (a pointer's low bits are always zero,
    // a small integer's high bits too), so every bit of the code is spread over the rest.
    static std::uint64_t Mix(CFHashCode inHash)
    {
        std::uint64_t x = inHash;
        x ^= x >> 33;
        x *= 0xff51afd7ed558ccdULL;
        x ^= x >> 33;
        x *= 0xc4ceb9fe1a85ec53ULL;
        x ^= x >> 33;
        return x;
    }
    static UInt8 Tag(std::uint64_t inMixed) { return UInt8(0x80 | (inMixed >> 57)); }
    // Linear probing degrades quickly when nearly full; three quarters keeps misses short.
    static std::size_t MaxLoad(std::size_t inCapacity) { return inCapacity / 4 * 3; }

    std::size_t Capacity() const { return mControl.Capacity(); }
    std::size_t Mask() const { return Capacity() - 1; }
    std::size_t Home(std::uint64_t inMixed) const { return std::size_t(inMixed) & Mask(); }
    std::size_t Next(std::size_t inSlot) const { return (inSlot + 1) & Mask(); }

    bool Rehash(std::size_t inCapacity)
    {
        AllocatedBlock<UInt8> control(mControl.Allocator());
        AllocatedBlock<Slot> slots(mSlots.Allocator());
        if (!control.Resize(inCapacity) || !slots.Resize(inCapacity))
            return false;
        std::memset(control.Data(), kEmpty, inCapacity);
        control.Swap(mControl);
        slots.Swap(mSlots);
        mCount = 0;
        for (std::size_t slot = 0; slot < control.Capacity(); ++slot)
            if (control[slot] != kEmpty)
                Insert(slots[slot].hash, slots[slot].entry);
        return true;
    }

    AllocatedBlock<UInt8> mControl;
    AllocatedBlock<Slot> mSlots;
    std::size_t mCount = 0;
};

}  // namespace cf
