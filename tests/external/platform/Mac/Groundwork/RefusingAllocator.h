// An allocator that can be told to refuse, so that create and copy calls made later with an
// object's own allocator answer NULL.
#pragma once

#include "ExpectThrows.h"

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

    // A change that must first copy an object made with this allocator: refused, it throws
    // 'cfcr' and the wrapper keeps the reference it had.
    template <class Object, class Change>
    void ExpectRefusedChangeKeeps(Object& inObject, Change inChange)
    {
        const auto before = inObject.GetRefValue();
        Refuse();
        ExpectThrows<Gx::RuntimeError>([&] { inChange(); }, FourCC("cfcr"));
        EXPECT_TRUE(inObject.HasSameRef(before));
    }

private:
    static void* Allocate(CFIndex inSize, CFOptionFlags, void* inInfo)
    {
        return static_cast<RefusingAllocator*>(inInfo)->mRefusing ? nullptr : std::malloc(std::size_t(inSize));
    }
    static void Deallocate(void* inPointer, void*) { std::free(inPointer); }

    CFAllocatorRef mAllocator = nullptr;
    bool mRefusing = false;
};

// A wrapper made by inMake with the allocator it is given holds the one retain the create call
// handed over, and a create call that answers NULL throws RuntimeError 'cfcr'.
template <class Make>
void ExpectAdoptedOrRefused(Make inMake)
{
    EXPECT_EQ(inMake(kCFAllocatorDefault).GetRetainCount(), 1);
    ExpectThrows<Gx::RuntimeError>([&] { inMake(kCFAllocatorNull); }, FourCC("cfcr"));
}
