// Text reduced to the form in which two strings are equal under the comparison flags: case
// folded, canonically decomposed, without diacritics, with full- and half-width forms made
// plain. Comparison and search both work on this form; search also keeps, for every folded
// character, the source characters it came from, so that a match is reported in the units of
// the original string even where folding changed the length ("ß" folds to "ss").
#pragma once

#include <CoreFoundation/CFString.h>

#include <unicode/umachine.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

namespace cf {

// A sequence that lives on the stack up to N elements and moves to the heap beyond, so that
// comparing short strings never allocates.
template <class T, std::size_t N>
class SmallVector {
public:
    SmallVector() = default;
    SmallVector(const SmallVector&) = delete;
    SmallVector& operator=(const SmallVector&) = delete;

    std::size_t size() const { return mSize; }
    bool empty() const { return mSize == 0; }
    T* data() { return mHeap.empty() ? mInline.data() : mHeap.data(); }
    const T* data() const { return mHeap.empty() ? mInline.data() : mHeap.data(); }
    T& operator[](std::size_t inIndex) { return data()[inIndex]; }
    const T& operator[](std::size_t inIndex) const { return data()[inIndex]; }
    void clear() { mSize = 0; }

    void push_back(T inValue)
    {
        if (mSize < N) {
            mInline[mSize++] = inValue;
            return;
        }
        if (mHeap.empty())
            mHeap.assign(mInline.begin(), mInline.end());
        mHeap.push_back(inValue);
        ++mSize;
    }

private:
    std::array<T, N> mInline;
    std::vector<T> mHeap;
    std::size_t mSize = 0;
};

struct FoldOptions {
    bool caseless = false;
    bool decompose = false;  // canonical equivalence; also needed before diacritics can go
    bool stripDiacritics = false;
    bool width = false;
    bool turkic = false;  // Turkish and Azeri fold dotted and dotless i apart

    static FoldOptions From(CFStringCompareFlags inFlags, bool inTurkic = false);
    bool Any() const { return caseless || decompose || stripDiacritics || width; }
};

struct FoldedText {
    static constexpr std::size_t kInline = 96;

    SmallVector<UChar32, kInline> chars;
    // For each folded character, the units [start, end) of the source character it came from;
    // filled only when origins are asked for.
    SmallVector<std::uint32_t, kInline> starts;
    SmallVector<std::uint32_t, kInline> ends;
};

void Fold(std::u16string_view inText, const FoldOptions& inOptions, bool inTrackOrigins, FoldedText& outFolded);

// Whether the character attaches to the one before it (an accent, a vowel sign).
bool IsCombiningMark(UChar32 inChar);

// Code points ordered as their UTF-16 units would be, so that folded and literal comparisons
// agree on the order of characters above U+FFFF.
constexpr UChar32 UTF16OrderKey(UChar32 inChar)
{
    return inChar >= 0xE000 && inChar <= 0xFFFF ? inChar + 0x200000 : inChar;
}

}  // namespace cf
