// Preferences: property-list values stored by key in domains, one domain per application,
// user and host. Changes are seen by this process at once and reach the domain's file, and
// so other processes, when the domain is synchronised.
#pragma once

#include <CoreFoundation/CFArray.h>
#include <CoreFoundation/CFBase.h>
#include <CoreFoundation/CFPropertyList.h>

// The application that every application sees ("global" values), and the running one.
extern const CFStringRef kCFPreferencesAnyApplication;
extern const CFStringRef kCFPreferencesCurrentApplication;
// Values for every host, or for this host only.
extern const CFStringRef kCFPreferencesAnyHost;
extern const CFStringRef kCFPreferencesCurrentHost;
// Values for every user (read only), or for the current user.
extern const CFStringRef kCFPreferencesAnyUser;
extern const CFStringRef kCFPreferencesCurrentUser;

// The value of a key in the application's search list: the current user before every user,
// the application before any application, this host before any host. NULL when no domain
// has the key.
CFPropertyListRef CFPreferencesCopyAppValue(CFStringRef inKey, CFStringRef inApplicationID);
// The value as an integer (a number, or a string of digits); 0 and a false flag otherwise.
CFIndex CFPreferencesGetAppIntegerValue(CFStringRef inKey, CFStringRef inApplicationID,
                                        Boolean* outKeyExistsAndHasValidFormat);
// The value as a boolean (a boolean, a number, or "true"/"yes"/"false"/"no" in any letter
// case); false and a false flag otherwise.
Boolean CFPreferencesGetAppBooleanValue(CFStringRef inKey, CFStringRef inApplicationID,
                                        Boolean* outKeyExistsAndHasValidFormat);
// Sets the value for the current user on any host; a NULL value removes the key.
void CFPreferencesSetAppValue(CFStringRef inKey, CFPropertyListRef inValue, CFStringRef inApplicationID);
// Writes the application's pending changes and reads what other processes wrote.
Boolean CFPreferencesAppSynchronize(CFStringRef inApplicationID);

// The same for exactly one domain.
CFPropertyListRef CFPreferencesCopyValue(CFStringRef inKey, CFStringRef inApplicationID, CFStringRef inUserName,
                                         CFStringRef inHostName);
void CFPreferencesSetValue(CFStringRef inKey, CFPropertyListRef inValue, CFStringRef inApplicationID,
                           CFStringRef inUserName, CFStringRef inHostName);
// False when the changes could not be written (every-user domains cannot be written).
Boolean CFPreferencesSynchronize(CFStringRef inApplicationID, CFStringRef inUserName, CFStringRef inHostName);
// The keys of one domain, or NULL when it has none.
CFArrayRef CFPreferencesCopyKeyList(CFStringRef inApplicationID, CFStringRef inUserName, CFStringRef inHostName);

// A port extension: the POSIX path of the file that keeps a domain's values, or NULL when the
// arguments name a domain that is not kept here. The Folder Manager answers the preferences
// folder from it, so that the two never disagree.
CFStringRef _CFPreferencesCopyDomainPath(CFStringRef inApplicationID, CFStringRef inUserName, CFStringRef inHostName);

// A port extension: forgets all the process keeps of the domains, the values read from their
// files (read again at their next use) and changes not yet written (lost). Tests that count
// live objects call it between tests, since the store otherwise keeps them for the process's life.
void _CFPreferencesFlushCaches();
