// Structure-only walks over XML and binary input, without building anything.
#include "CFPropertyListShape.h"
#include "CFPropertyListSupport.h"

#include <cstdint>
#include <vector>

namespace cf::plist {

namespace {

// The most objects a binary property list may expand into, counting every reference to a
// shared object as a copy, as libplist does.
constexpr std::uint64_t kMaxExpandedObjects = 1u << 20;

// The binary form's trailer: the last 32 bytes.
struct Trailer {
    unsigned offsetSize = 0;
    unsigned referenceSize = 0;
    std::uint64_t objectCount = 0;
    std::uint64_t topObject = 0;
    std::uint64_t offsetTable = 0;
};

std::uint64_t BigEndian(std::span<const UInt8> inBytes)
{
    std::uint64_t value = 0;
    for (UInt8 byte : inBytes)
        value = value << 8 | byte;
    return value;
}

class BinaryWalk {
public:
    explicit BinaryWalk(std::span<const UInt8> inBytes) : mBytes(inBytes) {}

    bool Run(std::string& outError)
    {
        if (!ReadTrailer())
            return Fail(outError, "the binary property list is damaged");
        mState.assign(mTrailer.objectCount, State::New);
        mExpanded.assign(mTrailer.objectCount, 0);
        const char* problem = Walk(mTrailer.topObject);
        return problem ? Fail(outError, problem) : true;
    }

private:
    enum class State : UInt8 { New, Open, Done };
    struct Frame {
        std::uint64_t object;
        std::vector<std::uint64_t> children;
        std::size_t next = 0;
        std::uint64_t expanded = 1;
    };

    static bool Fail(std::string& outError, const char* inReason)
    {
        outError = inReason;
        return false;
    }

    bool ReadTrailer()
    {
        if (mBytes.size() < 8 + 32)
            return false;
        std::span<const UInt8> trailer = mBytes.last(32);
        mTrailer = {trailer[6], trailer[7], BigEndian(trailer.subspan(8, 8)), BigEndian(trailer.subspan(16, 8)),
                    BigEndian(trailer.subspan(24, 8))};
        std::uint64_t tableEnd = mBytes.size() - 32;
        return mTrailer.offsetSize >= 1 && mTrailer.offsetSize <= 8 && mTrailer.referenceSize >= 1 &&
               mTrailer.referenceSize <= 8 && mTrailer.objectCount >= 1 && mTrailer.topObject < mTrailer.objectCount &&
               mTrailer.offsetTable >= 8 && mTrailer.offsetTable <= tableEnd &&
               mTrailer.objectCount <= (tableEnd - mTrailer.offsetTable) / mTrailer.offsetSize;
    }

    // The bytes from where an object starts to the offset table; empty when out of range.
    std::span<const UInt8> ObjectBytes(std::uint64_t inObject) const
    {
        std::uint64_t entry = mTrailer.offsetTable + inObject * mTrailer.offsetSize;
        std::uint64_t offset = BigEndian(mBytes.subspan(entry, mTrailer.offsetSize));
        if (offset < 8 || offset >= mTrailer.offsetTable)
            return {};
        return mBytes.subspan(offset, mTrailer.offsetTable - offset);
    }

    // The count in an object's marker, or in the integer that follows it; the object's
    // contents start at outStart. False when the count does not fit in the bytes.
    static bool ReadCount(std::span<const UInt8> inBytes, std::uint64_t& outCount, std::size_t& outStart)
    {
        outCount = inBytes[0] & 0xF;
        outStart = 1;
        if (outCount != 0xF)
            return true;
        if (inBytes.size() < 2 || (inBytes[1] >> 4) != 0x1 || (inBytes[1] & 0xF) > 3)
            return false;
        std::size_t size = std::size_t(1) << (inBytes[1] & 0xF);
        if (inBytes.size() < 2 + size)
            return false;
        outCount = BigEndian(inBytes.subspan(2, size));
        outStart = 2 + size;
        return outCount <= inBytes.size();
    }

