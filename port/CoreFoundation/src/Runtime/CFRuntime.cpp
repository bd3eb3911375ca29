// Retain counting, type registry, misuse checks and the live-object count.
#include <CoreFoundation/CFRuntime.h>

#include <array>
#include <cinttypes>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <limits>
#include <mutex>

#include <sys/single_threaded.h>

namespace cf {

namespace {

constexpr CFIndex kDeadRetainCount = std::numeric_limits<CFIndex>::min() / 2;
constexpr std::size_t kMaxTypes = 256;

std::atomic<CFIndex> sLiveObjects{0};

struct TypeRegistry {
    std::mutex lock;
    std::array<std::atomic<const char*>, kMaxTypes> names{};
    CFTypeID next = kFirstRegisteredTypeID;

    TypeRegistry()
    {
        constexpr std::pair<CFTypeID, const char*> builtIn[] = {
            {kTypeIDType, "CFType"},       {kTypeIDAllocator, "CFAllocator"}, {kTypeIDNull, "CFNull"},
            {kTypeIDBoolean, "CFBoolean"}, {kTypeIDNumber, "CFNumber"},       {kTypeIDData, "CFData"},
            {kTypeIDString, "CFString"},   {kTypeIDArray, "CFArray"},         {kTypeIDDictionary, "CFDictionary"},
            {kTypeIDSet, "CFSet"},         {kTypeIDUUID, "CFUUID"},           {kTypeIDURL, "CFURL"},
            {kTypeIDBundle, "CFBundle"},
        };
        for (auto [id, name] : builtIn)
            names[id].store(name, std::memory_order_relaxed);
    }
};

TypeRegistry& Registry()
{
    static TypeRegistry sRegistry;
    return sRegistry;
}

// A locked read-modify-write costs several times what the rest of a retain or release does.
// While the process has one thread no one else can see the count, so plain arithmetic is
// exact; the C library clears the flag in pthread_create, before a second thread exists, and
// thread creation orders our earlier plain stores before anything the new thread reads.
// Answers the count before the change.
CFIndex AddToCount(std::atomic<CFIndex>& ioCount, CFIndex inDelta, std::memory_order inOrder)
{
    if (__libc_single_threaded) {
        CFIndex before = ioCount.load(std::memory_order_relaxed);
        ioCount.store(before + inDelta, std::memory_order_relaxed);
        return before;
    }
    return ioCount.fetch_add(inDelta, inOrder);
}

}  // namespace

// The last release of an object finalises it at once but returns its memory only after a
// few more objects have died on the same thread. Until then the object still says it is
// dead, so one release too many stops the process with a clear message rather than
// corrupting whatever the memory was reused for.
struct Runtime {
    static constexpr std::size_t kQuarantine = 64;

    // Set once this thread's quarantine has been destroyed. Objects that die after that
    // (in another thread-local destructor) are freed at once. A plain bool has no destructor,
    // so it can still be read then.
    static inline thread_local bool tQuarantineGone = false;

    struct Quarantine {
        std::array<Object*, kQuarantine> slots{};
        std::size_t next = 0;

        void Push(Object* inObject)
        {
            Object* evicted = std::exchange(slots[next], inObject);
            next = (next + 1) % kQuarantine;
            if (evicted)
                Free(evicted);
        }

        ~Quarantine()
        {
            tQuarantineGone = true;
            for (Object*& slot : slots)
                if (Object* object = std::exchange(slot, nullptr))
                    Free(object);
        }
    };

    static Quarantine& ThreadQuarantine()
    {
        thread_local Quarantine tQuarantine;
        return tQuarantine;
    }

    static bool HasCountedAllocator(const Object& inObject)
    {
        auto* allocator = static_cast<const Object*>(static_cast<const void*>(inObject.mAllocator));
        return allocator != nullptr && !allocator->mStatic;
    }

