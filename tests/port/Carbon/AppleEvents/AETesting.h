// Descriptors owned by a test, and reading the parts of an event.
#pragma once

#include "DescriptorTesting.h"

#include <Carbon/AEDataModel.h>
#include <Carbon/MacErrors.h>

#include <gtest/gtest.h>

#include <vector>

namespace spindeck::test {

// Disposing of it twice is harmless: AEDisposeDesc leaves a null descriptor.
struct Desc {
    AEDesc d{typeNull, nullptr};
    Desc() = default;
    Desc(DescType inType, const void* inData, Size inSize)
    {
        EXPECT_EQ(AECreateDesc(inType, inData, inSize, &d), noErr);
    }
    ~Desc() { AEDisposeDesc(&d); }
    Desc(const Desc&) = delete;
    Desc& operator=(const Desc&) = delete;
};

// The descriptors are the same if their types and flat forms are.
inline bool SameDescs(const AEDesc& inA, const AEDesc& inB)
{
    std::vector<char> a(std::size_t(AESizeOfFlattenedDesc(&inA))), b(std::size_t(AESizeOfFlattenedDesc(&inB)));
    AEFlattenDesc(&inA, a.data(), Size(a.size()), nullptr);
    AEFlattenDesc(&inB, b.data(), Size(b.size()), nullptr);
    return inA.descriptorType == inB.descriptorType && a == b;
}

// An attribute of an event as inType; zero where it cannot be had.
template <class T>
T AttributeOf(const AppleEvent& inEvent, AEKeyword inKey, DescType inType)
{
    T value{};
    EXPECT_EQ(AEGetAttributePtr(&inEvent, inKey, inType, nullptr, &value, sizeof value, nullptr), noErr);
    return value;
}

template <class T>
T ParamOf(const AppleEvent& inEvent, AEKeyword inKey, DescType inType)
{
    T value{};
    EXPECT_EQ(AEGetParamPtr(&inEvent, inKey, inType, nullptr, &value, sizeof value, nullptr), noErr);
    return value;
}

}  // namespace spindeck::test
