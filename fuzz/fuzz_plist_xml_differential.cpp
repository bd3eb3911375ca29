// Our XML reader against libplist on the same bytes: our reader never crashes, hangs or
// leaks, and wherever both read a value, the two values are equal. A difference means one of
// them misreads a file that the other takes, so the choice of reader would change settings.
#include "PropertyList/XMLReader.h"
#include "PropertyList/CFPropertyListNodes.h"
#include "PropertyList/CFPropertyListShape.h"

#include <CoreFoundation/CFRuntime.h>
#include <CoreFoundation/CoreFoundation.h>

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <string_view>

namespace {

using namespace cf::plist;

OwnedValue ReadWithLibplist(std::string_view inText)
{
    std::string error;
    if (!CheckXMLShape(inText, error))
        return OwnedValue();
    std::span<const UInt8> bytes(reinterpret_cast<const UInt8*>(inText.data()), inText.size());
    Node root = ParseNode(bytes, kCFPropertyListXMLFormat_v1_0, error);
    return OwnedValue(root ? ValueFromNode(root.get(), nullptr, kCFPropertyListImmutable, error) : nullptr);
}

void Show(const char* inWhich, CFTypeRef inValue)
{
    CFStringRef description = CFCopyDescription(inValue);
    std::fprintf(stderr, "%s: %s\n", inWhich, cf::UTF8(description).c_str());
    CFRelease(description);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* inData, size_t inSize)
{
    std::string_view text(reinterpret_cast<const char*>(inData), inSize);
    OwnedValue ours = ReadXML(nullptr, text, kCFPropertyListImmutable);
    if (!ours)
        return 0;
    // libplist does not expect a byte-order mark; the property-list reader removes it first.
    if (text.starts_with("\xEF\xBB\xBF"))
        text.remove_prefix(3);
    OwnedValue theirs = ReadWithLibplist(text);
    if (theirs && !CFEqual(ours.Get(), theirs.Get())) {
        Show("ours", ours.Get());
        Show("libplist", theirs.Get());
        std::abort();
    }
    return 0;
}
