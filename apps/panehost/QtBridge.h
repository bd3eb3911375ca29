// Text between the framework and Qt in the settings host.
#pragma once

#include <AppKit/NSString.h>

#include <QString>

// An autoreleased framework string with the same text.
NSString* ToNSString(const QString& inText);
QString ToQString(NSString* inText);
