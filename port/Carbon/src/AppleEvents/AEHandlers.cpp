// The process's table of event handlers, and dispatching an event to the right one.
#include "AEHandlers.h"
#include "AEReceiver.h"

#include <map>
#include <mutex>
#include <new>
#include <optional>
#include <utility>

namespace {

struct Handler {
    AEEventHandlerUPP proc;
    SRefCon refcon;
};

using EventKey = std::pair<AEEventClass, AEEventID>;

class HandlerTable {
public:
    // Installing the first handler makes the process reachable from others; removing the
    // last one makes it unreachable again.
    OSErr Install(EventKey inKey, Handler inHandler)
    {
        std::lock_guard guard(mLock);
        bool first = mHandlers.empty();
        mHandlers.insert_or_assign(inKey, inHandler);
        if (first)
            carbon::ae::StartReceiving();
        return noErr;
    }

    OSErr Remove(EventKey inKey, AEEventHandlerUPP inProc)
    {
        std::lock_guard guard(mLock);
        auto found = mHandlers.find(inKey);
        if (found == mHandlers.end() || found->second.proc != inProc)
            return errAEHandlerNotFound;
        mHandlers.erase(found);
        if (mHandlers.empty())
            carbon::ae::StopReceiving();
        return noErr;
    }

    std::optional<Handler> Get(EventKey inKey)
    {
        std::lock_guard guard(mLock);
        auto found = mHandlers.find(inKey);
        return found == mHandlers.end() ? std::nullopt : std::optional(found->second);
    }

    // The exact handler, else one for the class with any ID, else for the ID of any class,
    // else for any event.
    std::optional<Handler> Find(AEEventClass inClass, AEEventID inID)
    {
        std::lock_guard guard(mLock);
        for (EventKey key : {EventKey{inClass, inID}, EventKey{inClass, typeWildCard}, EventKey{typeWildCard, inID},
                             EventKey{typeWildCard, typeWildCard}})
            if (auto found = mHandlers.find(key); found != mHandlers.end())
                return found->second;
        return std::nullopt;
    }

private:
    std::mutex mLock;
    std::map<EventKey, Handler> mHandlers;
};

HandlerTable& Handlers()
{
    static HandlerTable sTable;
    return sTable;
}

template <class T>
T AttributeOr(const AppleEvent& inEvent, AEKeyword inKeyword, DescType inType, T inDefault)
{
    T value = inDefault;
    AEGetAttributePtr(&inEvent, inKeyword, inType, nullptr, &value, sizeof value, nullptr);
    return value;
}

void RecordError(AppleEvent& ioReply, OSErr inStatus)
{
    DescType type;
    Size size;
    if (AESizeOfParam(&ioReply, keyErrorNumber, &type, &size) == errAEDescNotFound) {
        SInt32 error = inStatus;
        AEPutParamPtr(&ioReply, keyErrorNumber, typeSInt32, &error, sizeof error);
    }
}

}  // namespace

namespace carbon::ae {

OSErr MakeReply(const AppleEvent& inEvent, AppleEvent* outReply)
{
    AEDesc noAddress{typeNull, nullptr};
    AEReturnID returnID = AttributeOr<AEReturnID>(inEvent, keyReturnIDAttr, typeSInt16, 0);
    AETransactionID transactionID = AttributeOr<AETransactionID>(inEvent, keyTransactionIDAttr, typeSInt32, 0);
    return AECreateAppleEvent(kCoreEventClass, kAEAnswer, &noAddress, returnID, transactionID, outReply);
}

OSErr Dispatch(const AppleEvent& inEvent, AppleEvent* outReply)
{
    if (OSErr status = MakeReply(inEvent, outReply); status != noErr)
        return status;
    AEEventClass eventClass = AttributeOr<AEEventClass>(inEvent, keyEventClassAttr, typeType, 0);
    AEEventID eventID = AttributeOr<AEEventID>(inEvent, keyEventIDAttr, typeType, 0);
    std::optional<Handler> handler = Handlers().Find(eventClass, eventID);
    if (!handler) {
        RecordError(*outReply, errAEEventNotHandled);
        return errAEEventNotHandled;
    }
    if (OSErr status = handler->proc(&inEvent, outReply, handler->refcon); status != noErr)
        RecordError(*outReply, status);
    return noErr;
}

}  // namespace carbon::ae

OSErr AEInstallEventHandler(AEEventClass inEventClass, AEEventID inEventID, AEEventHandlerUPP inHandler,
                            SRefCon inRefcon, Boolean)
{
    if (inHandler == nullptr)
        return paramErr;
    return Handlers().Install({inEventClass, inEventID}, Handler{inHandler, inRefcon});
}

OSErr AERemoveEventHandler(AEEventClass inEventClass, AEEventID inEventID, AEEventHandlerUPP inHandler, Boolean)
{
    return Handlers().Remove({inEventClass, inEventID}, inHandler);
}

OSErr AEGetEventHandler(AEEventClass inEventClass, AEEventID inEventID, AEEventHandlerUPP* outHandler,
                        SRefCon* outRefcon, Boolean)
{
    std::optional<Handler> handler = Handlers().Get({inEventClass, inEventID});
    if (!handler)
        return errAEHandlerNotFound;
    if (outHandler)
        *outHandler = handler->proc;
    if (outRefcon)
        *outRefcon = handler->refcon;
    return noErr;
}
