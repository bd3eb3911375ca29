// The values of a domain: its file as last read, with this process's unwritten changes on top.
#include "PreferencesDomain.h"

#include <cstdio>
#include <cstdlib>

namespace cf::prefs {

namespace {

std::vector<std::string> DictionaryKeys(plist_t inDictionary)
{
    std::vector<std::string> keys;
    plist_dict_iter iterator = nullptr;
    plist_dict_new_iter(inDictionary, &iterator);
    std::unique_ptr<void, decltype(&std::free)> iteratorOwner(iterator, &std::free);
    for (;;) {
        char* key = nullptr;
        plist_t value = nullptr;
        plist_dict_next_item(inDictionary, iterator, &key, &value);
        std::unique_ptr<char, decltype(&std::free)> keyOwner(key, &std::free);
        if (value == nullptr)
            return keys;
        keys.emplace_back(key ? key : "");
    }
}

void Apply(plist_t ioDictionary, const std::string& inKey, const plist::Node& inValue)
{
    if (inValue)
        plist_dict_set_item(ioDictionary, inKey.c_str(), plist_copy(inValue.get()));
    else if (plist_dict_get_item(ioDictionary, inKey.c_str()))
        plist_dict_remove_item(ioDictionary, inKey.c_str());
}

}  // namespace

Domain::Domain(DomainLocation inLocation) : mLocation(std::move(inLocation))
{
    mFile.values.reset(plist_new_dict());
    Refresh(true);
}

void Domain::Refresh(bool inForce)
{
    if (!inForce && FileIdentity::Of(mLocation.path) == mFile.identity)
        return;
    mFile = ReadDomainFile(mLocation.path, mLocation.writable);
}

CFPropertyListRef Domain::Copy(const std::string& inKey)
{
    Refresh(false);
    plist_t value = nullptr;
    if (auto pending = mPending.find(inKey); pending != mPending.end())
        value = pending->second.get();
    else
        value = plist_dict_get_item(mFile.values.get(), inKey.c_str());
    std::string ignored;  // stored values were checked when they were read or set
    return value ? plist::ValueFromNode(value, nullptr, kCFPropertyListImmutable, ignored) : nullptr;
}

void Domain::Set(const std::string& inKey, plist::Node inValue) { mPending[inKey] = std::move(inValue); }

std::vector<std::string> Domain::Keys()
{
    Refresh(false);
    plist::Node merged(plist_copy(mFile.values.get()));
    for (const auto& [key, value] : mPending)
        Apply(merged.get(), key, value);
    return DictionaryKeys(merged.get());
}

bool Domain::Synchronize()
{
    if (mPending.empty()) {
        Refresh(true);
        return true;
    }
    if (!mLocation.writable)
        return false;
    FolderLock lock(mLocation.path);
    if (lock.Locked())
        RemoveAbandonedTemporaries(mLocation.path);
    // Merge onto what is on disk now, not onto what was read earlier, so that keys other
    // processes wrote in the meantime survive. A file that still has the identity it had when
    // it was read (same inode, size and times) holds what was read: parsing it again, which
    // costs as much as the rest of the write for a large domain, would change nothing.
    Refresh(false);
    return WritePending();
}

bool Domain::WritePending()
{
    if (!mFile.mayReplace)
        return false;
    plist::Node merged(plist_copy(mFile.values.get()));
    for (const auto& [key, value] : mPending)
        Apply(merged.get(), key, value);
    std::string bytes = plist::SerializeNode(merged.get(), kCFPropertyListXMLFormat_v1_0);
    FileIdentity written;
    std::string error;
    if (!ReplaceDomainFile(mLocation.path, bytes, written, error)) {
        std::fprintf(stderr, "Preferences: \"%s\" could not be saved (%s).\n", mLocation.path.c_str(), error.c_str());
        return false;
    }
    mFile = {written, std::move(merged), true};
    mPending.clear();
    return true;
}

DomainTable& DomainTable::Shared()
{
    static auto* table = new DomainTable;  // never destroyed: preferences may be used until exit
    return *table;
}

Domain& DomainTable::Find(const DomainLocation& inLocation)
{
    std::unique_ptr<Domain>& domain = mDomains[inLocation.path];
    if (!domain)
        domain = std::make_unique<Domain>(inLocation);
    return *domain;
}

}  // namespace cf::prefs
