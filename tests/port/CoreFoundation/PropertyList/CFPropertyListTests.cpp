// Property lists: dates; XML and binary that Python's plistlib reads back identically, and
// plistlib's files read identically here; the text form of string tables; damaged input;
// what cannot be written; mutability and deep copies.
#include "PropertyListTesting.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <ctime>
#include <string>

using namespace plisttest;

namespace {

// Prints plistlib's view of a file in the same canonical form as Dump; "xml" and "binary"
// first write a file with every kind of value.
constexpr const char* kPlistlib = R"PY(
import datetime, plistlib, sys
EPOCH = datetime.datetime(2001, 1, 1)
def dump(v):
    if isinstance(v, bool): return 'true' if v else 'false'
    if isinstance(v, int): return 'i%d' % v
    if isinstance(v, float): return 'r%.17g' % v
    if isinstance(v, str): return 's"' + v.replace('\\', '\\\\').replace('"', '\\"') + '"'
    if isinstance(v, bytes): return 'x' + v.hex()
    if isinstance(v, datetime.datetime): return 'd%.3f' % (v - EPOCH).total_seconds()
    if isinstance(v, list): return '[' + ','.join(map(dump, v)) + ']'
    if isinstance(v, dict): return '{' + ','.join(dump(k) + ':' + dump(v[k]) for k in sorted(v)) + '}'
    raise TypeError(type(v))
mode, path = sys.argv[1], sys.argv[2]
if mode != 'read':
    value = {
        'string': 'plain', 'unicode': 'h\u00e9llo \u2603 \U0001F600 "q" \\', 'empty': '',
        'negative': -42, 'big': 2**40 + 3, 'min': -2**63, 'max': 2**63 - 1, 'zero': 0,
        'real': 0.1, 'tiny': -2.5e-10, 'whole': 3.0, 'yes': True, 'no': False,
        'date': datetime.datetime(2020, 5, 17, 12, 30, 45), 'old': datetime.datetime(1990, 1, 1),
        'data': b'\x00\x01\xfe\xff', 'nodata': b'',
        'array': [1, 'two', [3.0], {}, []], 'dict': {'nested': {'deep': [b'', 'x', False]}},
    }
    if mode == 'binary':
        value['fraction'] = datetime.datetime(2010, 1, 1, 0, 0, 0, 250000)
    with open(path, 'wb') as f:
        plistlib.dump(value, f, fmt=plistlib.FMT_BINARY if mode == 'binary' else plistlib.FMT_XML)
with open(path, 'rb') as f:
    sys.stdout.buffer.write(dump(plistlib.load(f)).encode('utf-8'))
)PY";

Ref Integer(SInt64 inValue) { return Ref(CFNumberCreate(nullptr, kCFNumberSInt64Type, &inValue)); }
Ref Real(double inValue) { return Ref(CFNumberCreate(nullptr, kCFNumberFloat64Type, &inValue)); }

Ref ArrayOf(std::initializer_list<CFTypeRef> inValues)
{
    std::vector<const void*> values(inValues);
    return Ref(CFArrayCreate(nullptr, values.data(), CFIndex(values.size()), &kCFTypeArrayCallBacks));
}

// Every kind of value, at the edges of what the forms can hold.
Ref SampleTree(bool inWithFraction)
{
    CFMutableDictionaryRef tree = CFDictionaryCreateMutable(nullptr, 0, &kCFTypeDictionaryKeyCallBacks,
                                                            &kCFTypeDictionaryValueCallBacks);
    auto put = [&](const char* inKey, Ref inValue) {
        Ref key(Str(inKey));
        CFDictionarySetValue(tree, key.get(), inValue.get());
    };
    put("unicode", Ref(Str("h\u00e9llo \u2603 \U0001F600 <&> \"q\" \\")));
    put("empty", Ref(Str("")));
    put("negative", Integer(-42));
    put("big", Integer((SInt64(1) << 40) + 3));
    put("min", Integer(INT64_MIN));
    put("max", Integer(INT64_MAX));
    put("real", Real(0.1));
    put("tiny", Real(-2.5e-10));
    put("yes", Ref(CFRetain(kCFBooleanTrue)));
    put("no", Ref(CFRetain(kCFBooleanFalse)));
    put("date", Ref(CFDateCreate(nullptr, 611411445.0)));
    put("old", Ref(CFDateCreate(nullptr, -347155200.0)));
    if (inWithFraction)  // the XML form keeps whole seconds only
        put("fraction", Ref(CFDateCreate(nullptr, 283996800.25)));
    put("data", Ref(Bytes(std::string_view("\0\1\xfe\xff", 4))));
    Ref inner = ArrayOf({});
    Ref deep = ArrayOf({kCFBooleanFalse, inner.get()});
    put("array", ArrayOf({deep.get(), kCFBooleanTrue}));
    return Ref(tree);
}

