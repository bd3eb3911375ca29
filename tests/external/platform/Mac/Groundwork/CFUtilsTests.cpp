#include <Groundwork/SysWrappers/CoreFoundation/CFUtilsString.h>
#include <Groundwork/SysWrappers/CoreFoundation/CFUtilsWrappers.h>

#include <CoreFoundation/CoreFoundation.h>
#include <CoreGraphics/CoreGraphics.h>

#include <gtest/gtest.h>

#include <string>

namespace {

// Each wrapper is handed a retain of its own; a wrong type must give back exactly that one.
TEST(CFUtilsObject, CopiesShareAndAWrongTypeIsDroppedQuietly)
{
    CFUUIDRef uuid = CFUUIDCreate(nullptr);
    CFArrayRef array = CFArrayCreate(nullptr, nullptr, 0, &kCFTypeArrayCallBacks);

    CFUtils::CFString string(CFRetain(uuid));
    EXPECT_TRUE(string == nullptr);
    EXPECT_EQ(CFGetRetainCount(uuid), 1);

    CFUtils::CFUUID held(uuid);  // adopts our retain
    CFUtils::CFUUID copy(held);
    copy = CFRetain(array);  // gives up the UUID, then drops the array
    EXPECT_TRUE(copy == nullptr);
    EXPECT_EQ(CFGetRetainCount(uuid), 1);
    EXPECT_EQ(CFGetRetainCount(array), 1);

    // Checking another object of the wrong type empties the wrapper as well.
    CFRetain(uuid);
    EXPECT_TRUE(held.ValidateCFType(CFUUIDGetTypeID(), nullptr));
    EXPECT_FALSE(held.ValidateCFType(CFUUIDGetTypeID(), reinterpret_cast<CFUUIDRef>(array)));
    EXPECT_TRUE(held == nullptr);
    EXPECT_EQ(CFGetRetainCount(uuid), 1);

    CGColorSpaceRef space = CGColorSpaceCreateDeviceRGB();
    CFUtils::CGColorSpace wrappedSpace(static_cast<CFTypeRef>(space));  // adopts our retain
    EXPECT_TRUE(wrappedSpace == space);
    EXPECT_EQ(CFGetRetainCount(space), 1);

    CFRelease(uuid);
    CFRelease(array);

    // Copies share; a bare reference assigned is adopted.
    CFArrayRef first = CFArrayCreate(nullptr, nullptr, 0, &kCFTypeArrayCallBacks);
    CFArrayRef second = CFArrayCreate(nullptr, nullptr, 0, &kCFTypeArrayCallBacks);
    CFUtils::CFArray a(first);
    CFUtils::CFArray b(a);
    b = a;
    EXPECT_EQ(CFGetRetainCount(first), 2);
    b = second;
    EXPECT_EQ(CFGetRetainCount(first), 1);
    EXPECT_EQ(b.AsTypeRef(), second);
}

TEST(CFUtilsString, ConvertsToAndFromText)
{
    CFUtils::CFString text("caf\xC3\xA9");
    EXPECT_EQ(text.CStr(), "caf\xC3\xA9");
    EXPECT_EQ(text.CStr(kCFStringEncodingASCII), "");

    auto pascal = text.PStr(kCFStringEncodingMacRoman);
    EXPECT_EQ(std::string(reinterpret_cast<const char*>(&pascal[1]), pascal[0]), "caf\x8E");
    CFUtils::CFString fromPascal(pascal.data(), kCFStringEncodingMacRoman);
    EXPECT_EQ(CFStringCompare(fromPascal.AsConstRef(), text.AsConstRef(), 0), kCFCompareEqualTo);

    char small[4] = "xyz";
    EXPECT_FALSE(text.ConvertToCStr(small, sizeof small));
    EXPECT_EQ(small[0], '\0');
    Str255 pstr;
    EXPECT_TRUE(CFUtils::CFString(std::string(255, 'a').c_str()).ConvertToPStr(pstr));
    EXPECT_EQ(pstr[0], 255);
    EXPECT_FALSE(CFUtils::CFString(std::string(256, 'a').c_str()).ConvertToPStr(pstr));
    EXPECT_EQ(pstr[0], 0);

    EXPECT_TRUE(CFUtils::CFString(static_cast<const char*>(nullptr)) == nullptr);
    EXPECT_EQ(CFUtils::CFString().CStr(), "");
    EXPECT_EQ(CFUtils::CFString(CFUtils::CFString::Format("%d"), 42).CStr(), "42");
    EXPECT_EQ(CFUtils::CFString(CFUtils::CFString::Format(CFSTR("%@!")), CFSTR("x")).CStr(), "x!");
}

TEST(CFUtilsString, Contains)
{
    CFRange where{};
    EXPECT_TRUE(CFUtils::CFStringContains(CFSTR("Hello World"), CFSTR("world"), kCFCompareCaseInsensitive, &where));
    EXPECT_EQ(where.location, 6);
    EXPECT_FALSE(CFUtils::CFStringContains(CFSTR("Hello World"), CFSTR("world")));
    EXPECT_FALSE(CFUtils::CFStringContains(nullptr, CFSTR("a")));
    EXPECT_FALSE(CFUtils::CFStringContains(CFSTR("a"), nullptr));
}

}  // namespace
