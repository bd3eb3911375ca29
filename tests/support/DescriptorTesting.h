// A fixture that fails a test which leaves an Apple event descriptor behind.
#pragma once

#include <Carbon/AEDataModel.h>

#include <gtest/gtest.h>

namespace spindeck::test {

class DescriptorTest : public ::testing::Test {
protected:
    void SetUp() override { mLive = _AEGetLiveDescriptorCount(); }
    void TearDown() override { EXPECT_EQ(_AEGetLiveDescriptorCount(), mLive) << "a descriptor was not disposed of"; }

    // Descriptors alive now that were not at the start of the test.
    long NewDescriptors() const { return _AEGetLiveDescriptorCount() - mLive; }

private:
    long mLive = 0;
};

}  // namespace spindeck::test
