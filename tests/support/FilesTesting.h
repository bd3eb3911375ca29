// Real files for the File Manager tests: a fresh temporary folder that is removed with
// everything in it (locked items included), references and names.
#pragma once

#include <Carbon/Files.h>
#include <Carbon/MacErrors.h>

#include <gtest/gtest.h>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

namespace spindeck::test {

class TemporaryFolder {
public:
    explicit TemporaryFolder(const char* inBase = "/tmp")
    {
        std::string pattern = std::string(inBase) + "/files-test-XXXXXX";
        if (::mkdtemp(pattern.data()) != nullptr)
            mPath = pattern;
    }
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;
    ~TemporaryFolder()
    {
        if (mPath.empty())
            return;
        std::error_code ignored;
        for (const auto& entry : std::filesystem::recursive_directory_iterator(mPath, ignored))
            if (!entry.is_symlink())
                ::chmod(entry.path().c_str(), 0700);
        std::filesystem::remove_all(mPath, ignored);
    }

    const std::string& Path() const { return mPath; }
    std::string Path(const std::string& inName) const { return mPath + "/" + inName; }

private:
    std::string mPath;
};

inline FSRef RefOf(const std::string& inPath)
{
    FSRef ref{};
    EXPECT_EQ(FSPathMakeRef(reinterpret_cast<const UInt8*>(inPath.c_str()), &ref, nullptr), noErr) << inPath;
    return ref;
}

inline std::u16string Units(const std::string& inASCII) { return std::u16string(inASCII.begin(), inASCII.end()); }

inline std::u16string NameOf(const HFSUniStr255& inName)
{
    return std::u16string(reinterpret_cast<const char16_t*>(inName.unicode), inName.length);
}

inline const UniChar* Chars(const std::u16string& inText) { return reinterpret_cast<const UniChar*>(inText.data()); }

inline void WriteFile(const std::string& inPath, const std::string& inContents)
{
    std::ofstream(inPath, std::ios::binary) << inContents;
}

// The text of a Pascal string: a length byte, then that many bytes.
inline std::string PascalText(const UInt8* inText)
{
    return std::string(reinterpret_cast<const char*>(inText + 1), inText[0]);
}

inline std::string ReadFile(const std::string& inPath)
{
    std::ifstream file(inPath, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(file), {});
}

inline bool Exists(const std::string& inPath)
{
    struct stat status;
    return ::lstat(inPath.c_str(), &status) == 0;
}

inline FSRef CreateFile(const FSRef& inParent, const std::string& inName)
{
    FSRef ref{};
    std::u16string name = Units(inName);
    EXPECT_EQ(FSCreateFileUnicode(&inParent, name.size(), Chars(name), kFSCatInfoNone, nullptr, &ref, nullptr), noErr);
    return ref;
}

inline FSRef CreateFolder(const FSRef& inParent, const std::string& inName)
{
    FSRef ref{};
    std::u16string name = Units(inName);
    EXPECT_EQ(
        FSCreateDirectoryUnicode(&inParent, name.size(), Chars(name), kFSCatInfoNone, nullptr, &ref, nullptr, nullptr),
        noErr);
    return ref;
}

inline void SetLocked(const FSRef& inRef, bool inLocked)
{
    FSCatalogInfo info{};
    info.nodeFlags = inLocked ? kFSNodeLockedMask : 0;
    ASSERT_EQ(FSSetCatalogInfo(&inRef, kFSCatInfoNodeFlags, &info), noErr);
}

}  // namespace spindeck::test
