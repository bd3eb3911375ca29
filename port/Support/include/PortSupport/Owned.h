// One reference to a platform object, given back when its holder goes. The object runtime's
// headers come from the library that uses it; this header only names CFRetain and CFRelease.
#pragma once

#include <CoreFoundation/CFBase.h>

#include <utility>

namespace port {

template <class Ref>
class Owned {
public:
    Owned() = default;
    // Adopts the reference that a Create or Copy call handed over.
    explicit Owned(Ref inRef) : mRef(inRef) {}
    Owned(Owned&& ioOther) noexcept : mRef(ioOther.Take()) {}
    Owned& operator=(Owned&& ioOther) noexcept
    {
        if (this != &ioOther)
            Reset(ioOther.Take());
        return *this;
    }
    ~Owned() { Reset(); }

    // Takes a reference of its own on an object that someone else keeps.
    static Owned Retained(Ref inRef)
    {
        if (inRef)
            CFRetain(inRef);
        return Owned(inRef);
    }

    Ref Get() const { return mRef; }
    explicit operator bool() const { return mRef != nullptr; }
    // Hands the reference to the caller, who then releases it.
    Ref Take() { return std::exchange(mRef, nullptr); }

    void Reset(Ref inRef = nullptr) noexcept
    {
        if (Ref previous = std::exchange(mRef, inRef))
            CFRelease(previous);
    }

private:
    Ref mRef = nullptr;
};

}  // namespace port
