// The application framework: the port's classes, written on Qt 6 Widgets.
#pragma once

#include <AppKit/NSAlert.h>
#include <AppKit/NSApplication.h>
#include <AppKit/NSBundle.h>
#include <AppKit/NSControl.h>
#include <AppKit/NSLog.h>
#include <AppKit/NSNib.h>
#include <AppKit/NSNotificationCenter.h>
#include <AppKit/NSObject.h>
#include <AppKit/NSString.h>
#include <AppKit/NSTimer.h>
#include <AppKit/NSView.h>
#include <AppKit/NSWindow.h>
#include <AppKit/NSWorkspace.h>
