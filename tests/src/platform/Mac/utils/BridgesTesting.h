// What the bridge tests make: a scratch folder, bundles in it, owned URLs of its items.
#pragma once

#include <Carbon/Processes.h>
#include <CoreFoundation/CFURL.h>

#include <gtest/gtest.h>

#include <stdlib.h>

#include <filesystem>
#include <fstream>
#include <memory>
#include <string>

inline bool operator==(const ProcessSerialNumber& inA, const ProcessSerialNumber& inB)
{
    return inA.highLongOfPSN == inB.highLongOfPSN && inA.lowLongOfPSN == inB.lowLongOfPSN;
}

namespace spindeck::test {

namespace fs = std::filesystem;

class ScratchFolder {
public:
    ScratchFolder() : mPath(fs::temp_directory_path().string() + "/bridges-test-XXXXXX")
    {
        if (::mkdtemp(mPath.data()) == nullptr)
            ADD_FAILURE() << "no scratch folder";
    }
    ~ScratchFolder()
    {
        std::error_code ignored;
        fs::remove_all(mPath, ignored);
    }
    ScratchFolder(const ScratchFolder&) = delete;
    ScratchFolder& operator=(const ScratchFolder&) = delete;

    std::string Path(const std::string& inName) const { return mPath + "/" + inName; }

private:
    std::string mPath;
};

// <inPath>/Contents/Info.plist with inEntries (XML keys and values) and, when given, a copy
// of inProgram as the bundle's executable Contents/MacOS/<inExecutable>.
inline void MakeBundle(const std::string& inPath, const std::string& inEntries, const std::string& inExecutable = "",
                       const std::string& inProgram = "")
{
    fs::create_directories(inPath + "/Contents/MacOS");
    std::ofstream(inPath + "/Contents/Info.plist")
        << "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<plist version=\"1.0\"><dict>" << inEntries
        << (inExecutable.empty() ? "" : "<key>CFBundleExecutable</key><string>" + inExecutable + "</string>")
        << "</dict></plist>\n";
    if (!inProgram.empty())
        fs::copy_file(inProgram, inPath + "/Contents/MacOS/" + inExecutable);
}

struct ReleaseURL {
    void operator()(CFURLRef inURL) const { CFRelease(inURL); }
};
using URL = std::unique_ptr<const __CFURL, ReleaseURL>;

inline URL PathURL(const std::string& inPath, bool inIsFolder = false)
{
    return URL(CFURLCreateFromFileSystemRepresentation(nullptr, reinterpret_cast<const UInt8*>(inPath.data()),
                                                       CFIndex(inPath.size()), inIsFolder));
}

}  // namespace spindeck::test
