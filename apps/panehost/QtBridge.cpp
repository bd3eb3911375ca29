#include "QtBridge.h"

NSString* ToNSString(const QString& inText) { return NSString::stringWithUTF8String(inText.toUtf8().constData()); }

QString ToQString(NSString* inText) { return inText ? QString::fromStdString(inText->UTF8String()) : QString(); }
