// Everything the system-service layer offers, in one include.
#pragma once

#include <CoreFoundation/CoreFoundation.h>

#include <Carbon/MacErrors.h>
#include <Carbon/Script.h>
#include <Carbon/TextCommon.h>
#include <Carbon/DateTimeUtils.h>
#include <Carbon/Finder.h>
#include <Carbon/Files.h>
#include <Carbon/FilesExtras.h>
#include <Carbon/CFURLFSRef.h>
#include <Carbon/LaunchServices.h>
#include <Carbon/Resources.h>
#include <Carbon/TextUtils.h>
#include <Carbon/CFBundleResources.h>
#include <Carbon/Folders.h>
#include <Carbon/UnicodeUtilities.h>
#include <Carbon/MacMemory.h>
#include <Carbon/Processes.h>
#include <Carbon/AEDataModel.h>
#include <Carbon/AppleEvents.h>
#include <Carbon/MacWindows.h>
#include <Carbon/Notification.h>
#include <Carbon/CarbonEvents.h>
#include <Carbon/Sound.h>
