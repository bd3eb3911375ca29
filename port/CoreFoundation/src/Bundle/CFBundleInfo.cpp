// A bundle's information: the dictionary of Info.plist and its localised values, the
// identifier, version, development region and package codes.
#include "CFBundleFiles.h"
#include "CFBundleLocalizations.h"

#include <optional>
#include <string_view>

const CFStringRef kCFBundleInfoDictionaryVersionKey = CFSTR("CFBundleInfoDictionaryVersion");
const CFStringRef kCFBundleExecutableKey = CFSTR("CFBundleExecutable");
const CFStringRef kCFBundleIdentifierKey = CFSTR("CFBundleIdentifier");
const CFStringRef kCFBundleVersionKey = CFSTR("CFBundleVersion");
const CFStringRef kCFBundleDevelopmentRegionKey = CFSTR("CFBundleDevelopmentRegion");
const CFStringRef kCFBundleNameKey = CFSTR("CFBundleName");
const CFStringRef kCFBundleLocalizationsKey = CFSTR("CFBundleLocalizations");

namespace {

using namespace cf::bundle;

constexpr UInt32 kUnknownCode = FourCC("????");

// Reads "1.2.3b4": a major number of one or two digits, optionally a one-digit minor and
// bug-fix number, optionally a stage letter with a pre-release number up to 255.
class VersionReader {
public:
    explicit VersionReader(std::string_view inText) : mRest(inText) {}

    std::optional<UInt32> Packed()
    {
        std::string_view major = Digits();
        if (major.empty() || major.size() > 2)
            return std::nullopt;
        UInt32 minor = 0, bugFix = 0;
        if (Take('.')) {
            if (!Digit(minor) || (Take('.') && !Digit(bugFix)))
                return std::nullopt;
        }
        UInt32 stage = 0x80, release = 0;
        if (!mRest.empty() && !Stage(stage, release))
            return std::nullopt;
        if (!mRest.empty())
            return std::nullopt;
        UInt32 bcdMajor = 0;
        for (char digit : major)
            bcdMajor = bcdMajor << 4 | UInt32(digit - '0');
        return bcdMajor << 24 | minor << 20 | bugFix << 16 | stage << 8 | release;
    }

private:
    std::string_view Digits()
    {
        std::size_t count = 0;
        while (count < mRest.size() && mRest[count] >= '0' && mRest[count] <= '9')
            ++count;
        std::string_view digits = mRest.substr(0, count);
        Advance(count);
        return digits;
    }

    bool Digit(UInt32& outValue)
    {
        std::string_view digits = Digits();
        outValue = digits.size() == 1 ? UInt32(digits[0] - '0') : 0;
        return digits.size() == 1;
    }

    bool Take(char inCharacter)
    {
        if (mRest.empty() || mRest.front() != inCharacter)
            return false;
        Advance(1);
        return true;
    }

    bool Stage(UInt32& outStage, UInt32& outRelease)
    {
        switch (mRest.front()) {
        case 'd':
            outStage = 0x20;
            break;
        case 'a':
            outStage = 0x40;
            break;
        case 'b':
            outStage = 0x60;
            break;
        case 'f':
            outStage = 0x80;
            break;
        default:
            return false;
        }
        Advance(1);
        if (outStage == 0x80)
            Take('c');  // "fc": final candidate
        std::string_view digits = Digits();
        if (digits.empty() || digits.size() > 3)
            return false;
        outRelease = 0;
        for (char digit : digits)
            outRelease = outRelease * 10 + UInt32(digit - '0');
        return outRelease <= 255;
    }

    void Advance(std::size_t inCount) { mRest.remove_prefix(inCount); }

    std::string_view mRest;
};

// A four-character code spelled as a string of four Mac Roman characters.
std::optional<UInt32> CodeOf(CFStringRef inText)
{
    UInt8 bytes[4];
    CFIndex used = 0;
    if (inText == nullptr || CFStringGetLength(inText) != 4 ||
        CFStringGetBytes(inText, CFRangeMake(0, 4), kCFStringEncodingMacRoman, 0, false, bytes, 4, &used) != 4)
        return std::nullopt;
    return UInt32(bytes[0]) << 24 | UInt32(bytes[1]) << 16 | UInt32(bytes[2]) << 8 | UInt32(bytes[3]);
}

std::optional<UInt32> PkgInfoCode(const __CFBundle& inBundle, std::size_t inOffset)
{
    std::optional<std::string> bytes = ReadFile(Join(inBundle.SupportPath(), "PkgInfo"));
    if (!bytes || bytes->size() < 8)
        return std::nullopt;
    const auto* code = reinterpret_cast<const UInt8*>(bytes->data() + inOffset);
    return UInt32(code[0]) << 24 | UInt32(code[1]) << 16 | UInt32(code[2]) << 8 | UInt32(code[3]);
}

UInt32 PackageCode(const __CFBundle& inBundle, const char* inKey, std::size_t inPkgInfoOffset)
{
    if (std::optional<UInt32> code = CodeOf(inBundle.InfoString(CFSTR(inKey))))
        return *code;
    return PkgInfoCode(inBundle, inPkgInfoOffset).value_or(kUnknownCode);
}

}  // namespace

CFDictionaryRef CFBundleGetInfoDictionary(CFBundleRef inBundle)
{
    return Bundle(inBundle, "CFBundleGetInfoDictionary").mInfo;
}

CFDictionaryRef CFBundleGetLocalInfoDictionary(CFBundleRef inBundle)
{
    const __CFBundle& bundle = Bundle(inBundle, "CFBundleGetLocalInfoDictionary");
    std::vector<std::string> folders = SearchFolders(bundle, SearchLocalizations(bundle), {});
    std::optional<std::string> path = Find(folders, "InfoPlist.strings");
    return path ? bundle.Table(*path) : nullptr;
}

CFTypeRef CFBundleGetValueForInfoDictionaryKey(CFBundleRef inBundle, CFStringRef inKey)
{
    const __CFBundle& bundle = Bundle(inBundle, "CFBundleGetValueForInfoDictionaryKey");
    if (inKey == nullptr)
        return nullptr;
    if (CFDictionaryRef local = CFBundleGetLocalInfoDictionary(inBundle))
        if (CFTypeRef value = CFDictionaryGetValue(local, inKey))
            return value;
    return CFDictionaryGetValue(bundle.mInfo, inKey);
}

CFStringRef CFBundleGetIdentifier(CFBundleRef inBundle)
{
    return Bundle(inBundle, "CFBundleGetIdentifier").InfoString(IdentifierKey());
}

CFStringRef CFBundleGetDevelopmentRegion(CFBundleRef inBundle)
{
    return Bundle(inBundle, "CFBundleGetDevelopmentRegion").InfoString(DevelopmentRegionKey());
}

UInt32 CFBundleGetVersionNumber(CFBundleRef inBundle)
{
    CFStringRef version = Bundle(inBundle, "CFBundleGetVersionNumber").InfoString(CFSTR("CFBundleVersion"));
    return version ? VersionReader(Text(version)).Packed().value_or(0) : 0;
}

void CFBundleGetPackageInfo(CFBundleRef inBundle, UInt32* outPackageType, UInt32* outPackageCreator)
{
    const __CFBundle& bundle = Bundle(inBundle, "CFBundleGetPackageInfo");
    if (outPackageType)
        *outPackageType = PackageCode(bundle, "CFBundlePackageType", 0);
    if (outPackageCreator)
        *outPackageCreator = PackageCode(bundle, "CFBundleSignature", 4);
}
