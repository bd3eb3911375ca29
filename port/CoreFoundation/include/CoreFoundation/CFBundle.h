// Bundles: folders that hold a program or loadable code together with its information
// dictionary, resources and localisations, laid out as "X.app/Contents/Info.plist",
// "Contents/MacOS/<executable>" and "Contents/Resources/<language>.lproj/". Folders without
// "Contents" keep Info.plist at the top, and their resources in "Resources" or at the top.
#pragma once

#include <CoreFoundation/CFArray.h>
#include <CoreFoundation/CFBase.h>
#include <CoreFoundation/CFDictionary.h>
#include <CoreFoundation/CFString.h>
#include <CoreFoundation/CFURL.h>

using CFBundleRef = struct __CFBundle*;

// Keys of the information dictionary.
extern const CFStringRef kCFBundleInfoDictionaryVersionKey;
extern const CFStringRef kCFBundleExecutableKey;
extern const CFStringRef kCFBundleIdentifierKey;
extern const CFStringRef kCFBundleVersionKey;
extern const CFStringRef kCFBundleDevelopmentRegionKey;
extern const CFStringRef kCFBundleNameKey;
extern const CFStringRef kCFBundleLocalizationsKey;

CFTypeID CFBundleGetTypeID();

// The bundle that holds the running program: "<bundle>/Contents/MacOS/<program>", or for a
// program that lies outside a bundle, its folder. It lives as long as the process.
CFBundleRef CFBundleGetMainBundle();
// A bundle alive in this process (created, or the main bundle) with that identifier; NULL
// when there is none. The caller does not own the result.
CFBundleRef CFBundleGetBundleWithIdentifier(CFStringRef inBundleID);
// The bundle of a folder. While a bundle of the same folder is alive, that one is answered
// (with one more reference); NULL when the URL names no folder.
CFBundleRef CFBundleCreate(CFAllocatorRef inAllocator, CFURLRef inBundleURL);

// The information dictionary, read once when the bundle is made; empty when the bundle has
// no readable Info.plist.
CFDictionaryRef CFBundleGetInfoDictionary(CFBundleRef inBundle);
// InfoPlist.strings of the user's preferred localisation, or NULL.
CFDictionaryRef CFBundleGetLocalInfoDictionary(CFBundleRef inBundle);
// The localised value when there is one, else the one of the information dictionary.
CFTypeRef CFBundleGetValueForInfoDictionaryKey(CFBundleRef inBundle, CFStringRef inKey);
CFStringRef CFBundleGetIdentifier(CFBundleRef inBundle);
CFStringRef CFBundleGetDevelopmentRegion(CFBundleRef inBundle);
// CFBundleVersion in the packed form of "1.2.3b4": major in the top byte (two BCD digits),
// minor and bug-fix digits in the next, then the stage (0x20 development, 0x40 alpha,
// 0x60 beta, 0x80 final) and the pre-release number. 0 when the version is not of that form.
UInt32 CFBundleGetVersionNumber(CFBundleRef inBundle);
// Type and creator codes from CFBundlePackageType and CFBundleSignature, else from the
// eight bytes of PkgInfo, else '????'. Either pointer may be NULL.
void CFBundleGetPackageInfo(CFBundleRef inBundle, UInt32* outPackageType, UInt32* outPackageCreator);

// Locations. The folders are answered whether they exist or not; the executables only
// when they exist.
CFURLRef CFBundleCopyBundleURL(CFBundleRef inBundle);
CFURLRef CFBundleCopyExecutableURL(CFBundleRef inBundle);
CFURLRef CFBundleCopyAuxiliaryExecutableURL(CFBundleRef inBundle, CFStringRef inExecutableName);
CFURLRef CFBundleCopySupportFilesDirectoryURL(CFBundleRef inBundle);
CFURLRef CFBundleCopyResourcesDirectoryURL(CFBundleRef inBundle);
CFURLRef CFBundleCopyPrivateFrameworksURL(CFBundleRef inBundle);
CFURLRef CFBundleCopySharedFrameworksURL(CFBundleRef inBundle);
CFURLRef CFBundleCopySharedSupportURL(CFBundleRef inBundle);
CFURLRef CFBundleCopyBuiltInPlugInsURL(CFBundleRef inBundle);

