// One preferences domain as this process sees it: the values of its file, refreshed whenever
// the file changes, under the changes this process made and has not written yet.
#pragma once

#include "CFPreferencesFile.h"
#include "CFPreferencesLocations.h"

#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

namespace cf::prefs {

class Domain {
public:
    explicit Domain(DomainLocation inLocation);

    // A new value (the caller releases it), or NULL when the key has none.
    CFPropertyListRef Copy(const std::string& inKey);
    // A null value removes the key. The value must be immutable all through (as one the
    // domain answered, or a deep copy): it is handed out as it is.
    void Set(const std::string& inKey, plist::OwnedValue inValue);
    // Writes the pending changes merged onto what the file holds now, and reads what other
    // processes wrote. False when the changes could not be written; they stay pending then.
    bool Synchronize();
    std::vector<std::string> Keys();
    // Drops the file's values, read again when next needed, and the unwritten changes.
    void Forget();

private:
    // Rereads the file when it is not the one last read, or always with inForce.
    void Refresh(bool inForce);
    bool WritePending();

    DomainLocation mLocation;
    DomainFile mFile;
    std::map<std::string, plist::OwnedValue> mPending;  // a null value is a removal
};

// The domains of the process, one per file, kept for its whole life, and the lock that
// guards all of them.
class DomainTable {
public:
    static DomainTable& Shared();

    // Runs inAction on the domain whose file is at inLocation, holding the lock.
    template <class Action>
    auto With(const DomainLocation& inLocation, Action&& inAction)
    {
        std::lock_guard guard(mLock);
        return inAction(Find(inLocation));
    }

    void ForgetAll();

private:
    Domain& Find(const DomainLocation& inLocation);

    std::mutex mLock;
    std::map<std::string, std::unique_ptr<Domain>> mDomains;
};

}  // namespace cf::prefs
