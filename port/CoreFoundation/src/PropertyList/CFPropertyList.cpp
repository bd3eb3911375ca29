// Reading and writing property lists. The form is told by the first bytes. The XML form is
// read and written by our own reader and writer, which are several times faster than going
// through libplist's trees; XML that our reader does not handle, and the binary form, go
// through libplist; the text form through our own reader.
#include "PropertyList/XMLReader.h"
#include "PropertyList/XMLWriter.h"
#include "CFPropertyListNodes.h"
#include "CFPropertyListShape.h"
#include "CFPropertyListSupport.h"
#include "CFPropertyListText.h"

#include <CoreFoundation/CFData.h>
#include <CoreFoundation/CFDate.h>
#include <CoreFoundation/CFNumber.h>
#include <CoreFoundation/CFRuntime.h>
#include <CoreFoundation/CFString.h>

#include <string_view>

namespace {

using namespace cf::plist;

constexpr std::string_view kUTF8Mark = "\xEF\xBB\xBF";

std::string_view AsText(std::span<const UInt8> inBytes)
{
    return {reinterpret_cast<const char*>(inBytes.data()), inBytes.size()};
}

// The XML form starts, after an optional byte-order mark and white space, with a
// declaration, a document type, a comment or the root element. Text that starts with '<'
// otherwise is the text form's data value.
CFPropertyListFormat FormatOf(std::span<const UInt8> inBytes)
{
    std::string_view text = AsText(inBytes);
    if (text.starts_with("bplist"))
        return kCFPropertyListBinaryFormat_v1_0;
    if (text.starts_with(kUTF8Mark))
        text.remove_prefix(kUTF8Mark.size());
    std::size_t start = text.find_first_not_of(" \t\r\n");
    if (start != std::string_view::npos) {
        text.remove_prefix(start);
        for (std::string_view opening : {"<?xml", "<!DOCTYPE", "<!--", "<plist"})
            if (text.starts_with(opening))
                return kCFPropertyListXMLFormat_v1_0;
    }
    return kCFPropertyListOpenStepFormat;
}

CFPropertyListRef ReadLibplist(CFAllocatorRef inAllocator, std::span<const UInt8> inBytes,
                               CFPropertyListFormat inFormat, CFOptionFlags inOptions, std::string& outError)
{
    if (inFormat == kCFPropertyListXMLFormat_v1_0 && AsText(inBytes).starts_with(kUTF8Mark))
        inBytes = inBytes.subspan(kUTF8Mark.size());  // libplist does not expect the mark
    bool sound = inFormat == kCFPropertyListBinaryFormat_v1_0 ? CheckBinaryShape(inBytes, outError)
                                                              : CheckXMLShape(AsText(inBytes), outError);
    if (!sound)
        return nullptr;
    Node root = ParseNode(inBytes, inFormat, outError);
    return root ? ValueFromNode(root.get(), inAllocator, inOptions, outError) : nullptr;
}

void Report(CFStringRef* outError, const std::string& inReason)
{
    if (outError)
        *outError = cf::MakeString(inReason);
}

bool IsValid(CFPropertyListRef inValue, CFPropertyListFormat inFormat, int inDepth)
{
    if (inDepth > kMaxDepth)
        return false;
    switch (KindOf(inValue)) {
    case Kind::String:
    case Kind::Data:
        return true;
    case Kind::Number:
    case Kind::Boolean:
    case Kind::Date:
        return inFormat != kCFPropertyListOpenStepFormat;
    case Kind::Array:
        for (CFTypeRef element : Elements(CFArrayRef(inValue)))
            if (!IsValid(element, inFormat, inDepth + 1))
                return false;
        return true;
    case Kind::Dictionary:
        for (auto [key, value] : SortedEntries(CFDictionaryRef(inValue)))
            if (KindOf(key) != Kind::String || !IsValid(value, inFormat, inDepth + 1))
                return false;
        return true;
    case Kind::Other:
        break;
    }
    return false;
}

// Whether a value can be its own immutable copy: a property-list value in the memory the copy
// is asked for, and nothing in it can change. Lists read from files are fixed all through, and
// sharing them spares remaking every element of a long list each time it is stored again.
bool FixedThroughout(CFAllocatorRef inAllocator, CFPropertyListRef inValue, int inDepth)
{
    const cf::Object& object = cf::Validate(inValue, "CFPropertyListCreateDeepCopy");
    bool local = inAllocator == nullptr || inAllocator == object.Allocator() || object.IsStatic();
    if (inDepth > kMaxDepth || !local || !object.IsFixed())
        return false;
    switch (KindOf(inValue)) {
    case Kind::Array: {
        auto array = CFArrayRef(inValue);
        for (CFIndex i = 0, count = CFArrayGetCount(array); i < count; ++i)
            if (!FixedThroughout(inAllocator, CFArrayGetValueAtIndex(array, i), inDepth + 1))
                return false;
        return true;
    }
    case Kind::Dictionary: {
        struct Walk {
            CFAllocatorRef allocator;
            int depth;
            bool fixed = true;
        } walk{inAllocator, inDepth + 1};
        CFDictionaryApplyFunction(
            CFDictionaryRef(inValue),
            [](const void* inKey, const void* inEntry, void* ioWalk) {
                auto& walk = *static_cast<Walk*>(ioWalk);
                walk.fixed = walk.fixed && KindOf(inKey) == Kind::String &&
                             FixedThroughout(walk.allocator, inKey, walk.depth) &&
                             FixedThroughout(walk.allocator, inEntry, walk.depth);
            },
            &walk);
        return walk.fixed;
    }
    case Kind::Other:
        return false;
    default:
        return true;
    }
}

OwnedValue DeepCopy(CFAllocatorRef inAllocator, CFPropertyListRef inValue, CFOptionFlags inOptions, int inDepth)
{
    if (inDepth > kMaxDepth)
        return OwnedValue();
    if (inOptions == kCFPropertyListImmutable && FixedThroughout(inAllocator, inValue, inDepth))
        return OwnedValue(CFRetain(inValue));
    switch (KindOf(inValue)) {
    // An immutable copy of an immutable string or data is the object itself, which saves
    // remaking every string of a long list.
    case Kind::String:
        if (inOptions == kCFPropertyListImmutable)
            return OwnedValue(CFStringCreateCopy(inAllocator, CFStringRef(inValue)));
        return OwnedValue(MakeString(inAllocator, Units(CFStringRef(inValue)), inOptions));
    case Kind::Data: {
        auto data = CFDataRef(inValue);
        if (inOptions == kCFPropertyListImmutable)
            return OwnedValue(CFDataCreateCopy(inAllocator, data));
        return OwnedValue(
            MakeData(inAllocator, {CFDataGetBytePtr(data), std::size_t(CFDataGetLength(data))}, inOptions));
    }
    case Kind::Number:
    case Kind::Boolean:
    case Kind::Date:
        return OwnedValue(CFRetain(inValue));  // never mutable, so sharing them is a copy
    case Kind::Array: {
        std::vector<OwnedValue> elements;
        for (CFTypeRef element : Elements(CFArrayRef(inValue))) {
            elements.push_back(DeepCopy(inAllocator, element, inOptions, inDepth + 1));
            if (!elements.back())
                return OwnedValue();
        }
        return OwnedValue(MakeArray(inAllocator, elements, inOptions));
    }
    case Kind::Dictionary: {
        std::vector<OwnedValue> keys, values;
        for (auto [key, value] : SortedEntries(CFDictionaryRef(inValue))) {
            if (KindOf(key) != Kind::String)
                return OwnedValue();
            keys.emplace_back(CFStringCreateCopy(inAllocator, CFStringRef(key)));
            values.push_back(DeepCopy(inAllocator, value, inOptions, inDepth + 1));
            if (!keys.back() || !values.back())
                return OwnedValue();
        }
        return OwnedValue(MakeDictionary(inAllocator, keys, values, inOptions));
    }
    case Kind::Other:
        break;
    }
    return OwnedValue();
}

}  // namespace

