// Helpers of the property-list and preferences tests: owning references, a canonical text of
// a property list (which a Python script writes the same way), files and child programs.
#pragma once

#include <CoreFoundation/CoreFoundation.h>

#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace plisttest {

// Owns one reference for the length of a test, so that a failed assertion does not leak.
class Ref {
public:
    explicit Ref(CFTypeRef inRef = nullptr) : mRef(inRef) {}
    Ref(Ref&& ioOther) noexcept : mRef(std::exchange(ioOther.mRef, nullptr)) {}
    Ref& operator=(Ref&& ioOther) noexcept
    {
        std::swap(mRef, ioOther.mRef);
        return *this;
    }
    ~Ref()
    {
        if (mRef)
            CFRelease(mRef);
    }
    CFTypeRef get() const { return mRef; }
    explicit operator bool() const { return mRef != nullptr; }
    template <class T>
    T as() const
    {
        return static_cast<T>(mRef);
    }

private:
    CFTypeRef mRef;
};

// A folder of its own for a test, removed with everything in it when the test ends.
class TemporaryFolder {
public:
    TemporaryFolder();
    ~TemporaryFolder();
    const std::string& Path() const { return mPath; }
    std::string operator/(const char* inName) const { return mPath + "/" + inName; }

private:
    std::string mPath;
};

CFStringRef Str(std::string_view inUTF8);
CFDataRef Bytes(std::string_view inBytes);
std::string BytesOf(CFDataRef inData);
// Text as UTF-16 in either byte order, after a byte-order mark.
std::string UTF16(std::u16string_view inText, bool inBigEndian);
std::string Text(CFStringRef inString);

// One line per tree: dictionaries sorted by key, numbers, dates and data spelled exactly.
std::string Dump(CFPropertyListRef inValue);

// Reads bytes as a property list; on failure NULL and the reason in outError.
Ref Parse(std::string_view inBytes, CFOptionFlags inOptions = kCFPropertyListImmutable, std::string* outError = nullptr,
          CFPropertyListFormat* outFormat = nullptr);

std::string ReadFile(const std::string& inPath);
void WriteFile(const std::string& inPath, std::string_view inBytes);

// What the preferences writer stores beside each counter value: its length grows with the
// counter and every byte tells which counter it belongs to, so a file that mixed two writes
// is noticed.
inline std::string WriterPayload(long inCounter)
{
    return std::string(std::size_t(inCounter * 131 % 400000), char(inCounter & 0x7F));
}

// Runs a program to its end and answers what it wrote on standard output.
std::string RunProgram(const std::vector<std::string>& inArguments, int* outExitStatus = nullptr);

}  // namespace plisttest
