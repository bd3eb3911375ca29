// Formatted strings: C conversions, objects, widths and precisions, positional arguments.
#include "CFTesting.h"

#include <gtest/gtest.h>

#include <climits>
#include <cmath>
#include <cstdint>
#include <string>

namespace {

const char* const kNullResult = "<NULL>";

template <class... Args>
std::string Format(const char* inFormat, Args... inArgs)
{
    cftest::Owned<CFStringRef> text(CFStringCreateWithFormat(nullptr, nullptr, CFSTR(inFormat), inArgs...));
    return text ? cf::UTF8(text) : kNullResult;
}

TEST(FormatNumbers, ConversionsFlagsLengthsAndPrecisions)
{
    EXPECT_EQ(Format("%d|%i|%u|%o|%x|%X", -42, 42, 42u, 8, 255, 255), "-42|42|42|10|ff|FF");
    EXPECT_EQ(Format("%+05d|%-5d|% d|%#x|%#o|%.3d", 42, 42, 7, 42, 8, 5), "+0042|42   | 7|0x2a|010|005");
    EXPECT_EQ(Format("%hhd|%hhu|%hd|%hu", 300, 256, 70000, -1), "44|0|4464|65535");
    EXPECT_EQ(Format("%ld|%lu|%lld|%qd", LONG_MIN, ULONG_MAX, LLONG_MAX, -1LL),
              "-9223372036854775808|18446744073709551615|9223372036854775807|-1");
    EXPECT_EQ(Format("%zu|%zd|%td|%jd|%jx", SIZE_MAX, ssize_t(-3), ptrdiff_t(-4), INTMAX_MIN, uintmax_t(0xABC)),
              "18446744073709551615|-3|-4|-9223372036854775808|abc");
    EXPECT_EQ(Format("%u", -1), "4294967295");  // an int read as unsigned, not widened to 64 bits
    EXPECT_EQ(Format("%f|%.2f|%10.3f|%-8.1f|", 3.14159, 3.14159, 3.14159, 2.25), "3.141590|3.14|     3.142|2.2     |");
    EXPECT_EQ(Format("%e|%E|%g|%G", 12345.678, 0.00012, 0.0001, 1e20), "1.234568e+04|1.200000E-04|0.0001|1E+20");
    EXPECT_EQ(Format("%a|%A|%F|%f", 1.0, 0.5, HUGE_VAL, -HUGE_VAL), "0x1p+0|0X1P-1|INF|-inf");
    EXPECT_EQ(Format("%Lf|%.1Lf|%+.0f", 1.5L, 2.25L, 2.0), "1.500000|2.2|+2");
}

// Widths and precisions may come from arguments, and arguments may be named in any order and reused.
TEST(FormatArguments, StarsAndPositions)
{
    EXPECT_EQ(Format("[%*d][%-*d][%*d]", 5, 42, 4, 7, -4, 7), "[   42][7   ][7   ]");
    EXPECT_EQ(Format("[%.*f][%.*f]", 2, 3.14159, -1, 3.14159), "[3.14][3.141590]");
    EXPECT_EQ(Format("[%*.*s][%-6.2s]", 6, 2, "hello", "hello"), "[    he][he    ]");
    EXPECT_EQ(Format("[%*@][%.*@]", 4, CFSTR("ab"), 1, CFSTR("xyz")), "[  ab][x]");
    EXPECT_EQ(Format("%2$@ %1$@", CFSTR("world"), CFSTR("hello")), "hello world");
    EXPECT_EQ(Format("%3$s-%1$d-%2$.1f-%1$x", 255, 2.5, "x"), "x-255-2.5-ff");
    EXPECT_EQ(Format("[%2$*1$d][%2$-*1$d]", 4, 9), "[   9][9   ]");
    EXPECT_EQ(Format("%1$.*2$f", 3.14159, 3), "3.142");
}

// Strings insert themselves, other objects their description; unknown conversions stay as written.
TEST(FormatText, CharactersStringsObjectsAndPointers)
{
    const UniChar units[] = {'U', 0x00E9, 0xD83D, 0xDE00, 0};
    const char unterminated[3] = {'a', 'b', 'c'};  // the precision must stop the read
    EXPECT_EQ(Format("%s|%S|%C|%c|%lc|%ls", "caf\xC3\xA9", units, UniChar(0x20AC), 'A', wint_t(0x1F600), L"w\u00FF"),
              "caf\xC3\xA9|U\xC3\xA9\xF0\x9F\x98\x80|\xE2\x82\xAC|A|\xF0\x9F\x98\x80|w\xC3\xBF");
    EXPECT_EQ(Format("%.3s|%.2S|%c", unterminated, units, 0xE9), "abc|U\xC3\xA9|\xC3\xA9");
    EXPECT_EQ(Format("%s|%S|%@", static_cast<const char*>(nullptr), static_cast<const UniChar*>(nullptr), nullptr),
              "(null)|(null)|(null)");
    EXPECT_EQ(Format("%s", "a\xFF"
                           "b"),
              "a\xEF\xBF\xBD"
              "b");  // a stray byte becomes U+FFFD
    EXPECT_EQ(Format("\xC3\xA9t\xC3\xA9 %d%%", 100), "\xC3\xA9t\xC3\xA9 100%");
    int port = 6001;
    double real = 1.5;
    cftest::Owned<CFNumberRef> integer(CFNumberCreate(nullptr, kCFNumberIntType, &port));
    cftest::Owned<CFNumberRef> fraction(CFNumberCreate(nullptr, kCFNumberDoubleType, &real));
    EXPECT_EQ(Format("<%@>", CFSTR("caf\xC3\xA9")), "<caf\xC3\xA9>");
    // Numbers and booleans print their values; other objects their description.
    EXPECT_EQ(Format("%@|%@|%@|%@|%.2@", integer.get(), fraction.get(), kCFBooleanTrue, kCFBooleanFalse, integer.get()),
              "6001|1.5|true|false|60");
    EXPECT_EQ(Format("%@", kCFNull), cf::DescribeValue(kCFNull));
    EXPECT_EQ(Format("%p|%p|%8p|", reinterpret_cast<void*>(0xbeef), nullptr, reinterpret_cast<void*>(0x1)),
              "0xbeef|0x0|     0x1|");
    EXPECT_EQ(Format("100%% %y %d%", 5), "100% %y 5%");
}

TEST(FormatPositions, UnnamedOrConflictingArgumentsGiveNull)
{
    EXPECT_EQ(Format("%1$d %3$d", 1, 2, 3), kNullResult);  // nothing says what argument 2 is
    EXPECT_EQ(Format("%1$d %1$s", 1), kNullResult);        // one argument, two types
    EXPECT_EQ(Format("%0$d", 1), kNullResult);
    EXPECT_EQ(Format("%99999999999d", 1), kNullResult);  // a width no int holds
}

TEST(FormatAppend, AppendsToAMutableStringAndRefusesAnImmutableOne)
{
    CFMutableStringRef text = CFStringCreateMutable(nullptr, 0);
    CFStringAppendCString(text, "x=", kCFStringEncodingUTF8);
    CFStringAppendFormat(text, nullptr, CFSTR("%d, %@"), 5, text);  // the string itself as an argument
    EXPECT_EQ(cf::UTF8(text), "x=5, x=");
    CFRelease(text);
    EXPECT_DEATH(CFStringAppendFormat(const_cast<CFMutableStringRef>(CFSTR("fixed")), nullptr, CFSTR("%d"), 1),
                 "CFStringAppendFormat: the string .* is not mutable");
    EXPECT_DEATH(CFStringCreateWithFormat(nullptr, nullptr, nullptr), "CFStringCreateWithFormat");
}

}  // namespace
