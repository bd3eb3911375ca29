// The XML form read and written without libplist: the XML that property-list files hold,
// what only the full reader understands, what cannot be written, and files plistlib writes.
#include "PropertyListTesting.h"

#include <gtest/gtest.h>

#include <string>

using namespace plisttest;

namespace {

std::string Document(const std::string& inBody)
{
    return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
           "<!DOCTYPE plist PUBLIC \"-//Apple//DTD PLIST 1.0//EN\" "
           "\"http://www.apple.com/DTDs/PropertyList-1.0.dtd\">\n"
           "<plist version=\"1.0\">\n" +
           inBody + "\n</plist>\n";
}

std::string ParsedDump(const std::string& inBytes)
{
    std::string error;
    Ref value = Parse(inBytes, kCFPropertyListImmutable, &error);
    return value ? Dump(value.get()) : "error: " + error;
}

TEST(PropertyListXML, ReadsEveryElementWithItsEdgeCases)
{
    const std::pair<const char*, const char*> kCases[] = {
        {"<string>a &lt;b&gt; &amp; &quot;c&quot; &apos;d&apos;</string>", R"(s"a <b> & \"c\" 'd'")"},
        {"<string>&#233;&#xE9;&#x1F600; caf\xC3\xA9 \xE2\x98\x83</string>",
         "s\"\xC3\xA9\xC3\xA9\xF0\x9F\x98\x80 caf\xC3\xA9 \xE2\x98\x83\""},
        {"<string>  keeps\tits\n space </string>", "s\"  keeps\tits\n space \""},
        {"<string/>", "s\"\""},
        {"<dict/>", "{}"},
        {"<dict>\n</dict>", "{}"},
        {"<array></array>", "[]"},
        {"<array><true/><false/><array><dict><key>k</key><array/></dict></array></array>",
         "[true,false,[{s\"k\":[]}]]"},
        {"<dict><key>b</key><integer>9223372036854775807</integer><key>a</key><integer>-9223372036854775808</integer></"
         "dict>",
         "{s\"a\":i-9223372036854775808,s\"b\":i9223372036854775807}"},
        {"<array><real>0.1</real><real>-2.5e-10</real><real>3</real><real>1E+300</real></array>",
         "[r0.10000000000000001,r-2.5000000000000002e-10,r3,r1.0000000000000001e+300]"},
        {"<array><date>2001-01-01T00:00:00Z</date><date>2020-02-29T12:30:45Z</date><date>1990-01-01T00:00:00Z</date></"
         "array>",
         "[d0.000,d604672245.000,d-347155200.000]"},
        {"<array><data>AAH+/w==</data><data>\n\tSGVs\n\tbG8=\n</data><data></data></array>",
         "[x0001feff,x48656c6c6f,x]"},
        {"<!-- before --><dict><!-- a --><key>k</key><!-- b --><string>v</string></dict><!-- after -->",
         "{s\"k\":s\"v\"}"},
        {"<dict><key>k</key><string>first</string><key>k</key><string>second</string></dict>", "{s\"k\":s\"second\"}"},
    };
    for (auto [body, expected] : kCases)
        EXPECT_EQ(ParsedDump(Document(body)), expected) << body;
    // A byte-order mark, and neither declaration nor document type.
    EXPECT_EQ(ParsedDump("\xEF\xBB\xBF<plist><integer>7</integer></plist>"), "i7");
}

TEST(PropertyListXML, WhatTheFastReaderLeavesAsideIsStillReadOrRefused)
{
    // Character data sections and carriage returns are left to the full reader.
    EXPECT_EQ(ParsedDump(Document("<string><![CDATA[a <b> & c]]></string>")), "s\"a <b> & c\"");
    EXPECT_EQ(ParsedDump(Document("<array>\r\n<string>x</string>\r\n</array>")), "[s\"x\"]");
    // Damage that neither reader takes, each with a reason.
    for (const char* body : {"<string>&bogus;</string>", "<dict><string>k</string></dict>",
                             "<array><string>x</array></string>", "<array><string>x</string>"})
        EXPECT_EQ(ParsedDump(Document(body)).substr(0, 7), "error: ") << body;
}

// Strings keep every character through a write and a read; what the form cannot carry is
// refused with a reason instead of being written damaged.
TEST(PropertyListXML, WritesStringsExactlyAndRefusesWhatItCannotCarry)
{
    const char16_t kText[] = u"ctl \x01\x1f cr\r lf\n tab\t <&>\"' \u00e9 \U0001F600";
    Ref text(
        CFStringCreateWithCharacters(nullptr, reinterpret_cast<const UniChar*>(kText), CFIndex(std::size(kText) - 1)));
    Ref written(CFPropertyListCreateData(nullptr, text.get(), kCFPropertyListXMLFormat_v1_0, 0, nullptr));
    ASSERT_TRUE(written);
    EXPECT_EQ(ParsedDump(BytesOf(written.as<CFDataRef>())), Dump(text.get()));

    for (char16_t bad : {char16_t(0), char16_t(0xD800)}) {
        std::u16string units = u"before ";
        units += bad;
        units += u" after";
        Ref value(CFStringCreateWithCharacters(nullptr, reinterpret_cast<const UniChar*>(units.data()),
                                               CFIndex(units.size())));
        CFStringRef error = nullptr;
        Ref data(CFPropertyListCreateData(nullptr, value.get(), kCFPropertyListXMLFormat_v1_0, 0, &error));
        Ref errorOwner(error);
        EXPECT_FALSE(data);
        EXPECT_TRUE(error);
    }
}

// plistlib reads what we write, every value the same, and we read what it writes; big
// enough that every entity and every kind of value crosses both ways.
TEST(PropertyListXML, RoundTripsWithPlistlib)
{
    TemporaryFolder folder;
    const std::string path = folder / "list.plist";
    std::string script = "import plistlib, sys, datetime\n"
                         "v = {'items': [{'Path': '/Applications/A & B <%d> \\u00e9\\u2603.app' % i, 'Hide': i % 2 == "
                         "0, 'N': -i * 10**12,"
                         " 'R': i / 7, 'D': datetime.datetime(1999, 12, 31, 23, 59, i % 60), 'B': bytes(range(i % 7))}"
                         " for i in range(300)], 'empty': {}, 'none': [], 'quote': '\"\\'\\t'}\n"
                         "plistlib.dump(v, open(sys.argv[1], 'wb'))\n";
    RunProgram({"python3", "-c", script, path});
    std::string fromPlistlib = ParsedDump(ReadFile(path));
    ASSERT_EQ(fromPlistlib.substr(0, 8), "{s\"empty") << fromPlistlib.substr(0, 200);

    Ref value = Parse(ReadFile(path));
    Ref written(CFPropertyListCreateData(nullptr, value.get(), kCFPropertyListXMLFormat_v1_0, 0, nullptr));
    WriteFile(path, BytesOf(written.as<CFDataRef>()));
    std::string again = RunProgram({"python3", "-c",
                                    "import plistlib, sys\n"
                                    "v = plistlib.load(open(sys.argv[1], 'rb'))\n"
                                    "plistlib.dump(v, open(sys.argv[1] + '.2', 'wb'))\n"
                                    "print(len(v['items']), v['quote'] == '\"\\'\\t')",
                                    path});
    EXPECT_EQ(again, "300 True\n");
    EXPECT_EQ(ParsedDump(ReadFile(path + ".2")), fromPlistlib);
}

}  // namespace
