// Bundle objects: how they are made from a folder, kept unique per folder, and found again
// by identifier.
#include "CFBundleFiles.h"
#include "CFBundleObject.h"

#include <unordered_map>

namespace {

using cf::bundle::Owned;

// Every bundle alive in the process, by folder. The registry does not own them: a bundle
// leaves it when its last reference goes.
class Registry {
public:
    CFBundleRef FindOrCreate(CFAllocatorRef inAllocator, const std::string& inPath)
    {
        std::lock_guard guard(mLock);
        if (auto found = mByPath.find(inPath); found != mByPath.end() && cf::RetainIfAlive(found->second))
            return found->second;
        __CFBundle::Parts parts = cf::bundle::Examine(inAllocator, inPath);
        Owned<CFURLRef> url(parts.url);
        Owned<CFDictionaryRef> info(parts.info);
        if (!url || !info)
            return nullptr;
        __CFBundle* bundle = cf::Create<__CFBundle>(inAllocator, std::move(parts), cf::Object::Lifetime::Counted);
        if (bundle == nullptr)
            return nullptr;
        url.Take();
        info.Take();
        mByPath[inPath] = bundle;
        return bundle;
    }

    void Add(__CFBundle& inBundle)
    {
        std::lock_guard guard(mLock);
        mByPath[inBundle.mPath] = &inBundle;
    }

    void Remove(const __CFBundle& inBundle)
    {
        std::lock_guard guard(mLock);
        auto found = mByPath.find(inBundle.mPath);
        if (found != mByPath.end() && found->second == &inBundle)
            mByPath.erase(found);
    }

    CFBundleRef WithIdentifier(CFStringRef inIdentifier)
    {
        std::lock_guard guard(mLock);
        for (auto& [path, bundle] : mByPath) {
            CFStringRef identifier = bundle->InfoString(cf::bundle::IdentifierKey());
            if (bundle->RetainCount() > 0 && identifier && CFEqual(identifier, inIdentifier))
                return bundle;
        }
        return nullptr;
    }

private:
    std::mutex mLock;
    std::unordered_map<std::string, __CFBundle*> mByPath;
};

Registry& Bundles()
{
    static auto* sRegistry = new Registry;  // never destroyed: bundles may still go at exit
    return *sRegistry;
}

__CFBundle::Layout LayoutOf(const std::string& inPath)
{
    if (cf::bundle::IsFolder(cf::bundle::Join(inPath, "Contents")))
        return __CFBundle::Layout::Contents;
    if (cf::bundle::IsFolder(cf::bundle::Join(inPath, "Resources")))
        return __CFBundle::Layout::TopResources;
    return __CFBundle::Layout::Flat;
}

CFDictionaryRef EmptyDictionary(CFAllocatorRef inAllocator)
{
    return CFDictionaryCreate(inAllocator, nullptr, nullptr, 0, &kCFTypeDictionaryKeyCallBacks,
                              &kCFTypeDictionaryValueCallBacks);
}

const char* LayoutName(__CFBundle::Layout inLayout)
{
    switch (inLayout) {
    case __CFBundle::Layout::Contents:
        return "contents";
    case __CFBundle::Layout::TopResources:
        return "resources at the top";
    case __CFBundle::Layout::Flat:
        break;
    }
    return "flat";
}

}  // namespace

__CFBundle::__CFBundle(Parts inParts, Lifetime inLifetime)
    : Object(cf::kTypeIDBundle, inLifetime), mPath(std::move(inParts.path)), mLayout(inParts.layout), mURL(inParts.url),
      mInfo(inParts.info), mProgram(std::move(inParts.program))
{
}

std::string __CFBundle::SupportPath() const
{
    return mLayout == Layout::Contents ? cf::bundle::Join(mPath, "Contents") : mPath;
}

std::string __CFBundle::ResourcesPath() const
{
    return mLayout == Layout::Flat ? mPath : cf::bundle::Join(SupportPath(), "Resources");
}

