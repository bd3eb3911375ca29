// An open fork of a file: its reference number, and whether this object opened it and so must
// close it.
#pragma once

#include <Carbon/Files.h>

namespace Gx {

class FSObject;

// Not copyable: exactly one object closes an owned fork. Failures throw OSError with the
// platform's status and "<call> failed".
class FileFork {
public:
    static constexpr SInt16 refNum_Closed = -1;

    // Takes over a fork that is already open; inOwnsRefNum says whether to close it.
    FileFork(SInt16 inRefNum, bool inOwnsRefNum);
    // Opens the named fork, creating it first when the file lacks it, and owns it.
    FileFork(const FSRef& inRef, SInt8 inPermission, const HFSUniStr255& inForkName);
    FileFork(const FileFork&) = delete;
    FileFork& operator=(const FileFork&) = delete;
    virtual ~FileFork();

    // LogicError 'logc' "Fork is already open" unless closed. Creating the fork does not
    // depend on the permission: a fork opened for reading is still created when missing.
    void Open(const FSRef& inRef, SInt8 inPermission, const HFSUniStr255& inForkName);
    // Closes an owned fork; one that is not owned stays open with its number kept.
    void Close();
    bool IsOpen() const { return mRefNum != refNum_Closed; }
    SInt16 UseRefNum() const { return mRefNum; }

    // The status, not an exception: flushing is advice to the platform.
    OSErr Flush();
    SInt64 GetSize() const;
    void SetSize(UInt16 inPositionMode, SInt64 inOffset);
    SInt64 GetPosition() const;
    void SetPosition(UInt16 inPositionMode, SInt64 inOffset);

    // The file as it is now, after renames and moves made while the fork was open.
    void GetFSRef(FSRef& outRef) const;
    void GetFSObject(FSObject& outObject) const;
    void GetForkName(HFSUniStr255& outName) const;
    void GetForkInfo(FSForkInfo& outInfo) const;

private:
    SInt16 mRefNum;
    bool mOwnsRefNum;
};

}  // namespace Gx