    static void Free(Object* inObject)
    {
        CFAllocatorRef allocator = inObject->mAllocator;
        bool counted = HasCountedAllocator(*inObject);
        inObject->~Object();
        FreeObjectMemory(allocator, inObject);
        if (counted)
            CFRelease(allocator);
    }

    static void Die(Object& inObject)
    {
        inObject.mRetainCount.store(kDeadRetainCount, std::memory_order_relaxed);
        inObject.Finalize();
        sLiveObjects.fetch_sub(1, std::memory_order_relaxed);
        // An object from a custom allocator keeps that allocator alive until its memory is
        // returned; holding it in quarantine would keep the allocator (and whatever its
        // context owns) alive for an unpredictable while, so it is freed at once.
        if (HasCountedAllocator(inObject) || tQuarantineGone)
            Free(&inObject);
        else
            ThreadQuarantine().Push(&inObject);
    }

    // These two look at memory that may not hold an object at all, which is exactly what
    // they check; the sanitizer's own type check would stop the process before they can say so.
    __attribute__((no_sanitize("vptr"))) static const Object& Validate(CFTypeRef inRef, const char* inCall)
    {
        if (inRef == nullptr)
            Fatal(inCall, "called with NULL where an object is required");
        const auto& object = *static_cast<const Object*>(inRef);
        if (object.mMagic != Object::kMagic)
            Fatal(inCall, "%p is not an object of the runtime", inRef);
        if (!object.mStatic && object.mRetainCount.load(std::memory_order_relaxed) <= 0)
            Fatal(inCall, "object %p was used after it had been deallocated", inRef);
        return object;
    }

    static void Retain(CFTypeRef inRef)
    {
        const Object& object = Validate(inRef, "CFRetain");
        if (!object.mStatic)
            AddToCount(const_cast<Object&>(object).mRetainCount, 1, std::memory_order_relaxed);
    }

    __attribute__((no_sanitize("vptr"))) static void Release(CFTypeRef inRef)
    {
        if (inRef == nullptr)
            Fatal("CFRelease", "called with NULL");
        auto& object = const_cast<Object&>(*static_cast<const Object*>(inRef));
        if (object.mMagic != Object::kMagic)
            Fatal("CFRelease", "%p is not an object of the runtime", inRef);
        if (object.mStatic)
            return;
        CFIndex before = AddToCount(object.mRetainCount, -1, std::memory_order_acq_rel);
        if (before > 1)
            return;
        if (before < 1) {
            const char* name = ClassName(object.mTypeID);
            Fatal("CFRelease", "%s %p was released more often than it was retained", name ? name : "object", inRef);
        }
        Die(object);
    }

    static bool RetainIfAlive(CFTypeRef inRef)
    {
        if (inRef == nullptr)
            Fatal("CFRetain", "called with NULL where an object is required");
        auto& object = const_cast<Object&>(*static_cast<const Object*>(inRef));
        if (object.mMagic != Object::kMagic)
            Fatal("CFRetain", "%p is not an object of the runtime", inRef);
        if (object.mStatic)
            return true;
        CFIndex count = object.mRetainCount.load(std::memory_order_relaxed);
        while (count > 0)
            if (object.mRetainCount.compare_exchange_weak(count, count + 1, std::memory_order_relaxed))
                return true;
        return false;
    }

    static CFIndex RetainCount(const Object& inObject)
    {
        return inObject.mStatic ? std::numeric_limits<CFIndex>::max()
                                : inObject.mRetainCount.load(std::memory_order_relaxed);
    }

