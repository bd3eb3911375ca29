// What a run loop holds in which mode: adding and removing timers and sources, common
// modes, and taking invalidated items out again.
#include "CFRunLoopObject.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace {

// What a mode holds, chosen by the kind of item.
template <class M>
auto& Items(M& inMode, const __CFRunLoopSource*)
{
    return inMode.sources;
}
template <class M>
auto& Items(M& inMode, const __CFRunLoopTimer*)
{
    return inMode.timers;
}

template <class Item>
bool Has(const std::vector<Item*>& inItems, const Item* inItem)
{
    return std::find(inItems.begin(), inItems.end(), inItem) != inItems.end();
}

template <class Item>
bool Erase(std::vector<Item*>& ioItems, Item* inItem, cf::AfterUnlock& ioAfter)
{
    auto found = std::find(ioItems.begin(), ioItems.end(), inItem);
    if (found == ioItems.end())
        return false;
    ioItems.erase(found);
    ioAfter.Release(inItem);
    return true;
}

// A source may sit in several run loops; a timer in one only.
bool Accepts(const __CFRunLoop*, const __CFRunLoopSource* inSource) { return inSource->mValid; }
bool Accepts(const __CFRunLoop* inLoop, const __CFRunLoopTimer* inTimer)
{
    return inTimer->mValid && (inTimer->mRunLoop == nullptr || inTimer->mRunLoop == inLoop);
}

void Attach(__CFRunLoop* inLoop, __CFRunLoopSource* inSource)
{
    if (!Has(inSource->mRunLoops, inLoop))
        inSource->mRunLoops.push_back(inLoop);
}
void Attach(__CFRunLoop* inLoop, __CFRunLoopTimer* inTimer) { inTimer->mRunLoop = inLoop; }

void Detach(__CFRunLoop* inLoop, __CFRunLoopSource* inSource) { std::erase(inSource->mRunLoops, inLoop); }
void Detach(__CFRunLoop* inLoop, __CFRunLoopTimer* inTimer)
{
    if (inTimer->mRunLoop == inLoop)
        inTimer->mRunLoop = nullptr;
}

// Sources hear when they join or leave a mode, once the lock is let go.
void Notify(cf::AfterUnlock& ioAfter, __CFRunLoop* inLoop, __CFRunLoopSource* inSource, std::string_view inMode,
            bool inJoined)
{
    CFRetain(inSource);
    ioAfter.Call([inLoop, inSource, mode = std::string(inMode), inJoined] {
        if (inJoined)
            inSource->Scheduled(inLoop, mode);
        else
            inSource->Cancelled(inLoop, mode);
    });
    ioAfter.Release(inSource);
}
void Notify(cf::AfterUnlock&, __CFRunLoop*, __CFRunLoopTimer*, std::string_view, bool) {}

// Runs inWork under the lock, then what it put off.
template <class Work>
auto Locked(Work&& inWork)
{
    cf::AfterUnlock after;
    std::lock_guard guard(cf::RunLoopLock());
    return inWork(after);
}

}  // namespace

bool __CFRunLoop::IsEmpty(std::string_view inMode) const
{
    auto mode = mModes.find(inMode);
    return mode == mModes.end() || (mode->second.sources.empty() && mode->second.timers.empty());
}

template <class Item>
bool __CFRunLoop::Contains(Item* inItem, std::string_view inMode) const
{
    if (inMode == cf::kCommonModesName)
        return Has(Items(mCommonItems, inItem), inItem);
    auto mode = mModes.find(inMode);
    return mode != mModes.end() && Has(Items(mode->second, inItem), inItem);
}

template <class Item>
void __CFRunLoop::Add(Item* inItem, std::string_view inMode, cf::AfterUnlock& ioAfter)
{
    if (!Accepts(this, inItem))
        return;
    if (inMode == cf::kCommonModesName) {
        auto& common = Items(mCommonItems, inItem);
        if (Has(common, inItem))
            return;
        CFRetain(inItem);
        common.push_back(inItem);
        Attach(this, inItem);
        for (const std::string& mode : mCommonModes)
            AddToMode(inItem, mode, ioAfter);
    } else {
        AddToMode(inItem, inMode, ioAfter);
    }
    Resync();
}

