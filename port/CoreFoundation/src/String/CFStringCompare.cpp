// Ordering strings under the comparison flags: literally by UTF-16 unit, on folded text for
// the case, diacritic, width and canonical-equivalence flags, or through an ICU collator for
// a localised order.
#include "CFStringObject.h"
#include "CFStringFolding.h"
#include "CFStringLocale.h"

#include <PortSupport/UnicodeUnits.h>
#include <PortSupport/UniqueHandle.h>

#include <unicode/uchar.h>
#include <unicode/ucol.h>
#include <unicode/ustring.h>

#include <memory>
#include <vector>

namespace {

int Sign(long inValue) { return (inValue > 0) - (inValue < 0); }

CFComparisonResult Result(int inOrder)
{
    return inOrder < 0 ? kCFCompareLessThan : inOrder > 0 ? kCFCompareGreaterThan : kCFCompareEqualTo;
}

int Literal(std::u16string_view inFirst, std::u16string_view inSecond) { return Sign(inFirst.compare(inSecond)); }

// Case-insensitive order without building folded copies: ASCII is folded in place, and the
// rest from the first non-ASCII unit on goes to ICU, which folds as it goes. Folding is
// context-free, so the equal ASCII prefix can be left behind.
int Caseless(std::u16string_view inFirst, std::u16string_view inSecond)
{
    std::size_t common = std::min(inFirst.size(), inSecond.size());
    std::size_t i = 0;
    for (; i < common; ++i) {
        char16_t a = inFirst[i];
        char16_t b = inSecond[i];
        if ((a | b) >= 0x80)
            break;
        if (a == b)
            continue;
        a = a >= 'A' && a <= 'Z' ? a + ('a' - 'A') : a;
        b = b >= 'A' && b <= 'Z' ? b + ('a' - 'A') : b;
        if (a != b)
            return a < b ? -1 : 1;
    }
    if (i == common)
        return Sign(long(inFirst.size()) - long(inSecond.size()));
    UErrorCode status = U_ZERO_ERROR;
    return Sign(u_strCaseCompare(cf::ICUChars(inFirst) + i, int32_t(inFirst.size() - i), cf::ICUChars(inSecond) + i,
                                 int32_t(inSecond.size() - i), U_FOLD_CASE_DEFAULT, &status));
}

int DigitValue(UChar32 inChar)
{
    if (inChar < 0x80)
        return inChar >= '0' && inChar <= '9' ? inChar - '0' : -1;
    return u_charType(inChar) == U_DECIMAL_DIGIT_NUMBER ? u_charDigitValue(inChar) : -1;
}

// Compares the runs of digits that start at ioFirst and ioSecond by the numbers they spell
// ("9" before "10"; "007" equals "7"), and moves both past their runs.
template <class Chars>
int CompareNumbers(const Chars& inFirst, std::size_t& ioFirst, const Chars& inSecond, std::size_t& ioSecond)
{
    auto run = [](const Chars& inChars, std::size_t& ioAt, std::size_t& outSignificant) {
        while (ioAt < inChars.size() && DigitValue(inChars[ioAt]) == 0)
            ++ioAt;
        outSignificant = ioAt;
        while (ioAt < inChars.size() && DigitValue(inChars[ioAt]) >= 0)
            ++ioAt;
    };
    std::size_t first = 0;
    std::size_t second = 0;
    run(inFirst, ioFirst, first);
    run(inSecond, ioSecond, second);
    std::size_t digits = ioFirst - first;
    if (digits != ioSecond - second)
        return digits < ioSecond - second ? -1 : 1;  // more significant digits: a larger number
    for (std::size_t k = 0; k < digits; ++k)
        if (int order = DigitValue(inFirst[first + k]) - DigitValue(inSecond[second + k]))
            return Sign(order);
    return 0;
}

int CompareFolded(const cf::FoldedText& inFirst, const cf::FoldedText& inSecond, bool inNumeric)
{
    const auto& a = inFirst.chars;
    const auto& b = inSecond.chars;
    std::size_t i = 0;
    std::size_t j = 0;
    while (i < a.size() && j < b.size()) {
        if (inNumeric && DigitValue(a[i]) >= 0 && DigitValue(b[j]) >= 0) {
            if (int order = CompareNumbers(a, i, b, j))
                return order;
            continue;
        }
        if (a[i] != b[j])
            return cf::UTF16OrderKey(a[i]) < cf::UTF16OrderKey(b[j]) ? -1 : 1;
        ++i;
        ++j;
    }
    return (i < a.size()) - (j < b.size());
}

using OwnedCollator = port::UniqueHandle<UCollator, ucol_close>;

// Opening a collator takes far longer than a comparison, so each thread keeps one per locale,
// with the attributes of the flags it last compared under.
class CollatorCache {
public:
    UCollator* Get(const std::string& inLocale, CFStringCompareFlags inFlags)
    {
        Entry* entry = Find(inLocale);
        if (entry == nullptr)
            return nullptr;
        if (entry->flags != inFlags) {
            Configure(entry->collator.get(), inFlags);
            entry->flags = inFlags;
        }
        return entry->collator.get();
    }

private:
    static constexpr CFStringCompareFlags kUnset = ~CFStringCompareFlags(0);

