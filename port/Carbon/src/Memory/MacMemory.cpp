// Pointer and handle blocks on the C heap. Each block knows its size; a magic word lets the
// calls refuse a pointer or handle that did not come from here (memWZErr) rather than
// corrupt the heap.
#include <Carbon/MacErrors.h>
#include <Carbon/MacMemory.h>

#include <malloc.h>

#include <cstdlib>
#include <cstring>
#include <limits>
#include <new>

namespace {

constexpr UInt32 kPtrMagic = 0x50747221;     // "Ptr!"
constexpr UInt32 kHandleMagic = 0x486e6421;  // "Hnd!"

thread_local OSErr tMemError = noErr;

// In front of every pointer block; its alignment keeps the caller's bytes aligned for any type.
struct alignas(alignof(std::max_align_t)) PtrHeader {
    Size size;
    UInt32 magic;
};

// What a Handle points at. The master pointer is the first member, so *handle is the block.
struct MasterPointer {
    Ptr block;
    Size size;
    UInt32 magic;
    SInt8 flags;
};

OSErr SetMemError(OSErr inStatus)
{
    tMemError = inStatus;
    return inStatus;
}

PtrHeader* HeaderOf(Ptr inPtr) { return reinterpret_cast<PtrHeader*>(inPtr) - 1; }

PtrHeader* ValidPtr(Ptr inPtr)
{
    if (inPtr == nullptr || HeaderOf(inPtr)->magic != kPtrMagic) {
        SetMemError(memWZErr);
        return nullptr;
    }
    return HeaderOf(inPtr);
}

MasterPointer* ValidHandle(Handle inHandle)
{
    if (inHandle == nullptr) {
        SetMemError(nilHandleErr);
        return nullptr;
    }
    auto* master = reinterpret_cast<MasterPointer*>(inHandle);
    if (master->magic != kHandleMagic) {
        SetMemError(memWZErr);
        return nullptr;
    }
    return master;
}

// malloc(0) may answer NULL, which would read as "out of memory"; an empty block still
// takes one byte so that a handle of size zero keeps a non-NULL master pointer.
std::size_t BlockBytes(Size inSize) { return inSize > 0 ? std::size_t(inSize) : 1; }

Ptr AllocatePtr(Size inByteCount, bool inClear)
{
    constexpr Size kLargest = std::numeric_limits<Size>::max() - Size(sizeof(PtrHeader));
    if (inByteCount < 0 || inByteCount > kLargest) {
        SetMemError(memFullErr);
        return nullptr;
    }
    std::size_t bytes = sizeof(PtrHeader) + std::size_t(inByteCount);
    void* memory = inClear ? std::calloc(1, bytes) : std::malloc(bytes);
    if (memory == nullptr) {
        SetMemError(memFullErr);
        return nullptr;
    }
    auto* header = new (memory) PtrHeader{inByteCount, kPtrMagic};
    SetMemError(noErr);
    return reinterpret_cast<Ptr>(header + 1);
}

Handle AllocateHandle(Size inByteCount, bool inClear)
{
    if (inByteCount < 0) {
        SetMemError(memFullErr);
        return nullptr;
    }
    void* block = inClear ? std::calloc(1, BlockBytes(inByteCount)) : std::malloc(BlockBytes(inByteCount));
    auto* master = block ? new (std::nothrow) MasterPointer{static_cast<Ptr>(block), inByteCount, kHandleMagic, 0}
                         : nullptr;
    if (master == nullptr) {
        std::free(block);
        SetMemError(memFullErr);
        return nullptr;
    }
    SetMemError(noErr);
    return &master->block;
}

// Changes a block's size without moving it, which a locked handle requires.
bool ResizeInPlace(MasterPointer& ioMaster, Size inNewSize)
{
    if (std::size_t(inNewSize) > malloc_usable_size(ioMaster.block))
        return false;
    ioMaster.size = inNewSize;
    return true;
}

bool ResizeMoving(MasterPointer& ioMaster, Size inNewSize)
{
    void* block = std::realloc(ioMaster.block, BlockBytes(inNewSize));
    if (block == nullptr)
        return false;
    ioMaster.block = static_cast<Ptr>(block);
    ioMaster.size = inNewSize;
    return true;
}

}  // namespace

Ptr NewPtr(Size inByteCount) { return AllocatePtr(inByteCount, false); }

Ptr NewPtrClear(Size inByteCount) { return AllocatePtr(inByteCount, true); }

// Disposing of NULL does nothing, as free() does.
void DisposePtr(Ptr inPtr)
{
    if (inPtr == nullptr) {
        SetMemError(noErr);
        return;
    }
    if (PtrHeader* header = ValidPtr(inPtr)) {
        header->magic = 0;
        std::free(header);
        SetMemError(noErr);
    }
}

Size GetPtrSize(Ptr inPtr)
{
    PtrHeader* header = ValidPtr(inPtr);
    if (header == nullptr)
        return 0;
    SetMemError(noErr);
    return header->size;
}

Handle NewHandle(Size inByteCount) { return AllocateHandle(inByteCount, false); }

Handle NewHandleClear(Size inByteCount) { return AllocateHandle(inByteCount, true); }

void DisposeHandle(Handle inHandle)
{
    if (inHandle == nullptr) {
        SetMemError(noErr);
        return;
    }
    if (MasterPointer* master = ValidHandle(inHandle)) {
        std::free(master->block);
        master->magic = 0;
        delete master;
        SetMemError(noErr);
    }
}

Size GetHandleSize(Handle inHandle)
{
    MasterPointer* master = ValidHandle(inHandle);
    if (master == nullptr)
        return 0;
    SetMemError(noErr);
    return master->size;
}

void SetHandleSize(Handle inHandle, Size inNewSize)
{
    MasterPointer* master = ValidHandle(inHandle);
    if (master == nullptr)
        return;
    if (inNewSize < 0) {
        SetMemError(memFullErr);
        return;
    }
    bool locked = (master->flags & kHandleLockedMask) != 0;
    bool resized = locked ? ResizeInPlace(*master, inNewSize) : ResizeMoving(*master, inNewSize);
    SetMemError(resized ? noErr : memFullErr);
}

void HLock(Handle inHandle)
{
    if (MasterPointer* master = ValidHandle(inHandle)) {
        master->flags = SInt8(master->flags | kHandleLockedMask);
        SetMemError(noErr);
    }
}

void HUnlock(Handle inHandle)
{
    if (MasterPointer* master = ValidHandle(inHandle)) {
        master->flags = SInt8(master->flags & ~kHandleLockedMask);
        SetMemError(noErr);
    }
}

SInt8 HGetState(Handle inHandle)
{
    MasterPointer* master = ValidHandle(inHandle);
    if (master == nullptr)
        return 0;
    SetMemError(noErr);
    return master->flags;
}

void HSetState(Handle inHandle, SInt8 inFlags)
{
    if (MasterPointer* master = ValidHandle(inHandle)) {
        master->flags = inFlags;
        SetMemError(noErr);
    }
}

OSErr MemError() { return tMemError; }
