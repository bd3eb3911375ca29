// The user and group mapping requests: names and IDs from the system's account databases.
#include <Carbon/FSErrno.h>
#include <Carbon/FilesExtras.h>
#include <Carbon/MacErrors.h>

#include <grp.h>
#include <pwd.h>

#include <cerrno>
#include <cstring>
#include <string>
#include <string_view>
#include <vector>

namespace {

// The account databases want room for the strings they return; the suggested size is not
// always enough, so the buffer grows until the answer fits. inLookup is one of the *_r calls
// with its key bound.
template <typename Record, typename Lookup>
OSErr FindAccount(Lookup inLookup, Record& outRecord, std::vector<char>& outBuffer)
{
    outBuffer.resize(1024);
    for (;;) {
        Record* found = nullptr;
        int error = inLookup(&outRecord, outBuffer.data(), outBuffer.size(), &found);
        if (error == ERANGE && outBuffer.size() < (std::size_t(1) << 20)) {
            outBuffer.resize(outBuffer.size() * 2);
            continue;
        }
        if (error != 0)
            return carbon::StatusOfErrno(error);
        return found ? noErr : OSErr(fnfErr);
    }
}

OSErr UserByID(uid_t inID, passwd& outUser, std::vector<char>& outBuffer)
{
    return FindAccount([inID](auto... ioArgs) { return ::getpwuid_r(inID, ioArgs...); }, outUser, outBuffer);
}

OSErr UserByName(const char* inName, passwd& outUser, std::vector<char>& outBuffer)
{
    return FindAccount([inName](auto... ioArgs) { return ::getpwnam_r(inName, ioArgs...); }, outUser, outBuffer);
}

OSErr GroupByID(gid_t inID, group& outGroup, std::vector<char>& outBuffer)
{
    return FindAccount([inID](auto... ioArgs) { return ::getgrgid_r(inID, ioArgs...); }, outGroup, outBuffer);
}

OSErr GroupByName(const char* inName, group& outGroup, std::vector<char>& outBuffer)
{
    return FindAccount([inName](auto... ioArgs) { return ::getgrnam_r(inName, ioArgs...); }, outGroup, outBuffer);
}

OSErr SetPascal(std::string_view inText, Str31 outName)
{
    if (inText.size() > 31)
        return errFSNameTooLong;
    outName[0] = UInt8(inText.size());
    std::memcpy(outName + 1, inText.data(), inText.size());
    return noErr;
}

OSErr MapID(ObjParam& ioBlock)
{
    std::vector<char> buffer;
    passwd user;
    group found;
    switch (ioBlock.ioObjType) {
    case kOwnerID2Name:
        if (OSErr status = UserByID(uid_t(ioBlock.ioObjID), user, buffer); status != noErr)
            return status;
        return SetPascal(user.pw_name, ioBlock.ioObjNamePtr);
    case kGroupID2Name:
        if (OSErr status = GroupByID(gid_t(ioBlock.ioObjID), found, buffer); status != noErr)
            return status;
        return SetPascal(found.gr_name, ioBlock.ioObjNamePtr);
    default:
        return paramErr;
    }
}

OSErr MapName(ObjParam& ioBlock)
{
    const UInt8* pascal = ioBlock.ioObjNamePtr;
    std::string name(reinterpret_cast<const char*>(pascal + 1), pascal[0]);
    std::vector<char> buffer;
    passwd user;
    group found;
    switch (ioBlock.ioObjType) {
    case kOwnerName2ID:
        if (OSErr status = UserByName(name.c_str(), user, buffer); status != noErr)
            return status;
        ioBlock.ioObjID = SInt32(user.pw_uid);
        return noErr;
    case kGroupName2ID:
        if (OSErr status = GroupByName(name.c_str(), found, buffer); status != noErr)
            return status;
        ioBlock.ioObjID = SInt32(found.gr_gid);
        return noErr;
    default:
        return paramErr;
    }
}

}  // namespace

OSErr PBHMapIDSync(HParmBlkPtr ioParamBlock)
{
    if (ioParamBlock == nullptr || ioParamBlock->objParam.ioObjNamePtr == nullptr)
        return paramErr;
    return ioParamBlock->objParam.ioResult = MapID(ioParamBlock->objParam);
}

OSErr PBHMapNameSync(HParmBlkPtr ioParamBlock)
{
    if (ioParamBlock == nullptr || ioParamBlock->objParam.ioObjNamePtr == nullptr)
        return paramErr;
    return ioParamBlock->objParam.ioResult = MapName(ioParamBlock->objParam);
}