    // The objects an array, set or dictionary refers to; false when they do not fit.
    bool Children(std::uint64_t inObject, std::vector<std::uint64_t>& outChildren) const
    {
        std::span<const UInt8> bytes = ObjectBytes(inObject);
        if (bytes.empty())
            return false;
        unsigned kind = bytes[0] >> 4;
        if (kind != 0xA && kind != 0xB && kind != 0xC && kind != 0xD)
            return true;  // a scalar: libplist checks its length itself
        std::uint64_t count = 0;
        std::size_t start = 0;
        if (!ReadCount(bytes, count, start))
            return false;
        std::uint64_t references = kind == 0xD ? count * 2 : count;
        if (references > (bytes.size() - start) / mTrailer.referenceSize)
            return false;
        for (std::uint64_t i = 0; i < references; ++i) {
            std::uint64_t child = BigEndian(bytes.subspan(start + i * mTrailer.referenceSize, mTrailer.referenceSize));
            if (child >= mTrailer.objectCount || (kind == 0xD && i < count && !IsUsableKey(child)))
                return false;
            outChildren.push_back(child);
        }
        return true;
    }

    // libplist stops the process (an assertion) when asked for a dictionary key that is not
    // a string or that holds a NUL character, so a list with such a key counts as damaged.
    bool IsUsableKey(std::uint64_t inObject) const
    {
        std::span<const UInt8> bytes = ObjectBytes(inObject);
        if (bytes.empty() || ((bytes[0] >> 4) != 0x5 && (bytes[0] >> 4) != 0x6))
            return false;
        std::size_t unit = (bytes[0] >> 4) == 0x5 ? 1 : 2;
        std::uint64_t count = 0;
        std::size_t start = 0;
        if (!ReadCount(bytes, count, start) || count > (bytes.size() - start) / unit)
            return false;
        for (std::size_t i = 0; i < count; ++i)
            if (bytes[start + i * unit] == 0 && (unit == 1 || bytes[start + i * unit + 1] == 0))
                return false;
        return true;
    }

    // Depth first, with its own stack: the point is not to recurse on hostile input.
    const char* Walk(std::uint64_t inTop)
    {
        std::vector<Frame> stack;
        if (const char* problem = Open(inTop, stack))
            return problem;
        while (!stack.empty()) {
            Frame& frame = stack.back();
            if (frame.next == frame.children.size()) {
                std::uint64_t expanded = frame.expanded;
                mState[frame.object] = State::Done;
                mExpanded[frame.object] = expanded;
                stack.pop_back();
                if (!stack.empty() && (stack.back().expanded += expanded) > kMaxExpandedObjects)
                    return "the binary property list repeats shared parts too often to be read";
                continue;
            }
            std::uint64_t child = frame.children[frame.next++];
            if (mState[child] == State::Open)
                return "the binary property list contains itself";
            if (mState[child] == State::Done) {
                if ((frame.expanded += mExpanded[child]) > kMaxExpandedObjects)
                    return "the binary property list repeats shared parts too often to be read";
            } else if (const char* problem = Open(child, stack)) {
                return problem;
            }
        }
        return nullptr;
    }

    const char* Open(std::uint64_t inObject, std::vector<Frame>& ioStack)
    {
        if (ioStack.size() > std::size_t(kMaxDepth))
            return "the property list is nested too deeply";
        Frame frame{inObject, {}};
        if (!Children(inObject, frame.children))
            return "the binary property list is damaged";
        mState[inObject] = State::Open;
        ioStack.push_back(std::move(frame));
        return nullptr;
    }

    std::span<const UInt8> mBytes;
    Trailer mTrailer;
    std::vector<State> mState;
    std::vector<std::uint64_t> mExpanded;
};

bool IsContainerTag(std::string_view inName) { return inName.starts_with("array") || inName.starts_with("dict"); }

}  // namespace

bool CheckXMLShape(std::string_view inText, std::string& outError)
{
    int depth = 0;
    for (std::size_t pos = inText.find('<'); pos != std::string_view::npos; pos = inText.find('<', pos + 1)) {
        std::string_view rest = inText.substr(pos);
        if (rest.starts_with("<!--") || rest.starts_with("<![CDATA[")) {
            pos = inText.find(rest[2] == '-' ? "-->" : "]]>", pos);
            if (pos == std::string_view::npos)
                break;
            continue;
        }
        bool closing = rest.starts_with("</");
        if (!IsContainerTag(rest.substr(closing ? 2 : 1)))
            continue;
        std::size_t end = inText.find('>', pos);
        if (end == std::string_view::npos)
            break;
        if (closing)
            --depth;
        else if (inText[end - 1] != '/' && ++depth > kMaxDepth) {
            outError = "the property list is nested too deeply";
            return false;
        }
    }
    return true;
}

bool CheckBinaryShape(std::span<const UInt8> inBytes, std::string& outError)
{
    return BinaryWalk(inBytes).Run(outError);
}

}  // namespace cf::plist
