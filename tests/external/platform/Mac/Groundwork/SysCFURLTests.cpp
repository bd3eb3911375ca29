#include "ExpectThrows.h"
#include "RefusingAllocator.h"

#include <Groundwork/SysWrappers/CoreFoundation/SysCFURL.h>

#include <functional>

namespace {

const UInt8 kTmp[] = "/tmp";
const UInt8 kSpaced[] = "a b";

TEST(SysCFURL, EachCreatingConstructorAdoptsOrThrows)
{
    FSRef tmp{};
    ASSERT_EQ(FSPathMakeRef(kTmp, &tmp, nullptr), noErr);
    const FSRef nothing{};
    const Gx::CFURL base(CFSTR("file:///tmp/"), nullptr);
    using Make = std::function<Gx::CFURL(CFAllocatorRef)>;
    // How each is made, whether the base must be used, and how to make it fail other than by
    // refusing memory.
    const struct {
        Make make;
        bool relative;
        Make makeInvalid;
    } makers[] = {
        {[&](CFAllocatorRef a) { return Gx::CFURL(tmp, a); }, false,
         [&](CFAllocatorRef a) { return Gx::CFURL(nothing, a); }},
        {[&](CFAllocatorRef a) { return Gx::CFURL(CFSTR("x"), base, a); }, true,
         [&](CFAllocatorRef a) { return Gx::CFURL(CFSTR("a b"), base, a); }},
        {[&](CFAllocatorRef a) { return Gx::CFURL(kTmp, 4, kCFStringEncodingUTF8, nullptr, a); }, false,
         [&](CFAllocatorRef a) { return Gx::CFURL(kSpaced, 3, kCFStringEncodingUTF8, nullptr, a); }},
        {[&](CFAllocatorRef a) { return Gx::CFURL(CFSTR("/tmp"), true, nullptr, kCFURLPOSIXPathStyle, a); }, false, {}},
        {[&](CFAllocatorRef a) { return Gx::CFURL(CFSTR("x"), false, base, kCFURLPOSIXPathStyle, a); }, true, {}},
        {[&](CFAllocatorRef a) { return Gx::CFURL(kTmp, 4, true, nullptr, a); }, false, {}},
        {[&](CFAllocatorRef a) { return Gx::CFURL(kTmp + 1, 3, false, base, a); }, true, {}},
    };
    for (std::size_t i = 0; i < std::size(makers); ++i) {
        SCOPED_TRACE(testing::Message() << "constructor " << i);
        Gx::CFURL url = makers[i].make(kCFAllocatorDefault);
        EXPECT_EQ(url.GetRetainCount(), 1);
        EXPECT_EQ(url.GetBaseURL().IsValid(), makers[i].relative);
        ExpectThrows<Gx::RuntimeError>([&] { makers[i].make(kCFAllocatorNull); }, FourCC("cfcr"));
        if (makers[i].makeInvalid)
            ExpectThrows<Gx::RuntimeError>([&] { makers[i].makeInvalid(kCFAllocatorDefault); }, FourCC("cfcr"));
    }
}

TEST(SysCFURL, CopiedResultsAreAdoptedAndKeptOnesRetained)
{
    Gx::CFURL url(CFSTR("http://user@host:8080/dir/file.txt?q=1"), nullptr);
    Gx::CFString host = url.GetHostName();
    EXPECT_TRUE(host == CFSTR("host"));
    EXPECT_EQ(host.GetRetainCount(), 1);
    EXPECT_EQ(url.GetAsData(false).GetRetainCount(), 1);
    EXPECT_FALSE(url.GetPassword().IsValid()) << "an absent component is an empty wrapper";
    bool isAbsolute = false;
    EXPECT_TRUE(url.GetStrictPath(&isAbsolute) == CFSTR("dir/file.txt") && isAbsolute);

    EXPECT_EQ(url.GetString().GetRetainCount(), 2) << "the URL keeps its own string";
    Gx::CFURL noBase = url.GetBaseURL();
    EXPECT_FALSE(noBase.IsValid());

    Gx::CFURL base(CFSTR("file:///tmp/"), nullptr);
    Gx::CFURL relative(CFSTR("sub/"), base);
    EXPECT_TRUE(relative.GetBaseURL().HasSameRef(base));
    EXPECT_EQ(base.GetRetainCount(), 2) << "held by the relative URL, not by the dropped wrapper";
}

TEST(SysCFURL, PathEditsReplaceTheURLOrThrowAndKeepIt)
{
    RefusingAllocator allocator;
    Gx::CFURL url(CFSTR("/a/b.txt"), false, nullptr, kCFURLPOSIXPathStyle, allocator.Get());
    url.DeletePathExtension();
    url.AppendPathExtension(CFSTR("rtf"));
    url.AppendPathComponent(CFSTR("c"), true);
    url.DeleteLastPathComponent();
    EXPECT_TRUE(url.GetPath() == CFSTR("/a/b.rtf/"));
    EXPECT_EQ(url.GetRetainCount(), 1);

    allocator.Refuse();
    CFURLRef before = url.GetRefValue();
    std::function<void()> edits[] = {
        [&] { url.AppendPathComponent(CFSTR("d"), false); },
        [&] { url.DeleteLastPathComponent(); },
        [&] { url.AppendPathExtension(CFSTR("e")); },
        [&] { url.DeletePathExtension(); },
    };
    for (auto& edit : edits) {
        ExpectThrows<Gx::RuntimeError>(edit, FourCC("cfcr"));
        EXPECT_TRUE(url.HasSameRef(before));
    }
}

}  // namespace
