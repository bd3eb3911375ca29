// Searching strings: the find calls, prefixes and suffixes, and the list of every occurrence.
#include "CFStringObject.h"
#include "CFStringFolding.h"
#include "CFStringLocale.h"
#include "CFStringFind.h"

namespace cf {

namespace {

// Hands each occurrence to inOnMatch, which answers whether to go on looking.
template <class OnMatch>
void SearchLiteral(std::u16string_view inText, std::u16string_view inFind, CFStringCompareFlags inFlags,
                   OnMatch inOnMatch)
{
    const std::size_t m = inFind.size();
    bool backwards = inFlags & kCFCompareBackwards;
    if (inFlags & kCFCompareAnchored) {
        if (backwards ? inText.ends_with(inFind) : inText.starts_with(inFind))
            inOnMatch(Match{backwards ? inText.size() - m : 0, m});
        return;
    }
    if (!backwards) {
        for (std::size_t at = inText.find(inFind); at != inText.npos; at = inText.find(inFind, at + m))
            if (!inOnMatch(Match{at, m}))
                return;
        return;
    }
    for (std::size_t end = inText.size(); end >= m;) {
        std::size_t at = inText.rfind(inFind, end - m);
        if (at == inText.npos || !inOnMatch(Match{at, m}))
            return;
        end = at;
    }
}

// Matches on folded text, reported in source units. A match has to cover whole source
// characters: "s" does not match half of "ß", and, for canonical equivalence, "e" does not
// match the base of "e" followed by a combining accent.
template <class OnMatch>
void SearchFolded(std::u16string_view inText, std::u16string_view inFind, const SearchOptions& inOptions,
                  OnMatch inOnMatch)
{
    FoldOptions options = FoldOptions::From(inOptions.flags, inOptions.turkic);
    FoldedText text, find;
    Fold(inText, options, true, text);
    Fold(inFind, options, false, find);
    const std::size_t n = text.chars.size();
    const std::size_t m = find.chars.size();
    if (m == 0 || m > n)
        return;
    bool keepMarks = options.decompose && !options.stripDiacritics;
    auto matchesAt = [&](std::size_t s) {
        for (std::size_t k = 0; k < m; ++k)
            if (text.chars[s + k] != find.chars[k])
                return false;
        std::size_t e = s + m;
        if (s > 0 && text.starts[s] == text.starts[s - 1])
            return false;
        if (e < n && (text.starts[e] == text.starts[e - 1] || (keepMarks && IsCombiningMark(text.chars[e]))))
            return false;
        return true;
    };
    auto report = [&](std::size_t s) {
        // Reordered accents can make the first and last folded characters come from sources
        // other than the outermost ones, so the widest source span wins.
        std::uint32_t start = text.starts[s];
        std::uint32_t end = text.ends[s];
        for (std::size_t k = s; k < s + m; ++k) {
            start = std::min(start, text.starts[k]);
            end = std::max(end, text.ends[k]);
        }
        return inOnMatch(Match{start, std::size_t(end - start)});
    };
    bool backwards = inOptions.flags & kCFCompareBackwards;
    bool anchored = inOptions.flags & kCFCompareAnchored;
    if (anchored) {
        std::size_t s = backwards ? n - m : 0;
        if (matchesAt(s))
            report(s);
        return;
    }
    if (!backwards) {
        for (std::size_t s = 0; s + m <= n;) {
            if (!matchesAt(s)) {
                ++s;
                continue;
            }
            if (!report(s))
                return;
            s += m;
        }
        return;
    }
    for (std::ptrdiff_t s = std::ptrdiff_t(n - m); s >= 0;) {
        if (!matchesAt(std::size_t(s))) {
            --s;
            continue;
        }
        if (!report(std::size_t(s)))
            return;
        s -= std::ptrdiff_t(m);
    }
}

template <class OnMatch>
void Search(std::u16string_view inText, std::u16string_view inFind, const SearchOptions& inOptions, OnMatch inOnMatch)
{
    if (inFind.empty())
        return;
    if (FoldOptions::From(inOptions.flags).Any())
        SearchFolded(inText, inFind, inOptions, inOnMatch);
    else
        SearchLiteral(inText, inFind, inOptions.flags, inOnMatch);
}

}  // namespace

std::optional<Match> FindFirst(std::u16string_view inText, std::u16string_view inFind, const SearchOptions& inOptions)
{
    std::optional<Match> found;
    Search(inText, inFind, inOptions, [&](Match inMatch) {
        found = inMatch;
        return false;
    });
    return found;
}

std::vector<Match> FindAll(std::u16string_view inText, std::u16string_view inFind, const SearchOptions& inOptions)
{
    std::vector<Match> matches;
    Search(inText, inFind, inOptions, [&](Match inMatch) {
        matches.push_back(inMatch);
        return true;
    });
    return matches;
}

SearchOptions SearchOptionsFor(CFStringCompareFlags inFlags, CFLocaleRef inLocale, bool inUseUserLocale,
                               const char* inCall)
{
    std::string locale = LocaleName(inLocale, inCall);
    SearchOptions options{inFlags, false};
    if (inFlags & kCFCompareLocalized)
        options.turkic = IsTurkic(inUseUserLocale ? UserLocaleName() : locale);
    return options;
}

}  // namespace cf

