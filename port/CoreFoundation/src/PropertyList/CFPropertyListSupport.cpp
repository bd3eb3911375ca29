// Constructors and walkers shared by the property-list readers and writers.
#include "CFPropertyListSupport.h"

#include <CoreFoundation/CFData.h>
#include <CoreFoundation/CFDate.h>
#include <CoreFoundation/CFNumber.h>
#include <CoreFoundation/CFString.h>

#include <algorithm>
#include <array>

namespace cf::plist {

namespace {

bool MutableContainers(CFOptionFlags inOptions)
{
    return (inOptions & (kCFPropertyListMutableContainers | kCFPropertyListMutableContainersAndLeaves)) != 0;
}
bool MutableLeaves(CFOptionFlags inOptions) { return (inOptions & kCFPropertyListMutableContainersAndLeaves) != 0; }

}  // namespace

Kind KindOf(CFTypeRef inValue)
{
    CFTypeID type = CFGetTypeID(inValue);
    if (type == CFStringGetTypeID())
        return Kind::String;
    if (type == CFNumberGetTypeID())
        return Kind::Number;
    if (type == CFBooleanGetTypeID())
        return Kind::Boolean;
    if (type == CFDateGetTypeID())
        return Kind::Date;
    if (type == CFDataGetTypeID())
        return Kind::Data;
    if (type == CFArrayGetTypeID())
        return Kind::Array;
    if (type == CFDictionaryGetTypeID())
        return Kind::Dictionary;
    return Kind::Other;
}

CFTypeRef MakeString(CFAllocatorRef inAllocator, std::u16string_view inText, CFOptionFlags inOptions)
{
    const auto* units = reinterpret_cast<const UniChar*>(inText.data());
    if (!MutableLeaves(inOptions))
        return CFStringCreateWithCharacters(inAllocator, units, CFIndex(inText.size()));
    CFMutableStringRef string = CFStringCreateMutable(inAllocator, 0);
    if (string)
        CFStringAppendCharacters(string, units, CFIndex(inText.size()));
    return string;
}

CFTypeRef MakeData(CFAllocatorRef inAllocator, std::span<const UInt8> inBytes, CFOptionFlags inOptions)
{
    if (!MutableLeaves(inOptions))
        return CFDataCreate(inAllocator, inBytes.data(), CFIndex(inBytes.size()));
    CFMutableDataRef data = CFDataCreateMutable(inAllocator, 0);
    if (data)
        CFDataAppendBytes(data, inBytes.data(), CFIndex(inBytes.size()));
    return data;
}

namespace {

constexpr std::size_t kPairwiseLimit = 16;

// Whether no key repeats; a dictionary's few keys are compared pairwise.
bool UniqueKeys(std::span<const OwnedValue> inKeys)
{
    if (inKeys.size() > kPairwiseLimit)
        return false;
    for (std::size_t i = 0; i < inKeys.size(); ++i)
        for (std::size_t j = i + 1; j < inKeys.size(); ++j)
            if (CFEqual(inKeys[i].Get(), inKeys[j].Get()))
                return false;
    return true;
}

}  // namespace

CFTypeRef MakeArray(CFAllocatorRef inAllocator, std::span<const OwnedValue> inElements, CFOptionFlags inOptions)
{
    std::vector<const void*> values;
    values.reserve(inElements.size());
    for (const OwnedValue& element : inElements)
        values.push_back(element.Get());
    if (!MutableContainers(inOptions))
        return CFArrayCreate(inAllocator, values.data(), CFIndex(values.size()), &kCFTypeArrayCallBacks);
    CFMutableArrayRef array = CFArrayCreateMutable(inAllocator, 0, &kCFTypeArrayCallBacks);
    if (array)
        for (const void* value : values)
            CFArrayAppendValue(array, value);
    return array;
}

CFTypeRef MakeDictionary(CFAllocatorRef inAllocator, std::span<const OwnedValue> inKeys,
                         std::span<const OwnedValue> inValues, CFOptionFlags inOptions)
{
    std::size_t count = std::min(inKeys.size(), inValues.size());
    if (!MutableContainers(inOptions) && UniqueKeys(inKeys.first(count))) {
        // Made at once: filling a mutable dictionary and copying it costs twice as much, which
        // shows in lists of many small dictionaries; for the same reason without a heap block.
        std::array<const void*, kPairwiseLimit> keys, values;
        for (std::size_t i = 0; i < count; ++i) {
            keys[i] = inKeys[i].Get();
            values[i] = inValues[i].Get();
        }
        return CFDictionaryCreate(inAllocator, keys.data(), values.data(), CFIndex(count),
                                  &kCFTypeDictionaryKeyCallBacks, &kCFTypeDictionaryValueCallBacks);
    }
    Owned<CFMutableDictionaryRef> dictionary(
        CFDictionaryCreateMutable(inAllocator, 0, &kCFTypeDictionaryKeyCallBacks, &kCFTypeDictionaryValueCallBacks));
    if (!dictionary)
        return nullptr;
    for (std::size_t i = 0; i < count; ++i)
        CFDictionarySetValue(dictionary.Get(), inKeys[i].Get(), inValues[i].Get());
    if (MutableContainers(inOptions))
        return dictionary.Take();
    return CFDictionaryCreateCopy(inAllocator, dictionary.Get());
}

std::vector<CFTypeRef> Elements(CFArrayRef inArray)
{
    std::vector<CFTypeRef> elements(std::size_t(CFArrayGetCount(inArray)));
    CFArrayGetValues(inArray, CFRangeMake(0, CFIndex(elements.size())), elements.data());
    return elements;
}

Entries SortedEntries(CFDictionaryRef inDictionary)
{
    Entries entries;
    SortedEntries(inDictionary, entries);
    return entries;
}

void SortedEntries(CFDictionaryRef inDictionary, Entries& outEntries)
{
    outEntries.clear();
    outEntries.reserve(std::size_t(CFDictionaryGetCount(inDictionary)));
    CFDictionaryApplyFunction(
        inDictionary,
        [](const void* inKey, const void* inValue, void* ioEntries) {
            static_cast<Entries*>(ioEntries)->emplace_back(inKey, inValue);
        },
        &outEntries);
    bool allStrings = std::all_of(outEntries.begin(), outEntries.end(), [](const auto& inEntry) {
        return CFGetTypeID(inEntry.first) == CFStringGetTypeID();
    });
    if (allStrings)
        std::sort(outEntries.begin(), outEntries.end(), [](const auto& inLeft, const auto& inRight) {
            return CFStringCompare(CFStringRef(inLeft.first), CFStringRef(inRight.first), 0) == kCFCompareLessThan;
        });
}

std::u16string Units(CFStringRef inString)
{
    std::u16string text(std::size_t(CFStringGetLength(inString)), u'\0');
    CFStringGetCharacters(inString, CFRangeMake(0, CFIndex(text.size())), reinterpret_cast<UniChar*>(text.data()));
    return text;
}

}  // namespace cf::plist
