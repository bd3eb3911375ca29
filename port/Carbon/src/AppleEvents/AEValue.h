// What a descriptor holds: plain data, or the items of a list, a record or an Apple event.
// Descriptors own their values outright; duplicating one copies the whole tree.
#pragma once

#include <Carbon/AEDataModel.h>
#include <Carbon/MacErrors.h>

#include <exception>
#include <optional>
#include <vector>

namespace carbon::ae {

// A descriptor's type is the caller's to change (a record may be retyped as an object
// specifier, for instance), so the value remembers what it is on its own.
enum class Kind : UInt8 { Data = 0, List = 1, Record = 2, Event = 3 };

struct Entry;

struct Value {
    Kind kind = Kind::Data;
    std::vector<UInt8> bytes;       // Data
    std::vector<UInt8> factoring;   // List: what every item begins with (type, then data)
    std::vector<Entry> items;       // List items, Record fields, Event parameters
    std::vector<Entry> attributes;  // Event attributes

    bool IsContainer() const { return kind != Kind::Data; }
    bool IsKeyed() const { return kind == Kind::Record || kind == Kind::Event; }
};

struct Entry {
    AEKeyword keyword;  // typeWildCard for list items
    DescType type;
    Value value;
};

Value DataValue(const void* inData, Size inSize);

// The kind of value a container type stands for, if it is one.
std::optional<Kind> ContainerKind(DescType inType);

// The value behind a descriptor: an empty one for a null descriptor, nothing for one whose
// data handle is not a live descriptor's.
const Value* ValueOf(const AEDesc& inDesc);
Value* MutableValueOf(AEDesc& ioDesc);

// Makes *outDesc a new descriptor owning inValue; a typeNull one holds no data.
void StoreDesc(DescType inType, Value&& inValue, AEDesc* outDesc);
void DisposeStorage(AEDesc& ioDesc);

std::vector<Entry>::iterator FindEntry(std::vector<Entry>& inEntries, AEKeyword inKeyword);
std::vector<Entry>::const_iterator FindEntry(const std::vector<Entry>& inEntries, AEKeyword inKeyword);
// The entry with that keyword, or errAEDescNotFound.
OSErr FindKeyed(const std::vector<Entry>& inEntries, AEKeyword inKeyword, const Entry*& outEntry);
void PutEntry(std::vector<Entry>& ioEntries, AEKeyword inKeyword, DescType inType, Value&& inValue);

// Runs a call's body, turning exhaustion of memory (or a size beyond what a container can
// hold) into memFullErr: the port never throws.
template <class Body>
OSErr Guarded(Body&& inBody) noexcept
{
    try {
        return inBody();
    } catch (const std::exception&) {
        return memFullErr;
    }
}

}  // namespace carbon::ae