TEST(CFDate, HoldsAnAbsoluteTimeAndComparesByIt)
{
    Ref early(CFDateCreate(nullptr, -1.5)), same(CFDateCreate(nullptr, -1.5)), late(CFDateCreate(nullptr, 86400));
    auto first = early.as<CFDateRef>(), second = late.as<CFDateRef>();
    EXPECT_EQ(CFDateGetAbsoluteTime(first), -1.5);
    EXPECT_TRUE(CFEqual(first, same.get()) && !CFEqual(first, second));
    EXPECT_EQ(CFHash(first), CFHash(same.get()));
    EXPECT_EQ(CFDateCompare(first, second, nullptr), kCFCompareLessThan);
    EXPECT_EQ(CFDateCompare(second, first, nullptr), kCFCompareGreaterThan);
    EXPECT_EQ(CFDateCompare(same.as<CFDateRef>(), first, nullptr), kCFCompareEqualTo);
    EXPECT_EQ(CFDateGetTimeIntervalSinceDate(second, first), 86401.5);
    Ref zero(CFDateCreate(nullptr, 0.0)), negativeZero(CFDateCreate(nullptr, -0.0));
    EXPECT_TRUE(CFEqual(zero.get(), negativeZero.get()));
    EXPECT_EQ(CFHash(zero.get()), CFHash(negativeZero.get()));
    Ref description(CFCopyDescription(second));
    EXPECT_NE(Text(description.as<CFStringRef>()).find("2001-01-02 00:00:00 +0000"), std::string::npos);
    EXPECT_NEAR(CFAbsoluteTimeGetCurrent() + kCFAbsoluteTimeIntervalSince1970, double(std::time(nullptr)), 2.0);
}

TEST(CFPropertyListInterchange, WhatWeWritePlistlibReadsIdenticallyAndTheOtherWayRound)
{
    TemporaryFolder folder;
    for (auto [mode, format] :
         {std::pair{"xml", kCFPropertyListXMLFormat_v1_0}, std::pair{"binary", kCFPropertyListBinaryFormat_v1_0}}) {
        SCOPED_TRACE(mode);
        Ref tree = SampleTree(format == kCFPropertyListBinaryFormat_v1_0);
        CFStringRef error = nullptr;
        Ref data(CFPropertyListCreateData(nullptr, tree.get(), format, 0, &error));
        ASSERT_TRUE(data);
        EXPECT_EQ(error, nullptr);
        std::string bytes = BytesOf(data.as<CFDataRef>());
        WriteFile(folder / "ours.plist", bytes);
        int status = -1;
        EXPECT_EQ(RunProgram({"python3", "-c", kPlistlib, "read", folder / "ours.plist"}, &status), Dump(tree.get()));
        ASSERT_EQ(status, 0) << "python3 with plistlib is needed (scripts/setup installs it)";
        CFPropertyListFormat detected{};
        Ref back = Parse(bytes, kCFPropertyListImmutable, nullptr, &detected);
        ASSERT_TRUE(back);
        EXPECT_TRUE(CFEqual(back.get(), tree.get())) << Dump(back.get());
        EXPECT_EQ(detected, format);

        std::string expected = RunProgram({"python3", "-c", kPlistlib, mode, folder / "theirs.plist"}, &status);
        ASSERT_EQ(status, 0);
        EXPECT_EQ(expected.find("fraction") != std::string::npos, format == kCFPropertyListBinaryFormat_v1_0);
        std::string reason;
        detected = {};
        Ref theirs = Parse(ReadFile(folder / "theirs.plist"), kCFPropertyListImmutable, &reason, &detected);
        ASSERT_TRUE(theirs) << reason;
        EXPECT_EQ(Dump(theirs.get()), expected);
        EXPECT_EQ(detected, format);
    }
}

Ref Lookup(const Ref& inDictionary, const char* inKey)
{
    Ref key(Str(inKey));
    const void* value = CFDictionaryGetValue(inDictionary.as<CFDictionaryRef>(), key.get());
    return Ref(value ? CFRetain(value) : nullptr);
}

