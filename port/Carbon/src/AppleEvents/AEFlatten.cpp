// Writing and reading the flat form. Numbers in the structure are big-endian; the bytes of
// data items are copied as they are.
#include "AEFlatten.h"

#include <cstring>

namespace carbon::ae {

namespace {

constexpr UInt32 kFlatMagic = FourCC("aefl");
constexpr UInt16 kFlatVersion = 1;
constexpr int kDeepestNesting = 64;
// The least a list item takes (type, kind, empty data) and a keyed item (keyword before it).
constexpr std::size_t kSmallestItem = 4 + 1 + 4;
constexpr std::size_t kSmallestKeyedItem = 4 + kSmallestItem;

class Writer {
public:
    explicit Writer(std::vector<UInt8>& ioOut) : mOut(ioOut) {}

    void U8(UInt8 inValue) { mOut.push_back(inValue); }
    void U16(UInt16 inValue) { Bytes({UInt8(inValue >> 8), UInt8(inValue)}); }
    void U32(UInt32 inValue)
    {
        Bytes({UInt8(inValue >> 24), UInt8(inValue >> 16), UInt8(inValue >> 8), UInt8(inValue)});
    }
    void Bytes(std::span<const UInt8> inBytes) { mOut.insert(mOut.end(), inBytes.begin(), inBytes.end()); }
    void Bytes(std::initializer_list<UInt8> inBytes) { mOut.insert(mOut.end(), inBytes.begin(), inBytes.end()); }
    void Block(std::span<const UInt8> inBytes)
    {
        U32(UInt32(inBytes.size()));
        Bytes(inBytes);
    }

    void Payload(const Value& inValue)
    {
        switch (inValue.kind) {
        case Kind::Data:
            Block(inValue.bytes);
            break;
        case Kind::List:
            Block(inValue.factoring);
            Entries(inValue.items, false);
            break;
        case Kind::Record:
            Entries(inValue.items, true);
            break;
        case Kind::Event:
            Entries(inValue.attributes, true);
            Entries(inValue.items, true);
            break;
        }
    }

    void Typed(DescType inType, const Value& inValue)
    {
        U32(inType);
        U8(UInt8(inValue.kind));
        Payload(inValue);
    }

private:
    void Entries(const std::vector<Entry>& inEntries, bool inKeyed)
    {
        U32(UInt32(inEntries.size()));
        for (const Entry& entry : inEntries) {
            if (inKeyed)
                U32(entry.keyword);
            Typed(entry.type, entry.value);
        }
    }

    std::vector<UInt8>& mOut;
};

class Reader {
public:
    explicit Reader(std::span<const UInt8> inBytes) : mRest(inBytes) {}

    bool AtEnd() const { return mRest.empty(); }
    std::size_t Remaining() const { return mRest.size(); }

    bool U8(UInt8& outValue)
    {
        if (mRest.empty())
            return false;
        outValue = mRest[0];
        mRest = mRest.subspan(1);
        return true;
    }

    bool U16(UInt16& outValue)
    {
        if (mRest.size() < 2)
            return false;
        outValue = UInt16(mRest[0] << 8 | mRest[1]);
        mRest = mRest.subspan(2);
        return true;
    }

    bool U32(UInt32& outValue)
    {
        if (mRest.size() < 4)
            return false;
        outValue = UInt32(mRest[0]) << 24 | UInt32(mRest[1]) << 16 | UInt32(mRest[2]) << 8 | UInt32(mRest[3]);
        mRest = mRest.subspan(4);
        return true;
    }

    bool Block(std::vector<UInt8>& outBytes)
    {
        UInt32 length = 0;
        if (!U32(length) || length > mRest.size())
            return false;
        outBytes.assign(mRest.begin(), mRest.begin() + length);
        mRest = mRest.subspan(length);
        return true;
    }

    bool Payload(Kind inKind, int inDepth, Value& outValue)
    {
        outValue.kind = inKind;
        switch (inKind) {
        case Kind::Data:
            return Block(outValue.bytes);
        case Kind::List:
            return Block(outValue.factoring) && Entries(false, inDepth, outValue.items);
        case Kind::Record:
            return Entries(true, inDepth, outValue.items);
        case Kind::Event:
            return Entries(true, inDepth, outValue.attributes) && Entries(true, inDepth, outValue.items);
        }
        return false;
    }

    bool Typed(int inDepth, DescType& outType, Value& outValue)
    {
        UInt8 kind = 0;
        if (inDepth > kDeepestNesting || !U32(outType) || !U8(kind) || kind > UInt8(Kind::Event))
            return false;
        return Payload(Kind(kind), inDepth, outValue);
    }

private:
    // A count is believed only as far as the bytes left could hold that many items.
    bool Entries(bool inKeyed, int inDepth, std::vector<Entry>& outEntries)
    {
        UInt32 count = 0;
        if (!U32(count) || count > mRest.size() / (inKeyed ? kSmallestKeyedItem : kSmallestItem))
            return false;
        outEntries.resize(count);
        for (Entry& entry : outEntries) {
            entry.keyword = typeWildCard;
            if (inKeyed && !U32(entry.keyword))
                return false;
            if (!Typed(inDepth + 1, entry.type, entry.value))
                return false;
        }
        return true;
    }

    std::span<const UInt8> mRest;
};

}  // namespace

std::vector<UInt8> Flatten(DescType inType, const Value& inValue)
{
    std::vector<UInt8> body;
    Writer(body).Typed(inType, inValue);
    std::vector<UInt8> flat;
    flat.reserve(std::size_t(kFlatHeaderSize) + body.size());
    Writer header(flat);
    header.U32(kFlatMagic);
    header.U16(kFlatVersion);
    header.U16(0);
    header.Block(body);
    return flat;
}

std::optional<Size> FlatLength(std::span<const UInt8, kFlatHeaderSize> inHeader)
{
    Reader reader(inHeader);
    UInt32 magic = 0, length = 0;
    UInt16 version = 0, reserved = 0;
    if (!reader.U32(magic) || magic != kFlatMagic || !reader.U16(version) || !reader.U16(reserved) ||
        !reader.U32(length))
        return std::nullopt;
    return kFlatHeaderSize + Size(length);
}

OSErr Unflatten(std::span<const UInt8> inBytes, DescType& outType, Value& outValue)
{
    Reader reader(inBytes);
    UInt32 magic = 0, length = 0;
    UInt16 version = 0, reserved = 0;
    if (!reader.U32(magic) || magic != kFlatMagic || !reader.U16(version) || !reader.U16(reserved))
        return errAECorruptData;
    if (version > kFlatVersion)
        return errAENewerVersion;
    if (!reader.U32(length) || length != reader.Remaining())
        return errAECorruptData;
    Value value;
    if (!reader.Typed(0, outType, value) || !reader.AtEnd())
        return errAECorruptData;
    outValue = std::move(value);
    return noErr;
}

std::vector<UInt8> ContainerData(const Value& inValue)
{
    std::vector<UInt8> bytes;
    Writer(bytes).Payload(inValue);
    return bytes;
}

OSErr ParseContainerData(Kind inKind, std::span<const UInt8> inBytes, Value& outValue)
{
    Reader reader(inBytes);
    Value value;
    if (!reader.Payload(inKind, 0, value) || !reader.AtEnd())
        return errAECorruptData;
    outValue = std::move(value);
    return noErr;
}

}  // namespace carbon::ae
