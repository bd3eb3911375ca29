// The login window's list of applications opened at log-in: finding, adding, removing and
// moving one item, and clearing out other copies of the same helper along the way.
#pragma once

#include <CoreFoundation/CFString.h>
#include <CoreFoundation/CFURL.h>

// The values are stored by callers; they must not change.
enum UpdateLoginItemsAction {
    kAddIfNotFound = 0,                            // keep an entry where it is, else append one
    kAddToEndIfNotFoundButMoveToEndIfPresent = 1,  // make the entry the last one
    kRemoveIfFound = 2,                            // remove every entry of the item
    kJustSeeIfItsThere = 3,                        // report presence
    kMoveToEndIfPresent = 4,                       // the same as 1, appending a missing entry too
};

// Edits the list for inFile (made absolute first). When inOldVariation is given, every entry
// whose file name contains it (in any letter case) but whose path is not inFile's is a stale
// copy of the same helper and is removed, whatever the action. Answers, for
// kJustSeeIfItsThere, whether inFile is in the list; for the other actions, whether the list
// changed. The list is written back only when it changed.
bool UpdateLoginItems(CFURLRef inFile, CFStringRef inOldVariation, UpdateLoginItemsAction action);