    static void AdoptNew(Object& inObject, CFAllocatorRef inAllocator)
    {
        CFAllocatorRef allocator = inAllocator ? inAllocator : CFAllocatorGetDefault();
        inObject.mAllocator = allocator;
        if (!static_cast<const Object*>(static_cast<const void*>(allocator))->mStatic)
            CFRetain(allocator);
        sLiveObjects.fetch_add(1, std::memory_order_relaxed);
    }
};

CFTypeID RegisterClass(const char* inName)
{
    TypeRegistry& registry = Registry();
    std::lock_guard guard(registry.lock);
    if (registry.next >= kMaxTypes)
        Fatal("_CFRuntimeRegisterClass", "too many classes");
    CFTypeID id = registry.next++;
    registry.names[id].store(inName, std::memory_order_release);
    return id;
}

const char* ClassName(CFTypeID inTypeID)
{
    return inTypeID < kMaxTypes ? Registry().names[inTypeID].load(std::memory_order_acquire) : nullptr;
}

void Fatal(const char* inCall, const char* inFormat, ...)
{
    std::fprintf(stderr, "%s: ", inCall);
    va_list arguments;
    va_start(arguments, inFormat);
    std::vfprintf(stderr, inFormat, arguments);
    va_end(arguments);
    std::fputs("\n", stderr);
    std::fflush(stderr);
    std::abort();
}

const Object& Validate(CFTypeRef inRef, const char* inCall) { return Runtime::Validate(inRef, inCall); }

void AdoptNew(Object& inObject, CFAllocatorRef inAllocator) { Runtime::AdoptNew(inObject, inAllocator); }

bool RetainIfAlive(CFTypeRef inRef) { return Runtime::RetainIfAlive(inRef); }

CFIndex Object::RetainCount() const { return Runtime::RetainCount(*this); }

bool Object::Equal(const Object&) const { return false; }

CFHashCode Object::Hash() const { return CFHashCode(reinterpret_cast<std::uintptr_t>(this)); }

std::string Object::DescribePrefix() const
{
    const char* name = ClassName(mTypeID);
    char text[96];
    std::snprintf(text, sizeof text, "<%s %p [%p]>", name ? name : "CFType", static_cast<const void*>(this),
                  static_cast<const void*>(mAllocator));
    return text;
}

std::string Object::Describe() const { return DescribePrefix(); }

std::string DescribeValue(CFTypeRef inObject)
{
    if (inObject == nullptr)
        return "(null)";
    return Validate(inObject, "CFCopyDescription").Describe();
}

}  // namespace cf

CFTypeRef CFRetain(CFTypeRef inObject)
{
    cf::Runtime::Retain(inObject);
    return inObject;
}

void CFRelease(CFTypeRef inObject) { cf::Runtime::Release(inObject); }

CFIndex CFGetRetainCount(CFTypeRef inObject) { return cf::Validate(inObject, "CFGetRetainCount").RetainCount(); }

CFTypeID CFGetTypeID(CFTypeRef inObject) { return cf::Validate(inObject, "CFGetTypeID").TypeID(); }

CFAllocatorRef CFGetAllocator(CFTypeRef inObject)
{
    const cf::Object& object = cf::Validate(inObject, "CFGetAllocator");
    return object.Allocator() ? object.Allocator() : CFAllocatorGetDefault();
}

CFHashCode CFHash(CFTypeRef inObject) { return cf::Validate(inObject, "CFHash").Hash(); }

Boolean CFEqual(CFTypeRef inObject1, CFTypeRef inObject2)
{
    const cf::Object& first = cf::Validate(inObject1, "CFEqual");
    const cf::Object& second = cf::Validate(inObject2, "CFEqual");
    if (&first == &second)
        return true;
    return first.TypeID() == second.TypeID() && first.Equal(second);
}

CFStringRef CFCopyTypeIDDescription(CFTypeID inTypeID)
{
    const char* name = cf::ClassName(inTypeID);
    return name ? cf::MakeString(name) : nullptr;
}

CFStringRef CFCopyDescription(CFTypeRef inObject)
{
    return cf::MakeString(cf::Validate(inObject, "CFCopyDescription").Describe());
}

void CFShow(CFTypeRef inObject)
{
    std::string text = cf::DescribeValue(inObject);
    std::fprintf(stderr, "%s\n", text.c_str());
}

CFIndex _CFRuntimeGetLiveObjectCount() { return cf::sLiveObjects.load(std::memory_order_relaxed); }
