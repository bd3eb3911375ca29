// The type-checked wrappers of the product code for arrays, URLs, UUIDs and the graphics
// objects. Each adopts what it is given and ends up empty if the object has another type.
#pragma once

#include <Groundwork/SysWrappers/CoreFoundation/CFUtilsObject.h>

#include <CoreFoundation/CFArray.h>
#include <CoreFoundation/CFURL.h>
#include <CoreFoundation/CFUUID.h>
#include <CoreGraphics/CoreGraphics.h>

namespace CFUtils {

class CFArray : public TypedObject<CFArrayRef, CFArrayGetTypeID> {
public:
    using TypedObject::TypedObject;
    using TypedObject::operator=;
};

class CFURL : public TypedObject<CFURLRef, CFURLGetTypeID> {
public:
    using TypedObject::TypedObject;
    using TypedObject::operator=;
};

class CFUUID : public TypedObject<CFUUIDRef, CFUUIDGetTypeID> {
public:
    using TypedObject::TypedObject;
    using TypedObject::operator=;
};

class CGImage : public TypedObject<CGImageRef, CGImageGetTypeID> {
public:
    using TypedObject::TypedObject;
    using TypedObject::operator=;
};

class CGContext : public TypedObject<CGContextRef, CGContextGetTypeID> {
public:
    using TypedObject::TypedObject;
    using TypedObject::operator=;
};

class CGColorSpace : public TypedObject<CGColorSpaceRef, CGColorSpaceGetTypeID> {
public:
    using TypedObject::TypedObject;
    using TypedObject::operator=;
};

}  // namespace CFUtils
