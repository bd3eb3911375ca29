// Limits of the item table.
#include "FSItemLimits.h"

#include <sys/resource.h>

#include <algorithm>

namespace carbon {

std::size_t MostDescriptors()
{
    rlimit limit{};
    std::size_t allowed = ::getrlimit(RLIMIT_NOFILE, &limit) == 0 ? std::size_t(limit.rlim_cur) / 4 : 256;
    return std::clamp<std::size_t>(allowed, 64, 1024);
}

RecentKeys::Position RecentKeys::Add(const ItemKey& inKey) { return mKeys.insert(mKeys.begin(), inKey); }

void RecentKeys::Touch(Position inPosition) { mKeys.splice(mKeys.begin(), mKeys, inPosition); }

void RecentKeys::Remove(Position inPosition) { mKeys.erase(inPosition); }

}  // namespace carbon
