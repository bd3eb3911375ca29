// The pane asks the product services afresh on every update and keeps no state of its own
// beyond its two interface outlets.
#include "KestrelPrefPane.h"

#include "platform/Mac/spindeckMac/spindeckMac.h"

#include "Groundwork/Core/ErrorHandling/GxExceptions.h"

namespace {

// The interval at which the pane looks again whether a helper asked to quit has gone.
constexpr NSTimeInterval kQuitPollInterval = 5.0;

const NSClassRegistration<KestrelPrefPane> sRegistration("KestrelPrefPane");

}  // namespace

KestrelPrefPane* KestrelPrefPane::initWithBundle(NSBundle* inBundle)
{
    if (NSPreferencePane::initWithBundle(inBundle) != nullptr)
        appID = CFSTR("com.vemora.spindeck.prefpane");
    return this;
}

const NSSelectorTable& KestrelPrefPane::selectors() const
{
    static const NSSelectorTable sTable(
        &NSPreferencePane::selectors(),
        {
            NSSelectorTable::Entry("toggleFBAHelper:", &KestrelPrefPane::toggleFBAHelper),
            NSSelectorTable::Entry("launchConfigTool:", &KestrelPrefPane::launchConfigTool),
            NSSelectorTable::Entry("updateStartStopButton:", &KestrelPrefPane::updateStartStopButton),
            NSSelectorTable::Entry("checkForFBAQuit:", &KestrelPrefPane::checkForFBAQuit),
        });
    return sTable;
}

const NSOutletTable& KestrelPrefPane::outlets() const
{
    static const NSOutletTable sTable({
        NSOutletTable::Entry("_toggleFBABtn", &KestrelPrefPane::_toggleFBABtn),
        NSOutletTable::Entry("_statusText", &KestrelPrefPane::_statusText),
    });
    return sTable;
}

void KestrelPrefPane::didSelect()
{
    NSNotificationCenter::defaultCenter()->addObserverSelectorNameObject(
        this, SEL("updateStartStopButton:"), NSApplicationWillBecomeActiveNotification, nullptr);
    launchConfigTool(this);
    updateStartStopButton(nullptr);
}

void KestrelPrefPane::didUnselect() { NSNotificationCenter::defaultCenter()->removeObserver(this); }

void KestrelPrefPane::willUnselect() {}

NSPreferencePaneUnselectReply KestrelPrefPane::shouldUnselect() { return NSUnselectNow; }

NSString* KestrelPrefPane::configAppPath()
{
    // The configuration application is reached through an auxiliary executable of the pane
    // named after the product, a link to the installed application.
    NSString* name = NSString::cast(bundle()->objectForInfoDictionaryKey(NSSTR("CFBundleName")));
    NSString* path = bundle()->pathForAuxiliaryExecutable(name);
    return NSString::stringWithFormat(NSSTR("%@.app/"), path);
}

void KestrelPrefPane::launchConfigTool(id)
{
    NSString* path = configAppPath();
    if (path != nullptr && NSWorkspace::sharedWorkspace()->launchApplication(path))
        return;
    openConsoleNotFoundErrSheet();
}

BOOL KestrelPrefPane::updateStartStopButton(id)
{
    bool found = false;
    NSString* path = configAppPath();
    bool running = false;
    try {
        running = spindeck::IsBackendRunning(path->CFString(), &found);
    } catch (const Gx::RuntimeError&) {
        NSLog(NSSTR("Gx::RuntimeError during IsBackendRunning()"));
        running = false;
    } catch (...) {
        NSLog(NSSTR("An exception was thrown during IsBackendRunning()"));
        running = false;
    }

    NSString* verb = NSSTR(running ? "Stop" : "Start");
    NSString* action = NSSTR(running ? "disable" : "enable");
    NSString* state = NSSTR(running ? "enabled" : "disabled");

    _toggleFBABtn->setEnabled(found ? YES : NO);

    // The wording belongs to the configuration application, so that the pane says what the
    // application itself says; a missing key shows as the key.
    NSBundle* configApp = NSBundle::bundleWithPath(path);
    auto localized = [configApp](NSString* inKey) {
        return configApp ? configApp->localizedStringForKey(inKey, NSSTR(""), nullptr) : nullptr;
    };
    NSString* verbText = localized(verb);
    NSString* btnFormat = localized(NSSTR("Start/StopBtn"));
    _toggleFBABtn->setTitle(btnFormat ? NSString::stringWithFormat(btnFormat, verbText) : nullptr);

    NSString* actionText = localized(action);
    NSString* stateText = localized(state);
    NSString* textFormat = localized(NSSTR("Start/StopText"));
    _statusText->setTitleWithMnemonic(textFormat ? NSString::stringWithFormat(textFormat, stateText, actionText)
                                                 : nullptr);
    return running ? YES : NO;
}

void KestrelPrefPane::toggleFBAHelper(id)
{
    _toggleFBABtn->setEnabled(NO);
    try {
        NSString* path = configAppPath();
        bool started = false;
        bool handled = spindeck::ToggleBackendState(path->CFString(), &started, false);
        if (!handled)
            return;
        if (started) {
            updateStartStopButton(nullptr);
            return;
        }
        // Quitting takes the helper a moment, and a failed launch may still be settling:
        // look again until it is seen stopped. The timer keeps the pane alive until then.
        NSTimer::scheduledTimerWithTimeIntervalTargetSelectorUserInfoRepeats(kQuitPollInterval, this,
                                                                             SEL("checkForFBAQuit:"), nullptr, YES);
    } catch (...) {
        NSLog(NSSTR("An exception was thrown during toggleFBAHelper()"));
        openConsoleNotFoundErrSheet();
    }
}

void KestrelPrefPane::checkForFBAQuit(id inTimer)
{
    if (!updateStartStopButton(nullptr))
        static_cast<NSTimer*>(inTimer)->invalidate();
}

void KestrelPrefPane::openConsoleNotFoundErrSheet()
{
    NSString* title = bundle()->localizedStringForKey(NSSTR("PPConfigToolNotFoundTitle"),
                                                      NSSTR("Vemora spindeck Not Found"), nullptr);
    NSString* message = bundle()->localizedStringForKey(
        NSSTR("PPConfigToolNotFoundMsg"),
        NSSTR("Vemora spindeck was not found in your computer. \nPlease verify that Vemora spindeck is installed in "
              "your Applications root folder."),
        nullptr);
    NSView* view = mainView();
    NSBeginInformationalAlertSheet(title, nullptr, nullptr, nullptr, view ? view->window() : nullptr, this, SEL(),
                                   SEL(), nullptr, message);
}
