// An Apple event that is made, given parameters and sent; the event is always owned.
#pragma once

#include <Carbon/AEDataModel.h>
#include <Carbon/AppleEvents.h>

namespace Gx {

class SysAppleEvent {
public:
    // A null descriptor.
    SysAppleEvent();
    // A duplicate of inEvent; OSError "AEDuplicateDesc failed".
    explicit SysAppleEvent(const AEDesc& inEvent);
    SysAppleEvent(const SysAppleEvent& inOther);
    // AECreateAppleEvent with exactly these values; OSError "AECreateAppleEvent failed".
    SysAppleEvent(AEEventClass inEventClass, AEEventID inEventID, const AEAddressDesc& inTarget, AEReturnID inReturnID,
                  AETransactionID inTransactionID);
    // The other's event is duplicated before this one is disposed of, so a failure leaves
    // this event as it was, and self-assignment is safe.
    SysAppleEvent& operator=(const SysAppleEvent& inOther);
    ~SysAppleEvent();

    void Dispose();

    const AppleEvent& GetAppleEvent() const { return mAppleEvent; }
    AppleEvent& GetAppleEvent() { return mAppleEvent; }

    // OSError "AEGetAttributePtr failed to get event class" / "... event kind".
    AEEventClass GetEventClass() const;
    AEEventID GetEventKind() const;

    // These two answer the platform's status and raise nothing.
    OSErr GetParameter(AEKeyword inKeyword, DescType inDesiredType, DescType* outActualType, Size inMaximumSize,
                       Size* outActualSize, void* outData) const;
    OSErr GetParamDesc(AEKeyword inKeyword, DescType inDesiredType, AEDesc* outDesc) const;

    // OSError "AEPutParamPtr failed" / "AEPutParamDesc failed".
    void SetParameter(AEKeyword inKeyword, DescType inType, Size inSize, const void* inData);
    void SetParamDesc(AEKeyword inKeyword, const AEDesc& inDesc);

    // AESend with exactly these values; OSError "AESend failed". outReply may be NULL.
    void Send(AppleEvent* outReply, AESendMode inSendMode, AESendPriority inPriority, SInt32 inTimeOutInTicks,
              AEIdleUPP inIdleProc = nullptr, AEFilterUPP inFilterProc = nullptr) const;

private:
    void MakeAppleEvent(AEEventClass inEventClass, AEEventID inEventID, const AEAddressDesc& inTarget,
                        AEReturnID inReturnID, AETransactionID inTransactionID);

    AppleEvent mAppleEvent;
};

}  // namespace Gx
