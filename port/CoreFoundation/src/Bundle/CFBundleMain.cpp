// The main bundle: the bundle that holds the running program.
#include "CFBundleFiles.h"
#include "CFBundleObject.h"

#include <climits>
#include <unistd.h>

namespace {

std::optional<std::string> ProgramPath()
{
    char buffer[PATH_MAX];
    ssize_t length = ::readlink("/proc/self/exe", buffer, sizeof buffer);
    if (length <= 0 || std::size_t(length) >= sizeof buffer)
        return std::nullopt;
    return std::string(buffer, std::size_t(length));
}

// "<bundle>/Contents/MacOS/<program>" belongs to <bundle>; any other program is taken as a
// bare tool whose folder is its bundle.
std::string BundleFolderOf(std::string_view inProgram)
{
    std::string_view folder = cf::bundle::Parent(inProgram);
    std::string_view contents = cf::bundle::Parent(folder);
    if (cf::bundle::LastComponent(folder) == "MacOS" && cf::bundle::LastComponent(contents) == "Contents")
        return std::string(cf::bundle::Parent(contents));
    return std::string(folder);
}

// The main bundle is static: retains and releases leave it alone and it never goes. It is
// made outside the allocators and the live-object count, and it is made while the program
// loads (below), so that the objects it keeps are already there when a test starts counting
// and none of them is ever taken for a test's leak.
__CFBundle* MakeMainBundle()
{
    std::optional<std::string> program = ProgramPath();
    std::optional<std::string> folder = program ? cf::bundle::Resolved(BundleFolderOf(*program)) : std::nullopt;
    if (!folder)
        return nullptr;
    __CFBundle::Parts parts = cf::bundle::Examine(nullptr, *folder);
    if (!parts.url || !parts.info)
        cf::Fatal("CFBundleGetMainBundle", "cannot describe the main bundle at %s", folder->c_str());
    parts.program = *program;
    auto* bundle = new __CFBundle(std::move(parts), cf::Object::Lifetime::Static);
    cf::bundle::AddPermanent(*bundle);
    return bundle;
}

}  // namespace

CFBundleRef CFBundleGetMainBundle()
{
    static __CFBundle* const sMain = MakeMainBundle();
    return sMain;
}

namespace {
[[maybe_unused]] const CFBundleRef sMainAtLoad = CFBundleGetMainBundle();
}
