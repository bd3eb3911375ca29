// Text folding through ICU. A call that fails (which only memory exhaustion could cause)
// leaves the text as it was, so the comparison is merely stricter than asked.
#include "UnicodeCollationFolding.h"

#include <PortSupport/UnicodeUnits.h>

#include <unicode/uchar.h>
#include <unicode/unorm2.h>
#include <unicode/ustring.h>
#include <unicode/utf16.h>

namespace carbon {

namespace {

// Runs an ICU call that fills a buffer twice: once to learn the length, once to fill it.
template <class Fill>
std::u16string Filled(std::u16string_view inText, Fill inFill)
{
    UErrorCode error = U_ZERO_ERROR;
    int32_t length = inFill(nullptr, 0, &error);
    if (U_FAILURE(error) && error != U_BUFFER_OVERFLOW_ERROR)
        return std::u16string(inText);
    std::u16string folded(std::size_t(length), u'\0');
    error = U_ZERO_ERROR;
    inFill(folded.data(), length, &error);
    return U_SUCCESS(error) ? folded : std::u16string(inText);
}

// Calls inVisit with each code point; unpaired surrogates come as themselves.
template <class Visit>
void ForEachCodePoint(std::u16string_view inText, Visit inVisit)
{
    const int32_t length = int32_t(inText.size());
    for (int32_t i = 0; i < length;) {
        UChar32 codePoint;
        U16_NEXT(inText.data(), i, length, codePoint);
        inVisit(codePoint);
    }
}

const UNormalizer2* Normalizer(const UNormalizer2* (*inInstance)(UErrorCode*))
{
    UErrorCode error = U_ZERO_ERROR;
    const UNormalizer2* normalizer = inInstance(&error);
    return U_SUCCESS(error) ? normalizer : nullptr;
}

}  // namespace

std::u16string FoldWidth(std::u16string_view inText)
{
    const UNormalizer2* compatibility = Normalizer(unorm2_getNFKCInstance);
    std::u16string folded;
    folded.reserve(inText.size());
    ForEachCodePoint(inText, [&](UChar32 inCodePoint) {
        auto type = u_getIntPropertyValue(inCodePoint, UCHAR_DECOMPOSITION_TYPE);
        UChar mapped[4];
        int32_t length = -1;
        if ((type == U_DT_WIDE || type == U_DT_NARROW) && compatibility) {
            UErrorCode error = U_ZERO_ERROR;
            length = unorm2_getRawDecomposition(compatibility, inCodePoint, mapped, 4, &error);
            if (U_FAILURE(error))
                length = -1;
        }
        if (length > 0)
            folded.append(mapped, std::size_t(length));
        else
            port::AppendUTF16(folded, char32_t(inCodePoint));
    });
    return folded;
}

std::u16string FoldCase(std::u16string_view inText)
{
    return Filled(inText, [&](UChar* outBuffer, int32_t inCapacity, UErrorCode* ioError) {
        return u_strFoldCase(outBuffer, inCapacity, inText.data(), int32_t(inText.size()), U_FOLD_CASE_DEFAULT,
                             ioError);
    });
}

std::u16string Decompose(std::u16string_view inText)
{
    const UNormalizer2* canonical = Normalizer(unorm2_getNFDInstance);
    if (canonical == nullptr)
        return std::u16string(inText);
    return Filled(inText, [&](UChar* outBuffer, int32_t inCapacity, UErrorCode* ioError) {
        return unorm2_normalize(canonical, inText.data(), int32_t(inText.size()), outBuffer, inCapacity, ioError);
    });
}

std::u16string StripDiacritics(std::u16string_view inText)
{
    std::u16string stripped;
    ForEachCodePoint(Decompose(inText), [&](UChar32 inCodePoint) {
        if (u_charType(inCodePoint) != U_NON_SPACING_MARK || !u_hasBinaryProperty(inCodePoint, UCHAR_DIACRITIC))
            port::AppendUTF16(stripped, char32_t(inCodePoint));
    });
    return stripped;
}

}  // namespace carbon
