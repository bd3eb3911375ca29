#include <AppKit/NSApplication.h>

NSString* const NSApplicationWillBecomeActiveNotification = NSSTR("NSApplicationWillBecomeActiveNotification");