CFPropertyListRef CFPropertyListCreateWithData(CFAllocatorRef inAllocator, CFDataRef inData, CFOptionFlags inOptions,
                                               CFPropertyListFormat* outFormat, CFStringRef* outError)
{
    if (outError)
        *outError = nullptr;
    cf::Checked<cf::Object>(inData, CFDataGetTypeID(), "CFPropertyListCreateWithData");
    std::span<const UInt8> bytes(CFDataGetBytePtr(inData), std::size_t(CFDataGetLength(inData)));
    if (bytes.empty()) {
        Report(outError, "the data is empty");
        return nullptr;
    }
    std::string reason;
    CFPropertyListFormat format = FormatOf(bytes);
    CFPropertyListRef result = nullptr;
    if (format == kCFPropertyListOpenStepFormat)
        result = ParseText(inAllocator, bytes, inOptions, reason);
    else if (format == kCFPropertyListXMLFormat_v1_0)
        result = ReadXML(inAllocator, AsText(bytes), inOptions).Take();
    if (result == nullptr && format != kCFPropertyListOpenStepFormat)
        result = ReadLibplist(inAllocator, bytes, format, inOptions, reason);
    if (result == nullptr)
        Report(outError, reason.empty() ? "the data is not a property list" : reason);
    else if (outFormat)
        *outFormat = format;
    return result;
}

