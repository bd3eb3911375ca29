// The Apple event wrappers under test: descriptors counted around each test.
#pragma once

#include "ExpectThrows.h"

#include <Carbon/AEDataModel.h>

namespace spindeck::test {

class EventTest : public ::testing::Test {
protected:
    void SetUp() override { mLive = _AEGetLiveDescriptorCount(); }
    void TearDown() override { EXPECT_EQ(_AEGetLiveDescriptorCount(), mLive) << "a descriptor was not disposed of"; }

    // Descriptors alive now that were not at the start of the test.
    long NewDescriptors() const { return _AEGetLiveDescriptorCount() - mLive; }

private:
    long mLive = 0;
};

}  // namespace spindeck::test
