#include <Groundwork/Files/GxFSUtils.h>

#include <Groundwork/Files/GxFSObject.h>

#include <Carbon/MacErrors.h>

#include <iterator>

namespace Gx {
namespace FSUtils {

namespace {

OSStatus CompareNames(const HFSUniStr255& inName1, const HFSUniStr255& inName2, Boolean* outEquivalent,
                      SInt32* outOrder)
{
    return UCCompareTextDefault(collateOptions_FSNames, inName1.unicode, inName1.length, inName2.unicode,
                                inName2.length, outEquivalent, outOrder);
}

}  // namespace

void StringToHFSUniStr(const CFString& inString, HFSUniStr255& outName)
{
    CFIndex length = inString.GetLength();
    outName.length = UInt16(length);
    if (length > CFIndex(std::size(outName.unicode)))
        RuntimeError::Throw(exceptionID_StringTooLong, "CFString too long to convert to HFSUniStr255",
                            sourceLocation_Nothing);
    if (length > 0)
        CFStringGetCharacters(inString.UseRef(), CFRangeMake(0, length), outName.unicode);
}

bool FSNamesAreEqual(const HFSUniStr255& inName1, const HFSUniStr255& inName2)
{
    Boolean equivalent = false;
    ThrowIfFailed(CompareNames(inName1, inName2, &equivalent, nullptr), "UCCompareTextDefault failed");
    return equivalent;
}

bool FSNamesAreEqual(const CFString& inName1, const CFString& inName2)
{
    HFSUniStr255 name1;
    HFSUniStr255 name2;
    StringToHFSUniStr(inName1, name1);
    StringToHFSUniStr(inName2, name2);
    return FSNamesAreEqual(name1, name2);
}

SInt32 CompareFSNames(const HFSUniStr255& inName1, const HFSUniStr255& inName2)
{
    SInt32 order = 0;
    ThrowIfFailed(CompareNames(inName1, inName2, nullptr, &order), "UCCompareTextDefault failed");
    return order;
}

SInt32 CompareFSNames(const CFString& inName1, const CFString& inName2)
{
    HFSUniStr255 name1;
    HFSUniStr255 name2;
    StringToHFSUniStr(inName1, name1);
    StringToHFSUniStr(inName2, name2);
    return CompareFSNames(name1, name2);
}

void ThrowIfFailed(OSStatus inStatus, const char* inMessage)
{
    if (inStatus != noErr)
        OSError::Throw(inStatus, inMessage, sourceLocation_Nothing);
}

OSErr MakeFolderRef(FSVolumeRefNum inVolume, SInt32 inDirID, FSRef& outRef)
{
    FSRefParam block{};
    block.ioNamePtr = pString_Empty;
    block.ioVRefNum = inVolume;
    block.ioDirID = inDirID;
    block.newRef = &outRef;
    return PBMakeFSRefSync(&block);
}

}  // namespace FSUtils
}  // namespace Gx

bool operator==(const FSRef& inRef1, const FSRef& inRef2) { return FSCompareFSRefs(&inRef1, &inRef2) == noErr; }
