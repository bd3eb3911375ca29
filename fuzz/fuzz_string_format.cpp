// Formats built from arbitrary input. Only conversions whose arguments this harness can
// supply safely get through: %%, and %@ with an optional argument number (1 to 8), "-"
// flag, width and precision. Every accepted format is given eight string arguments.
#include <CoreFoundation/CoreFoundation.h>

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <vector>

namespace {

constexpr size_t kArguments = 8;

bool IsDigit(UniChar inUnit) { return inUnit >= '0' && inUnit <= '9'; }

// Skips up to inMax digits; false when there are more.
bool SkipDigits(const std::vector<UniChar>& inFormat, size_t& ioAt, size_t inMax)
{
    size_t start = ioAt;
    while (ioAt < inFormat.size() && IsDigit(inFormat[ioAt]))
        ++ioAt;
    return ioAt - start <= inMax;
}

// True when every conversion is one the harness supports and the arguments it names are
// among the eight supplied. Sets ioPositional when any names its argument by number.
bool Acceptable(const std::vector<UniChar>& inFormat, bool& ioPositional)
{
    size_t sequential = 0;
    for (size_t at = 0; at < inFormat.size(); ++at) {
        if (inFormat[at] != '%')
            continue;
        if (++at < inFormat.size() && inFormat[at] == '%')
            continue;
        if (at + 1 < inFormat.size() && inFormat[at] >= '1' && inFormat[at] <= '8' && inFormat[at + 1] == '$') {
            ioPositional = true;
            at += 2;
        } else {
            ++sequential;
        }
        if (at < inFormat.size() && inFormat[at] == '-')
            ++at;
        if (!SkipDigits(inFormat, at, 3))
            return false;
        if (at < inFormat.size() && inFormat[at] == '.' && !SkipDigits(inFormat, ++at, 3))
            return false;
        if (at >= inFormat.size() || inFormat[at] != '@')
            return false;
    }
    return sequential <= kArguments;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* inData, size_t inSize)
{
    std::vector<UniChar> units(inSize / 2);
    for (size_t i = 0; i < units.size(); ++i)
        units[i] = UniChar(inData[2 * i] | (inData[2 * i + 1] << 8));
    bool positional = false;
    if (!Acceptable(units, positional))
        return 0;

    static const UniChar kOdd[] = {0xD800, 'x', 0xDC00, 0x00E9, 0};
    CFStringRef format = CFStringCreateWithCharacters(nullptr, units.data(), CFIndex(units.size()));
    CFStringRef odd = CFStringCreateWithCharacters(nullptr, kOdd, 4);
    CFStringRef result = CFStringCreateWithFormat(nullptr, nullptr, format, CFSTR("one"), odd, CFSTR(""), CFSTR("%@"),
                                                  CFSTR("five"), odd, CFSTR("\xE2\x82\xAC"), CFSTR("eight"));
    // Only a format that numbers its arguments can leave one unnamed, the one way it may fail.
    if (result == nullptr && !positional)
        std::abort();
    if (result)
        CFRelease(result);
    CFRelease(odd);
    CFRelease(format);
    return 0;
}
