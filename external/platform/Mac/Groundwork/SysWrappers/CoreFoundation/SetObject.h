// The product code's name for a set of strings: a Gx::CFSet that starts out empty (NULL)
// and is filled by whoever owns it.
#pragma once

#include <Groundwork/SysWrappers/CoreFoundation/SysCFSet.h>

template <class T>
class SetObject : public Gx::CFSet<T> {
public:
    SetObject() = default;
    ~SetObject() override = default;
};
