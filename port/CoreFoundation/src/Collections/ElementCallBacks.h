// How a collection treats the values it holds: the callback structure a caller gave it,
// copied and normalised so that a missing member means "plain pointer".
#pragma once

#include <CoreFoundation/CFRuntime.h>
#include <CoreFoundation/CFString.h>

#include <cstdint>
#include <string>

namespace cf {

// The array, dictionary and set callback structures share their member types, so one
// normalised form serves them all. Without a retain callback a value is stored as given;
// without equal it is compared by identity; without hash its pointer is its hash, which is
// what lets callers keep plain integers in a collection.
struct ElementCallBacks {
    using RetainFn = const void* (*)(CFAllocatorRef, const void*);
    using ReleaseFn = void (*)(CFAllocatorRef, const void*);
    using DescribeFn = CFStringRef (*)(const void*);
    using EqualFn = Boolean (*)(const void*, const void*);
    using HashFn = CFHashCode (*)(const void*);

    RetainFn retain = nullptr;
    ReleaseFn release = nullptr;
    DescribeFn copyDescription = nullptr;
    EqualFn equal = nullptr;
    HashFn hash = nullptr;

    template <class CallBacks>
    static ElementCallBacks From(const CallBacks* inCallBacks)
    {
        if (inCallBacks == nullptr)
            return {};
        ElementCallBacks result{inCallBacks->retain, inCallBacks->release, inCallBacks->copyDescription,
                                inCallBacks->equal};
        if constexpr (requires { inCallBacks->hash; })
            result.hash = inCallBacks->hash;
        return result;
    }

    const void* Retain(CFAllocatorRef inAllocator, const void* inValue) const
    {
        return retain ? retain(inAllocator, inValue) : inValue;
    }

    void Release(CFAllocatorRef inAllocator, const void* inValue) const
    {
        if (release)
            release(inAllocator, inValue);
    }

    // Identity first: it is always equality, and it spares a call for the common case of
    // looking up the very object that was stored.
    bool Equal(const void* inValue1, const void* inValue2) const
    {
        return inValue1 == inValue2 || (equal && equal(inValue1, inValue2));
    }

    CFHashCode Hash(const void* inValue) const
    {
        return hash ? hash(inValue) : CFHashCode(reinterpret_cast<std::uintptr_t>(inValue));
    }

    // Two collections can only be equal when they agree on what equal values are.
    bool SameEquality(const ElementCallBacks& inOther) const { return equal == inOther.equal; }

    std::string Describe(const void* inValue) const;
};

// The members of the kCFType... callback structures, shared so that collections made with
// any of them agree on equality.
const void* RetainObject(CFAllocatorRef inAllocator, const void* inValue);
void ReleaseObject(CFAllocatorRef inAllocator, const void* inValue);
// The retain member of the copy-string callbacks: a private immutable copy, so that a
// mutable string changed after it was added cannot move under the collection.
const void* CopyStringValue(CFAllocatorRef inAllocator, const void* inValue);

}  // namespace cf
