#include "LeakCheck.h"

#include <CoreFoundation/CFPreferences.h>
#include <CoreFoundation/CFRuntime.h>

#include <cstdio>

namespace spindeck::test {

// The preferences store keeps what it read and what was set for the life of the process; it
// is emptied before counting, so each test starts from the files alone.
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
