// The one object through which the product's portable code asks the operating system for
// preferences, files, folders, processes, launching, sounds, notices and identifiers.
#pragma once

#include "platform/Mac/MacPlatformServices.h"

#include <MacTypes.h>

#include <string>

namespace kvx {

class BytesBubble;

}  // namespace kvx

// The product's name, the prefix of every diagnostic line the product writes.
extern const char kOurProductName[];

namespace kvx {

class Platform {
public:
    // The host applications whose settings the product knows.
    enum SupportedAppId { kPhotoshopCS2 = 0, kInDesignCS2 = 1, kIllustratorCS2 = 2 };

    static const char kPathDelimiter;
    static const wchar_t kPathDelimiterL;
    static const char* const kPathDelimiterCStr;
    static const wchar_t* const kPathDelimiterCStrL;

    // Made on first use, from any thread; lives until the program ends.
    static Platform& instance();
    virtual ~Platform();

    // Posts a 'VmRe' event of kind 1 carrying inValue as its 'vmiv' parameter (a 32-bit
    // integer) to the main event queue, for the product's own handler; answers CreateEvent's
    // status, whatever became of the posting.
    OSStatus SetInitialAttributeValue(int inValue);
    // Creates the folder on disk, makes ioFolder refer to it, and hides it when asked.
    // The file layer's exceptions pass through.
    void CreateFolder(FileObject& ioFolder, bool inInvisible);
    // The name of the frontmost process; empty when there is none. When none can be found a
    // line saying so goes to standard error.
    std::string getFrontProcessName();
    // The port configured under the key "Port <inDefaultPort>" in inAppID's preferences, or
    // inDefaultPort when there is none, it is no number, or it is 0.
    int GetSocketPort(int inDefaultPort, const char* inAppID);
    // The integer under inKey in inAppID's preferences, or inDefaultValue when it is missing,
    // no number, or 0.
    int GetPrefsFileInteger(const char* inKey, int inDefaultValue, const char* inAppID);
    void beep(short inDuration);
    // Opens the item at a POSIX path; failures are also written to standard error.
    OSStatus launchApp(const char* inPath);
    // Tells the user that the plug-in is missing. 0 when posted or when another notice is up;
    // otherwise the error, also written to standard error.
    int openNoPluginFBAAlert(int inPluginPort);
    // The host application's actions palette file in its settings folder (which may be named
    // in the user's language); an empty object for InDesign, or when that folder is missing.
    FileObject getActionsPaletteFile(SupportedAppId inApp);
    // Runs `rm -f "<inPath>"` through the shell and answers system()'s status. The path goes
    // to the shell as it is, between double quotes and NOT escaped: a path holding '"', '$' or
    // '`' is read by the shell ("$HOME" in it becomes the home folder). Pass only paths that
    // come from the product itself.
    int deleteFile(const std::string& inPath);
    // inLength bytes of the file's data fork from inOffset (all of it when inLength is 0) into
    // outBytes; -1 when the fork cannot be had, otherwise 0. The file layer's exceptions pass.
    int readFile(BytesBubble& outBytes, const FileObject& inFile, long long inOffset, unsigned long inLength);
    // Meant as the data fork's size, but it looks only at a fork already open, and a freshly
    // made file object has none: the answer is always 0, and callers rely on that.
    unsigned long fileSize(const FileObject& inFile);
    // A fresh identifier in its usual text form.
    StringObject GetUUIDString();

protected:
    Platform() = default;

private:
    Platform(const Platform&) = delete;
    Platform& operator=(const Platform&) = delete;
};

}  // namespace kvx
