// The application's notifications.
#pragma once

#include <AppKit/NSString.h>

// Posted each time the application is about to become the active one.
extern NSString* const NSApplicationWillBecomeActiveNotification;
