// File names compared the way the file system compares them, the conversion of a string into
// the fixed-size name record that the File Manager takes, and the few helpers that every file
// object shares.
#pragma once

#include <Groundwork/SysWrappers/CoreFoundation/SysCFString.h>

#include <Carbon/Files.h>
#include <Carbon/UnicodeUtilities.h>

namespace Gx {
namespace FSUtils {

// Case, width and composition do not make two names different, diacritics and punctuation
// do, and runs of digits compare by value, so "Report" equals "report" and "file9" sorts
// before "file10".
inline constexpr UCCollateOptions collateOptions_FSNames = kUCCollateComposeInsensitiveMask |
                                                           kUCCollateWidthInsensitiveMask |
                                                           kUCCollateCaseInsensitiveMask |
                                                           kUCCollatePunctuationSignificantMask |
                                                           kUCCollateDigitsOverrideMask | kUCCollateDigitsAsNumberMask;

// Writes the string's length first and only then refuses a string over 255 units with
// RuntimeError 'cfsc', so a caller that catches the error can still see how long it was.
void StringToHFSUniStr(const CFString& inString, HFSUniStr255& outName);

// Both throw OSError "UCCompareTextDefault failed" when the comparison itself fails; the
// CFString forms also throw what StringToHFSUniStr throws.
bool FSNamesAreEqual(const HFSUniStr255& inName1, const HFSUniStr255& inName2);
bool FSNamesAreEqual(const CFString& inName1, const CFString& inName2);
// Negative, 0 or positive.
SInt32 CompareFSNames(const HFSUniStr255& inName1, const HFSUniStr255& inName2);
SInt32 CompareFSNames(const CFString& inName1, const CFString& inName2);

// The file layer turns every status other than noErr into an OSError carrying that status
// and inMessage ("FSGetCatalogInfo failed").
void ThrowIfFailed(OSStatus inStatus, const char* inMessage);

// The reference of a folder given by volume and directory ID (PBMakeFSRefSync with the empty
// name); the platform's status, never an exception.
OSErr MakeFolderRef(FSVolumeRefNum inVolume, SInt32 inDirID, FSRef& outRef);

}  // namespace FSUtils
}  // namespace Gx

// Two references are equal when they name the same item, whatever their bytes. Declared in
// FSRef's own namespace so that they are found wherever two references are compared.
bool operator==(const FSRef& inRef1, const FSRef& inRef2);
