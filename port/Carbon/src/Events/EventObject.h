// What an EventRef points at: class, kind, time, attributes and named parameters, with a
// count of references that any thread may take.
#pragma once

#include <Carbon/CarbonEvents.h>

#include <atomic>
#include <map>
#include <vector>

struct OpaqueEventRef {
    struct Parameter {
        EventParamType type;
        std::vector<UInt8> bytes;
    };

    UInt32 eventClass;
    UInt32 kind;
    EventTime when;
    EventAttributes attributes;
    std::map<EventParamName, Parameter> parameters;
    std::atomic<ItemCount> references{1};
    bool queued = false;  // guarded by the queue's lock
};