TEST(CFPropertyListText, ReadsTheFormsOfStringTables)
{
    const char* table = R"TXT(/* A strings table, as translators write it. */
"PPConfigToolNotFoundTitle" = "Configuration tool not found";
// a line comment
"Escapes" = "tab\tquote\" backslash\\ line\n \U00e9\U2603 \101\'";
unquoted_key = bare.value-1/x; "Shorthand";
'single' = 'quoted';
"Nested" = { list = ( a, "b c", <0fbd 77>, ( ) , ); empty = {}; }
)TXT";
    std::string error;
    CFPropertyListFormat format{};
    Ref strings = Parse(table, kCFPropertyListImmutable, &error, &format);
    ASSERT_TRUE(strings) << error;
    EXPECT_EQ(format, kCFPropertyListOpenStepFormat);
    EXPECT_EQ(CFDictionaryGetCount(strings.as<CFDictionaryRef>()), 6);
    EXPECT_EQ(Dump(Lookup(strings, "PPConfigToolNotFoundTitle").get()), "s\"Configuration tool not found\"");
    EXPECT_EQ(Text(Lookup(strings, "Escapes").as<CFStringRef>()), "tab\tquote\" backslash\\ line\n \u00e9\u2603 A'");
    EXPECT_EQ(Dump(Lookup(strings, "unquoted_key").get()), "s\"bare.value-1/x\"");
    EXPECT_EQ(Dump(Lookup(strings, "Shorthand").get()), "s\"Shorthand\"");
    EXPECT_EQ(Dump(Lookup(strings, "single").get()), "s\"quoted\"");
    EXPECT_EQ(Dump(Lookup(strings, "Nested").get()), R"({s"empty":{},s"list":[s"a",s"b c",x0fbd77,[]]})");

    // The same entry in UTF-16 of either byte order and in UTF-8 with its mark.
    const std::u16string_view entry16 = u"\"k\" = \"v\u00e9\";";
    for (const std::string& bytes :
         {UTF16(entry16, false), UTF16(entry16, true), std::string("\xEF\xBB\xBF\"k\"=\"v\xC3\xA9\"")}) {
        Ref entry = Parse(bytes, kCFPropertyListImmutable, &error);
        ASSERT_TRUE(entry) << error;
        EXPECT_EQ(Dump(entry.get()), "{s\"k\":s\"v\u00e9\"}");
    }
    EXPECT_EQ(Dump(Parse("( 1, two )").get()), "[s\"1\",s\"two\"]");
    EXPECT_EQ(Dump(Parse("  \"only a string\"  ").get()), "s\"only a string\"");
    EXPECT_EQ(Dump(Parse("<00ff>").get()), "x00ff");
    EXPECT_EQ(Dump(Parse("/* nothing but a comment */\n").get()), "{}");
}

TEST(CFPropertyListText, RejectsDamagedTextNamingTheLine)
{
    const std::pair<std::string, const char*> cases[] = {
        {"\"a\" = \"b\";\n\"c\" = \"d\"\n\"e\" = \"f\";",
         "expected ';' after the value, found character '\"' at line 3"},
        {"\n\n\"open", "quoted string is not closed at line 3"},
        {"a = b; /* open", "comment is not closed at line 1"},
        {"{ a = b;\n", "dictionary is not closed with '}' at line 1"},
        {"( a,\n b", "array is not closed with ')' at line 1"},
        {"<0fx>", "unexpected character 'x' in a data value"},
        {"<abc>", "odd number of hexadecimal digits"},
        {"{ (a) = b; }", "a dictionary key must be a string"},
        {"a = b;\n= c;", "unexpected character '=' at line 2"},
        {"\"a\" \"b\"", "after the value at line 1"},
        {"a = ;", "unexpected character ';'"},
        {std::string("\xFF\xFE\x41", 3), "not valid UTF-16"},
        {"\"\xC3(\"", "not valid UTF-8"},
        {std::string(100000, '('), "nested too deeply"},
        {"", "empty"},
    };
    for (const auto& [text, expected] : cases) {
        std::string error;
        EXPECT_FALSE(Parse(text, kCFPropertyListImmutable, &error)) << text.substr(0, 40);
        EXPECT_NE(error.find(expected), std::string::npos) << "got: " << error;
    }
}

TEST(CFPropertyListReading, DamagedXMLAndBinaryAnswerNullWithAReason)
{
    Ref tree = SampleTree(true);
    for (CFPropertyListFormat format : {kCFPropertyListXMLFormat_v1_0, kCFPropertyListBinaryFormat_v1_0}) {
        Ref data(CFPropertyListCreateData(nullptr, tree.get(), format, 0, nullptr));
        std::string bytes = BytesOf(data.as<CFDataRef>());
        // Every cut before the end loses the closing tags or the trailer.
        for (std::size_t length = 8; length < bytes.size() - 10; ++length) {
            std::string error;
            ASSERT_FALSE(Parse(bytes.substr(0, length), kCFPropertyListImmutable, &error)) << format << " " << length;
            ASSERT_FALSE(error.empty());
        }
    }
    std::string error;
    EXPECT_FALSE(Parse("<?xml version=\"1.0\"?><plist><dict><key>a</key></plist>", 0, &error));
    EXPECT_FALSE(error.empty());
}

