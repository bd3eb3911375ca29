// The Folder Manager: the folders that a domain (the user's, this installation's) keeps for
// one purpose, found by folder type and created on request.
//
// On this system the user domain follows the XDG base directories, read from the environment
// at every call ($XDG_* count only when they hold an absolute path; $HOME, else the password
// database, gives the defaults). The local and system domains both stand for this
// installation's own folders: under its prefix, and in the data, configuration and state
// folders the build was configured with (<datadir> is usually <prefix>/share, <sysconfdir>
// /etc or <prefix>/etc, <localstatedir> /var or <prefix>/var). Linux keeps no separate copy
// of these folders for the operating system.
//
//   type    user domain                                      local and system domains
//   'asup'  $XDG_DATA_HOME (~/.local/share)                  <datadir>
//   'pref'  $XDG_CONFIG_HOME/preferences (~/.config/...)     <sysconfdir>/preferences
//   'ppan'  $XDG_DATA_HOME/preference-panes                  <prefix>/lib/spindeck/preference-panes
//   'apps'  $XDG_DATA_HOME/application-bundles               <prefix>/lib/spindeck/application-bundles
//   'font'  $XDG_DATA_HOME/fonts                             <datadir>/fonts
//   'cach'  $XDG_CACHE_HOME (~/.cache)                       <localstatedir>/cache/spindeck
//   'logs'  $XDG_STATE_HOME/log (~/.local/state/log)         <localstatedir>/log/spindeck
//   'temp'  $TMPDIR, else /tmp                               $TMPDIR, else /tmp
//   'desk'  XDG_DESKTOP_DIR of user-dirs.dirs, else ~/Desktop       -
//   'docs'  XDG_DOCUMENTS_DIR of user-dirs.dirs, else ~/Documents   -
//   'cusr'  $HOME                                                   -
//
// The preferences folders are those where CFPreferences keeps its domain files (the current
// user's and every user's). kOnAppropriateDisk and kOnSystemDisk stand for the user domain.
//
// With createFolder true a missing folder is created with every missing folder above it:
// mode 0700 for the user's private folders (the XDG base folders, preferences, caches, logs,
// temporary items), 0755 for the others. Without it a missing folder answers fnfErr. A
// type or domain without a folder here answers fnfErr as well.
#pragma once

#include <Carbon/Files.h>
#include <MacTypes.h>

enum : FSVolumeRefNum {
    kOnSystemDisk = -32768,
    kOnAppropriateDisk = -32767,
    kSystemDomain = -32766,
    kNetworkDomain = -32765,
    kLocalDomain = -32764,
    kUserDomain = -32763,
    kClassicDomain = -32762,
};

enum : Boolean {
    kDontCreateFolder = false,
    kCreateFolder = true,
};

enum : OSType {
    kApplicationSupportFolderType = FourCC("asup"),
    kPreferencesFolderType = FourCC("pref"),
    kPreferencePanesFolderType = FourCC("ppan"),
    kApplicationsFolderType = FourCC("apps"),
    kFontsFolderType = FourCC("font"),
    kCachedDataFolderType = FourCC("cach"),
    kLogsFolderType = FourCC("logs"),
    kTemporaryFolderType = FourCC("temp"),
    kDesktopFolderType = FourCC("desk"),
    kDocumentsFolderType = FourCC("docs"),
    kCurrentUserFolderType = FourCC("cusr"),
};

OSErr FSFindFolder(FSVolumeRefNum inVRefNum, OSType inFolderType, Boolean inCreateFolder, FSRef* outFoundRef);
