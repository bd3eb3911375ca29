// The runtime under every object: the base class that the port's libraries derive their
// object types from, type registration, checked casts and the live-object count.
#pragma once

#include <CoreFoundation/CFBase.h>

#include <atomic>
#include <new>
#include <string>
#include <string_view>
#include <utility>

namespace cf {

// The runtime's own classes have fixed identifiers, so that objects built at load time
// (booleans, the null object, constant strings, allocators) carry them before any code runs.
// Other libraries register theirs on first use.
enum BuiltInTypeID : CFTypeID {
    kTypeIDNotAType = 0,
    kTypeIDType,
    kTypeIDAllocator,
    kTypeIDNull,
    kTypeIDBoolean,
    kTypeIDNumber,
    kTypeIDData,
    kTypeIDString,
    kTypeIDArray,
    kTypeIDDictionary,
    kTypeIDSet,
    kTypeIDUUID,
    kTypeIDURL,
    kTypeIDBundle,
    kFirstRegisteredTypeID = 32,
};

// Registers a class by name and answers its new identifier. Safe from any thread.
CFTypeID RegisterClass(const char* inName);
// The registered name of a type, or nullptr for an identifier nobody registered.
const char* ClassName(CFTypeID inTypeID);

class Object {
public:
    // Static objects (constants built at load time) ignore retain and release.
    enum class Lifetime { Counted, Static };

    Object(const Object&) = delete;
    Object& operator=(const Object&) = delete;

    CFTypeID TypeID() const { return mTypeID; }
    CFAllocatorRef Allocator() const { return mAllocator; }
    bool IsStatic() const { return mStatic; }
    CFIndex RetainCount() const;

    // Called only with an object of the same type that is not this one.
    virtual bool Equal(const Object& inOther) const;
    virtual CFHashCode Hash() const;
    // The UTF-8 text that CFCopyDescription answers.
    virtual std::string Describe() const;
    // Whether what the object holds can no longer change: it is not mutable, and it keeps alive
    // every object it refers to. Such an object may be handed out where a copy is asked for.
    virtual bool IsFixed() const { return true; }

protected:
    constexpr explicit Object(CFTypeID inTypeID, Lifetime inLifetime = Lifetime::Counted)
        : mStatic(inLifetime == Lifetime::Static), mTypeID(inTypeID)
    {
    }
    virtual ~Object() = default;

    // Gives back what the object holds (contained references, buffers) when its last
    // reference goes. The memory itself is returned a little later, so that a stray extra
    // release is still recognised as one.
    virtual void Finalize() noexcept {}

    // "<CFArray 0x1234 [0x5678]>": the prefix every description starts with.
    std::string DescribePrefix() const;

private:
    friend struct Runtime;

    static constexpr UInt32 kMagic = 0x43466f62;  // "CFob"

    UInt32 mMagic = kMagic;
    bool mStatic;
    std::atomic<CFIndex> mRetainCount{1};
    CFTypeID mTypeID;
    CFAllocatorRef mAllocator = nullptr;
};

// Stops the process with a message that names the call; used for misuse that would
// otherwise be undefined behaviour (NULL where an object is required, a wrong type,
// a release too many, changing an immutable object).
[[noreturn]] void Fatal(const char* inCall, const char* inFormat, ...) __attribute__((format(printf, 2, 3)));

// The object behind a reference, after checking that it is one of ours and alive.
const Object& Validate(CFTypeRef inRef, const char* inCall);

// The object behind a reference as its concrete class, after checking its type.
template <class T>
const T& Checked(CFTypeRef inRef, CFTypeID inTypeID, const char* inCall)
{
    const Object& object = Validate(inRef, inCall);
    if (object.TypeID() != inTypeID) {
        const char* expected = ClassName(inTypeID);
        const char* actual = ClassName(object.TypeID());
        Fatal(inCall, "expected a %s, got a %s (%p)", expected ? expected : "?", actual ? actual : "?", inRef);
    }
    return static_cast<const T&>(object);
}

template <class T>
T& CheckedMutable(CFTypeRef inRef, CFTypeID inTypeID, const char* inCall)
{
    return const_cast<T&>(Checked<T>(inRef, inTypeID, inCall));
}

// Takes a reference on an object that a table of the caller's holds without owning it, unless
// its last reference is already gone (it is then being finalised and about to leave the
// table). The caller's lock must be the one the object's Finalize takes to leave the table.
bool RetainIfAlive(CFTypeRef inRef);

// Memory for a new object from an allocator (NULL means the default), or nullptr when the
// allocator refuses. AdoptNew then makes the constructed object live with a count of one.
void* AllocateObjectMemory(CFAllocatorRef inAllocator, std::size_t inSize);
void FreeObjectMemory(CFAllocatorRef inAllocator, void* inMemory);
void AdoptNew(Object& inObject, CFAllocatorRef inAllocator);

// Builds an object of class T in memory from inAllocator; nullptr when there is no memory.
template <class T, class... Args>
T* Create(CFAllocatorRef inAllocator, Args&&... inArgs) noexcept
{
    void* memory = AllocateObjectMemory(inAllocator, sizeof(T));
    if (memory == nullptr)
        return nullptr;
    try {
        T* object = new (memory) T(std::forward<Args>(inArgs)...);
        AdoptNew(*object, inAllocator);
        return object;
    } catch (const std::bad_alloc&) {
        FreeObjectMemory(inAllocator, memory);
        return nullptr;
    }
}

// Text bridges used by descriptions; implemented with the string class.
CFStringRef MakeString(std::string_view inUTF8);
std::string UTF8(CFStringRef inString);
std::string DescribeValue(CFTypeRef inObject);  // "(null)" for NULL

}  // namespace cf

// The number of counted objects alive in the process. Tests compare it before and after,
// so that every test notices an object it leaked.
CFIndex _CFRuntimeGetLiveObjectCount();
