// Makes every test fail that leaves a platform object alive: installed by the shared test main.
#pragma once

#include <gtest/gtest.h>

namespace spindeck::test {

// Counts the runtime's live objects around each test. A test that ends with more objects
// than it started with is reported by name, and the test program's exit status says so.
class LeakCheck final : public ::testing::EmptyTestEventListener {
public:
    void OnTestStart(const ::testing::TestInfo& inTest) override;
    void OnTestEnd(const ::testing::TestInfo& inTest) override;
    bool Leaked() const { return mLeaked; }

private:
    long mBefore = 0;
    bool mLeaked = false;
};

}  // namespace spindeck::test
