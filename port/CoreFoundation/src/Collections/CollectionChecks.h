// Argument checks shared by the collections. The platform leaves a bad index, range, count or
// capacity undefined; here each one stops the process with a message naming the call.
#pragma once

#include <CoreFoundation/CFRuntime.h>

namespace cf {

// An index of an existing element: 0 <= index < count.
inline void CheckIndex(const char* inCall, CFIndex inIndex, CFIndex inCount)
{
    if (inIndex < 0 || inIndex >= inCount)
        Fatal(inCall, "index %ld is out of bounds (count %ld)", inIndex, inCount);
}

// A position to insert at: 0 <= index <= count.
inline void CheckInsertionIndex(const char* inCall, CFIndex inIndex, CFIndex inCount)
{
    if (inIndex < 0 || inIndex > inCount)
        Fatal(inCall, "index %ld is out of bounds (count %ld)", inIndex, inCount);
}

inline void CheckRange(const char* inCall, CFRange inRange, CFIndex inCount)
{
    if (inRange.location < 0 || inRange.length < 0 || inRange.location > inCount ||
        inRange.length > inCount - inRange.location)
        Fatal(inCall, "range {%ld, %ld} is out of bounds (count %ld)", inRange.location, inRange.length, inCount);
}

// A caller's list of inCount values (or keys): a count that is not negative, and a list when
// there is anything in it.
inline void CheckValues(const char* inCall, const void* inValues, CFIndex inCount)
{
    if (inCount < 0)
        Fatal(inCall, "count %ld is negative", inCount);
    if (inCount > 0 && inValues == nullptr)
        Fatal(inCall, "count %ld but no buffer of values", inCount);
}

// The maximum count of a mutable collection; zero means "no limit".
inline void CheckCapacity(const char* inCall, CFIndex inCapacity, CFIndex inInitialCount = 0)
{
    if (inCapacity < 0)
        Fatal(inCall, "capacity %ld is negative", inCapacity);
    if (inCapacity != 0 && inCapacity < inInitialCount)
        Fatal(inCall, "capacity %ld is less than the %ld values to copy", inCapacity, inInitialCount);
}

// A collection made with a capacity cannot grow beyond it.
inline void CheckRoom(const char* inCall, CFIndex inCapacity, CFIndex inNewCount)
{
    if (inCapacity != 0 && inNewCount > inCapacity)
        Fatal(inCall, "the collection is full (capacity %ld)", inCapacity);
}

template <class Function>
void CheckFunction(const char* inCall, Function* inFunction)
{
    if (inFunction == nullptr)
        Fatal(inCall, "called without a function");
}

// A collection whose allocator refuses to let it grow cannot keep its promise to the caller.
[[noreturn]] inline void OutOfMemory(const char* inCall) { Fatal(inCall, "out of memory"); }

}  // namespace cf
