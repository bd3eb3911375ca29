#include "LeakCheck.h"

#include <CoreFoundation/CFPreferences.h>
#include <CoreFoundation/CFRuntime.h>

#include <cstdio>

namespace spindeck::test {

// The preferences store keeps the values of the files it read for the life of the process;
// they are dropped before counting, and read again at their next use.
void LeakCheck::OnTestStart(const ::testing::TestInfo&)
{
    _CFPreferencesFlushCaches();
    mBefore = _CFRuntimeGetLiveObjectCount();
}

void LeakCheck::OnTestEnd(const ::testing::TestInfo& inTest)
{
    _CFPreferencesFlushCaches();
    long after = _CFRuntimeGetLiveObjectCount();
    if (after == mBefore)
        return;
    mLeaked = true;
    std::fprintf(stderr, "[  LEAKED  ] %s.%s: %ld platform object(s) alive before, %ld after\n",
                 inTest.test_suite_name(), inTest.name(), mBefore, after);
}

}  // namespace spindeck::test
