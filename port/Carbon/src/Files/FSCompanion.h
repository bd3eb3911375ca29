// The AppleDouble companion "._name" that keeps an item's Finder information and resource
// fork beside it, read and written relative to the folder that holds both.
#pragma once

#include "AppleDouble.h"
#include "FSItemTable.h"

#include <string>
#include <string_view>

namespace carbon {

std::string CompanionName(std::string_view inItemName);

struct Companion {
    enum class State { Absent, Valid, Malformed };
    State state = State::Absent;
    AppleDouble contents;  // empty unless Valid
};

// A malformed companion reads as absent contents, with its state saying so.
Companion ReadCompanion(int inFolder, std::string_view inItemName);

// Replaces the companion atomically (a temporary file renamed over it), or removes it when
// the contents say nothing. A malformed companion is never overwritten: it is first renamed
// aside, to "._name.corrupt" or the first free "._name.corrupt-N".
OSErr WriteCompanion(int inFolder, std::string_view inItemName, const AppleDouble& inContents);

// Moves an item's companion with it so that no one, in this process or another, finds the
// item under either name without its companion: the companion is linked under the new name
// before the item moves (when nothing has that name yet), and the old name is removed after
// Moved(). A stray companion already at the destination is replaced, or removed when the
// item has none, so the item never takes on another's. Destroyed without Moved() (the item
// could not be moved), the new name is taken away again.
class CompanionMove {
public:
    // How many moves this process has begun and ended, ended read first: a reader that saw
    // both equal before reading a companion and no move begun after can trust what it read.
    struct Count {
        UInt64 begun = 0;
        UInt64 ended = 0;
        bool Quiet() const { return begun == ended; }
    };
    static Count SoFar();

    CompanionMove(int inFromFolder, std::string_view inFromName, int inToFolder, std::string_view inToName);
    CompanionMove(const CompanionMove&) = delete;
    CompanionMove& operator=(const CompanionMove&) = delete;
    ~CompanionMove();

    void Moved();

private:
    int mFromFolder, mToFolder;
    std::string mFrom, mTo;
    bool mLinked = false;
    bool mMoved = false;
};

void SwapCompanions(int inFolder1, std::string_view inName1, int inFolder2, std::string_view inName2);
void RemoveCompanion(int inFolder, std::string_view inItemName);

// Folders whose whole listing, read by an open iterator, held no companion: deleting an item
// there need not try to remove a companion that is not there, which would cost a failing
// unlink per item. Any companion written, moved or swapped by this process drops every such
// note. A companion another process adds while the iterator is open is not seen, and is left
// behind if its item is deleted.
void NoteFolderWithoutCompanions(const ItemKey& inFolder);
void ForgetFolderWithoutCompanions(const ItemKey& inFolder);
// RemoveCompanion, skipped in a folder noted above.
void RemoveCompanionIn(int inFolder, const ItemKey& inFolderKey, std::string_view inItemName);

}  // namespace carbon
