// The values of a domain: its file as last read, with this process's unwritten changes on top.
#include "CFPreferencesDomain.h"
#include "PropertyList/XMLWriter.h"

#include <CoreFoundation/CFString.h>
#include <CoreFoundation/CFRuntime.h>

#include <cstdio>

namespace cf::prefs {

namespace {

using plist::Owned;
using plist::OwnedValue;

CFDictionaryRef Values(const OwnedValue& inDictionary) { return CFDictionaryRef(inDictionary.Get()); }

// The keys a CF dictionary holds as UTF-8.
std::vector<std::string> DictionaryKeys(CFDictionaryRef inDictionary)
{
    std::vector<const void*> keys(std::size_t(CFDictionaryGetCount(inDictionary)));
    CFDictionaryGetKeysAndValues(inDictionary, keys.data(), nullptr);
    std::vector<std::string> names;
    for (const void* key : keys)
        names.push_back(UTF8(CFStringRef(key)));
    return names;
}

void Apply(CFMutableDictionaryRef ioDictionary, const std::string& inKey, CFTypeRef inValue)
{
    Owned<CFStringRef> key(MakeString(inKey));
    if (inValue)
        CFDictionarySetValue(ioDictionary, key.Get(), inValue);
    else
        CFDictionaryRemoveValue(ioDictionary, key.Get());
}

// The file's values (none once forgotten) with the pending changes on top.
Owned<CFMutableDictionaryRef> Merged(const OwnedValue& inValues, const std::map<std::string, OwnedValue>& inPending)
{
    Owned<CFMutableDictionaryRef> merged(
        inValues
            ? CFDictionaryCreateMutableCopy(nullptr, 0, Values(inValues))
            : CFDictionaryCreateMutable(nullptr, 0, &kCFTypeDictionaryKeyCallBacks, &kCFTypeDictionaryValueCallBacks));
    for (const auto& [key, value] : inPending)
        Apply(merged.Get(), key, value.Get());
    return merged;
}

}  // namespace

Domain::Domain(DomainLocation inLocation) : mLocation(std::move(inLocation)) { Refresh(true); }

void Domain::Refresh(bool inForce)
{
    if (!inForce && FileIdentity::Of(mLocation.path) == mFile.identity)
        return;
    mFile = ReadDomainFile(mLocation.path, mLocation.writable);
}

// The stored values are immutable all through, so the caller gets the value itself.
CFPropertyListRef Domain::Copy(const std::string& inKey)
{
    Refresh(false);
    if (auto pending = mPending.find(inKey); pending != mPending.end())
        return pending->second ? CFRetain(pending->second.Get()) : nullptr;
    if (!mFile.values)
        return nullptr;
    Owned<CFStringRef> key(MakeString(inKey));
    CFTypeRef value = CFDictionaryGetValue(Values(mFile.values), key.Get());
    return value ? CFRetain(value) : nullptr;
}

void Domain::Set(const std::string& inKey, OwnedValue inValue) { mPending[inKey] = std::move(inValue); }

std::vector<std::string> Domain::Keys()
{
    Refresh(false);
    return DictionaryKeys(Merged(mFile.values, mPending).Get());
}

void Domain::Forget()
{
    mPending.clear();
    mFile.values.Reset();
    mFile.identity = FileIdentity{};
    mFile.identity.size = -1;  // matches no file, so the next look reads the file again
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

// The pending values go into a new dictionary that shares every other value with the file's,
// so that nothing of a large domain is copied. Should the write fail, they stay pending and
// the file is read again next time.
bool Domain::WritePending()
{
    if (!mFile.mayReplace)
        return false;
    Owned<CFMutableDictionaryRef> values = Merged(mFile.values, mPending);
    std::string bytes, error;
    // Room for what the file held, and a little more: a domain is mostly written back about
    // the size it was read, and a string grown by doubling would touch three times that.
    if (mFile.identity.size > 0)
        bytes.reserve(std::size_t(mFile.identity.size) + std::size_t(mFile.identity.size) / 8 + 4096);
    FileIdentity written;
    if (!plist::WriteXML(values.Get(), bytes, error) || !ReplaceDomainFile(mLocation.path, bytes, written, error)) {
        std::fprintf(stderr, "Preferences: \"%s\" could not be saved (%s).\n", mLocation.path.c_str(), error.c_str());
        mFile.identity = FileIdentity{};
        mFile.identity.size = -1;  // matches no file, so the next look reads the file again
        return false;
    }
    mFile.values = OwnedValue(values.Take());
    mFile.identity = written;
    mPending.clear();
    return true;
}

DomainTable& DomainTable::Shared()
{
    static auto* sTable = new DomainTable;  // never destroyed: preferences may be used until exit
    return *sTable;
}

void DomainTable::ForgetAll()
{
    std::lock_guard guard(mLock);
    for (auto& [path, domain] : mDomains)
        domain->Forget();
}

Domain& DomainTable::Find(const DomainLocation& inLocation)
{
    std::unique_ptr<Domain>& domain = mDomains[inLocation.path];
    if (!domain)
        domain = std::make_unique<Domain>(inLocation);
    return *domain;
}

}  // namespace cf::prefs