// A binary property list of the given objects (one-byte references, two-byte offsets).
std::string BinaryPlist(const std::vector<std::string>& inObjects)
{
    std::string bytes = "bplist00";
    std::vector<std::size_t> offsets;
    for (const std::string& object : inObjects) {
        offsets.push_back(bytes.size());
        bytes += object;
    }
    std::size_t table = bytes.size();
    for (std::size_t offset : offsets)
        bytes += {char(offset >> 8), char(offset & 0xFF)};
    std::string trailer(32, '\0');
    trailer[6] = 2;
    trailer[7] = 1;
    trailer[15] = char(inObjects.size());
    trailer[30] = char(table >> 8);
    trailer[31] = char(table & 0xFF);
    return bytes + trailer;
}

// Shapes that would make libplist recurse until the stack runs out, or copy shared objects
// for ever, are refused before it sees them.
TEST(CFPropertyListReading, HostileShapesAreRefused)
{
    const int depth = 300000;
    std::string deepXML = "<plist>";
    for (int level = 0; level < depth; ++level)
        deepXML += "<array>";
    for (int level = 0; level < depth; ++level)
        deepXML += "</array>";
    std::string error;
    EXPECT_FALSE(Parse(deepXML + "</plist>", 0, &error));
    EXPECT_EQ(error, "the property list is nested too deeply");

    std::vector<std::string> chain, shared;
    for (int level = 0; level < 200; ++level)
        chain.push_back({'\xA1', char(level + 1)});
    chain.push_back("\xA0");
    for (int level = 0; level < 40; ++level)  // each array holds the next one twice: 2^40 copies
        shared.push_back({'\xA2', char(level + 1), char(level + 1)});
    shared.push_back("\xA0");
    const std::pair<std::string, const char*> cases[] = {
        {BinaryPlist({{'\xA1', '\0'}}), "contains itself"},
        {BinaryPlist(shared), "repeats shared parts too often"},
        {BinaryPlist({"\xA2\x01\x05", "\xA0"}), "damaged"},                        // a reference past the last object
        {BinaryPlist({"\xD1\x01\x02", {'\x52', 'a', '\0'}, "\x51x"}), "damaged"},  // a key holding NUL
        {BinaryPlist({"\xD1\x01\x02", "\x10\x05", "\x51x"}), "damaged"},           // a key that is a number
    };
    for (const auto& [bytes, expected] : cases) {
        EXPECT_FALSE(Parse(bytes, 0, &error));
        EXPECT_NE(error.find(expected), std::string::npos) << error;
    }
    // The same builder makes sound lists, so the refusals above are about their shapes.
    EXPECT_EQ(Dump(Parse(BinaryPlist({"\xA2\x01\x01", "\xA0"})).get()), "[[],[]]");
    EXPECT_EQ(Dump(Parse(BinaryPlist(chain)).get()).size(), 2u * 201);
}

TEST(CFPropertyListWriting, RefusesWhatIsNotAPropertyList)
{
    Ref key(Integer(1)), value(Str("v")), uuid(CFUUIDCreate(nullptr));
    const void* keys[] = {key.get()};
    const void* values[] = {value.get()};
    Ref numberKeyed(
        CFDictionaryCreate(nullptr, keys, values, 1, &kCFTypeDictionaryKeyCallBacks, &kCFTypeDictionaryValueCallBacks));
    Ref withUUID = ArrayOf({value.get(), uuid.get()});
    Ref future(CFDateCreate(nullptr, 4.0e9));  // beyond 2069
    Ref withNul(
        CFStringCreateWithBytes(nullptr, reinterpret_cast<const UInt8*>("a\0b"), 3, kCFStringEncodingUTF8, false));
    for (const Ref* bad : {&numberKeyed, &withUUID, &future, &withNul}) {
        CFStringRef error = nullptr;
        EXPECT_FALSE(Ref(CFPropertyListCreateData(nullptr, bad->get(), kCFPropertyListBinaryFormat_v1_0, 0, &error)));
        Ref errorOwner(error);
        ASSERT_NE(error, nullptr);
        EXPECT_FALSE(Text(error).empty());
    }
    EXPECT_FALSE(CFPropertyListIsValid(numberKeyed.get(), kCFPropertyListXMLFormat_v1_0));
    EXPECT_FALSE(CFPropertyListIsValid(withUUID.get(), kCFPropertyListXMLFormat_v1_0));
    EXPECT_FALSE(Ref(CFPropertyListCreateDeepCopy(nullptr, withUUID.get(), kCFPropertyListImmutable)));

    // The text form holds strings, data and containers only, and is never written.
    Ref sample = SampleTree(false);
    Ref strings = ArrayOf({value.get(), ArrayOf({}).get()});
    EXPECT_TRUE(CFPropertyListIsValid(sample.get(), kCFPropertyListBinaryFormat_v1_0));
    EXPECT_FALSE(CFPropertyListIsValid(sample.get(), kCFPropertyListOpenStepFormat));
    EXPECT_TRUE(CFPropertyListIsValid(strings.get(), kCFPropertyListOpenStepFormat));
    EXPECT_FALSE(Ref(CFPropertyListCreateData(nullptr, strings.get(), kCFPropertyListOpenStepFormat, 0, nullptr)));
}

