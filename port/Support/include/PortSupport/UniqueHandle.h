// An object of a C library that is given back with one call (closedir, ucol_close,
// sd_bus_message_unref, free, ...) when its holder goes: std::unique_ptr with that call as its
// deleter, so that no part of the port writes a deleter of its own.
#pragma once

#include <cstdlib>
#include <memory>

namespace port {

template <auto Free>
struct FreedBy {
    template <class T>
    void operator()(T* inObject) const
    {
        Free(inObject);
    }
};

template <class T, auto Free>
using UniqueHandle = std::unique_ptr<T, FreedBy<Free>>;

// Memory that a C call allocated with malloc and handed over (realpath, xcb replies, ...).
struct FreeMemory {
    void operator()(void* inBlock) const { std::free(inBlock); }
};

template <class T>
using UniqueMemory = std::unique_ptr<T, FreeMemory>;

}  // namespace port
