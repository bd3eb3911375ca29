// A process that receives Apple events, for the tests that send them across processes.
// It says "ready" on its standard output once its handlers are installed, then runs its
// main run loop until it is asked to quit.
#include <Carbon/AEDataModel.h>
#include <Carbon/AppleEvents.h>
#include <Carbon/MacErrors.h>
#include <CoreFoundation/CFRunLoop.h>

#include <chrono>
#include <cstdio>
#include <thread>

namespace {

// Replies with every parameter of the event, and with what it learnt of the sender.
OSErr Echo(const AppleEvent* inEvent, AppleEvent* ioReply, SRefCon)
{
    long count = 0;
    AECountItems(inEvent, &count);
    for (long i = 1; i <= count; ++i) {
        AEKeyword keyword;
        AEDesc parameter;
        if (OSErr status = AEGetNthDesc(inEvent, i, typeWildCard, &keyword, &parameter); status != noErr)
            return status;
        AEPutParamDesc(ioReply, keyword, &parameter);
        AEDisposeDesc(&parameter);
    }
    AEDesc sender;
    if (AEGetAttributeDesc(inEvent, keyOriginalAddressAttr, typeProcessSerialNumber, &sender) == noErr) {
        AEPutParamDesc(ioReply, keyOriginalAddressAttr, &sender);
        AEDisposeDesc(&sender);
    }
    SInt16 source = kAEUnknownSource;
    AEGetAttributePtr(inEvent, keyEventSourceAttr, typeSInt16, nullptr, &source, sizeof source, nullptr);
    return AEPutParamPtr(ioReply, keyEventSourceAttr, typeSInt16, &source, sizeof source);
}

OSErr Slow(const AppleEvent*, AppleEvent*, SRefCon)
{
    std::this_thread::sleep_for(std::chrono::seconds(2));
    return noErr;
}

}  // namespace

int main()
{
    if (AEInstallEventHandler(FourCC("SdTs"), FourCC("echo"), Echo, nullptr, false) != noErr ||
        AEInstallEventHandler(FourCC("SdTs"), FourCC("slow"), Slow, nullptr, false) != noErr)
        return 1;
    std::puts("ready");
    std::fflush(stdout);
    CFRunLoopRun();
    return 0;
}
