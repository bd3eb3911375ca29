// The preferences calls: search lists over domains, typed readers, and writes that stay
// pending until the domain is synchronised.
#include "CFPreferencesDomain.h"
#include "CFPreferencesLocations.h"
#include "PropertyList/XMLWriter.h"

#include <CoreFoundation/CFNumber.h>
#include <CoreFoundation/CFPreferences.h>
#include <CoreFoundation/CFRuntime.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <strings.h>

const CFStringRef kCFPreferencesAnyApplication = CFSTR("kCFPreferencesAnyApplication");
const CFStringRef kCFPreferencesCurrentApplication = CFSTR("kCFPreferencesCurrentApplication");
const CFStringRef kCFPreferencesAnyHost = CFSTR("kCFPreferencesAnyHost");
const CFStringRef kCFPreferencesCurrentHost = CFSTR("kCFPreferencesCurrentHost");
const CFStringRef kCFPreferencesAnyUser = CFSTR("kCFPreferencesAnyUser");
const CFStringRef kCFPreferencesCurrentUser = CFSTR("kCFPreferencesCurrentUser");

namespace {

using cf::prefs::DomainLocation;
using cf::prefs::DomainTable;
using cf::prefs::Locate;

std::string Key(CFStringRef inKey, const char* inCall)
{
    cf::Checked<cf::Object>(inKey, CFStringGetTypeID(), inCall);
    return cf::UTF8(inKey);
}

CFPropertyListRef CopyFrom(const DomainLocation& inLocation, const std::string& inKey)
{
    return DomainTable::Shared().With(inLocation, [&](cf::prefs::Domain& ioDomain) { return ioDomain.Copy(inKey); });
}

// The application's search list: the most particular domain first.
std::vector<DomainLocation> SearchList(CFStringRef inApplicationID, const char* inCall)
{
    std::vector<DomainLocation> list;
    for (CFStringRef user : {kCFPreferencesCurrentUser, kCFPreferencesAnyUser})
        for (CFStringRef application : {inApplicationID, kCFPreferencesAnyApplication})
            for (CFStringRef host : {kCFPreferencesCurrentHost, kCFPreferencesAnyHost})
                if (auto location = Locate(application, user, host, inCall)) {
                    bool listed = false;
                    for (const DomainLocation& earlier : list)
                        listed = listed || earlier.path == location->path;
                    if (!listed)
                        list.push_back(std::move(*location));
                }
    return list;
}

// Integers also come as text, as older programs wrote them.
bool IntegerFromString(CFStringRef inString, CFIndex& outValue)
{
    std::string text = cf::UTF8(inString);
    char* end = nullptr;
    errno = 0;
    long long value = std::strtoll(text.c_str(), &end, 10);
    if (text.empty() || errno != 0 || end == text.c_str() || *end != '\0')
        return false;
    outValue = CFIndex(value);
    return true;
}

bool BooleanFromString(CFStringRef inString, Boolean& outValue)
{
    std::string text = cf::UTF8(inString);
    bool yes = strcasecmp(text.c_str(), "true") == 0 || strcasecmp(text.c_str(), "yes") == 0;
    bool no = strcasecmp(text.c_str(), "false") == 0 || strcasecmp(text.c_str(), "no") == 0;
    if (yes || no)
        outValue = yes;
    return yes || no;
}

// The domain keeps an immutable copy, so the caller may go on changing its own value; the
// parts of it that cannot change are shared, not copied. A value the file could not hold is
// refused now, alone, rather than failing every later write of the domain.
void SetIn(const DomainLocation& inLocation, const std::string& inKey, CFPropertyListRef inValue)
{
    cf::plist::OwnedValue copy;
    if (inValue) {
        std::string reason;
        if (cf::plist::CheckXMLWritable(inValue, reason))
            copy.Reset(CFPropertyListCreateDeepCopy(nullptr, inValue, kCFPropertyListImmutable));
        if (!copy) {
            std::fprintf(stderr, "Preferences: the value for \"%s\" was not stored: %s.\n", inKey.c_str(),
                         reason.empty() ? "out of memory" : reason.c_str());
            return;
        }
    }
    DomainTable::Shared().With(inLocation, [&](cf::prefs::Domain& ioDomain) { ioDomain.Set(inKey, std::move(copy)); });
}

bool SynchronizeIn(const DomainLocation& inLocation)
{
    return DomainTable::Shared().With(inLocation, [](cf::prefs::Domain& ioDomain) { return ioDomain.Synchronize(); });
}

}  // namespace

CFPropertyListRef CFPreferencesCopyAppValue(CFStringRef inKey, CFStringRef inApplicationID)
{
    std::string key = Key(inKey, "CFPreferencesCopyAppValue");
    for (const DomainLocation& location : SearchList(inApplicationID, "CFPreferencesCopyAppValue"))
        if (CFPropertyListRef value = CopyFrom(location, key))
            return value;
    return nullptr;
}

