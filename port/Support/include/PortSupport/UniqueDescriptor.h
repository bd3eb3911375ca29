// A file descriptor that closes itself: how the port holds every kernel object it opens.
#pragma once

#include <unistd.h>

#include <utility>

namespace port {

class UniqueDescriptor {
public:
    UniqueDescriptor() = default;
    explicit UniqueDescriptor(int inDescriptor) : mDescriptor(inDescriptor) {}
    UniqueDescriptor(UniqueDescriptor&& ioOther) noexcept : mDescriptor(ioOther.Take()) {}
    UniqueDescriptor& operator=(UniqueDescriptor&& ioOther) noexcept
    {
        Reset(ioOther.Take());
        return *this;
    }
    ~UniqueDescriptor() { Reset(); }

    int Get() const { return mDescriptor; }
    explicit operator bool() const { return mDescriptor >= 0; }

    // Gives up ownership without closing.
    int Take() { return std::exchange(mDescriptor, -1); }

    void Reset(int inDescriptor = -1)
    {
        int previous = std::exchange(mDescriptor, inDescriptor);
        if (previous >= 0 && previous != inDescriptor)
            ::close(previous);
    }

private:
    int mDescriptor = -1;
};

}  // namespace port
