// Helpers shared by the extended file utilities' tests, on top of the File Manager's: forks
// written in one call, dates, and Finder flags read back.
#pragma once

#include "FilesTesting.h"

#include <ExtFileUtils/ExtFileUtils.h>

#include <string>
#include <tuple>

namespace spindeck::test {

// Built with AddressSanitizer, which surrounds every frame and block with guard zones and
// marks every byte of a freed block.
#if defined(__SANITIZE_ADDRESS__)
inline constexpr bool kAddressSanitizer = true;
#elif defined(__has_feature)
inline constexpr bool kAddressSanitizer = __has_feature(address_sanitizer);
#else
inline constexpr bool kAddressSanitizer = false;
#endif

// Each test's own temporary folder, and its reference.
class ExtFileUtilsTest : public testing::Test {
protected:
    TemporaryFolder mFolder;
    FSRef mTop = RefOf(mFolder.Path());
};

inline const std::u16string kResourceFork = u"RESOURCE_FORK";

inline void WriteFork(const FSRef& inFile, const std::u16string& inFork, const std::string& inBytes)
{
    if (inFork == kResourceFork)
        FSCreateFork(&inFile, inFork.size(), Chars(inFork));
    SInt16 fork = 0;
    ASSERT_EQ(FSOpenFork(&inFile, inFork.size(), Chars(inFork), fsWrPerm, &fork), noErr);
    EXPECT_EQ(FSWriteFork(fork, fsFromStart, 0, inBytes.size(), inBytes.data(), nullptr), noErr);
    EXPECT_EQ(FSCloseFork(fork), noErr);
}

inline std::string ReadFork(const FSRef& inFile, const std::u16string& inFork)
{
    SInt16 fork = 0;
    if (FSOpenFork(&inFile, inFork.size(), Chars(inFork), fsRdPerm, &fork) != noErr)
        return "<no fork>";
    std::string bytes(4096, '\0');
    ByteCount read = 0;
    FSReadFork(fork, fsFromStart, 0, bytes.size(), bytes.data(), &read);
    FSCloseFork(fork);
    bytes.resize(read);
    return bytes;
}

inline UTCDateTime ContentModDate(const FSRef& inRef)
{
    FSCatalogInfo info{};
    EXPECT_EQ(FSGetCatalogInfo(&inRef, kFSCatInfoContentMod, &info, nullptr, nullptr, nullptr), noErr);
    return info.contentModDate;
}

inline void SetContentModDate(const FSRef& inRef, const UTCDateTime& inDate)
{
    FSCatalogInfo info{};
    info.contentModDate = inDate;
    ASSERT_EQ(FSSetCatalogInfo(&inRef, kFSCatInfoContentMod, &info), noErr);
}

// A date's fields in order of weight, to compare and print.
inline auto Fields(const UTCDateTime& inDate)
{
    return std::tuple(inDate.highSeconds, inDate.lowSeconds, inDate.fraction);
}

// How many items FSGetDirectoryItems finds in a folder.
inline ItemCount CountItems(const FSRef& inFolder)
{
    FSRef** refs = nullptr;
    ItemCount count = 0;
    EXPECT_EQ(FSGetDirectoryItems(&inFolder, &refs, &count, nullptr), noErr);
    EXPECT_EQ(GetHandleSize(reinterpret_cast<Handle>(refs)), Size(count * sizeof(FSRef)));
    DisposeHandle(reinterpret_cast<Handle>(refs));
    return count;
}

inline FinderInfo FinderInfoOf(const FSRef& inRef)
{
    FinderInfo info{};
    EXPECT_EQ(FSGetFinderInfo(&inRef, &info, nullptr, nullptr), noErr);
    return info;
}

}  // namespace spindeck::test
