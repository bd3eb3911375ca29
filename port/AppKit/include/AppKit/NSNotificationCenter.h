// Notifications posted by name and delivered to observers by selector. The centre does not
// retain its observers: an observer removes itself before it goes.
#pragma once

#include <AppKit/NSString.h>

#include <vector>

class NSNotification final : public NSObject {
public:
    NSNotification(NSString* inName, id inObject);

    NSString* name() const { return mName; }
    id object() const { return mObject; }
    const char* className() const override { return "NSNotification"; }

protected:
    void Finalize() noexcept override;

private:
    NSString* mName;
    id mObject;
};

class NSNotificationCenter final : public NSObject {
public:
    explicit NSNotificationCenter(Lifetime inLifetime = Lifetime::Counted);

    static NSNotificationCenter* defaultCenter();

    // A nil name means every notification, a nil object notifications from any object.
    void addObserverSelectorNameObject(id inObserver, SEL inSelector, NSString* inName, id inObject);
    void removeObserver(id inObserver);
    void postNotificationNameObject(NSString* inName, id inObject);

    const char* className() const override { return "NSNotificationCenter"; }

private:
    struct Observation {
        id observer;
        SEL selector;
        NSString* name;  // retained, or nil
        id object;
    };
    std::vector<Observation> mObservations;
};
