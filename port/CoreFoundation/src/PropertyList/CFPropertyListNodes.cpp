// Conversions between libplist's nodes and our values.
#include "CFPropertyListNodes.h"
#include "String/StringEncoding.h"

#include <CoreFoundation/CFData.h>
#include <CoreFoundation/CFDate.h>
#include <CoreFoundation/CFNumber.h>
#include <CoreFoundation/CFString.h>
#include <PortSupport/UniqueHandle.h>

#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <map>
#include <string_view>

namespace cf::plist {

namespace {

// libplist keeps a date as whole seconds and microseconds from 2001 in two 32-bit fields.
// Its binary writer adds the two with their signs, but its binary reader answers the
// microseconds without the sign for times before 2001. So a fraction is read with the sign
// of the seconds, and written with that sign too; only the last second before 2001 cannot
// be told from the first one after it.
CFAbsoluteTime TimeFromNode(plist_t inNode)
{
    int32_t seconds = 0, microseconds = 0;
    plist_get_date_val(inNode, &seconds, &microseconds);
    double fraction = double(microseconds) / 1e6;
    if (seconds != 0)
        fraction = std::copysign(std::fabs(fraction), double(seconds));
    return double(seconds) + fraction;
}

bool DateFitsNode(CFAbsoluteTime inTime)
{
    return std::isfinite(inTime) && inTime > double(std::numeric_limits<int32_t>::min()) &&
           inTime < double(std::numeric_limits<int32_t>::max());
}

plist_t DateNode(CFAbsoluteTime inTime)
{
    double whole = std::trunc(inTime);
    auto microseconds = int32_t(std::lround((inTime - whole) * 1e6));
    if (std::abs(microseconds) >= 1000000) {  // the fraction rounded up to a whole second
        whole += microseconds > 0 ? 1 : -1;
        microseconds = 0;
    }
    return plist_new_date(int32_t(whole), microseconds);
}

class FromNodes {
public:
    FromNodes(CFAllocatorRef inAllocator, CFOptionFlags inOptions, std::string& outError)
        : mAllocator(inAllocator), mOptions(inOptions), mError(outError)
    {
    }

    OwnedValue Convert(plist_t inNode, int inDepth)
    {
        if (inDepth > kMaxDepth)
            return Fail("the property list is nested too deeply");
        switch (plist_get_node_type(inNode)) {
        case PLIST_BOOLEAN:
            return OwnedValue(CFRetain(plist_bool_val_is_true(inNode) ? kCFBooleanTrue : kCFBooleanFalse));
        case PLIST_UINT: {
            uint64_t bits = 0;
            plist_get_uint_val(inNode, &bits);
            auto value = SInt64(bits);  // negative numbers are kept in two's complement
            return Made(CFNumberCreate(mAllocator, kCFNumberSInt64Type, &value));
        }
        case PLIST_REAL: {
            double value = 0;
            plist_get_real_val(inNode, &value);
            return Made(CFNumberCreate(mAllocator, kCFNumberFloat64Type, &value));
        }
        case PLIST_DATE:
            return Made(CFDateCreate(mAllocator, TimeFromNode(inNode)));
        case PLIST_STRING:
            return String(inNode);
        case PLIST_DATA: {
            uint64_t length = 0;
            const char* bytes = plist_get_data_ptr(inNode, &length);
            return Made(MakeData(mAllocator, {reinterpret_cast<const UInt8*>(bytes), std::size_t(length)}, mOptions));
        }
        case PLIST_ARRAY:
            return Array(inNode, inDepth);
        case PLIST_DICT:
            return Dictionary(inNode, inDepth);
        default:
            return Fail("the property list holds a value of a kind that has no counterpart here");
        }
    }

private:
    OwnedValue Fail(std::string inReason)
    {
        if (mError.empty())
            mError = std::move(inReason);
        return OwnedValue();
    }

    OwnedValue Made(CFTypeRef inValue) { return inValue ? OwnedValue(inValue) : Fail("out of memory"); }