CFIndex CFPreferencesGetAppIntegerValue(CFStringRef inKey, CFStringRef inApplicationID,
                                        Boolean* outKeyExistsAndHasValidFormat)
{
    cf::plist::OwnedValue value(CFPreferencesCopyAppValue(inKey, inApplicationID));
    CFIndex result = 0;
    bool valid = false;
    if (value && CFGetTypeID(value.Get()) == CFNumberGetTypeID()) {
        // A real number with a fraction is not an integer preference.
        valid = CFNumberGetValue(CFNumberRef(value.Get()), kCFNumberCFIndexType, &result);
    } else if (value && CFGetTypeID(value.Get()) == CFStringGetTypeID()) {
        valid = IntegerFromString(CFStringRef(value.Get()), result);
    }
    if (outKeyExistsAndHasValidFormat)
        *outKeyExistsAndHasValidFormat = valid;
    return valid ? result : 0;
}

Boolean CFPreferencesGetAppBooleanValue(CFStringRef inKey, CFStringRef inApplicationID,
                                        Boolean* outKeyExistsAndHasValidFormat)
{
    cf::plist::OwnedValue value(CFPreferencesCopyAppValue(inKey, inApplicationID));
    Boolean result = false;
    bool valid = false;
    if (value && CFGetTypeID(value.Get()) == CFBooleanGetTypeID()) {
        result = CFBooleanGetValue(CFBooleanRef(value.Get()));
        valid = true;
    } else if (value && CFGetTypeID(value.Get()) == CFNumberGetTypeID()) {
        double number = 0;
        CFNumberGetValue(CFNumberRef(value.Get()), kCFNumberDoubleType, &number);
        result = number != 0;
        valid = true;
    } else if (value && CFGetTypeID(value.Get()) == CFStringGetTypeID()) {
        valid = BooleanFromString(CFStringRef(value.Get()), result);
    }
    if (outKeyExistsAndHasValidFormat)
        *outKeyExistsAndHasValidFormat = valid;
    return valid && result;
}

void CFPreferencesSetAppValue(CFStringRef inKey, CFPropertyListRef inValue, CFStringRef inApplicationID)
{
    CFPreferencesSetValue(inKey, inValue, inApplicationID, kCFPreferencesCurrentUser, kCFPreferencesAnyHost);
}

Boolean CFPreferencesAppSynchronize(CFStringRef inApplicationID)
{
    bool anyHost = CFPreferencesSynchronize(inApplicationID, kCFPreferencesCurrentUser, kCFPreferencesAnyHost);
    bool currentHost = CFPreferencesSynchronize(inApplicationID, kCFPreferencesCurrentUser, kCFPreferencesCurrentHost);
    return anyHost && currentHost;
}

CFPropertyListRef CFPreferencesCopyValue(CFStringRef inKey, CFStringRef inApplicationID, CFStringRef inUserName,
                                         CFStringRef inHostName)
{
    std::string key = Key(inKey, "CFPreferencesCopyValue");
    auto location = Locate(inApplicationID, inUserName, inHostName, "CFPreferencesCopyValue");
    return location ? CopyFrom(*location, key) : nullptr;
}

void CFPreferencesSetValue(CFStringRef inKey, CFPropertyListRef inValue, CFStringRef inApplicationID,
                           CFStringRef inUserName, CFStringRef inHostName)
{
    std::string key = Key(inKey, "CFPreferencesSetValue");
    if (auto location = Locate(inApplicationID, inUserName, inHostName, "CFPreferencesSetValue"))
        SetIn(*location, key, inValue);
}

Boolean CFPreferencesSynchronize(CFStringRef inApplicationID, CFStringRef inUserName, CFStringRef inHostName)
{
    auto location = Locate(inApplicationID, inUserName, inHostName, "CFPreferencesSynchronize");
    return location && SynchronizeIn(*location);
}

CFArrayRef CFPreferencesCopyKeyList(CFStringRef inApplicationID, CFStringRef inUserName, CFStringRef inHostName)
{
    auto location = Locate(inApplicationID, inUserName, inHostName, "CFPreferencesCopyKeyList");
    if (!location)
        return nullptr;
    std::vector<std::string> keys = DomainTable::Shared().With(
        *location, [](cf::prefs::Domain& ioDomain) { return ioDomain.Keys(); });
    if (keys.empty())
        return nullptr;
    std::vector<cf::plist::OwnedValue> strings;
    for (const std::string& key : keys)
        strings.emplace_back(cf::MakeString(key));
    return CFArrayRef(cf::plist::MakeArray(nullptr, strings, kCFPropertyListImmutable));
}

CFStringRef _CFPreferencesCopyDomainPath(CFStringRef inApplicationID, CFStringRef inUserName, CFStringRef inHostName)
{
    std::optional<cf::prefs::DomainLocation> location = cf::prefs::Locate(inApplicationID, inUserName, inHostName,
                                                                          "_CFPreferencesCopyDomainPath");
    return location ? cf::MakeString(location->path) : nullptr;
}

void _CFPreferencesFlushCaches() { DomainTable::Shared().ForgetAll(); }
