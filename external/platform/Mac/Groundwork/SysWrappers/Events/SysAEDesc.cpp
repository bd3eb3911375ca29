#include <Groundwork/SysWrappers/Events/SysAEDesc.h>

#include <Groundwork/Core/ErrorHandling/GxExceptions.h>

namespace Gx {

namespace {

void ThrowIfFailed(OSErr inStatus, const char* inMessage)
{
    if (inStatus != noErr)
        OSError::Throw(inStatus, inMessage, sourceLocation_Nothing);
}

AEDesc NullDesc()
{
    AEDesc desc;
    AEInitializeDesc(&desc);
    return desc;
}

}  // namespace

AutoAEDesc::AutoAEDesc() : mAEDesc(NullDesc()), mIsOwner(true) {}

AutoAEDesc::AutoAEDesc(const AEDesc& inDesc) : mAEDesc(inDesc), mIsOwner(false) {}

AutoAEDesc::AutoAEDesc(DescType inType, const void* inData, Size inSize) : AutoAEDesc()
{
    ThrowIfFailed(AECreateDesc(inType, inData, inSize, &mAEDesc), "AECreateDesc failed");
}

AutoAEDesc::AutoAEDesc(const AutoAEDesc& inOther) : mAEDesc(inOther.mAEDesc), mIsOwner(inOther.mIsOwner)
{
    inOther.mIsOwner = false;
}

AutoAEDesc& AutoAEDesc::operator=(const AutoAEDesc& inOther)
{
    if (this != &inOther) {
        DisposeDesc();
        mAEDesc = inOther.mAEDesc;
        mIsOwner = inOther.mIsOwner;
    }
    return *this;
}

AutoAEDesc::~AutoAEDesc() { DisposeDesc(); }

void AutoAEDesc::DisposeDesc()
{
    if (mIsOwner && mAEDesc.dataHandle != nullptr)
        AEDisposeDesc(&mAEDesc);
}

void AutoAEDesc::Reset()
{
    DisposeDesc();
    AEInitializeDesc(&mAEDesc);
}

void AutoAEDesc::Reset(const AEDesc& inDesc)
{
    if (inDesc.dataHandle == mAEDesc.dataHandle)
        return;
    DisposeDesc();
    mAEDesc = inDesc;
    mIsOwner = false;
}

void AutoAEDesc::Adopt(const AEDesc& inDesc)
{
    if (inDesc.dataHandle == mAEDesc.dataHandle)
        return;
    DisposeDesc();
    mAEDesc = inDesc;
    mIsOwner = true;
}

AEDesc AutoAEDesc::Release() const
{
    mIsOwner = false;
    return mAEDesc;
}

SInt32 AutoAEDesc::GetCount() const
{
    long count = 0;
    ThrowIfFailed(AECountItems(&mAEDesc, &count), "AECountItems failed");
    return SInt32(count);
}

AutoAEDesc AutoAEDesc::GetNthDesc(SInt32 inIndex, DescType inDesiredType, AEKeyword* outKeyword) const
{
    AEKeyword scratch = 0;
    AEDesc item = NullDesc();
    ThrowIfFailed(AEGetNthDesc(&mAEDesc, inIndex, inDesiredType, outKeyword ? outKeyword : &scratch, &item),
                  "AEGetNthDesc failed");
    return AutoAEDesc(item);
}

AutoAEDesc AutoAEDesc::GetRequiredParamDesc(AEKeyword inKeyword, DescType inDesiredType) const
{
    AEDesc parameter = NullDesc();
    ThrowIfFailed(AEGetParamDesc(&mAEDesc, inKeyword, inDesiredType, &parameter), "AEGetParamDesc failed");
    return AutoAEDesc(parameter);
}

AutoAEDesc AutoAEDesc::GetOptionalParamDesc(AEKeyword inKeyword, DescType inDesiredType) const
{
    AEDesc parameter = NullDesc();
    // A failed call leaves the null descriptor, which is the answer for a missing parameter.
    AEGetParamDesc(&mAEDesc, inKeyword, inDesiredType, &parameter);
    return AutoAEDesc(parameter);
}

AutoAEDesc AutoAEDesc::GetAttributeDesc(AEKeyword inKeyword, DescType inDesiredType) const
{
    AEDesc attribute = NullDesc();
    ThrowIfFailed(AEGetAttributeDesc(&mAEDesc, inKeyword, inDesiredType, &attribute), "AEGetAttributeDesc failed");
    return AutoAEDesc(attribute);
}

}  // namespace Gx