template <class Item>
void __CFRunLoop::AddToMode(Item* inItem, std::string_view inMode, cf::AfterUnlock& ioAfter)
{
    auto& items = Items(mModes.try_emplace(std::string(inMode)).first->second, inItem);
    if (Has(items, inItem))
        return;
    CFRetain(inItem);
    items.push_back(inItem);
    Attach(this, inItem);
    Notify(ioAfter, this, inItem, inMode, true);
}

template <class Item>
void __CFRunLoop::Remove(Item* inItem, std::string_view inMode, cf::AfterUnlock& ioAfter)
{
    if (inMode == cf::kCommonModesName) {
        if (!Erase(Items(mCommonItems, inItem), inItem, ioAfter))
            return;
        for (const std::string& mode : mCommonModes)
            RemoveFromMode(inItem, mode, ioAfter);
    } else if (!RemoveFromMode(inItem, inMode, ioAfter)) {
        return;
    }
    if (!Holds(inItem))
        Detach(this, inItem);
    Resync();
}

template <class Item>
bool __CFRunLoop::RemoveFromMode(Item* inItem, std::string_view inMode, cf::AfterUnlock& ioAfter)
{
    auto mode = mModes.find(inMode);
    if (mode == mModes.end() || !Erase(Items(mode->second, inItem), inItem, ioAfter))
        return false;
    Notify(ioAfter, this, inItem, inMode, false);
    return true;
}

template <class Item>
bool __CFRunLoop::Holds(Item* inItem) const
{
    return Has(Items(mCommonItems, inItem), inItem) ||
           std::any_of(mModes.begin(), mModes.end(),
                       [inItem](const auto& inEntry) { return Has(Items(inEntry.second, inItem), inItem); });
}

template <class Item>
void __CFRunLoop::Purge(Item* inItem, cf::AfterUnlock& ioAfter)
{
    Erase(Items(mCommonItems, inItem), inItem, ioAfter);
    for (auto& [name, mode] : mModes)
        if (Erase(Items(mode, inItem), inItem, ioAfter))
            Notify(ioAfter, this, inItem, name, false);
    Detach(this, inItem);
    Resync();
}

void __CFRunLoop::AddCommonMode(std::string_view inMode, cf::AfterUnlock& ioAfter)
{
    if (inMode == cf::kCommonModesName || !mCommonModes.emplace(inMode).second)
        return;
    for (__CFRunLoopSource* source : mCommonItems.sources)
        AddToMode(source, inMode, ioAfter);
    for (__CFRunLoopTimer* timer : mCommonItems.timers)
        AddToMode(timer, inMode, ioAfter);
    Resync();
}

void __CFRunLoop::TearDown(cf::AfterUnlock& ioAfter, bool inNotify)
{
    for (auto& [name, mode] : mModes) {
        for (__CFRunLoopSource* source : mode.sources) {
            if (inNotify)
                Notify(ioAfter, this, source, name, false);
            Detach(this, source);
            ioAfter.Release(source);
        }
        for (__CFRunLoopTimer* timer : mode.timers) {
            Detach(this, timer);
            ioAfter.Release(timer);
        }
    }
    for (__CFRunLoopSource* source : mCommonItems.sources) {
        Detach(this, source);
        ioAfter.Release(source);
    }
    for (__CFRunLoopTimer* timer : mCommonItems.timers) {
        Detach(this, timer);
        ioAfter.Release(timer);
    }
    mModes.clear();
    mCommonItems = {};
    if (mEpoll)
        Resync();
}

namespace cf {

void ResyncRunLoopsOf(const __CFRunLoopSource& inSource)
{
    for (__CFRunLoop* loop : inSource.mRunLoops)
        loop->Resync();
}

void InvalidateSource(__CFRunLoopSource& inSource, AfterUnlock& ioAfter)
{
    if (!inSource.mValid)
        return;
    inSource.mValid = false;
    for (__CFRunLoop* loop : std::vector(inSource.mRunLoops))
        loop->Purge(&inSource, ioAfter);
}

void InvalidateTimer(__CFRunLoopTimer& inTimer, AfterUnlock& ioAfter)
{
    if (!inTimer.mValid)
        return;
    inTimer.mValid = false;
    if (inTimer.mRunLoop)
        inTimer.mRunLoop->Purge(&inTimer, ioAfter);
}

}  // namespace cf

void CFRunLoopAddCommonMode(CFRunLoopRef inRunLoop, CFStringRef inMode)
{
    __CFRunLoop& loop = cf::RunLoop(inRunLoop, "CFRunLoopAddCommonMode");
    std::string mode = cf::ModeName(inMode, "CFRunLoopAddCommonMode");
    Locked([&](cf::AfterUnlock& ioAfter) { loop.AddCommonMode(mode, ioAfter); });
}

