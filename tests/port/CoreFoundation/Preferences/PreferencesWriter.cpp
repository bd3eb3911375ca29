// A second process for the preferences tests.
//   PreferencesWriter loop <application> <descriptor>
//     rewrites the domain until it is killed: each round increments "Counter" and stores
//     the matching "Payload", then synchronises. It writes one byte to <descriptor> once
//     it has started, so that the test's random delay measures time spent writing.
//   PreferencesWriter set <application> <key> <string>
//     stores one string and synchronises; the exit status says whether that worked.
#include "PropertyList/PropertyListTesting.h"

#include <unistd.h>

#include <cstdlib>
#include <cstring>

using plisttest::Ref;
using plisttest::Str;

namespace {

int Loop(CFStringRef inApplication, int inReady)
{
    Ref counterKey(Str("Counter")), payloadKey(Str("Payload"));
    long counter = CFPreferencesGetAppIntegerValue(counterKey.as<CFStringRef>(), inApplication, nullptr);
    if (write(inReady, "r", 1) != 1)
        return 2;
    close(inReady);
    for (int round = 0; round < 1000000; ++round) {
        ++counter;
        Ref number(CFNumberCreate(nullptr, kCFNumberLongType, &counter));
        Ref payload(plisttest::Bytes(plisttest::WriterPayload(counter)));
        CFPreferencesSetAppValue(counterKey.as<CFStringRef>(), number.get(), inApplication);
        CFPreferencesSetAppValue(payloadKey.as<CFStringRef>(), payload.get(), inApplication);
        if (!CFPreferencesAppSynchronize(inApplication))
            return 1;
    }
    return 0;
}

int SetOne(CFStringRef inApplication, const char* inKey, const char* inValue)
{
    Ref key(Str(inKey)), value(Str(inValue));
    CFPreferencesSetAppValue(key.as<CFStringRef>(), value.get(), inApplication);
    return CFPreferencesAppSynchronize(inApplication) ? 0 : 1;
}

}  // namespace

int main(int argc, char** argv)
{
    if (argc < 3)
        return 64;
    Ref application(Str(argv[2]));
    if (std::strcmp(argv[1], "loop") == 0 && argc == 4)
        return Loop(application.as<CFStringRef>(), std::atoi(argv[3]));
    if (std::strcmp(argv[1], "set") == 0 && argc == 5)
        return SetOne(application.as<CFStringRef>(), argv[3], argv[4]);
    return 64;
}
