// Where the product's files live: its folder under Application Support, its preferences
// file, and the resources of the bundle that holds the code (default menus, skins, the
// settings template and the plug-in installer); and a fresh "Untitled" name.
#pragma once

#include <Groundwork/Files/GxFSObject.h>
#include <Groundwork/SysWrappers/CoreFoundation/SetObject.h>
#include <Groundwork/SysWrappers/CoreFoundation/SysCFString.h>

#include <CoreFoundation/CFString.h>

using StringObject = Gx::CFString;

extern const CFStringRef kPluginsInstName;       // "Install Vemora plug-ins.pkg"
extern const CFStringRef kAppSupportFolderName;  // "Vemoraspindeck"
extern const CFStringRef kPrefFile;              // "Vemora spindeck Preferences"

namespace spindeck {

extern const CFStringRef kDefaults;     // "menus"
extern const CFStringRef kSkinsFolder;  // "skins"

// The product folder in inDomain's Application Support folder (made if missing). The product
// folder itself is made only when inCreateIfAbsent is set; either way it is what comes back.
Gx::FSObject AppSupportFolder(int inDomain, bool inCreateIfAbsent);
// The preferences file in the user's Preferences folder (made if missing); the file itself
// need not exist.
Gx::FSObject UserPreferences();
// The code bundle's "menus" folder, or, given a non-empty name, the item of that name in it
// (which need not exist). Gx::RuntimeError 'cfnr' when the bundle has no "menus".
Gx::FSObject DefaultsFolder(const CFStringRef& inAppName);
// The code bundle's "skins" folder, or one skin's folder in it; 'cfnr' as above.
Gx::FSObject SkinsFolder(const CFStringRef& inSkinName);
// The code bundle's "~settings" template; 'cfnr' when it has none.
Gx::FSObject SettingsFile();
// Hands the code bundle's plug-in installer package to the installer and answers Launch
// Services' status; 'cfnr' when the bundle has no installer.
OSStatus ReinstallPluginsCmd();

}  // namespace spindeck

// The code bundle's word for "Untitled", then with 1, 2, 3 ... appended, whichever is first
// not in inRegistery. 'cfnr' when the set is empty (NULL).
StringObject CreateUniqueName(const SetObject<CFStringRef>& inRegistery);
