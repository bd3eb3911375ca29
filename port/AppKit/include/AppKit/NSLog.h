// The framework's log: one line on standard error with the date, the process's name and id,
// and the formatted message, "2026-11-24 10:15:02.117 panehost[4242] text".
#pragma once

#include <AppKit/NSString.h>

void NSLog(NSString* inFormat, ...);
void NSLogv(NSString* inFormat, va_list inArguments);
