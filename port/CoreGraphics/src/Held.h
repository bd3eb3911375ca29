// One retain on an object that a drawing object keeps. The owner gives it back in its
// Finalize, when its own last reference goes; the destructor is the safety net.
#pragma once

#include <CoreFoundation/CFBase.h>

#include <utility>

namespace cg {

template <class Ref>
class Held {
public:
    Held() = default;
    explicit Held(Ref inRef) : mRef(inRef)
    {
        if (mRef)
            CFRetain(mRef);
    }
    Held(const Held&) = delete;
    Held& operator=(const Held&) = delete;
    ~Held() { Reset(); }

    Ref Get() const { return mRef; }

    void Reset() noexcept
    {
        if (mRef)
            CFRelease(std::exchange(mRef, nullptr));
    }

private:
    Ref mRef = nullptr;
};

}  // namespace cg
