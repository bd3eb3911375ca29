// A growable block of plain elements in memory from an object's allocator.
#pragma once

#include <CoreFoundation/CFBase.h>

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <type_traits>
#include <utility>

namespace cf {

// Collections keep their storage in their own allocator's memory, as the platform does, so a
// caller's custom allocator sees every byte a collection uses. Elements are plain data
// (pointers, hash codes), moved by copying bytes.
template <class T>
class AllocatedBlock {
    static_assert(std::is_trivially_copyable_v<T>);

public:
    explicit AllocatedBlock(CFAllocatorRef inAllocator) : mAllocator(inAllocator) {}
    AllocatedBlock(const AllocatedBlock&) = delete;
    AllocatedBlock& operator=(const AllocatedBlock&) = delete;
    ~AllocatedBlock() { Reset(); }

    CFAllocatorRef Allocator() const { return mAllocator; }
    T* Data() const { return mData; }
    std::size_t Capacity() const { return mCapacity; }
    T& operator[](std::size_t inIndex) const { return mData[inIndex]; }

    // Resizes to exactly inCapacity elements, keeping the leading ones; false, with the block
    // unchanged, when the allocator refuses.
    bool Resize(std::size_t inCapacity)
    {
        if (inCapacity == 0) {
            Reset();
            return true;
        }
        const auto bytes = CFIndex(inCapacity * sizeof(T));
        void* memory = mData ? CFAllocatorReallocate(mAllocator, mData, bytes, 0) : nullptr;
        if (memory == nullptr) {
            // Allocators need not reallocate; moving by hand covers those that do not.
            memory = CFAllocatorAllocate(mAllocator, bytes, 0);
            if (memory == nullptr)
                return false;
            if (mData)
                std::memcpy(memory, mData, std::min(inCapacity, mCapacity) * sizeof(T));
            Reset();
        }
        mData = static_cast<T*>(memory);
        mCapacity = inCapacity;
        return true;
    }

    void Reset()
    {
        if (mData)
            CFAllocatorDeallocate(mAllocator, std::exchange(mData, nullptr));
        mCapacity = 0;
    }

    void Swap(AllocatedBlock& ioOther) noexcept
    {
        std::swap(mAllocator, ioOther.mAllocator);
        std::swap(mData, ioOther.mData);
        std::swap(mCapacity, ioOther.mCapacity);
    }

private:
    CFAllocatorRef mAllocator;
    T* mData = nullptr;
    std::size_t mCapacity = 0;
};

}  // namespace cf
