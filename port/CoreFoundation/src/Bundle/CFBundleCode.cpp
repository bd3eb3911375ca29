// A bundle's executable code: shared objects loaded into the process and their symbols.
#include "CFBundleFiles.h"
#include "CFBundleObject.h"

#include <cstdio>
#include <dlfcn.h>

namespace {

using namespace cf::bundle;

// The main bundle's code is the running program, loaded from the start.
bool IsProgram(const __CFBundle& inBundle) { return !inBundle.mProgram.empty(); }

void* Symbol(CFBundleRef inBundle, CFStringRef inName, const char* inCall)
{
    __CFBundle& bundle = Bundle(inBundle, inCall);
    if (inName == nullptr || !CFBundleLoadExecutable(inBundle))
        return nullptr;
    std::string name = Text(inName);
    if (IsProgram(bundle))
        return ::dlsym(RTLD_DEFAULT, name.c_str());
    std::lock_guard guard(bundle.mLock);
    return bundle.mCode ? ::dlsym(bundle.mCode, name.c_str()) : nullptr;
}

}  // namespace

Boolean CFBundleIsExecutableLoaded(CFBundleRef inBundle)
{
    __CFBundle& bundle = Bundle(inBundle, "CFBundleIsExecutableLoaded");
    std::lock_guard guard(bundle.mLock);
    return IsProgram(bundle) || bundle.mCode != nullptr;
}

Boolean CFBundleLoadExecutable(CFBundleRef inBundle)
{
    __CFBundle& bundle = Bundle(inBundle, "CFBundleLoadExecutable");
    if (IsProgram(bundle))
        return true;
    Owned<CFURLRef> url(CFBundleCopyExecutableURL(inBundle));
    std::optional<std::string> path = url ? PathOf(url.Get()) : std::nullopt;
    if (!path) {
        std::fprintf(stderr, "CFBundleLoadExecutable: the bundle %s has no executable\n", bundle.mPath.c_str());
        return false;
    }
    std::lock_guard guard(bundle.mLock);
    if (bundle.mCode)
        return true;
    // Every symbol is resolved now, so that a missing one fails here and not at some later
    // call; the code's symbols stay private to it, as every bundle has its own name space.
    bundle.mCode = ::dlopen(path->c_str(), RTLD_NOW | RTLD_LOCAL);
    if (bundle.mCode == nullptr) {
        const char* reason = ::dlerror();
        std::fprintf(stderr, "CFBundleLoadExecutable: cannot load %s: %s\n", path->c_str(),
                     reason ? reason : "unknown error");
        return false;
    }
    return true;
}

void CFBundleUnloadExecutable(CFBundleRef inBundle)
{
    __CFBundle& bundle = Bundle(inBundle, "CFBundleUnloadExecutable");
    std::lock_guard guard(bundle.mLock);
    if (bundle.mCode)
        ::dlclose(std::exchange(bundle.mCode, nullptr));
}

void* CFBundleGetFunctionPointerForName(CFBundleRef inBundle, CFStringRef inFunctionName)
{
    return Symbol(inBundle, inFunctionName, "CFBundleGetFunctionPointerForName");
}

void* CFBundleGetDataPointerForName(CFBundleRef inBundle, CFStringRef inSymbolName)
{
    return Symbol(inBundle, inSymbolName, "CFBundleGetDataPointerForName");
}
