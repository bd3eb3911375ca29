// The file of one preferences domain: reading it, telling whether it changed, and replacing
// it so that a crash at any moment leaves either the old or the new file, whole.
#pragma once

#include "PropertyList/CFPropertyListSupport.h"

#include <PortSupport/UniqueDescriptor.h>

#include <sys/stat.h>

#include <string>
#include <string_view>

namespace cf::prefs {

// Enough of a file's status to notice that it was replaced or rewritten.
struct FileIdentity {
    bool exists = false;
    dev_t device = 0;
    ino_t inode = 0;
    off_t size = 0;
    timespec modified{};
    timespec changed{};

    static FileIdentity Of(const struct stat& inStatus);
    static FileIdentity Of(const std::string& inPath);
    bool operator==(const FileIdentity& inOther) const;
};

struct DomainFile {
    FileIdentity identity;
    // A dictionary of immutable values; empty when there is no file or it was unusable.
    plist::OwnedValue values;
    // False when the file is there but could neither be read nor moved aside: writing the
    // domain would then destroy it.
    bool mayReplace = true;
};

// Reads a domain's file. A file that is not a property-list dictionary is reported on
// standard error and, when inWritable, moved aside (to "<file>.corrupt-<UTC time>") so that
// the next write cannot destroy it; the domain then reads as empty.
DomainFile ReadDomainFile(const std::string& inPath, bool inWritable);

// Replaces the file with inBytes: a temporary file in the same folder, written and flushed,
// renamed over the old one, and the folder flushed, so the rename itself is durable. The
// file is readable by its owner only. False, and a reason, when it could not be done.
bool ReplaceDomainFile(const std::string& inPath, std::string_view inBytes, FileIdentity& outIdentity,
                       std::string& outError);

// Removes temporary files that writers killed halfway left behind. Only while holding the
// folder's lock: every writer holds it as long as its temporary file exists.
void RemoveAbandonedTemporaries(const std::string& inPath);

// Holds an exclusive lock on the folder of a domain's file (creating the folder), so that
// processes synchronising the same folder read, merge and write one after the other.
class FolderLock {
public:
    explicit FolderLock(const std::string& inFilePath);
    FolderLock(const FolderLock&) = delete;
    FolderLock& operator=(const FolderLock&) = delete;

    bool Locked() const { return mLocked; }

private:
    port::UniqueDescriptor mFolder;  // closing it drops the lock
    bool mLocked = false;
};

}  // namespace cf::prefs
