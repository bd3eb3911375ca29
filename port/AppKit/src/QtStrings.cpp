#include "QtStrings.h"

#include <vector>

namespace appkit {

QString ToQString(NSString* inString)
{
    if (inString == nullptr)
        return {};
    CFStringRef text = inString->CFString();
    CFIndex length = CFStringGetLength(text);
    std::vector<UniChar> units(static_cast<std::size_t>(length));
    CFStringGetCharacters(text, CFRangeMake(0, length), units.data());
    return QString(reinterpret_cast<const QChar*>(units.data()), static_cast<qsizetype>(length));
}

NSString* FromQString(const QString& inText)
{
    CFStringRef text = CFStringCreateWithCharacters(nullptr, reinterpret_cast<const UniChar*>(inText.utf16()),
                                                    static_cast<CFIndex>(inText.size()));
    if (text == nullptr)
        return nullptr;
    NSAutoreleasePool::addObject(text);
    return NSString::bridge(text);
}

}  // namespace appkit
