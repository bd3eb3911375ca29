// An allocator that can be told to refuse, so that create and copy calls made later with an
// object's own allocator answer NULL.
#pragma once

#include <CoreFoundation/CFBase.h>

#include <cstdlib>

class RefusingAllocator {
public:
    RefusingAllocator()
    {
        CFAllocatorContext context{0, this, nullptr, nullptr, nullptr, Allocate, nullptr, Deallocate, nullptr};
        mAllocator = CFAllocatorCreate(nullptr, &context);
    }
    RefusingAllocator(const RefusingAllocator&) = delete;
    RefusingAllocator& operator=(const RefusingAllocator&) = delete;
    // Objects made with it must be gone first: they call back into this object.
    ~RefusingAllocator() { CFRelease(mAllocator); }

    CFAllocatorRef Get() const { return mAllocator; }
    void Refuse(bool inRefuse = true) { mRefusing = inRefuse; }

private:
    static void* Allocate(CFIndex inSize, CFOptionFlags, void* inInfo)
    {
        return static_cast<RefusingAllocator*>(inInfo)->mRefusing ? nullptr : std::malloc(std::size_t(inSize));
    }
    static void Deallocate(void* inPointer, void*) { std::free(inPointer); }

    CFAllocatorRef mAllocator = nullptr;
    bool mRefusing = false;
};