    OwnedValue Text(const char* inBytes, std::size_t inLength, CFOptionFlags inOptions)
    {
        std::u16string text;
        if (!Decode({reinterpret_cast<const UInt8*>(inBytes), inLength}, kCFStringEncodingUTF8, false, text))
            return Fail("the property list holds a string that is not valid UTF-8");
        return Made(MakeString(mAllocator, text, inOptions));
    }

    // Keys stay immutable whatever the options say (a key that changed would be lost in its
    // dictionary), so the dictionaries of a list, which mostly share their keys, share their
    // key strings too instead of each making its own.
    OwnedValue Key(const char* inKey)
    {
        auto known = mKeys.find(std::string_view(inKey));
        if (known != mKeys.end())
            return OwnedValue(CFRetain(known->second.Get()));
        OwnedValue key = Text(inKey, std::strlen(inKey), kCFPropertyListImmutable);
        if (key && mKeys.size() < kMostSharedKeys)
            mKeys.emplace(std::string(inKey), OwnedValue(CFRetain(key.Get())));
        return key;
    }

    OwnedValue String(plist_t inNode)
    {
        uint64_t length = 0;
        const char* bytes = plist_get_string_ptr(inNode, &length);
        return Text(bytes ? bytes : "", bytes ? std::size_t(length) : 0, mOptions);
    }

    OwnedValue Array(plist_t inNode, int inDepth)
    {
        uint32_t count = plist_array_get_size(inNode);
        std::vector<OwnedValue> elements;
        elements.reserve(count);
        for (uint32_t i = 0; i < count; ++i) {
            elements.push_back(Convert(plist_array_get_item(inNode, i), inDepth + 1));
            if (!elements.back())
                return OwnedValue();
        }
        return Made(MakeArray(mAllocator, elements, mOptions));
    }

    OwnedValue Dictionary(plist_t inNode, int inDepth)
    {
        std::vector<OwnedValue> keys, values;
        plist_dict_iter iterator = nullptr;
        plist_dict_new_iter(inNode, &iterator);
        port::UniqueMemory<void> iteratorOwner(iterator);
        for (;;) {
            char* key = nullptr;
            plist_t value = nullptr;
            plist_dict_next_item(inNode, iterator, &key, &value);
            port::UniqueMemory<char> keyOwner(key);
            if (value == nullptr)
                break;
            keys.push_back(Key(key ? key : ""));
            if (!keys.back())
                return OwnedValue();
            values.push_back(Convert(value, inDepth + 1));
            if (!values.back())
                return OwnedValue();
        }
        return Made(MakeDictionary(mAllocator, keys, values, mOptions));
    }

    static constexpr std::size_t kMostSharedKeys = 256;

    CFAllocatorRef mAllocator;
    CFOptionFlags mOptions;
    std::string& mError;
    std::map<std::string, OwnedValue, std::less<>> mKeys;
};

class ToNodes {
public:
    explicit ToNodes(std::string& outError) : mError(outError) {}

    Node Convert(CFTypeRef inValue, int inDepth)
    {
        if (inDepth > kMaxDepth)
            return Fail("the property list is nested too deeply (or contains itself)");
        switch (KindOf(inValue)) {
        case Kind::String:
            return String(CFStringRef(inValue));
        case Kind::Number:
            return Number(CFNumberRef(inValue));
        case Kind::Boolean:
            return Node(plist_new_bool(CFBooleanGetValue(CFBooleanRef(inValue)) ? 1 : 0));
        case Kind::Date: {
            CFAbsoluteTime time = CFDateGetAbsoluteTime(CFDateRef(inValue));
            if (!DateFitsNode(time))
                return Fail("a date lies outside the years 1933 to 2069, which the writer cannot hold");
            return Node(DateNode(time));
        }
        case Kind::Data: {
            auto data = CFDataRef(inValue);
            return Node(
                plist_new_data(reinterpret_cast<const char*>(CFDataGetBytePtr(data)), uint64_t(CFDataGetLength(data))));
        }
        case Kind::Array:
            return Array(CFArrayRef(inValue), inDepth);
        case Kind::Dictionary:
            return Dictionary(CFDictionaryRef(inValue), inDepth);
        case Kind::Other:
            break;
        }
        return Fail("the tree holds an object that is not a property-list value");
    }

private:
    Node Fail(std::string inReason)
    {
        if (mError.empty())
            mError = std::move(inReason);
        return Node();
    }