TEST(CFPropertyListMutability, OptionsDecideWhatMayChange)
{
    const char* text = "{ list = ( a ); name = x; }";
    Ref extra(Str("!"));
    Ref containers = Parse(text, kCFPropertyListMutableContainers);
    CFArrayAppendValue((CFMutableArrayRef)Lookup(containers, "list").get(), extra.get());
    CFDictionarySetValue((CFMutableDictionaryRef)containers.get(), extra.get(), extra.get());
    EXPECT_EQ(Dump(containers.get()), R"({s"!":s"!",s"list":[s"a",s"!"],s"name":s"x"})");

    Ref leaves = Parse(text, kCFPropertyListMutableContainersAndLeaves);
    CFStringAppend((CFMutableStringRef)Lookup(leaves, "name").get(), extra.as<CFStringRef>());
    EXPECT_EQ(Dump(Lookup(leaves, "name").get()), "s\"x!\"");

    Ref fixed = Parse(text, kCFPropertyListImmutable);
    EXPECT_DEATH(CFArrayAppendValue((CFMutableArrayRef)Lookup(fixed, "list").get(), extra.get()), "CFArrayAppendValue");
    EXPECT_DEATH(CFStringAppend((CFMutableStringRef)Lookup(containers, "name").get(), extra.as<CFStringRef>()),
                 "CFStringAppend");

    // A deep copy shares nothing mutable with its original.
    Ref copy(CFPropertyListCreateDeepCopy(nullptr, containers.get(), kCFPropertyListMutableContainersAndLeaves));
    ASSERT_TRUE(copy);
    EXPECT_TRUE(CFEqual(copy.get(), containers.get()));
    CFArrayRemoveAllValues((CFMutableArrayRef)Lookup(copy, "list").get());
    CFStringAppend((CFMutableStringRef)Lookup(copy, "name").get(), extra.as<CFStringRef>());
    EXPECT_EQ(Dump(containers.get()), R"({s"!":s"!",s"list":[s"a",s"!"],s"name":s"x"})");

    // An immutable copy shares what can no longer change, and nothing that still can, however
    // deep it sits in containers that cannot.
    EXPECT_EQ(Ref(CFPropertyListCreateDeepCopy(nullptr, fixed.get(), kCFPropertyListImmutable)).get(), fixed.get());
    Ref holdsMutable = ArrayOf({ArrayOf({Lookup(leaves, "name").get()}).get(), fixed.get()});
    Ref frozen(CFPropertyListCreateDeepCopy(nullptr, holdsMutable.get(), kCFPropertyListImmutable));
    ASSERT_TRUE(frozen);
    EXPECT_EQ(CFArrayGetValueAtIndex(frozen.as<CFArrayRef>(), 1), fixed.get());
    CFStringAppend((CFMutableStringRef)Lookup(leaves, "name").get(), extra.as<CFStringRef>());
    EXPECT_EQ(Dump(frozen.get()), R"([[s"x!"],{s"list":[s"a"],s"name":s"x"}])");

    // The older calls: XML out, any form in, a reason for damaged data.
    Ref xml(CFPropertyListCreateXMLData(nullptr, copy.get()));
    Ref back(CFPropertyListCreateFromXMLData(nullptr, xml.as<CFDataRef>(), kCFPropertyListImmutable, nullptr));
    EXPECT_TRUE(CFEqual(back.get(), copy.get()));
    Ref damaged(Bytes("<plist><dict>"));
    CFStringRef reason = nullptr;
    EXPECT_FALSE(Ref(CFPropertyListCreateFromXMLData(nullptr, damaged.as<CFDataRef>(), 0, &reason)));
    Ref reasonOwner(reason);
    EXPECT_NE(reason, nullptr);
}

}  // namespace
