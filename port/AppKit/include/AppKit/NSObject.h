// The root of the framework's classes: reference-counted objects of the object runtime that
// answer messages named by selectors, and the autorelease pool that holds the objects that
// convenience constructors hand out.
#pragma once

#include <CoreFoundation/CFRuntime.h>

#include <functional>
#include <string>
#include <string_view>
#include <vector>

using BOOL = signed char;
inline constexpr BOOL YES = 1;
inline constexpr BOOL NO = 0;

class NSObject;
using id = NSObject*;
using NSTimeInterval = double;
using NSInteger = long;

// A selector is the name of a message, "toggleFBAHelper:" for a message with one argument.
struct SEL {
    const char* name = nullptr;

    constexpr SEL() = default;
    constexpr explicit SEL(const char* inName) : name(inName) {}
    explicit operator bool() const { return name != nullptr; }
    bool operator==(const SEL& inOther) const;
};

inline SEL NSSelectorFromString(const char* inName) { return SEL(inName); }

// The selectors a class answers. Every selector takes one object argument (the sender, the
// notification or the timer) and may answer a BOOL; a message without result answers NO.
class NSSelectorTable {
public:
    using Method = std::function<BOOL(NSObject&, id)>;

    NSSelectorTable(const NSSelectorTable* inSuperclass, std::vector<std::pair<std::string_view, Method>> inMethods);

    template <class T, class R>
    static std::pair<std::string_view, Method> Entry(std::string_view inName, R (T::*inMethod)(id))
    {
        return {inName, [inMethod](NSObject& inTarget, id inArgument) -> BOOL {
                    if constexpr (std::is_void_v<R>) {
                        (static_cast<T&>(inTarget).*inMethod)(inArgument);
                        return NO;
                    } else {
                        return static_cast<BOOL>((static_cast<T&>(inTarget).*inMethod)(inArgument));
                    }
                }};
    }

    // The method for a selector, looked for in this class and then its superclasses.
    const Method* Find(std::string_view inName) const;

private:
    const NSSelectorTable* mSuperclass;
    std::vector<std::pair<std::string_view, Method>> mMethods;
};

class NSObject : public cf::Object {
public:
    // The runtime type every framework object carries.
    static CFTypeID TypeID();

    id retain();
    void release();
    // Hands the object to the innermost autorelease pool of the thread, which releases it
    // when it is drained.
    id autorelease();
    CFIndex retainCount() const { return RetainCount(); }

    // The class's name as the framework names it ("NSButton", "KestrelPrefPane").
    virtual const char* className() const = 0;
    virtual const NSSelectorTable& selectors() const;

    BOOL respondsToSelector(SEL inSelector) const;
    // Sends the message named by inSelector. A selector the class does not answer is
    // reported on standard error by name, as the runtime reports an unrecognised selector,
    // and answers NO.
    BOOL performSelector(SEL inSelector, id inArgument);

    std::string Describe() const override;

protected:
    NSObject();
    // Objects that live as long as the process (shared instances) are static: retain and
    // release leave them alone and they are not counted as live objects.
    explicit NSObject(Lifetime inLifetime);
    ~NSObject() override = default;
    // Subclasses give back what they hold here rather than in their destructor, while the
    // object can still be used.
    void Finalize() noexcept override {}
};

// Makes a framework object with a reference count of one that the caller owns.
template <class T, class... Args>
T* NSNew(Args&&... inArgs)
{
    return cf::Create<T>(nullptr, std::forward<Args>(inArgs)...);
}

// Autorelease pools nest per thread; objects autoreleased while no pool exists are leaked
// and reported, as on the platform.
class NSAutoreleasePool final {
public:
    NSAutoreleasePool();
    ~NSAutoreleasePool();
    NSAutoreleasePool(const NSAutoreleasePool&) = delete;
    NSAutoreleasePool& operator=(const NSAutoreleasePool&) = delete;

    // Releases what the pool holds now; the pool stays in place.
    void drain();
    static void addObject(CFTypeRef inObject);

private:
    std::vector<CFTypeRef> mObjects;
    NSAutoreleasePool* mOuter;
};

// Classes that a loaded bundle provides, found by name (NSPrincipalClass).
using NSClassFactory = id (*)();
void NSRegisterClass(const char* inName, NSClassFactory inFactory);
// A new object (owned by the caller) of the class with that name, or nil when no loaded code
// registered it.
id NSCreateObjectOfClassNamed(std::string_view inName);

// Registers T under inName for as long as the code that holds it is loaded.
template <class T>
struct NSClassRegistration {
    explicit NSClassRegistration(const char* inName)
    {
        NSRegisterClass(inName, [] { return static_cast<id>(NSNew<T>()); });
    }
};
