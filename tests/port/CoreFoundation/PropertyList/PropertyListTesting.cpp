// Helpers of the property-list and preferences tests.
#include "PropertyListTesting.h"

#include <CoreFoundation/CFRuntime.h>

#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cinttypes>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>

extern char** environ;

namespace plisttest {

TemporaryFolder::TemporaryFolder()
{
    std::string pattern = (std::filesystem::temp_directory_path() / "plist-test-XXXXXX").string();
    mPath = mkdtemp(pattern.data()) ? pattern : "";
}

TemporaryFolder::~TemporaryFolder()
{
    if (!mPath.empty())
        std::filesystem::remove_all(mPath);
}

CFStringRef Str(std::string_view inUTF8)
{
    return CFStringCreateWithBytes(nullptr, reinterpret_cast<const UInt8*>(inUTF8.data()), CFIndex(inUTF8.size()),
                                   kCFStringEncodingUTF8, false);
}

CFDataRef Bytes(std::string_view inBytes)
{
    return CFDataCreate(nullptr, reinterpret_cast<const UInt8*>(inBytes.data()), CFIndex(inBytes.size()));
}

std::string BytesOf(CFDataRef inData)
{
    return {reinterpret_cast<const char*>(CFDataGetBytePtr(inData)), std::size_t(CFDataGetLength(inData))};
}

std::string UTF16(std::u16string_view inText, bool inBigEndian)
{
    std::string bytes = inBigEndian ? "\xFE\xFF" : "\xFF\xFE";
    for (char16_t unit : inText) {
        char high = char(unit >> 8), low = char(unit & 0xFF);
        bytes += inBigEndian ? std::string{high, low} : std::string{low, high};
    }
    return bytes;
}

std::string Text(CFStringRef inString) { return cf::UTF8(inString); }

std::string Dump(CFPropertyListRef inValue)
{
    char number[64];
    CFTypeID type = CFGetTypeID(inValue);
    if (type == CFStringGetTypeID()) {
        std::string escaped;
        for (char c : Text(CFStringRef(inValue)))
            escaped += c == '"' || c == '\\' ? std::string{'\\', c} : std::string{c};
        return "s\"" + escaped + "\"";
    }
    if (type == CFBooleanGetTypeID())
        return CFBooleanGetValue(CFBooleanRef(inValue)) ? "true" : "false";
    if (type == CFNumberGetTypeID() && CFNumberIsFloatType(CFNumberRef(inValue))) {
        double real = 0;
        CFNumberGetValue(CFNumberRef(inValue), kCFNumberFloat64Type, &real);
        std::snprintf(number, sizeof number, "r%.17g", real);
        return number;
    }
    if (type == CFNumberGetTypeID()) {
        SInt64 integer = 0;
        CFNumberGetValue(CFNumberRef(inValue), kCFNumberSInt64Type, &integer);
        std::snprintf(number, sizeof number, "i%" PRId64, integer);
        return number;
    }
    if (type == CFDateGetTypeID()) {
        std::snprintf(number, sizeof number, "d%.3f", CFDateGetAbsoluteTime(CFDateRef(inValue)));
        return number;
    }
    if (type == CFDataGetTypeID()) {
        std::string hex = "x";
        for (CFIndex i = 0; i < CFDataGetLength(CFDataRef(inValue)); ++i) {
            std::snprintf(number, sizeof number, "%02x", CFDataGetBytePtr(CFDataRef(inValue))[i]);
            hex += number;
        }
        return hex;
    }
    if (type == CFArrayGetTypeID()) {
        std::string text = "[";
        for (CFIndex i = 0; i < CFArrayGetCount(CFArrayRef(inValue)); ++i)
            text += (i ? "," : "") + Dump(CFArrayGetValueAtIndex(CFArrayRef(inValue), i));
        return text + "]";
    }
    if (type == CFDictionaryGetTypeID()) {
        auto count = std::size_t(CFDictionaryGetCount(CFDictionaryRef(inValue)));
        std::vector<const void*> keys(count), values(count);
        CFDictionaryGetKeysAndValues(CFDictionaryRef(inValue), keys.data(), values.data());
        std::map<std::string, std::string> sorted;  // UTF-8 order is code-point order, as in Python
        for (std::size_t i = 0; i < count; ++i)
            sorted[Text(CFStringRef(keys[i]))] = Dump(keys[i]) + ":" + Dump(values[i]);
        std::string text = "{";
        for (const auto& [key, entry] : sorted)
            text += (text.size() > 1 ? "," : "") + entry;
        return text + "}";
    }
    return "?";
}

Ref Parse(std::string_view inBytes, CFOptionFlags inOptions, std::string* outError, CFPropertyListFormat* outFormat)
{
    Ref data(Bytes(inBytes));
    CFStringRef error = nullptr;
    Ref value(CFPropertyListCreateWithData(nullptr, data.as<CFDataRef>(), inOptions, outFormat, &error));
    Ref errorOwner(error);
    if (outError)
        *outError = error ? Text(error) : "";
    return value;
}

std::string ReadFile(const std::string& inPath)
{
    std::ifstream file(inPath, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

void WriteFile(const std::string& inPath, std::string_view inBytes)
{
    std::ofstream file(inPath, std::ios::binary | std::ios::trunc);
    file.write(inBytes.data(), std::streamsize(inBytes.size()));
}

std::string RunProgram(const std::vector<std::string>& inArguments, int* outExitStatus)
{
    int output[2];
    if (pipe(output) != 0)
        return "";
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, output[1], STDOUT_FILENO);
    posix_spawn_file_actions_addclose(&actions, output[0]);
    std::vector<char*> argv;
    for (const std::string& argument : inArguments)
        argv.push_back(const_cast<char*>(argument.c_str()));
    argv.push_back(nullptr);
    pid_t child = -1;
    int failed = posix_spawnp(&child, argv[0], &actions, nullptr, argv.data(), environ);
    posix_spawn_file_actions_destroy(&actions);
    close(output[1]);
    std::string text;
    char buffer[4096];
    for (ssize_t count; !failed && (count = read(output[0], buffer, sizeof buffer)) > 0;)
        text.append(buffer, std::size_t(count));
    close(output[0]);
    int status = -1;
    if (!failed)
        waitpid(child, &status, 0);
    if (outExitStatus)
        *outExitStatus = !failed && WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    return text;
}

}  // namespace plisttest
