// The framework's log line: local date and time with milliseconds, process name and id.
#include <AppKit/NSLog.h>

#include <cerrno>
#include <chrono>
#include <cstdio>
#include <ctime>
#include <unistd.h>

void NSLog(NSString* inFormat, ...)
{
    va_list arguments;
    va_start(arguments, inFormat);
    NSLogv(inFormat, arguments);
    va_end(arguments);
}

void NSLogv(NSString* inFormat, va_list inArguments)
{
    CFStringRef message = CFStringCreateWithFormatAndArguments(nullptr, nullptr, inFormat->CFString(), inArguments);
    std::string text = message ? cf::UTF8(message) : std::string();
    if (message)
        CFRelease(message);

    auto now = std::chrono::system_clock::now();
    std::time_t seconds = std::chrono::system_clock::to_time_t(now);
    auto millis = std::chrono::duration_cast<std::chrono::milliseconds>(now.time_since_epoch()).count() % 1000;
    std::tm local{};
    localtime_r(&seconds, &local);
    char date[32];
    std::strftime(date, sizeof date, "%Y-%m-%d %H:%M:%S", &local);
    // One write per line, so that lines of several processes sharing standard error stay whole.
    std::fprintf(stderr, "%s.%03lld %s[%d] %s\n", date, static_cast<long long>(millis), program_invocation_short_name,
                 static_cast<int>(::getpid()), text.c_str());
}
