// Notes for the user as desktop notifications. A note's record is kept from NMInstall until
// its notification is closed; then its response routine runs, on the main run loop. The bus
// connection lives only while some note is up, so an idle process holds none.
#include "SessionBus.h"

#include <Carbon/Notification.h>

#include <CoreFoundation/CFBundle.h>
#include <CoreFoundation/CFString.h>

#include <cerrno>
#include <map>
#include <vector>

namespace {

using carbon::nm::Notice;
using carbon::nm::SessionBus;

struct Manager {
    std::unique_ptr<SessionBus> bus;
    std::map<std::uint32_t, NMRecPtr> up;  // by the server's identifier
    std::vector<NMRecPtr> closed;          // waiting for their response routines
};

Manager& TheManager()
{
    static Manager* sManager = new Manager;  // never destroyed: a note may be up at exit
    return *sManager;
}

void NoticeClosed(std::uint32_t inID)
{
    Manager& manager = TheManager();
    if (auto found = manager.up.find(inID); found != manager.up.end()) {
        manager.closed.push_back(found->second);
        manager.up.erase(found);
    }
}

void BusLost()
{
    Manager& manager = TheManager();
    for (auto& [id, record] : manager.up)
        manager.closed.push_back(record);
    manager.up.clear();
}

void Serviced()
{
    Manager& manager = TheManager();
    // A response routine may post the next note, so the list is taken first.
    std::vector<NMRecPtr> closed = std::move(manager.closed);
    manager.closed.clear();
    for (NMRecPtr record : closed)
        InvokeNMUPP(record, record->nmResp);
    if (manager.up.empty() && manager.closed.empty())
        manager.bus.reset();
}

std::string UTF8(CFStringRef inString)
{
    std::string text(size_t(CFStringGetMaximumSizeForEncoding(CFStringGetLength(inString), kCFStringEncodingUTF8)) + 1,
                     '\0');
    if (!CFStringGetCString(inString, text.data(), CFIndex(text.size()), kCFStringEncodingUTF8))
        return {};
    text.resize(std::char_traits<char>::length(text.c_str()));
    return text;
}

// The name a person knows the program by: its bundle's name, else the program's file name.
std::string ApplicationName()
{
    if (CFBundleRef bundle = CFBundleGetMainBundle()) {
        CFTypeRef name = CFBundleGetValueForInfoDictionaryKey(bundle, kCFBundleNameKey);
        if (name != nullptr && CFGetTypeID(name) == CFStringGetTypeID())
            if (std::string text = UTF8(static_cast<CFStringRef>(name)); !text.empty())
                return text;
    }
    return program_invocation_short_name;
}

// Notes carry UTF-8; text that is not valid UTF-8 is read as the platform's older Mac Roman.
std::string MessageText(ConstStringPtr inMessage)
{
    if (inMessage == nullptr)
        return {};
    CFStringRef text = CFStringCreateWithPascalString(nullptr, inMessage, kCFStringEncodingUTF8);
    if (text == nullptr)
        text = CFStringCreateWithPascalString(nullptr, inMessage, kCFStringEncodingMacRoman);
    if (text == nullptr)
        return {};
    std::string bytes = UTF8(text);
    CFRelease(text);
    return bytes;
}

}  // namespace

NMUPP NewNMUPP(NMProcPtr inRoutine) { return inRoutine; }

void DisposeNMUPP(NMUPP) {}

void InvokeNMUPP(NMRecPtr inRecord, NMUPP inRoutine)
{
    if (inRoutine != nullptr)
        inRoutine(inRecord);
}

OSErr NMInstall(NMRecPtr inRecord)
{
    if (inRecord == nullptr)
        return paramErr;
    if (inRecord->qType != nmType)
        return nmTypErr;
    Manager& manager = TheManager();
    OSErr status = noErr;
    if (!manager.bus)
        manager.bus = SessionBus::Open({NoticeClosed, BusLost, Serviced}, status);
    if (!manager.bus)
        return status;
    std::uint32_t id = 0;
    status = manager.bus->Notify({ApplicationName(), MessageText(inRecord->nmStr), inRecord->nmSound != nullptr}, id);
    if (status == noErr)
        manager.up[id] = inRecord;
    else if (manager.up.empty())
        manager.bus.reset();
    return status;
}

OSErr NMRemove(NMRecPtr inRecord)
{
    Manager& manager = TheManager();
    for (auto at = manager.up.begin(); at != manager.up.end(); ++at) {
        if (at->second != inRecord)
            continue;
        std::uint32_t id = at->first;
        manager.up.erase(at);
        manager.bus->Close(id);
        return noErr;
    }
    return qErr;
}
