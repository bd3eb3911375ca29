// A file descriptor that closes itself.
#pragma once

#include <unistd.h>

#include <utility>

namespace carbon {

class OwnedFd {
public:
    OwnedFd() = default;
    explicit OwnedFd(int inFd) : mFd(inFd) {}
    OwnedFd(OwnedFd&& ioOther) noexcept : mFd(ioOther.Release()) {}
    OwnedFd& operator=(OwnedFd&& ioOther) noexcept
    {
        if (this != &ioOther)
            Reset(ioOther.Release());
        return *this;
    }
    ~OwnedFd() { Reset(); }

    int Get() const { return mFd; }
    explicit operator bool() const { return mFd >= 0; }
    int Release() { return std::exchange(mFd, -1); }
    void Reset(int inFd = -1)
    {
        if (mFd >= 0)
            ::close(mFd);
        mFd = inFd;
    }

private:
    int mFd = -1;
};

}  // namespace carbon
