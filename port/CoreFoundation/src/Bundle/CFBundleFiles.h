// What the bundle calls need from the file system: paths joined and tested, files read,
// folders listed, and the conversion between paths and file URLs.
#pragma once

#include <CoreFoundation/CFDictionary.h>
#include <CoreFoundation/CFURL.h>
#include <PortSupport/Owned.h>

#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace cf::bundle {

using port::Owned;

// inFolder + '/' + inName; an empty name answers the folder itself.
std::string Join(std::string_view inFolder, std::string_view inName);
std::string_view LastComponent(std::string_view inPath);
std::string_view Parent(std::string_view inPath);

bool Exists(const std::string& inPath);
bool IsFolder(const std::string& inPath);
// The path with symbolic links and "." and ".." resolved, when it names something.
std::optional<std::string> Resolved(const std::string& inPath);
// The names in a folder, sorted so that answers do not depend on the file system's order.
std::vector<std::string> FolderEntries(const std::string& inPath);

std::optional<std::string> ReadFile(const std::string& inPath);
// A file read as a property list, when it is one and its root is a dictionary.
CFDictionaryRef ReadDictionary(CFAllocatorRef inAllocator, const std::string& inPath);

// The file-system path of a file URL, resolved against its base.
std::optional<std::string> PathOf(CFURLRef inURL);
CFURLRef MakeURL(CFAllocatorRef inAllocator, const std::string& inPath, bool inIsFolder);

// UTF-8 text of a string; empty for NULL.
std::string Text(CFStringRef inString);

}  // namespace cf::bundle
