// Descriptors that may own their data: ownership that moves on copy but not on assignment,
// Reset and Adopt, and getters that never own what they hand back.
#include "DescriptorTesting.h"
#include "ExpectThrows.h"

#include <Groundwork/SysWrappers/Events/SysAEDesc.h>

#include <Carbon/AppleEvents.h>
#include <Carbon/MacErrors.h>

#include <unistd.h>

using Gx::AutoAEDesc;
using SysAEDesc = spindeck::test::DescriptorTest;

namespace {

constexpr SInt32 kFirst = 42;
constexpr SInt32 kSecond = -7;

SInt32 ValueOf(const AutoAEDesc& inDesc)
{
    SInt32 value = 0;
    EXPECT_EQ(AEGetDescData(inDesc.GetPtr(), &value, sizeof value), noErr);
    return value;
}

// Made and handed out by value, as a getter would: the copy that the caller keeps owns it.
AutoAEDesc MakeNumber(SInt32 inValue)
{
    AutoAEDesc number(typeSInt32, &inValue, sizeof inValue);
    return number;
}

TEST_F(SysAEDesc, CopyMovesOwnershipSoTheDataIsDisposedOfOnce)
{
    AutoAEDesc original(typeSInt32, &kFirst, sizeof kFirst);
    EXPECT_TRUE(original.IsOwner());
    {
        AutoAEDesc copy(original);
        EXPECT_FALSE(original.IsOwner());
        EXPECT_TRUE(copy.IsOwner());
        EXPECT_EQ(copy.GetRef().dataHandle, original.GetRef().dataHandle);
        EXPECT_EQ(NewDescriptors(), 1);
    }
    // The copy was the only owner: the data went with it, and the original ending later must
    // not dispose of it again (which the sanitiser build would see).
    EXPECT_EQ(NewDescriptors(), 0);

    AutoAEDesc handedOut = MakeNumber(kSecond);
    EXPECT_TRUE(handedOut.IsOwner());
    EXPECT_EQ(ValueOf(handedOut), kSecond);
    EXPECT_EQ(NewDescriptors(), 1);

    ExpectOSError([] { AutoAEDesc broken(typeSInt32, nullptr, 4); }, paramErr, "AECreateDesc failed");
}

TEST_F(SysAEDesc, AssignmentLeavesBothOwners)
{
    AutoAEDesc source(typeSInt32, &kFirst, sizeof kFirst);
    {
        AutoAEDesc target(typeSInt32, &kSecond, sizeof kSecond);
        EXPECT_EQ(NewDescriptors(), 2);
        target = source;
        EXPECT_EQ(NewDescriptors(), 1) << "the target's own descriptor is disposed of first";
        EXPECT_TRUE(target.IsOwner());
        EXPECT_TRUE(source.IsOwner());
        EXPECT_EQ(ValueOf(target), kFirst);

        AEDesc released = target.Release();
        EXPECT_FALSE(target.IsOwner());
        EXPECT_EQ(released.dataHandle, source.GetRef().dataHandle);
    }
    EXPECT_EQ(NewDescriptors(), 1);
    source = source;
    EXPECT_TRUE(source.IsOwner());
    EXPECT_EQ(ValueOf(source), kFirst);
}

TEST_F(SysAEDesc, ResetAndAdoptWithTheHeldHandleChangeNothing)
{
    AutoAEDesc owner(typeSInt32, &kFirst, sizeof kFirst);
    const AEDesc held = owner.GetRef();
    owner.Reset(held);
    owner.Adopt(held);
    EXPECT_TRUE(owner.IsOwner());
    AutoAEDesc viewer(held);
    viewer.Adopt(held);
    EXPECT_FALSE(viewer.IsOwner()) << "adopting the handle already held keeps the flag";
    EXPECT_EQ(NewDescriptors(), 1);

    AEDesc other;
    ASSERT_EQ(AECreateDesc(typeSInt32, &kSecond, sizeof kSecond, &other), noErr);
    owner.Reset(other);
    EXPECT_FALSE(owner.IsOwner());
    EXPECT_EQ(ValueOf(owner), kSecond);
    EXPECT_EQ(NewDescriptors(), 1) << "the owned descriptor is disposed of when another replaces it";
    viewer.Reset(other);  // the handle it viewed is gone; it must not be touched again

    AutoAEDesc adopter;
    adopter.Adopt(other);
    EXPECT_TRUE(adopter.IsOwner());
    adopter.Reset();
    EXPECT_TRUE(adopter.IsNull());
    EXPECT_TRUE(adopter.IsOwner()) << "Reset keeps the flag";
    EXPECT_EQ(NewDescriptors(), 0);

    AutoAEDesc disposed(typeSInt32, &kFirst, sizeof kFirst);
    disposed.DisposeDesc();
    EXPECT_TRUE(disposed.IsOwner());
    EXPECT_EQ(NewDescriptors(), 0);
}

TEST_F(SysAEDesc, GettersHandBackDescriptorsTheyDoNotOwn)
{
    AEDescList list;
    ASSERT_EQ(AECreateList(nullptr, 0, true, &list), noErr);
    AutoAEDesc record;
    record.Adopt(list);
    ASSERT_EQ(AEPutKeyPtr(record.GetPtr(), FourCC("frst"), typeSInt32, &kFirst, sizeof kFirst), noErr);
    ASSERT_EQ(AEPutKeyPtr(record.GetPtr(), FourCC("scnd"), typeSInt32, &kSecond, sizeof kSecond), noErr);
    EXPECT_TRUE(record.IsRecord());
    EXPECT_EQ(record.GetCount(), 2);

    AEKeyword keyword = 0;
    AutoAEDesc item = record.GetNthDesc(2, typeSInt32, &keyword);
    EXPECT_FALSE(item.IsOwner());
    EXPECT_EQ(keyword, FourCC("scnd"));
    EXPECT_EQ(ValueOf(item), kSecond);
    AutoAEDesc kept;
    kept.Adopt(item.GetRef());
    EXPECT_EQ(NewDescriptors(), 2);
    ExpectOSError([&] { record.GetNthDesc(3, typeWildCard); }, errAEBadListItem, "AEGetNthDesc failed");
    ExpectOSError([&] { kept.GetCount(); }, errAEWrongDataType, "AECountItems failed");

    pid_t self = ::getpid();
    AutoAEDesc target(typeKernelProcessID, &self, sizeof self);
    AppleEvent created;
    ASSERT_EQ(AECreateAppleEvent(kCoreEventClass, kAEOpenApplication, target.GetPtr(), kAutoGenerateReturnID,
                                 kAnyTransactionID, &created),
              noErr);
    AutoAEDesc event;
    event.Adopt(created);
    EXPECT_TRUE(event.IsAppleEvent());
    ASSERT_EQ(AEPutParamPtr(event.GetPtr(), keyDirectObject, typeSInt32, &kFirst, sizeof kFirst), noErr);

    AutoAEDesc direct = event.GetRequiredParamDesc(keyDirectObject, typeSInt32);
    AutoAEDesc eventClass = event.GetAttributeDesc(keyEventClassAttr, typeType);
    EXPECT_FALSE(direct.IsOwner() || eventClass.IsOwner());
    EXPECT_EQ(ValueOf(direct), kFirst);
    EXPECT_EQ(AEDisposeDesc(direct.GetPtr()), noErr);
    AutoAEDesc ownedClass;
    ownedClass.Adopt(eventClass.GetRef());

    AutoAEDesc optional = event.GetOptionalParamDesc(FourCC("none"), typeWildCard);
    EXPECT_TRUE(optional.IsNull());
    EXPECT_EQ(optional.GetRef().dataHandle, nullptr);
    ExpectOSError([&] { event.GetRequiredParamDesc(FourCC("none"), typeWildCard); }, errAEDescNotFound,
                  "AEGetParamDesc failed");
    ExpectOSError([&] { event.GetAttributeDesc(FourCC("none"), typeWildCard); }, errAEDescNotFound,
                  "AEGetAttributeDesc failed");
}

}  // namespace
