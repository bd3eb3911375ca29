// Folding text for comparison and search: each source character goes through the width, the
// decomposition, the case and the diacritic step in turn, and what comes out is recorded
// together with the source units it came from.
#include "CFStringFolding.h"

#include <unicode/uchar.h>
#include <unicode/unorm2.h>
#include <unicode/ustring.h>
#include <unicode/utf16.h>

#include <utility>

namespace cf {

namespace {

const UNormalizer2* Decomposer()
{
    static const UNormalizer2* const normalizer = [] {
        UErrorCode status = U_ZERO_ERROR;
        return unorm2_getNFDInstance(&status);
    }();
    return normalizer;
}

const UNormalizer2* CompatibilityComposer()
{
    static const UNormalizer2* const normalizer = [] {
        UErrorCode status = U_ZERO_ERROR;
        return unorm2_getNFKCInstance(&status);
    }();
    return normalizer;
}

bool IsWidthVariant(UChar32 inChar)
{
    if (inChar < 0x3000)
        return false;  // the width variants all live in the CJK and half/full-width blocks
    auto type = u_getIntPropertyValue(inChar, UCHAR_DECOMPOSITION_TYPE);
    return type == U_DT_WIDE || type == U_DT_NARROW;
}

bool IsDiacritic(UChar32 inChar)
{
    return u_charType(inChar) == U_NON_SPACING_MARK && u_hasBinaryProperty(inChar, UCHAR_DIACRITIC);
}

// Walks one source character through the steps; every step hands what it makes to the next.
class Folder {
public:
    Folder(const FoldOptions& inOptions, bool inTrack, FoldedText& ioOut)
        : mOptions(inOptions), mTrack(inTrack), mOut(ioOut)
    {
    }

    void Source(UChar32 inChar, std::uint32_t inStart, std::uint32_t inEnd)
    {
        mStart = inStart;
        mEnd = inEnd;
        if (inChar < 0x80) {
            // Nothing but case applies below U+0080, and that only to letters.
            Emit(mOptions.caseless && inChar >= 'A' && inChar <= 'Z' ? inChar + ('a' - 'A') : inChar);
            return;
        }
        Width(inChar);
    }

private:
    // Runs inStep on every code point of a decomposition or folding result.
    template <class Step>
    void Each(const UChar* inUnits, int32_t inLength, Step inStep)
    {
        for (int32_t i = 0; i < inLength;) {
            UChar32 c;
            U16_NEXT(inUnits, i, inLength, c);
            (this->*inStep)(c);
        }
    }

    // The decomposition of inChar by inNormalizer into ioBuffer; -1 when it has none.
    static int32_t Decomposition(const UNormalizer2* inNormalizer, UChar32 inChar, UChar* ioBuffer, int32_t inCapacity,
                                 bool inRaw)
    {
        UErrorCode status = U_ZERO_ERROR;
        int32_t length = inRaw ? unorm2_getRawDecomposition(inNormalizer, inChar, ioBuffer, inCapacity, &status)
                               : unorm2_getDecomposition(inNormalizer, inChar, ioBuffer, inCapacity, &status);
        return U_SUCCESS(status) ? length : -1;
    }

    void Width(UChar32 inChar)
    {
        UChar buffer[8];
        int32_t length = mOptions.width && IsWidthVariant(inChar)
                             ? Decomposition(CompatibilityComposer(), inChar, buffer, 8, true)
                             : -1;
        if (length < 0)
            Decompose(inChar);
        else
            Each(buffer, length, &Folder::Decompose);
    }

    void Decompose(UChar32 inChar)
    {
        UChar buffer[32];
        int32_t length = mOptions.decompose ? Decomposition(Decomposer(), inChar, buffer, 32, false) : -1;
        if (length < 0)
            Case(inChar);
        else
            Each(buffer, length, &Folder::Case);
    }