    // libplist's strings end at the first zero byte, so a string holding one is refused
    // rather than cut short.
    bool Text(CFStringRef inString, std::string& outBytes)
    {
        if (!Encode(Units(inString), kCFStringEncodingUTF8, 0, false, outBytes)) {
            mError = "a string holds a lone surrogate, which has no UTF-8 form";
            return false;
        }
        if (outBytes.find('\0') != std::string::npos) {
            mError = "a string holds a NUL character, which the writer cannot hold";
            return false;
        }
        return true;
    }

    Node String(CFStringRef inString)
    {
        std::string bytes;
        return Text(inString, bytes) ? Node(plist_new_string(bytes.c_str())) : Node();
    }

    static Node Number(CFNumberRef inNumber)
    {
        if (CFNumberIsFloatType(inNumber)) {
            double value = 0;
            CFNumberGetValue(inNumber, kCFNumberFloat64Type, &value);
            return Node(plist_new_real(value));
        }
        SInt64 value = 0;
        CFNumberGetValue(inNumber, kCFNumberSInt64Type, &value);
        return Node(plist_new_uint(uint64_t(value)));
    }

    Node Array(CFArrayRef inArray, int inDepth)
    {
        Node array(plist_new_array());
        for (CFTypeRef element : Elements(inArray)) {
            Node child = Convert(element, inDepth + 1);
            if (!child)
                return Node();
            plist_array_append_item(array.get(), child.release());
        }
        return array;
    }

    Node Dictionary(CFDictionaryRef inDictionary, int inDepth)
    {
        Node dictionary(plist_new_dict());
        for (auto [key, value] : SortedEntries(inDictionary)) {
            if (KindOf(key) != Kind::String)
                return Fail("a dictionary has a key that is not a string");
            std::string keyBytes;
            if (!Text(CFStringRef(key), keyBytes))
                return Node();
            Node child = Convert(value, inDepth + 1);
            if (!child)
                return Node();
            plist_dict_set_item(dictionary.get(), keyBytes.c_str(), child.release());
        }
        return dictionary;
    }

    std::string& mError;
};

}  // namespace

Node ParseNode(std::span<const UInt8> inBytes, CFPropertyListFormat inFormat, std::string& outError)
{
    if (inBytes.size() > std::numeric_limits<uint32_t>::max()) {
        outError = "the property list is larger than 4 GB";
        return Node();
    }
    plist_t root = nullptr;
    const auto* bytes = reinterpret_cast<const char*>(inBytes.data());
    if (inFormat == kCFPropertyListBinaryFormat_v1_0)
        plist_from_bin(bytes, uint32_t(inBytes.size()), &root);
    else
        plist_from_xml(bytes, uint32_t(inBytes.size()), &root);
    if (root == nullptr)
        outError = inFormat == kCFPropertyListBinaryFormat_v1_0 ? "the binary property list is damaged"
                                                                : "the XML is not a well-formed property list";
    return Node(root);
}

std::string SerializeNode(plist_t inNode, CFPropertyListFormat inFormat)
{
    char* bytes = nullptr;
    uint32_t length = 0;
    std::string result;
    if (inFormat == kCFPropertyListBinaryFormat_v1_0) {
        plist_to_bin(inNode, &bytes, &length);
        if (bytes)
            result.assign(bytes, length);
        plist_to_bin_free(bytes);
    } else {
        plist_to_xml(inNode, &bytes, &length);
        if (bytes)
            result.assign(bytes, length);
        plist_to_xml_free(bytes);
    }
    return result;
}

CFPropertyListRef ValueFromNode(plist_t inNode, CFAllocatorRef inAllocator, CFOptionFlags inOptions,
                                std::string& outError)
{
    return FromNodes(inAllocator, inOptions, outError).Convert(inNode, 0).Take();
}

Node NodeFromValue(CFPropertyListRef inValue, std::string& outError) { return ToNodes(outError).Convert(inValue, 0); }

}  // namespace cf::plist
