// UCCompareTextDefault on ICU's root collator. The insensitivities fold both texts first
// (width, then case, then diacritics), so that one collator at full strength serves them all;
// the options that change the order itself (punctuation, digits) choose the collator.
#include "UnicodeCollationFolding.h"

#include <Carbon/MacErrors.h>
#include <Carbon/UnicodeUtilities.h>
#include <PortSupport/UniqueHandle.h>

#include <unicode/ucol.h>

#include <array>
#include <limits>
#include <memory>
#include <mutex>
#include <new>

namespace {

constexpr UCCollateOptions kKnownOptions = kUCCollateComposeInsensitiveMask | kUCCollateWidthInsensitiveMask |
                                           kUCCollateCaseInsensitiveMask | kUCCollateDiacritInsensitiveMask |
                                           kUCCollatePunctuationSignificantMask | kUCCollateDigitsOverrideMask |
                                           kUCCollateDigitsAsNumberMask | kUCCollateTypeMask;

using OwnedCollator = port::UniqueHandle<UCollator, ucol_close>;

// The options that decide the collator, as an index into the cache.
std::size_t CollatorIndex(UCCollateOptions inOptions)
{
    return ((inOptions & kUCCollatePunctuationSignificantMask) ? 1 : 0) |
           ((inOptions & kUCCollateDigitsAsNumberMask) ? 2 : 0);
}

OwnedCollator MakeCollator(std::size_t inIndex)
{
    UErrorCode error = U_ZERO_ERROR;
    OwnedCollator collator(ucol_open("", &error));
    if (U_FAILURE(error))
        return nullptr;
    UCollator* c = collator.get();
    ucol_setAttribute(c, UCOL_STRENGTH, UCOL_TERTIARY, &error);
    // Input need not be in a normalised form; canonically equivalent texts must still meet.
    ucol_setAttribute(c, UCOL_NORMALIZATION_MODE, UCOL_ON, &error);
    ucol_setAttribute(c, UCOL_ALTERNATE_HANDLING, (inIndex & 1) ? UCOL_NON_IGNORABLE : UCOL_SHIFTED, &error);
    ucol_setAttribute(c, UCOL_NUMERIC_COLLATION, (inIndex & 2) ? UCOL_ON : UCOL_OFF, &error);
    return U_SUCCESS(error) ? std::move(collator) : nullptr;
}

// Collators are made once per combination of options and then only read, which ICU allows
// from several threads at once.
const UCollator* CachedCollator(UCCollateOptions inOptions)
{
    static std::mutex sLock;
    static std::array<OwnedCollator, 4> sCollators;
    std::size_t index = CollatorIndex(inOptions);
    std::lock_guard guard(sLock);
    if (!sCollators[index])
        sCollators[index] = MakeCollator(index);
    return sCollators[index].get();
}

bool IsValidText(const UniChar* inText, UniCharCount inLength)
{
    return (inText != nullptr || inLength == 0) && inLength <= UniCharCount(std::numeric_limits<int32_t>::max());
}

std::u16string Folded(UCCollateOptions inOptions, const UniChar* inText, UniCharCount inLength)
{
    std::u16string text(inText, inText + inLength);
    if (inOptions & kUCCollateWidthInsensitiveMask)
        text = carbon::FoldWidth(text);
    if (inOptions & kUCCollateCaseInsensitiveMask)
        text = carbon::FoldCase(text);
    if (inOptions & kUCCollateDiacritInsensitiveMask)
        text = carbon::StripDiacritics(text);
    return text;
}

SInt32 Compare(const UCollator* inCollator, UCCollateOptions inOptions, const std::u16string& inLeft,
               const std::u16string& inRight)
{
    UCollationResult result = ucol_strcoll(inCollator, inLeft.data(), int32_t(inLeft.size()), inRight.data(),
                                           int32_t(inRight.size()));
    if (result != UCOL_EQUAL)
        return result == UCOL_LESS ? -1 : 1;
    // The collator always equates a precomposed character with its decomposed form; when
    // composition is to count, texts that differ only in it are told apart by their units.
    if (!(inOptions & kUCCollateComposeInsensitiveMask) && inLeft != inRight &&
        carbon::Decompose(inLeft) == carbon::Decompose(inRight))
        return inLeft < inRight ? -1 : 1;
    return 0;
}

}  // namespace

OSStatus UCCompareTextDefault(UCCollateOptions inOptions, const UniChar* inText1, UniCharCount inText1Length,
                              const UniChar* inText2, UniCharCount inText2Length, Boolean* outEquivalent,
                              SInt32* outOrder)
{
    if ((outEquivalent == nullptr && outOrder == nullptr) || (inOptions & ~kKnownOptions) != 0 ||
        !IsValidText(inText1, inText1Length) || !IsValidText(inText2, inText2Length))
        return paramErr;
    try {
        const UCollator* collator = CachedCollator(inOptions);
        if (collator == nullptr)
            return memFullErr;
        SInt32 order = Compare(collator, inOptions, Folded(inOptions, inText1, inText1Length),
                               Folded(inOptions, inText2, inText2Length));
        if (outEquivalent)
            *outEquivalent = order == 0;
        if (outOrder)
            *outOrder = order;
        return noErr;
    } catch (const std::bad_alloc&) {
        return memFullErr;
    }
}