CFDataRef CFPropertyListCreateData(CFAllocatorRef inAllocator, CFPropertyListRef inPropertyList,
                                   CFPropertyListFormat inFormat, CFOptionFlags, CFStringRef* outError)
{
    if (outError)
        *outError = nullptr;
    cf::Validate(inPropertyList, "CFPropertyListCreateData");
    if (inFormat != kCFPropertyListXMLFormat_v1_0 && inFormat != kCFPropertyListBinaryFormat_v1_0) {
        Report(outError, inFormat == kCFPropertyListOpenStepFormat ? "the text form of property lists cannot be written"
                                                                   : "unknown property-list format");
        return nullptr;
    }
    std::string reason, bytes;
    Node root = inFormat == kCFPropertyListXMLFormat_v1_0 ? Node() : NodeFromValue(inPropertyList, reason);
    if (inFormat == kCFPropertyListXMLFormat_v1_0 ? !WriteXML(inPropertyList, bytes, reason) : !root) {
        Report(outError, reason);
        return nullptr;
    }
    if (root)
        bytes = SerializeNode(root.get(), inFormat);
    CFDataRef data = CFDataCreate(inAllocator, reinterpret_cast<const UInt8*>(bytes.data()), CFIndex(bytes.size()));
    if (data == nullptr)
        Report(outError, "out of memory");
    return data;
}

CFPropertyListRef CFPropertyListCreateFromXMLData(CFAllocatorRef inAllocator, CFDataRef inXMLData,
                                                  CFOptionFlags inMutabilityOption, CFStringRef* outErrorString)
{
    return CFPropertyListCreateWithData(inAllocator, inXMLData, inMutabilityOption, nullptr, outErrorString);
}

CFDataRef CFPropertyListCreateXMLData(CFAllocatorRef inAllocator, CFPropertyListRef inPropertyList)
{
    return CFPropertyListCreateData(inAllocator, inPropertyList, kCFPropertyListXMLFormat_v1_0, 0, nullptr);
}

Boolean CFPropertyListIsValid(CFPropertyListRef inPropertyList, CFPropertyListFormat inFormat)
{
    cf::Validate(inPropertyList, "CFPropertyListIsValid");
    return IsValid(inPropertyList, inFormat, 0);
}

CFPropertyListRef CFPropertyListCreateDeepCopy(CFAllocatorRef inAllocator, CFPropertyListRef inPropertyList,
                                               CFOptionFlags inMutabilityOption)
{
    cf::Validate(inPropertyList, "CFPropertyListCreateDeepCopy");
    return DeepCopy(inAllocator, inPropertyList, inMutabilityOption, 0).Take();
}
