// An Apple event descriptor that may or may not own its data, and disposes of it when it
// ends if it does.
#pragma once

#include <Carbon/AEDataModel.h>

namespace Gx {

// Copying moves ownership to the copy (as std::auto_ptr did), so that a descriptor handed
// out by value is still disposed of exactly once. Assignment copies the flag instead and
// leaves both marked owner; the caller must Release one of them.
class AutoAEDesc {
public:
    // A null descriptor, owned.
    AutoAEDesc();
    // The descriptor's bytes, not owned.
    explicit AutoAEDesc(const AEDesc& inDesc);
    // AECreateDesc into an owned descriptor; OSError "AECreateDesc failed".
    AutoAEDesc(DescType inType, const void* inData, Size inSize);
    // Takes the other's descriptor and its ownership; the other is no longer owner.
    AutoAEDesc(const AutoAEDesc& inOther);
    AutoAEDesc& operator=(const AutoAEDesc& inOther);
    ~AutoAEDesc();

    // AEDisposeDesc when owner and there is data; the flag is left as it is.
    void DisposeDesc();
    // Disposes as above and holds a null descriptor; the flag is kept.
    void Reset();
    // Disposes as above and holds inDesc, not owned. Nothing at all happens when inDesc has
    // the data handle held already.
    void Reset(const AEDesc& inDesc);
    // As Reset, but the object owns inDesc afterwards.
    void Adopt(const AEDesc& inDesc);
    // Gives up ownership: the caller now disposes of the descriptor returned.
    AEDesc Release() const;

    bool IsOwner() const { return mIsOwner; }
    const AEDesc& GetRef() const { return mAEDesc; }
    AEDesc& GetRef() { return mAEDesc; }
    const AEDesc* GetPtr() const { return &mAEDesc; }
    AEDesc* GetPtr() { return &mAEDesc; }
    DescType GetDescType() const { return mAEDesc.descriptorType; }
    bool IsNull() const { return mAEDesc.descriptorType == typeNull; }
    bool IsList() const { return mAEDesc.descriptorType == typeAEList; }
    bool IsRecord() const { return mAEDesc.descriptorType == typeAERecord; }
    bool IsAppleEvent() const { return mAEDesc.descriptorType == typeAppleEvent; }

    // OSError "AECountItems failed".
    SInt32 GetCount() const;

    // These four hand back a descriptor that they do not own: whoever wants it disposed of
    // Adopts it into an owning object.
    // Index from 1; the item's keyword goes to outKeyword when given. OSError "AEGetNthDesc failed".
    AutoAEDesc GetNthDesc(SInt32 inIndex, DescType inDesiredType, AEKeyword* outKeyword = nullptr) const;
    // OSError "AEGetParamDesc failed".
    AutoAEDesc GetRequiredParamDesc(AEKeyword inKeyword, DescType inDesiredType) const;
    // A null descriptor when the parameter is missing or cannot be had; never raises.
    AutoAEDesc GetOptionalParamDesc(AEKeyword inKeyword, DescType inDesiredType) const;
    // OSError "AEGetAttributeDesc failed".
    AutoAEDesc GetAttributeDesc(AEKeyword inKeyword, DescType inDesiredType) const;

private:
    AEDesc mAEDesc;
    mutable bool mIsOwner;
};

}  // namespace Gx