namespace {

Boolean Find(CFStringRef inString, CFStringRef inFind, CFRange inRange, const cf::SearchOptions& inOptions,
             CFRange* outResult, const char* inCall)
{
    std::u16string_view text = cf::Substring(cf::String(inString, inCall), inRange, inCall);
    std::optional<cf::Match> found = cf::FindFirst(text, cf::String(inFind, inCall).View(), inOptions);
    if (!found)
        return false;
    if (outResult)
        *outResult = CFRangeMake(inRange.location + CFIndex(found->location), CFIndex(found->length));
    return true;
}

void ReleaseRange(CFAllocatorRef inAllocator, const void* inValue)
{
    CFAllocatorDeallocate(inAllocator, const_cast<void*>(inValue));
}

Boolean EqualRanges(const void* inValue1, const void* inValue2)
{
    auto* first = static_cast<const CFRange*>(inValue1);
    auto* second = static_cast<const CFRange*>(inValue2);
    return first->location == second->location && first->length == second->length;
}

}  // namespace

Boolean CFStringFindWithOptionsAndLocale(CFStringRef inString, CFStringRef inFind, CFRange inRange,
                                         CFStringCompareFlags inOptions, CFLocaleRef inLocale, CFRange* outResult)
{
    constexpr const char* kCall = "CFStringFindWithOptionsAndLocale";
    return Find(inString, inFind, inRange, cf::SearchOptionsFor(inOptions, inLocale, false, kCall), outResult, kCall);
}

Boolean CFStringFindWithOptions(CFStringRef inString, CFStringRef inFind, CFRange inRange,
                                CFStringCompareFlags inOptions, CFRange* outResult)
{
    constexpr const char* kCall = "CFStringFindWithOptions";
    return Find(inString, inFind, inRange, cf::SearchOptionsFor(inOptions, nullptr, true, kCall), outResult, kCall);
}

CFRange CFStringFind(CFStringRef inString, CFStringRef inFind, CFStringCompareFlags inOptions)
{
    constexpr const char* kCall = "CFStringFind";
    CFRange result{kCFNotFound, 0};
    CFRange whole = CFRangeMake(0, CFIndex(cf::String(inString, kCall).mText.size()));
    Find(inString, inFind, whole, cf::SearchOptionsFor(inOptions, nullptr, true, kCall), &result, kCall);
    return result;
}

Boolean CFStringHasPrefix(CFStringRef inString, CFStringRef inPrefix)
{
    std::u16string_view prefix = cf::String(inPrefix, "CFStringHasPrefix").View();
    return !prefix.empty() && cf::String(inString, "CFStringHasPrefix").View().starts_with(prefix);
}

Boolean CFStringHasSuffix(CFStringRef inString, CFStringRef inSuffix)
{
    std::u16string_view suffix = cf::String(inSuffix, "CFStringHasSuffix").View();
    return !suffix.empty() && cf::String(inString, "CFStringHasSuffix").View().ends_with(suffix);
}

// The array holds pointers to ranges that it owns, as on the platform: each is freed with the
// array's allocator when the array lets it go.
CFArrayRef CFStringCreateArrayWithFindResults(CFAllocatorRef inAllocator, CFStringRef inString, CFStringRef inFind,
                                              CFRange inRange, CFStringCompareFlags inOptions)
{
    constexpr const char* kCall = "CFStringCreateArrayWithFindResults";
    std::u16string_view text = cf::Substring(cf::String(inString, kCall), inRange, kCall);
    std::vector<cf::Match> matches = cf::FindAll(text, cf::String(inFind, kCall).View(),
                                                 cf::SearchOptionsFor(inOptions, nullptr, true, kCall));
    if (matches.empty())
        return nullptr;
    static const CFArrayCallBacks kRangeCallBacks{0, nullptr, ReleaseRange, nullptr, EqualRanges};
    CFMutableArrayRef array = CFArrayCreateMutable(inAllocator, CFIndex(matches.size()), &kRangeCallBacks);
    if (array == nullptr)
        return nullptr;
    for (const cf::Match& match : matches) {
        auto* range = static_cast<CFRange*>(CFAllocatorAllocate(inAllocator, sizeof(CFRange), 0));
        if (range == nullptr) {
            CFRelease(array);
            return nullptr;
        }
        *range = CFRangeMake(inRange.location + CFIndex(match.location), CFIndex(match.length));
        CFArrayAppendValue(array, range);
    }
    return array;
}