CFStringRef __CFBundle::InfoString(CFStringRef inKey) const
{
    CFTypeRef value = CFDictionaryGetValue(mInfo, inKey);
    return value && CFGetTypeID(value) == CFStringGetTypeID() ? static_cast<CFStringRef>(value) : nullptr;
}

CFDictionaryRef __CFBundle::Table(const std::string& inPath) const
{
    std::lock_guard guard(mLock);
    auto [entry, added] = mTables.try_emplace(inPath, nullptr);
    if (added)
        entry->second = cf::bundle::ReadDictionary(Allocator(), inPath);
    return entry->second;
}

bool __CFBundle::Equal(const Object& inOther) const { return mPath == static_cast<const __CFBundle&>(inOther).mPath; }

CFHashCode __CFBundle::Hash() const { return CFHashCode(std::hash<std::string>{}(mPath)); }

std::string __CFBundle::Describe() const
{
    CFStringRef identifier = InfoString(cf::bundle::IdentifierKey());
    std::lock_guard guard(mLock);
    return DescribePrefix() + "{path = " + mPath + ", layout = " + LayoutName(mLayout) +
           ", identifier = " + (identifier ? cf::UTF8(identifier) : "(none)") +
           ", loaded = " + (mCode || !mProgram.empty() ? "yes" : "no") + "}";
}

void __CFBundle::Finalize() noexcept
{
    Bundles().Remove(*this);
    CFRelease(mURL);
    CFRelease(mInfo);
    for (auto& [path, table] : mTables)
        if (table)
            CFRelease(table);
    mTables.clear();
    // Loaded code stays loaded: functions and objects that came from it may outlive the
    // bundle object that loaded them.
}

namespace cf::bundle {

__CFBundle& Bundle(CFBundleRef inBundle, const char* inCall)
{
    return CheckedMutable<__CFBundle>(inBundle, kTypeIDBundle, inCall);
}

__CFBundle::Parts Examine(CFAllocatorRef inAllocator, std::string inPath)
{
    __CFBundle::Parts parts;
    parts.layout = LayoutOf(inPath);
    std::string infoFolder = parts.layout == __CFBundle::Layout::Contents ? Join(inPath, "Contents") : inPath;
    parts.info = ReadDictionary(inAllocator, Join(infoFolder, "Info.plist"));
    if (parts.info == nullptr)
        parts.info = EmptyDictionary(inAllocator);
    parts.url = MakeURL(inAllocator, inPath, true);
    parts.path = std::move(inPath);
    return parts;
}

CFBundleRef FindOrCreate(CFAllocatorRef inAllocator, const std::string& inPath)
{
    return Bundles().FindOrCreate(inAllocator, inPath);
}

void AddPermanent(__CFBundle& inBundle) { Bundles().Add(inBundle); }

}  // namespace cf::bundle

CFTypeID CFBundleGetTypeID() { return cf::kTypeIDBundle; }

CFBundleRef CFBundleCreate(CFAllocatorRef inAllocator, CFURLRef inBundleURL)
{
    if (inBundleURL == nullptr)
        return nullptr;
    std::optional<std::string> path = cf::bundle::PathOf(inBundleURL);
    std::optional<std::string> folder = path ? cf::bundle::Resolved(*path) : std::nullopt;
    if (!folder || !cf::bundle::IsFolder(*folder))
        return nullptr;
    CFBundleGetMainBundle();  // so that the main bundle's folder answers the main bundle
    return cf::bundle::FindOrCreate(inAllocator, *folder);
}

CFBundleRef CFBundleGetBundleWithIdentifier(CFStringRef inBundleID)
{
    if (inBundleID == nullptr)
        return nullptr;
    cf::Checked<cf::Object>(inBundleID, cf::kTypeIDString, "CFBundleGetBundleWithIdentifier");
    CFBundleGetMainBundle();
    return Bundles().WithIdentifier(inBundleID);
}
