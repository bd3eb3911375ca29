// Property lists: trees of strings, numbers, booleans, dates, data, arrays and dictionaries
// with string keys. They are read from their XML and binary forms and from the older text
// form of string tables ("key" = "value";), and written in the XML and binary forms.
#pragma once

#include <CoreFoundation/CFBase.h>
#include <CoreFoundation/CFData.h>

enum CFPropertyListFormat : CFIndex {
    kCFPropertyListOpenStepFormat = 1,  // the older text form: read only
    kCFPropertyListXMLFormat_v1_0 = 100,
    kCFPropertyListBinaryFormat_v1_0 = 200,
};

// What a reader makes mutable: nothing, the arrays and dictionaries, or those and the
// strings and data as well.
using CFPropertyListMutabilityOptions = CFOptionFlags;
enum : CFPropertyListMutabilityOptions {
    kCFPropertyListImmutable = 0,
    kCFPropertyListMutableContainers = 1,
    kCFPropertyListMutableContainersAndLeaves = 2,
};

// Reads a property list in any of the three forms, telling which one through outFormat.
// Bytes that are not a property list answer NULL and, through outError, a description of
// the fault that the caller releases.
CFPropertyListRef CFPropertyListCreateWithData(CFAllocatorRef inAllocator, CFDataRef inData, CFOptionFlags inOptions,
                                               CFPropertyListFormat* outFormat, CFStringRef* outError);

// Writes inPropertyList in the XML or the binary form (the text form cannot be written).
// A tree holding anything else than property-list values answers NULL and a reason.
CFDataRef CFPropertyListCreateData(CFAllocatorRef inAllocator, CFPropertyListRef inPropertyList,
                                   CFPropertyListFormat inFormat, CFOptionFlags inOptions, CFStringRef* outError);

// The older pair of calls: reading any form, writing XML.
CFPropertyListRef CFPropertyListCreateFromXMLData(CFAllocatorRef inAllocator, CFDataRef inXMLData,
                                                  CFOptionFlags inMutabilityOption, CFStringRef* outErrorString);
CFDataRef CFPropertyListCreateXMLData(CFAllocatorRef inAllocator, CFPropertyListRef inPropertyList);

// Whether the tree can be written in inFormat: only property-list values, string keys,
// and for the text form no numbers, booleans or dates.
Boolean CFPropertyListIsValid(CFPropertyListRef inPropertyList, CFPropertyListFormat inFormat);

// A copy of the whole tree; inMutabilityOption says which parts of the copy are mutable.
// NULL when the tree holds something that is not a property-list value.
CFPropertyListRef CFPropertyListCreateDeepCopy(CFAllocatorRef inAllocator, CFPropertyListRef inPropertyList,
                                               CFOptionFlags inMutabilityOption);
