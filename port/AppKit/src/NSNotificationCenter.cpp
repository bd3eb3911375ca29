// The notification centre: observers by name and object, delivered in the order they were added.
#include <AppKit/NSNotificationCenter.h>

#include <algorithm>

NSNotification::NSNotification(NSString* inName, id inObject) : mName(inName), mObject(inObject)
{
    if (mName)
        CFRetain(mName->CFString());
    if (mObject)
        mObject->retain();
}

void NSNotification::Finalize() noexcept
{
    if (mName)
        CFRelease(mName->CFString());
    if (mObject)
        mObject->release();
}

NSNotificationCenter::NSNotificationCenter(Lifetime inLifetime) : NSObject(inLifetime) {}

NSNotificationCenter* NSNotificationCenter::defaultCenter()
{
    static NSNotificationCenter* sCenter = new NSNotificationCenter(Lifetime::Static);
    return sCenter;
}

void NSNotificationCenter::addObserverSelectorNameObject(id inObserver, SEL inSelector, NSString* inName, id inObject)
{
    if (inObserver == nullptr || !inSelector)
        return;
    if (inName)
        CFRetain(inName->CFString());
    mObservations.push_back({inObserver, inSelector, inName, inObject});
}

void NSNotificationCenter::removeObserver(id inObserver)
{
    auto removed = std::remove_if(mObservations.begin(), mObservations.end(),
                                  [&](const Observation& inEntry) { return inEntry.observer == inObserver; });
    for (auto entry = removed; entry != mObservations.end(); ++entry)
        if (entry->name)
            CFRelease(entry->name->CFString());
    mObservations.erase(removed, mObservations.end());
}

void NSNotificationCenter::postNotificationNameObject(NSString* inName, id inObject)
{
    NSNotification* notification = NSNew<NSNotification>(inName, inObject);
    // Observers may add or remove observations while they are called: deliver to those that
    // were registered when the notification was posted and are still registered.
    std::vector<Observation> matching;
    for (const Observation& entry : mObservations)
        if ((entry.name == nullptr || (inName && entry.name->isEqualToString(inName))) &&
            (entry.object == nullptr || entry.object == inObject))
            matching.push_back(entry);
    for (const Observation& entry : matching) {
        bool stillThere = std::any_of(mObservations.begin(), mObservations.end(), [&](const Observation& inNow) {
            return inNow.observer == entry.observer && inNow.selector == entry.selector;
        });
        if (stillThere)
            entry.observer->performSelector(entry.selector, notification);
    }
    notification->release();
}