    void Case(UChar32 inChar)
    {
        if (!mOptions.caseless) {
            Strip(inChar);
            return;
        }
        UChar source[2] = {};
        int32_t sourceLength = 0;
        UBool error = false;
        U16_APPEND(source, sourceLength, 2, inChar, error);
        UChar folded[16];
        UErrorCode status = U_ZERO_ERROR;
        uint32_t options = mOptions.turkic ? U_FOLD_CASE_EXCLUDE_SPECIAL_I : U_FOLD_CASE_DEFAULT;
        int32_t length = u_strFoldCase(folded, 16, source, sourceLength, options, &status);
        if (error || U_FAILURE(status)) {
            Strip(inChar);
            return;
        }
        // Canonical caseless matching is defined as decompose, fold, decompose: what folding
        // produces is not promised to be decomposed, so it goes through decomposition again.
        Each(folded, length, mOptions.decompose ? &Folder::Redecompose : &Folder::Strip);
    }

    void Redecompose(UChar32 inChar)
    {
        UChar buffer[32];
        int32_t length = Decomposition(Decomposer(), inChar, buffer, 32, false);
        if (length < 0)
            Strip(inChar);
        else
            Each(buffer, length, &Folder::Strip);
    }

    void Strip(UChar32 inChar)
    {
        if (!(mOptions.stripDiacritics && IsDiacritic(inChar)))
            Emit(inChar);
    }

    void Emit(UChar32 inChar)
    {
        mOut.chars.push_back(inChar);
        if (mTrack) {
            mOut.starts.push_back(mStart);
            mOut.ends.push_back(mEnd);
        }
    }

    const FoldOptions& mOptions;
    bool mTrack;
    FoldedText& mOut;
    std::uint32_t mStart = 0;
    std::uint32_t mEnd = 0;
};

// Nothing below U+0300 combines, and most text lies below it.
uint8_t CombiningClass(UChar32 inChar) { return inChar < 0x300 ? 0 : u_getCombiningClass(inChar); }

// Decomposing one character at a time leaves marks in source order; canonical equivalence
// needs each run of marks sorted by combining class (a dot below before an acute accent,
// whichever was typed first). Insertion sort: runs are a few marks long.
void ReorderMarks(FoldedText& ioFolded, bool inTrack)
{
    auto& chars = ioFolded.chars;
    for (std::size_t i = 1; i < chars.size(); ++i) {
        uint8_t order = CombiningClass(chars[i]);
        for (std::size_t j = i; order != 0 && j > 0; --j) {
            uint8_t before = CombiningClass(chars[j - 1]);
            if (before <= order)
                break;
            std::swap(chars[j], chars[j - 1]);
            if (inTrack) {
                std::swap(ioFolded.starts[j], ioFolded.starts[j - 1]);
                std::swap(ioFolded.ends[j], ioFolded.ends[j - 1]);
            }
        }
    }
}

}  // namespace

FoldOptions FoldOptions::From(CFStringCompareFlags inFlags, bool inTurkic)
{
    FoldOptions options;
    options.caseless = inFlags & kCFCompareCaseInsensitive;
    options.stripDiacritics = inFlags & kCFCompareDiacriticInsensitive;
    options.decompose = (inFlags & kCFCompareNonliteral) || options.stripDiacritics;
    options.width = inFlags & kCFCompareWidthInsensitive;
    options.turkic = inTurkic && options.caseless;
    return options;
}

void Fold(std::u16string_view inText, const FoldOptions& inOptions, bool inTrackOrigins, FoldedText& outFolded)
{
    outFolded.chars.clear();
    outFolded.starts.clear();
    outFolded.ends.clear();
    Folder folder(inOptions, inTrackOrigins, outFolded);
    const UChar* units = reinterpret_cast<const UChar*>(inText.data());
    int32_t length = int32_t(inText.size());
    for (int32_t i = 0; i < length;) {
        int32_t start = i;
        UChar32 c;
        U16_NEXT(units, i, length, c);
        folder.Source(c, std::uint32_t(start), std::uint32_t(i));
    }
    if (inOptions.decompose)
        ReorderMarks(outFolded, inTrackOrigins);
}

bool IsCombiningMark(UChar32 inChar)
{
    if (inChar < 0x300)
        return false;
    return (U_GET_GC_MASK(inChar) & U_GC_M_MASK) != 0;
}

}  // namespace cf
