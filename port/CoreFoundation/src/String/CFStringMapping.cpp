// Mappings of a whole mutable string through ICU: upper, lower and title case, and the four
// Unicode normalisation forms.
#include "CFStringObject.h"
#include "CFStringLocale.h"

#include <unicode/unorm2.h>
#include <unicode/ustring.h>

namespace {

// Runs an ICU mapping of the usual shape (preflight on overflow, then map again) and
// replaces the string's text with its result. A mapping that fails leaves the text as it was.
template <class Mapping>
void Map(__CFString& ioString, Mapping inMapping)
{
    std::u16string result(ioString.mText.size() + ioString.mText.size() / 2 + 1, u'\0');
    UErrorCode status = U_ZERO_ERROR;
    int32_t length = inMapping(reinterpret_cast<UChar*>(result.data()), int32_t(result.size()), &status);
    if (status == U_BUFFER_OVERFLOW_ERROR) {
        result.resize(std::size_t(length));
        status = U_ZERO_ERROR;
        length = inMapping(reinterpret_cast<UChar*>(result.data()), int32_t(result.size()), &status);
    }
    if (U_FAILURE(status))
        return;
    result.resize(std::size_t(length));
    ioString.mText = std::move(result);
    ioString.Changed();
}

using CaseMapping = int32_t (*)(UChar*, int32_t, const UChar*, int32_t, const char*, UErrorCode*);

void MapCase(CFMutableStringRef inString, CFLocaleRef inLocale, CaseMapping inMapping, const char* inCall)
{
    __CFString& string = cf::MutableString(inString, inCall);
    std::string locale = cf::LocaleName(inLocale, inCall);
    std::u16string source = string.mText;
    Map(string, [&](UChar* outBuffer, int32_t inCapacity, UErrorCode* ioStatus) {
        return inMapping(outBuffer, inCapacity, cf::ICUChars(source), int32_t(source.size()), locale.c_str(), ioStatus);
    });
}

int32_t ToTitle(UChar* outBuffer, int32_t inCapacity, const UChar* inSource, int32_t inLength, const char* inLocale,
                UErrorCode* ioStatus)
{
    // No break iterator: ICU then finds words by the locale's word boundaries.
    return u_strToTitle(outBuffer, inCapacity, inSource, inLength, nullptr, inLocale, ioStatus);
}

const UNormalizer2* Normalizer(CFStringNormalizationForm inForm)
{
    UErrorCode status = U_ZERO_ERROR;
    switch (inForm) {
    case kCFStringNormalizationFormD:
        return unorm2_getNFDInstance(&status);
    case kCFStringNormalizationFormKD:
        return unorm2_getNFKDInstance(&status);
    case kCFStringNormalizationFormC:
        return unorm2_getNFCInstance(&status);
    case kCFStringNormalizationFormKC:
        return unorm2_getNFKCInstance(&status);
    }
    return nullptr;
}

}  // namespace

void CFStringUppercase(CFMutableStringRef inString, CFLocaleRef inLocale)
{
    MapCase(inString, inLocale, u_strToUpper, "CFStringUppercase");
}

void CFStringLowercase(CFMutableStringRef inString, CFLocaleRef inLocale)
{
    MapCase(inString, inLocale, u_strToLower, "CFStringLowercase");
}

void CFStringCapitalize(CFMutableStringRef inString, CFLocaleRef inLocale)
{
    MapCase(inString, inLocale, ToTitle, "CFStringCapitalize");
}

void CFStringNormalize(CFMutableStringRef inString, CFStringNormalizationForm inForm)
{
    constexpr const char* kCall = "CFStringNormalize";
    __CFString& string = cf::MutableString(inString, kCall);
    const UNormalizer2* normalizer = Normalizer(inForm);
    if (normalizer == nullptr)
        cf::Fatal(kCall, "%ld is not a normalization form", CFIndex(inForm));
    UErrorCode status = U_ZERO_ERROR;
    // Most text is already normalised; answering that costs one pass and no copy.
    if (unorm2_isNormalized(normalizer, cf::ICUChars(string.mText), int32_t(string.mText.size()), &status))
        return;
    std::u16string source = string.mText;
    Map(string, [&](UChar* outBuffer, int32_t inCapacity, UErrorCode* ioStatus) {
        return unorm2_normalize(normalizer, cf::ICUChars(source), int32_t(source.size()), outBuffer, inCapacity,
                                ioStatus);
    });
}
