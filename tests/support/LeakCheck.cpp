#include "LeakCheck.h"

#include <CoreFoundation/CFRuntime.h>

#include <cstdio>

namespace spindeck::test {

void LeakCheck::OnTestStart(const ::testing::TestInfo&) { mBefore = _CFRuntimeGetLiveObjectCount(); }

void LeakCheck::OnTestEnd(const ::testing::TestInfo& inTest)
{
    long after = _CFRuntimeGetLiveObjectCount();
    if (after == mBefore)
        return;
    mLeaked = true;
    std::fprintf(stderr, "[  LEAKED  ] %s.%s: %ld platform object(s) alive before, %ld after\n",
                 inTest.test_suite_name(), inTest.name(), mBefore, after);
}

}  // namespace spindeck::test
