// URLs from arbitrary input: made from bytes, resolved against a base, taken apart, edited and
// turned into file-system paths. Besides not crashing, three promises are checked: a resolved
// URL is again a valid URL, adding and then replacing percent escapes gives back the text, and
// an absolute POSIX path survives its trip through a file URL.
#include <CoreFoundation/CoreFoundation.h>

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string_view>

namespace {

// Releases what the fuzzer made, however it was made.
struct Owned {
    CFTypeRef ref;
    explicit Owned(CFTypeRef inRef) : ref(inRef) {}
    Owned(const Owned&) = delete;
    ~Owned()
    {
        if (ref)
            CFRelease(ref);
    }
};

void Check(bool inCondition)
{
    if (!inCondition)
        std::abort();
}

void ReadEverything(CFURLRef inURL)
{
    CFStringRef all = CFSTR("");
    CFStringRef some = CFSTR("/%?#");
    Owned pieces[] = {
        Owned(CFURLCopyScheme(inURL)),
        Owned(CFURLCopyNetLocation(inURL)),
        Owned(CFURLCopyPath(inURL)),
        Owned(CFURLCopyStrictPath(inURL, nullptr)),
        Owned(CFURLCopyResourceSpecifier(inURL)),
        Owned(CFURLCopyHostName(inURL)),
        Owned(CFURLCopyUserName(inURL)),
        Owned(CFURLCopyPassword(inURL)),
        Owned(CFURLCopyParameterString(inURL, all)),
        Owned(CFURLCopyQueryString(inURL, some)),
        Owned(CFURLCopyFragment(inURL, nullptr)),
        Owned(CFURLCopyLastPathComponent(inURL)),
        Owned(CFURLCopyPathExtension(inURL)),
        Owned(CFURLCopyFileSystemPath(inURL, kCFURLPOSIXPathStyle)),
        Owned(CFURLCopyFileSystemPath(inURL, kCFURLHFSPathStyle)),
        Owned(CFURLCopyFileSystemPath(inURL, kCFURLWindowsPathStyle)),
        Owned(CFURLCreateCopyAppendingPathComponent(nullptr, inURL, CFSTR("a b/c"), true)),
        Owned(CFURLCreateCopyDeletingLastPathComponent(nullptr, inURL)),
        Owned(CFURLCreateCopyAppendingPathExtension(nullptr, inURL, CFSTR("ext"))),
        Owned(CFURLCreateCopyDeletingPathExtension(nullptr, inURL)),
        Owned(CFURLCreateData(nullptr, inURL, kCFStringEncodingUTF8, true)),
        Owned(CFCopyDescription(inURL)),
    };
    (void)pieces;
    Boolean isAbsolute = false;
    Owned strict(CFURLCopyStrictPath(inURL, &isAbsolute));
    CFURLCanBeDecomposed(inURL);
    CFURLHasDirectoryPath(inURL);
    CFURLGetPortNumber(inURL);
    CFHash(inURL);
    UInt8 buffer[64];
    CFURLGetFileSystemRepresentation(inURL, true, buffer, sizeof buffer);
}

void CheckEscapesRoundTrip(CFStringRef inText)
{
    Owned escaped(
        CFURLCreateStringByAddingPercentEscapes(nullptr, inText, nullptr, CFSTR(";?"), kCFStringEncodingUTF8));
    if (escaped.ref == nullptr)
        return;  // a lone surrogate has no UTF-8 form
    Owned back(CFURLCreateStringByReplacingPercentEscapes(nullptr, static_cast<CFStringRef>(escaped.ref), CFSTR("")));
    Check(back.ref && CFEqual(back.ref, inText));
}

void CheckPathRoundTrip(CFStringRef inPath, std::string_view inBytes, CFURLPathStyle inStyle)
{
    Owned url(CFURLCreateWithFileSystemPath(nullptr, inPath, inStyle, false));
    if (url.ref == nullptr)
        return;
    ReadEverything(static_cast<CFURLRef>(url.ref));
    Owned back(CFURLCopyFileSystemPath(static_cast<CFURLRef>(url.ref), inStyle));
    bool plain = inStyle == kCFURLPOSIXPathStyle && inBytes.starts_with('/') &&
                 (inBytes == "/" || !inBytes.ends_with('/')) && inBytes.find('\0') == std::string_view::npos;
    if (plain)
        Check(back.ref && CFEqual(back.ref, inPath));
}

}  // namespace

// The first byte chooses the encoding, compatibility mode and path style; the rest is a
// base URL and a reference, split at the first newline.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t* inData, size_t inSize)
{
    if (inSize == 0)
        return 0;
    UInt8 mode = inData[0];
    std::string_view rest(reinterpret_cast<const char*>(inData + 1), inSize - 1);
    std::size_t newline = rest.find('\n');
    std::string_view baseText = newline == std::string_view::npos ? "http://a/b/c/d;p?q" : rest.substr(0, newline);
    std::string_view refText = newline == std::string_view::npos ? rest : rest.substr(newline + 1);
    CFStringEncoding encoding = (mode & 1) ? kCFStringEncodingISOLatin1 : kCFStringEncodingUTF8;
    bool compatible = mode & 2;
    auto bytes = [](std::string_view inText) { return reinterpret_cast<const UInt8*>(inText.data()); };

    Owned base(CFURLCreateWithBytes(nullptr, bytes(baseText), CFIndex(baseText.size()), encoding, nullptr));
    auto baseURL = static_cast<CFURLRef>(base.ref);
    Owned url(CFURLCreateWithBytes(nullptr, bytes(refText), CFIndex(refText.size()), encoding, baseURL));
    if (url.ref) {
        ReadEverything(static_cast<CFURLRef>(url.ref));
        Owned absolute(CFURLCopyAbsoluteURL(static_cast<CFURLRef>(url.ref)));
        Check(absolute.ref != nullptr);
        ReadEverything(static_cast<CFURLRef>(absolute.ref));
        Owned again(CFURLCreateWithString(nullptr, CFURLGetString(static_cast<CFURLRef>(absolute.ref)), nullptr));
        Check(again.ref != nullptr);
    }
    Owned loose(CFURLCreateAbsoluteURLWithBytes(nullptr, bytes(refText), CFIndex(refText.size()), encoding, baseURL,
                                                compatible));
    if (loose.ref)
        ReadEverything(static_cast<CFURLRef>(loose.ref));

    Owned text(CFStringCreateWithBytes(nullptr, bytes(refText), CFIndex(refText.size()), encoding, false));
    if (text.ref) {
        auto string = static_cast<CFStringRef>(text.ref);
        CheckEscapesRoundTrip(string);
        Owned unescaped(CFURLCreateStringByReplacingPercentEscapesUsingEncoding(nullptr, string, CFSTR("/"), encoding));
        CheckPathRoundTrip(string, refText, CFURLPathStyle((mode >> 2) % 3));
    }
    return 0;
}
