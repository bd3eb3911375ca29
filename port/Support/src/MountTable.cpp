// The mount table: parsed from /proc/self/mountinfo and kept until the kernel says it changed.
#include <PortSupport/MountTable.h>
#include <PortSupport/UniqueDescriptor.h>

#include <fcntl.h>
#include <poll.h>
#include <sys/sysmacros.h>
#include <unistd.h>

#include <algorithm>
#include <charconv>
#include <mutex>
#include <optional>

namespace port {

namespace {

// Fields of the mount table escape space, tab, newline and backslash as a backslash and
// three octal digits ("\040").
std::string Unescape(std::string_view inField)
{
    auto octal = [&](std::size_t inAt) {
        return inAt < inField.size() && inField[inAt] >= '0' && inField[inAt] <= '7';
    };
    std::string text;
    for (std::size_t at = 0; at < inField.size(); ++at) {
        if (inField[at] == '\\' && octal(at + 1) && octal(at + 2) && octal(at + 3)) {
            text += char((inField[at + 1] - '0') * 64 + (inField[at + 2] - '0') * 8 + (inField[at + 3] - '0'));
            at += 3;
        } else {
            text += inField[at];
        }
    }
    return text;
}

std::vector<std::string_view> Fields(std::string_view inLine)
{
    std::vector<std::string_view> fields;
    while (!inLine.empty()) {
        std::size_t end = std::min(inLine.find(' '), inLine.size());
        if (end > 0)
            fields.push_back(inLine.substr(0, end));
        inLine.remove_prefix(std::min(end + 1, inLine.size()));
    }
    return fields;
}

// "98:0"
std::optional<dev_t> DeviceOf(std::string_view inField)
{
    unsigned major = 0, minor = 0;
    std::size_t colon = inField.find(':');
    if (colon == std::string_view::npos)
        return std::nullopt;
    auto first = std::from_chars(inField.data(), inField.data() + colon, major);
    auto second = std::from_chars(inField.data() + colon + 1, inField.data() + inField.size(), minor);
    if (first.ec != std::errc() || first.ptr != inField.data() + colon || second.ec != std::errc() ||
        second.ptr != inField.data() + inField.size())
        return std::nullopt;
    return makedev(major, minor);
}

// "36 35 98:0 /mnt1 /mnt/parent rw,noatime master:1 - ext3 /dev/root rw": the fields after
// the separator "-" start with the file system type.
std::optional<Mount> ParseLine(std::string_view inLine)
{
    std::vector<std::string_view> fields = Fields(inLine);
    auto separator = std::find(fields.begin(), fields.end(), "-");
    if (fields.size() < 5 || separator == fields.end() || separator + 1 == fields.end())
        return std::nullopt;
    std::optional<dev_t> device = DeviceOf(fields[2]);
    if (!device)
        return std::nullopt;
    return Mount{*device, Unescape(fields[3]), Unescape(fields[4]), std::string(separator[1])};
}

// Reading the table costs the kernel far more than a look-up in it, so it is kept, with its
// file open: the kernel flags that file with POLLPRI once mounts have come or gone, and only
// then is it read again.
class MountTable {
public:
    MountTable() : mFile(::open("/proc/self/mountinfo", O_RDONLY | O_CLOEXEC)) {}

    std::shared_ptr<const MountList> Snapshot()
    {
        std::lock_guard guard(mLock);
        if (!mMounts || Changed())
            mMounts = std::make_shared<const MountList>(ParseMountInfo(Read()));
        return mMounts;
    }

private:
    bool Changed() const
    {
        pollfd watch{mFile.Get(), POLLPRI, 0};
        return !mFile || (::poll(&watch, 1, 0) > 0 && (watch.revents & (POLLPRI | POLLERR)));
    }

    std::string Read() const
    {
        std::string table;
        char buffer[4096];
        ssize_t count = 0;
        if (mFile && ::lseek(mFile.Get(), 0, SEEK_SET) == 0)
            while ((count = ::read(mFile.Get(), buffer, sizeof buffer)) > 0)
                table.append(buffer, std::size_t(count));
        return table;
    }

    std::mutex mLock;
    UniqueDescriptor mFile;
    std::shared_ptr<const MountList> mMounts;
};

}  // namespace

MountList ParseMountInfo(std::string_view inTable)
{
    MountList mounts;
    while (!inTable.empty()) {
        std::size_t end = std::min(inTable.find('\n'), inTable.size());
        if (std::optional<Mount> mount = ParseLine(inTable.substr(0, end)))
            mounts.push_back(std::move(*mount));
        inTable.remove_prefix(std::min(end + 1, inTable.size()));
    }
    return mounts;
}

std::shared_ptr<const MountList> Mounts()
{
    static MountTable sTable;
    return sTable.Snapshot();
}

}  // namespace port
