// A value that can be reached only while its mutex is held. Locked() answers a handle that
// holds the mutex for as long as it lives, so "take the lock first" is a rule of the type
// rather than of the comments, and a caller cannot keep a pointer into the value past it.
#pragma once

#include <mutex>
#include <utility>

namespace carbon {

template <class T>
class Guarded {
public:
    class Access {
    public:
        T* operator->() const { return mValue; }
        T& operator*() const { return *mValue; }

    private:
        friend Guarded;
        Access(std::mutex& inMutex, T& inValue) : mGuard(inMutex), mValue(&inValue) {}

        std::unique_lock<std::mutex> mGuard;
        T* mValue;
    };

    template <class... Args>
    explicit Guarded(Args&&... inArgs) : mValue(std::forward<Args>(inArgs)...)
    {
    }
    Guarded(const Guarded&) = delete;
    Guarded& operator=(const Guarded&) = delete;

    Access Locked() { return Access(mLock, mValue); }

private:
    std::mutex mLock;
    T mValue;
};

}  // namespace carbon
