// The preference pane base class.
#include <PreferencePanes/PreferencePanes.h>

NSPreferencePane* NSPreferencePane::initWithBundle(NSBundle* inBundle)
{
    if (inBundle)
        inBundle->retain();
    if (mBundle)
        mBundle->release();
    mBundle = inBundle;
    return this;
}

const NSOutletTable& NSPreferencePane::outlets() const
{
    static const NSOutletTable sNone({});
    return sNone;
}

NSView* NSPreferencePane::loadMainView()
{
    if (mMainView)
        return mMainView;
    if (mBundle == nullptr)
        return nullptr;
    NSString* nibName = NSString::cast(mBundle->objectForInfoDictionaryKey(NSSTR("NSMainNibFile")));
    NSString* path = nibName ? mBundle->pathForResource(nibName, NSSTR("ui")) : nullptr;
    if (path == nullptr) {
        NSLog(NSSTR("%s: the bundle %@ names no interface it holds (NSMainNibFile %@)"), className(),
              mBundle->bundlePath(), nibName);
        return nullptr;
    }
    mMainView = NSLoadInterface(path, *this, outlets());
    if (mMainView)
        mainViewDidLoad();
    return mMainView;
}

void NSPreferencePane::Finalize() noexcept
{
    if (mMainView)
        std::exchange(mMainView, nullptr)->release();
    if (mBundle)
        std::exchange(mBundle, nullptr)->release();
}
