// Allocators: the system's (malloc), the null allocator, and allocators made from a context.
#include <CoreFoundation/CFRuntime.h>

#include <cstdio>
#include <cstdlib>

struct __CFAllocator final : cf::Object {
    CFAllocatorContext mContext;

    constexpr explicit __CFAllocator(const CFAllocatorContext& inContext, Lifetime inLifetime = Lifetime::Static)
        : Object(cf::kTypeIDAllocator, inLifetime), mContext(inContext)
    {
    }

    __CFAllocator(const CFAllocatorContext& inContext, int) : __CFAllocator(inContext, Lifetime::Counted)
    {
        if (mContext.retain && mContext.info)
            mContext.info = const_cast<void*>(mContext.retain(mContext.info));
    }

    void Finalize() noexcept override
    {
        if (mContext.release && mContext.info)
            mContext.release(mContext.info);
    }

    std::string Describe() const override
    {
        if (this == kCFAllocatorSystemDefault)
            return DescribePrefix() + "{system default}";
        if (this == kCFAllocatorNull)
            return DescribePrefix() + "{null}";
        if (this == kCFAllocatorMalloc)
            return DescribePrefix() + "{malloc}";
        return DescribePrefix() + "{custom}";
    }
};

namespace {

void* MallocAllocate(CFIndex inSize, CFOptionFlags, void*)
{
    return inSize > 0 ? std::malloc(size_t(inSize)) : nullptr;
}
void* MallocReallocate(void* inPtr, CFIndex inNewSize, CFOptionFlags, void*)
{
    return std::realloc(inPtr, size_t(inNewSize));
}
void MallocDeallocate(void* inPtr, void*) { std::free(inPtr); }
void* NullAllocate(CFIndex, CFOptionFlags, void*) { return nullptr; }
void* NullReallocate(void*, CFIndex, CFOptionFlags, void*) { return nullptr; }
void NullDeallocate(void*, void*) {}

constexpr CFAllocatorContext kMallocContext{
    0, nullptr, nullptr, nullptr, nullptr, MallocAllocate, MallocReallocate, MallocDeallocate, nullptr};
constexpr CFAllocatorContext kNullContext{
    0, nullptr, nullptr, nullptr, nullptr, NullAllocate, NullReallocate, NullDeallocate, nullptr};

constinit __CFAllocator sSystemDefault{kMallocContext};
constinit __CFAllocator sMalloc{kMallocContext};
constinit __CFAllocator sNull{kNullContext};

const __CFAllocator& Resolve(CFAllocatorRef inAllocator, const char* inCall)
{
    if (inAllocator == nullptr)
        return sSystemDefault;
    return cf::Checked<__CFAllocator>(inAllocator, cf::kTypeIDAllocator, inCall);
}

}  // namespace

constinit const CFAllocatorRef kCFAllocatorDefault = nullptr;
constinit const CFAllocatorRef kCFAllocatorSystemDefault = &sSystemDefault;
constinit const CFAllocatorRef kCFAllocatorMalloc = &sMalloc;
constinit const CFAllocatorRef kCFAllocatorNull = &sNull;

namespace cf {

void* AllocateObjectMemory(CFAllocatorRef inAllocator, std::size_t inSize)
{
    const __CFAllocator& allocator = Resolve(inAllocator, "CFAllocatorAllocate");
    if (allocator.mContext.allocate == nullptr)
        return nullptr;
    return allocator.mContext.allocate(CFIndex(inSize), 0, allocator.mContext.info);
}

void FreeObjectMemory(CFAllocatorRef inAllocator, void* inMemory)
{
    const __CFAllocator& allocator = Resolve(inAllocator, "CFAllocatorDeallocate");
    if (allocator.mContext.deallocate)
        allocator.mContext.deallocate(inMemory, allocator.mContext.info);
}

}  // namespace cf

CFTypeID CFAllocatorGetTypeID() { return cf::kTypeIDAllocator; }

CFAllocatorRef CFAllocatorGetDefault() { return &sSystemDefault; }

CFAllocatorRef CFAllocatorCreate(CFAllocatorRef inAllocator, CFAllocatorContext* inContext)
{
    if (inContext == nullptr || inContext->allocate == nullptr)
        return nullptr;
    return cf::Create<__CFAllocator>(inAllocator, *inContext, 0);
}

void* CFAllocatorAllocate(CFAllocatorRef inAllocator, CFIndex inSize, CFOptionFlags inHint)
{
    const __CFAllocator& allocator = Resolve(inAllocator, "CFAllocatorAllocate");
    if (inSize <= 0 || allocator.mContext.allocate == nullptr)
        return nullptr;
    return allocator.mContext.allocate(inSize, inHint, allocator.mContext.info);
}

void* CFAllocatorReallocate(CFAllocatorRef inAllocator, void* inPtr, CFIndex inNewSize, CFOptionFlags inHint)
{
    const __CFAllocator& allocator = Resolve(inAllocator, "CFAllocatorReallocate");
    if (inPtr == nullptr)
        return CFAllocatorAllocate(inAllocator, inNewSize, inHint);
    if (inNewSize <= 0) {
        CFAllocatorDeallocate(inAllocator, inPtr);
        return nullptr;
    }
    if (allocator.mContext.reallocate == nullptr)
        return nullptr;
    return allocator.mContext.reallocate(inPtr, inNewSize, inHint, allocator.mContext.info);
}

void CFAllocatorDeallocate(CFAllocatorRef inAllocator, void* inPtr)
{
    if (inPtr != nullptr)
        cf::FreeObjectMemory(inAllocator, inPtr);
}

void CFAllocatorGetContext(CFAllocatorRef inAllocator, CFAllocatorContext* outContext)
{
    if (outContext != nullptr)
        *outContext = Resolve(inAllocator, "CFAllocatorGetContext").mContext;
}

// The null object lives here too: like the allocators it is built at load time.
struct __CFNull final : cf::Object {
    constexpr __CFNull() : Object(cf::kTypeIDNull, Lifetime::Static) {}
    std::string Describe() const override { return DescribePrefix() + "{}"; }
};

namespace {
constinit __CFNull sNullObject;
}

constinit const CFNullRef kCFNull = &sNullObject;

CFTypeID CFNullGetTypeID() { return cf::kTypeIDNull; }
