// Text between the runtime's strings and Qt's, both UTF-16.
#pragma once

#include <AppKit/NSString.h>

#include <QString>

namespace appkit {

QString ToQString(NSString* inString);
// An autoreleased string with the same text.
NSString* FromQString(const QString& inText);

}  // namespace appkit
