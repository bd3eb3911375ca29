#include <Groundwork/SysWrappers/Events/SysAppleEvent.h>

#include <Groundwork/Core/ErrorHandling/GxExceptions.h>

namespace Gx {

namespace {

void ThrowIfFailed(OSErr inStatus, const char* inMessage)
{
    if (inStatus != noErr)
        OSError::Throw(inStatus, inMessage, sourceLocation_Nothing);
}

// The copy is made into a local descriptor, so that a failure leaves nothing to dispose of.
AppleEvent Duplicate(const AEDesc& inEvent)
{
    AppleEvent copy;
    AEInitializeDesc(&copy);
    ThrowIfFailed(AEDuplicateDesc(&inEvent, &copy), "AEDuplicateDesc failed");
    return copy;
}

FourCharCode AttributeCode(const AppleEvent& inEvent, AEKeyword inKeyword, const char* inMessage)
{
    FourCharCode code = 0;
    DescType actualType = typeNull;
    Size actualSize = 0;
    ThrowIfFailed(AEGetAttributePtr(&inEvent, inKeyword, typeType, &actualType, &code, sizeof code, &actualSize),
                  inMessage);
    return code;
}

}  // namespace

SysAppleEvent::SysAppleEvent() { AEInitializeDesc(&mAppleEvent); }

SysAppleEvent::SysAppleEvent(const AEDesc& inEvent) : mAppleEvent(Duplicate(inEvent)) {}

SysAppleEvent::SysAppleEvent(const SysAppleEvent& inOther) : mAppleEvent(Duplicate(inOther.mAppleEvent)) {}

SysAppleEvent::SysAppleEvent(AEEventClass inEventClass, AEEventID inEventID, const AEAddressDesc& inTarget,
                             AEReturnID inReturnID, AETransactionID inTransactionID)
    : SysAppleEvent()
{
    MakeAppleEvent(inEventClass, inEventID, inTarget, inReturnID, inTransactionID);
}

SysAppleEvent& SysAppleEvent::operator=(const SysAppleEvent& inOther)
{
    AppleEvent copy = Duplicate(inOther.mAppleEvent);
    Dispose();
    mAppleEvent = copy;
    return *this;
}

SysAppleEvent::~SysAppleEvent() { Dispose(); }

void SysAppleEvent::Dispose() { AEDisposeDesc(&mAppleEvent); }

void SysAppleEvent::MakeAppleEvent(AEEventClass inEventClass, AEEventID inEventID, const AEAddressDesc& inTarget,
                                   AEReturnID inReturnID, AETransactionID inTransactionID)
{
    ThrowIfFailed(AECreateAppleEvent(inEventClass, inEventID, &inTarget, inReturnID, inTransactionID, &mAppleEvent),
                  "AECreateAppleEvent failed");
}

AEEventClass SysAppleEvent::GetEventClass() const
{
    return AttributeCode(mAppleEvent, keyEventClassAttr, "AEGetAttributePtr failed to get event class");
}

AEEventID SysAppleEvent::GetEventKind() const
{
    return AttributeCode(mAppleEvent, keyEventIDAttr, "AEGetAttributePtr failed to get event kind");
}

OSErr SysAppleEvent::GetParameter(AEKeyword inKeyword, DescType inDesiredType, DescType* outActualType,
                                  Size inMaximumSize, Size* outActualSize, void* outData) const
{
    return AEGetParamPtr(&mAppleEvent, inKeyword, inDesiredType, outActualType, outData, inMaximumSize, outActualSize);
}

OSErr SysAppleEvent::GetParamDesc(AEKeyword inKeyword, DescType inDesiredType, AEDesc* outDesc) const
{
    return AEGetParamDesc(&mAppleEvent, inKeyword, inDesiredType, outDesc);
}

void SysAppleEvent::SetParameter(AEKeyword inKeyword, DescType inType, Size inSize, const void* inData)
{
    ThrowIfFailed(AEPutParamPtr(&mAppleEvent, inKeyword, inType, inData, inSize), "AEPutParamPtr failed");
}

void SysAppleEvent::SetParamDesc(AEKeyword inKeyword, const AEDesc& inDesc)
{
    ThrowIfFailed(AEPutParamDesc(&mAppleEvent, inKeyword, &inDesc), "AEPutParamDesc failed");
}

void SysAppleEvent::Send(AppleEvent* outReply, AESendMode inSendMode, AESendPriority inPriority,
                         SInt32 inTimeOutInTicks, AEIdleUPP inIdleProc, AEFilterUPP inFilterProc) const
{
    ThrowIfFailed(AESend(&mAppleEvent, outReply, inSendMode, inPriority, inTimeOutInTicks, inIdleProc, inFilterProc),
                  "AESend failed");
}

}  // namespace Gx