    struct Entry {
        std::string locale;
        OwnedCollator collator;
        CFStringCompareFlags flags = kUnset;
    };

    Entry* Find(const std::string& inLocale)
    {
        for (Entry& entry : mEntries)
            if (entry.locale == inLocale)
                return &entry;
        UErrorCode status = U_ZERO_ERROR;
        OwnedCollator collator{ucol_open(inLocale.c_str(), &status)};
        if (U_FAILURE(status))
            return nullptr;
        mEntries.push_back(Entry{inLocale, std::move(collator)});
        return &mEntries.back();
    }

    // Case and diacritics are ICU's tertiary and secondary levels; ignoring diacritics but
    // not case keeps case through the separate case level.
    static void Configure(UCollator* ioCollator, CFStringCompareFlags inFlags)
    {
        bool caseless = inFlags & kCFCompareCaseInsensitive;
        bool diacriticless = inFlags & kCFCompareDiacriticInsensitive;
        UColAttributeValue strength = diacriticless ? UCOL_PRIMARY : caseless ? UCOL_SECONDARY : UCOL_TERTIARY;
        auto onIf = [](bool inOn) { return inOn ? UCOL_ON : UCOL_OFF; };
        UErrorCode status = U_ZERO_ERROR;
        ucol_setAttribute(ioCollator, UCOL_STRENGTH, strength, &status);
        ucol_setAttribute(ioCollator, UCOL_CASE_LEVEL, onIf(diacriticless && !caseless), &status);
        ucol_setAttribute(ioCollator, UCOL_NUMERIC_COLLATION, onIf(inFlags & kCFCompareNumerically), &status);
        ucol_setAttribute(ioCollator, UCOL_NORMALIZATION_MODE, onIf(inFlags & kCFCompareNonliteral), &status);
    }

