// Events and their parameters.
#include "EventObject.h"

#include <algorithm>
#include <cstring>
#include <ctime>
#include <new>

namespace {

EventTime Uptime()
{
    timespec now{};
    ::clock_gettime(CLOCK_MONOTONIC, &now);
    return EventTime(now.tv_sec) + EventTime(now.tv_nsec) / 1e9;
}

}  // namespace

OSStatus CreateEvent(CFAllocatorRef, UInt32 inClassID, UInt32 inKind, EventTime inWhen, EventAttributes inFlags,
                     EventRef* outEvent)
{
    if (outEvent == nullptr)
        return paramErr;
    // A time of 0 means "now", as the platform has it.
    *outEvent = new (std::nothrow) OpaqueEventRef{inClassID, inKind, inWhen == 0 ? Uptime() : inWhen, inFlags, {}};
    return *outEvent != nullptr ? noErr : memFullErr;
}

EventRef RetainEvent(EventRef inEvent)
{
    if (inEvent != nullptr)
        inEvent->references.fetch_add(1, std::memory_order_relaxed);
    return inEvent;
}

void ReleaseEvent(EventRef inEvent)
{
    if (inEvent != nullptr && inEvent->references.fetch_sub(1, std::memory_order_acq_rel) == 1)
        delete inEvent;
}

ItemCount GetEventRetainCount(EventRef inEvent) { return inEvent ? inEvent->references.load() : 0; }
UInt32 GetEventClass(EventRef inEvent) { return inEvent ? inEvent->eventClass : 0; }
UInt32 GetEventKind(EventRef inEvent) { return inEvent ? inEvent->kind : 0; }
EventTime GetEventTime(EventRef inEvent) { return inEvent ? inEvent->when : 0; }
EventAttributes GetEventAttributes(EventRef inEvent) { return inEvent ? inEvent->attributes : 0; }

OSStatus SetEventParameter(EventRef inEvent, EventParamName inName, EventParamType inType, ByteCount inSize,
                           const void* inData)
{
    if (inEvent == nullptr || (inData == nullptr && inSize > 0))
        return paramErr;
    auto* bytes = static_cast<const UInt8*>(inData);
    inEvent->parameters[inName] = {inType, std::vector<UInt8>(bytes, bytes + inSize)};
    return noErr;
}

OSStatus GetEventParameter(EventRef inEvent, EventParamName inName, EventParamType inDesiredType,
                           EventParamType* outActualType, ByteCount inBufferSize, ByteCount* outActualSize,
                           void* outData)
{
    if (inEvent == nullptr)
        return paramErr;
    auto found = inEvent->parameters.find(inName);
    if (found == inEvent->parameters.end())
        return eventParameterNotFoundErr;
    const OpaqueEventRef::Parameter& parameter = found->second;
    if (inDesiredType != typeWildCard && inDesiredType != parameter.type)
        return errAECoercionFail;
    if (outActualType != nullptr)
        *outActualType = parameter.type;
    if (outActualSize != nullptr)
        *outActualSize = parameter.bytes.size();
    if (outData != nullptr)
        std::memcpy(outData, parameter.bytes.data(), std::min<ByteCount>(inBufferSize, parameter.bytes.size()));
    return noErr;
}