CFAbsoluteTime CFRunLoopGetNextTimerFireDate(CFRunLoopRef inRunLoop, CFStringRef inMode)
{
    __CFRunLoop& loop = cf::RunLoop(inRunLoop, "CFRunLoopGetNextTimerFireDate");
    std::string name = cf::ModeName(inMode, "CFRunLoopGetNextTimerFireDate");
    std::lock_guard guard(cf::RunLoopLock());
    CFAbsoluteTime next = std::numeric_limits<double>::infinity();
    if (auto mode = loop.mModes.find(name); mode != loop.mModes.end())
        for (const __CFRunLoopTimer* timer : mode->second.timers)
            if (timer->mValid)
                next = std::min(next, timer->mFireDate);
    return std::isfinite(next) ? next : 0;
}

Boolean CFRunLoopContainsSource(CFRunLoopRef inRunLoop, CFRunLoopSourceRef inSource, CFStringRef inMode)
{
    __CFRunLoop& loop = cf::RunLoop(inRunLoop, "CFRunLoopContainsSource");
    __CFRunLoopSource& source = cf::Source(inSource, "CFRunLoopContainsSource");
    std::string mode = cf::ModeName(inMode, "CFRunLoopContainsSource");
    std::lock_guard guard(cf::RunLoopLock());
    return loop.Contains(&source, mode);
}

void CFRunLoopAddSource(CFRunLoopRef inRunLoop, CFRunLoopSourceRef inSource, CFStringRef inMode)
{
    __CFRunLoop& loop = cf::RunLoop(inRunLoop, "CFRunLoopAddSource");
    __CFRunLoopSource& source = cf::Source(inSource, "CFRunLoopAddSource");
    std::string mode = cf::ModeName(inMode, "CFRunLoopAddSource");
    Locked([&](cf::AfterUnlock& ioAfter) { loop.Add(&source, mode, ioAfter); });
}

void CFRunLoopRemoveSource(CFRunLoopRef inRunLoop, CFRunLoopSourceRef inSource, CFStringRef inMode)
{
    __CFRunLoop& loop = cf::RunLoop(inRunLoop, "CFRunLoopRemoveSource");
    __CFRunLoopSource& source = cf::Source(inSource, "CFRunLoopRemoveSource");
    std::string mode = cf::ModeName(inMode, "CFRunLoopRemoveSource");
    Locked([&](cf::AfterUnlock& ioAfter) { loop.Remove(&source, mode, ioAfter); });
}

Boolean CFRunLoopContainsTimer(CFRunLoopRef inRunLoop, CFRunLoopTimerRef inTimer, CFStringRef inMode)
{
    __CFRunLoop& loop = cf::RunLoop(inRunLoop, "CFRunLoopContainsTimer");
    __CFRunLoopTimer& timer = cf::Timer(inTimer, "CFRunLoopContainsTimer");
    std::string mode = cf::ModeName(inMode, "CFRunLoopContainsTimer");
    std::lock_guard guard(cf::RunLoopLock());
    return loop.Contains(&timer, mode);
}

void CFRunLoopAddTimer(CFRunLoopRef inRunLoop, CFRunLoopTimerRef inTimer, CFStringRef inMode)
{
    __CFRunLoop& loop = cf::RunLoop(inRunLoop, "CFRunLoopAddTimer");
    __CFRunLoopTimer& timer = cf::Timer(inTimer, "CFRunLoopAddTimer");
    std::string mode = cf::ModeName(inMode, "CFRunLoopAddTimer");
    Locked([&](cf::AfterUnlock& ioAfter) { loop.Add(&timer, mode, ioAfter); });
}

void CFRunLoopRemoveTimer(CFRunLoopRef inRunLoop, CFRunLoopTimerRef inTimer, CFStringRef inMode)
{
    __CFRunLoop& loop = cf::RunLoop(inRunLoop, "CFRunLoopRemoveTimer");
    __CFRunLoopTimer& timer = cf::Timer(inTimer, "CFRunLoopRemoveTimer");
    std::string mode = cf::ModeName(inMode, "CFRunLoopRemoveTimer");
    Locked([&](cf::AfterUnlock& ioAfter) { loop.Remove(&timer, mode, ioAfter); });
}
