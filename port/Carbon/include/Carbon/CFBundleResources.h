// The resource files of a bundle: "<executable>.rsrc" in its resources folder, and
// "Localized.rsrc" of the user's preferred localisation (found as CFBundleCopyResourceURL
// finds resources). Each is a resource file in its data fork, or else in its resource fork.
// The localized file is opened after the other, so it becomes the current resource file and
// its resources are found before those of the other.
#pragma once

#include <Carbon/Resources.h>
#include <CoreFoundation/CFBundle.h>

// Opens both files; a number is kResFileNotOpened for a file the bundle lacks, and either
// pointer may be NULL. noErr when at least one file was opened; fnfErr when the bundle has
// neither; else the status of the failed opening.
SInt32 CFBundleOpenBundleResourceFiles(CFBundleRef inBundle, ResFileRefNum* outRefNum,
                                       ResFileRefNum* outLocalizedRefNum);
// Opens both files and answers the number of the one that is not localized (the localized
// one's when the bundle has only that), or kResFileNotOpened.
ResFileRefNum CFBundleOpenBundleResourceMap(CFBundleRef inBundle);
// Closes the file of that number and the localized file opened together with it.
void CFBundleCloseBundleResourceMap(CFBundleRef inBundle, ResFileRefNum inRefNum);