// Resources. A resource is looked for in the resources folder itself first, then in the
// .lproj folders of the user's preferred localisations, then in the development region's;
// inSubDirName (may be NULL) is a folder inside each of these. Without a type, the name may
// carry its extension.
CFURLRef CFBundleCopyResourceURL(CFBundleRef inBundle, CFStringRef inResourceName, CFStringRef inResourceType,
                                 CFStringRef inSubDirName);
// Every resource with that extension (every resource for a NULL type), one URL per name,
// found in the same order.
CFArrayRef CFBundleCopyResourceURLsOfType(CFBundleRef inBundle, CFStringRef inResourceType, CFStringRef inSubDirName);
// The same with one named localisation instead of the user's.
CFURLRef CFBundleCopyResourceURLForLocalization(CFBundleRef inBundle, CFStringRef inResourceName,
                                                CFStringRef inResourceType, CFStringRef inSubDirName,
                                                CFStringRef inLocalizationName);
CFArrayRef CFBundleCopyResourceURLsOfTypeForLocalization(CFBundleRef inBundle, CFStringRef inResourceType,
                                                         CFStringRef inSubDirName, CFStringRef inLocalizationName);

// Localisations. The user's languages come from LANGUAGE (a list separated by ':'), then the
// first of LC_ALL, LC_MESSAGES and LANG that is set, read at each call.
CFArrayRef CFBundleCopyBundleLocalizations(CFBundleRef inBundle);
// The entries of inLocArray that best match the user's languages: those of the first
// language that matches any, else the main bundle's development region, else the first entry.
CFArrayRef CFBundleCopyPreferredLocalizationsFromArray(CFArrayRef inLocArray);
// The same against the languages of inPrefArray (the user's when NULL).
CFArrayRef CFBundleCopyLocalizationsForPreferences(CFArrayRef inLocArray, CFArrayRef inPrefArray);

// The text for inKey in the table inTableName ("Localizable" when NULL or empty) of the
// preferred localisation. A key the table lacks gives inValue when it is not empty, else the
// key itself.
CFStringRef CFBundleCopyLocalizedString(CFBundleRef inBundle, CFStringRef inKey, CFStringRef inValue,
                                        CFStringRef inTableName);

inline CFStringRef CFCopyLocalizedString(CFStringRef inKey, const char* /*inComment*/)
{
    return CFBundleCopyLocalizedString(CFBundleGetMainBundle(), inKey, inKey, nullptr);
}

inline CFStringRef CFCopyLocalizedStringFromTable(CFStringRef inKey, CFStringRef inTable, const char* /*inComment*/)
{
    return CFBundleCopyLocalizedString(CFBundleGetMainBundle(), inKey, inKey, inTable);
}

inline CFStringRef CFCopyLocalizedStringFromTableInBundle(CFStringRef inKey, CFStringRef inTable, CFBundleRef inBundle,
                                                          const char* /*inComment*/)
{
    return CFBundleCopyLocalizedString(inBundle, inKey, inKey, inTable);
}

// Executable code: a shared object in the bundle, loaded with every symbol resolved at once
// and kept private to the bundle. Loading that fails says why on standard error.
Boolean CFBundleIsExecutableLoaded(CFBundleRef inBundle);
Boolean CFBundleLoadExecutable(CFBundleRef inBundle);
void CFBundleUnloadExecutable(CFBundleRef inBundle);
// Loads the code first when needed; NULL when there is no such function.
void* CFBundleGetFunctionPointerForName(CFBundleRef inBundle, CFStringRef inFunctionName);
void* CFBundleGetDataPointerForName(CFBundleRef inBundle, CFStringRef inSymbolName);