    std::vector<Entry> mEntries;
};

// UTF-16 of folded text, for handing width-folded text to the collator.
void AppendUTF16(const cf::FoldedText& inFolded, cf::SmallVector<UChar, cf::FoldedText::kInline>& ioUnits)
{
    for (std::size_t i = 0; i < inFolded.chars.size(); ++i)
        port::AppendUTF16(ioUnits, char32_t(inFolded.chars[i]));
}

int Collated(std::u16string_view inFirst, std::u16string_view inSecond, CFStringCompareFlags inFlags,
             const std::string& inLocale)
{
    thread_local CollatorCache tCollators;
    UCollator* collator = tCollators.Get(inLocale, inFlags);
    if (collator == nullptr)
        return Literal(inFirst, inSecond);
    if (!(inFlags & kCFCompareWidthInsensitive))
        return Sign(ucol_strcoll(collator, cf::ICUChars(inFirst), int32_t(inFirst.size()), cf::ICUChars(inSecond),
                                 int32_t(inSecond.size())));
    // Width is a tertiary difference to a collator, inseparable from case, so it is folded away first.
    cf::FoldOptions widthOnly;
    widthOnly.width = true;
    cf::FoldedText first, second;
    cf::Fold(inFirst, widthOnly, false, first);
    cf::Fold(inSecond, widthOnly, false, second);
    cf::SmallVector<UChar, cf::FoldedText::kInline> firstUnits, secondUnits;
    AppendUTF16(first, firstUnits);
    AppendUTF16(second, secondUnits);
    return Sign(ucol_strcoll(collator, firstUnits.data(), int32_t(firstUnits.size()), secondUnits.data(),
                             int32_t(secondUnits.size())));
}

int Unforced(std::u16string_view inFirst, std::u16string_view inSecond, CFStringCompareFlags inFlags,
             const std::string* inLocale)
{
    if (inLocale != nullptr)
        return Collated(inFirst, inSecond, inFlags, *inLocale);
    cf::FoldOptions options = cf::FoldOptions::From(inFlags);
    bool numeric = inFlags & kCFCompareNumerically;
    if (!options.Any() && !numeric)
        return Literal(inFirst, inSecond);
    if (options.caseless && !options.decompose && !options.width && !numeric)
        return Caseless(inFirst, inSecond);
    cf::FoldedText first, second;
    cf::Fold(inFirst, options, false, first);
    cf::Fold(inSecond, options, false, second);
    return CompareFolded(first, second, numeric);
}

// inLocale is the collation locale, or NULL for the unlocalised order.
CFComparisonResult Compare(std::u16string_view inFirst, std::u16string_view inSecond, CFStringCompareFlags inFlags,
                           const std::string* inLocale)
{
    int order = Unforced(inFirst, inSecond, inFlags, inLocale);
    // Strings that are only equivalent still get an order when asked, so that sorting them is stable.
    if (order == 0 && (inFlags & kCFCompareForcedOrdering))
        order = Literal(inFirst, inSecond);
    return Result(order);
}

}  // namespace

CFComparisonResult CFStringCompareWithOptionsAndLocale(CFStringRef inString1, CFStringRef inString2, CFRange inRange,
                                                       CFStringCompareFlags inOptions, CFLocaleRef inLocale)
{
    constexpr const char* kCall = "CFStringCompareWithOptionsAndLocale";
    std::u16string_view first = cf::Substring(cf::String(inString1, kCall), inRange, kCall);
    std::u16string_view second = cf::String(inString2, kCall).View();
    std::string locale = cf::LocaleName(inLocale, kCall);
    return Compare(first, second, inOptions, (inOptions & kCFCompareLocalized) ? &locale : nullptr);
}

CFComparisonResult CFStringCompareWithOptions(CFStringRef inString1, CFStringRef inString2, CFRange inRange,
                                              CFStringCompareFlags inOptions)
{
    constexpr const char* kCall = "CFStringCompareWithOptions";
    std::u16string_view first = cf::Substring(cf::String(inString1, kCall), inRange, kCall);
    std::u16string_view second = cf::String(inString2, kCall).View();
    bool localized = inOptions & kCFCompareLocalized;
    return Compare(first, second, inOptions, localized ? &cf::UserLocaleName() : nullptr);
}

CFComparisonResult CFStringCompare(CFStringRef inString1, CFStringRef inString2, CFStringCompareFlags inOptions)
{
    constexpr const char* kCall = "CFStringCompare";
    std::u16string_view first = cf::String(inString1, kCall).View();
    std::u16string_view second = cf::String(inString2, kCall).View();
    bool localized = inOptions & kCFCompareLocalized;
    return Compare(first, second, inOptions, localized ? &cf::UserLocaleName() : nullptr);
}
