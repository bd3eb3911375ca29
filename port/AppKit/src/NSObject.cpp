// The root class: selector dispatch, retain counting through the runtime, autorelease pools
// and the registry of classes that loaded code provides.
#include <AppKit/NSLog.h>
#include <AppKit/NSObject.h>

#include <cstdio>
#include <cstring>
#include <map>
#include <mutex>

bool SEL::operator==(const SEL& inOther) const
{
    if (name == nullptr || inOther.name == nullptr)
        return name == inOther.name;
    return std::strcmp(name, inOther.name) == 0;
}

NSSelectorTable::NSSelectorTable(const NSSelectorTable* inSuperclass,
                                 std::vector<std::pair<std::string_view, Method>> inMethods)
    : mSuperclass(inSuperclass), mMethods(std::move(inMethods))
{
}

const NSSelectorTable::Method* NSSelectorTable::Find(std::string_view inName) const
{
    for (const auto& [name, method] : mMethods)
        if (name == inName)
            return &method;
    return mSuperclass ? mSuperclass->Find(inName) : nullptr;
}

CFTypeID NSObject::TypeID()
{
    static const CFTypeID sTypeID = cf::RegisterClass("NSObject");
    return sTypeID;
}

NSObject::NSObject() : cf::Object(TypeID()) {}

NSObject::NSObject(Lifetime inLifetime) : cf::Object(TypeID(), inLifetime) {}

id NSObject::retain()
{
    CFRetain(this);
    return this;
}

void NSObject::release() { CFRelease(this); }

id NSObject::autorelease()
{
    NSAutoreleasePool::addObject(this);
    return this;
}

const NSSelectorTable& NSObject::selectors() const
{
    static const NSSelectorTable sTable(nullptr, {});
    return sTable;
}

BOOL NSObject::respondsToSelector(SEL inSelector) const
{
    return inSelector && selectors().Find(inSelector.name) != nullptr;
}

BOOL NSObject::performSelector(SEL inSelector, id inArgument)
{
    const NSSelectorTable::Method* method = inSelector ? selectors().Find(inSelector.name) : nullptr;
    if (method == nullptr) {
        NSLog(NSSTR("-[%s %s]: unrecognized selector sent to instance %p"), className(),
              inSelector ? inSelector.name : "(null)", static_cast<void*>(this));
        return NO;
    }
    return (*method)(*this, inArgument);
}

std::string NSObject::Describe() const { return "<" + std::string(className()) + ": " + DescribePrefix() + ">"; }

namespace {

thread_local NSAutoreleasePool* tInnermostPool = nullptr;

struct ClassRegistry {
    std::mutex lock;
    std::map<std::string, NSClassFactory, std::less<>> factories;
};

ClassRegistry& Classes()
{
    static ClassRegistry sRegistry;
    return sRegistry;
}

}  // namespace

NSAutoreleasePool::NSAutoreleasePool() : mOuter(std::exchange(tInnermostPool, this)) {}

NSAutoreleasePool::~NSAutoreleasePool()
{
    drain();
    tInnermostPool = mOuter;
}

void NSAutoreleasePool::drain()
{
    // Releasing may autorelease more objects into this pool; keep going until it is empty.
    while (!mObjects.empty()) {
        std::vector<CFTypeRef> objects = std::exchange(mObjects, {});
        for (CFTypeRef object : objects)
            CFRelease(object);
    }
}

void NSAutoreleasePool::addObject(CFTypeRef inObject)
{
    if (tInnermostPool == nullptr) {
        std::fprintf(stderr, "*** %s autoreleased with no pool in place - just leaking\n",
                     cf::DescribeValue(inObject).c_str());
        return;
    }
    tInnermostPool->mObjects.push_back(inObject);
}

void NSRegisterClass(const char* inName, NSClassFactory inFactory)
{
    ClassRegistry& registry = Classes();
    std::lock_guard guard(registry.lock);
    registry.factories[inName] = inFactory;
}

id NSCreateObjectOfClassNamed(std::string_view inName)
{
    ClassRegistry& registry = Classes();
    std::lock_guard guard(registry.lock);
    auto found = registry.factories.find(inName);
    return found == registry.factories.end() ? nullptr : found->second();
}
