// The framework port in this process: selectors, reference counting and autorelease,
// notifications, timers on the run loop, and the controls over Qt (offscreen).
#include <AppKit/AppKit.h>
#include <CoreFoundation/CFNumber.h>

#include <gtest/gtest.h>

#include <QApplication>
#include <QLabel>
#include <QPushButton>

#include <cstdlib>
#include <regex>

namespace {

class Probe final : public NSObject {
public:
    int hits = 0;
    id lastArgument = nullptr;
    int stopAfter = 0;

    void hit(id inArgument)
    {
        ++hits;
        lastArgument = inArgument;
        if (hits == stopAfter)
            static_cast<NSTimer*>(inArgument)->invalidate();
    }
    BOOL answer(id) { return YES; }

    const NSSelectorTable& selectors() const override
    {
        static const NSSelectorTable sTable(&NSObject::selectors(),
                                            {
                                                NSSelectorTable::Entry("hit:", &Probe::hit),
                                                NSSelectorTable::Entry("answer:", &Probe::answer),
                                            });
        return sTable;
    }
    const char* className() const override { return "Probe"; }
};

QApplication& Application()
{
    static int argc = 1;
    static char name[] = "AppKitTests";
    static char* argv[] = {name, nullptr};
    setenv("QT_QPA_PLATFORM", "offscreen", 1);
    static QApplication application(argc, argv);
    return application;
}

TEST(AppKitObjects, SelectorsDispatchByNameAndReportUnknownOnes)
{
    Probe* probe = NSNew<Probe>();
    EXPECT_TRUE(probe->respondsToSelector(SEL("hit:")));
    EXPECT_FALSE(probe->respondsToSelector(SEL("hit")));
    EXPECT_EQ(probe->performSelector(NSSelectorFromString("answer:"), nullptr), YES);
    EXPECT_EQ(probe->performSelector(SEL("hit:"), probe), NO);
    EXPECT_EQ(probe->hits, 1);
    EXPECT_EQ(probe->lastArgument, probe);

    testing::internal::CaptureStderr();
    EXPECT_EQ(probe->performSelector(SEL("toggleFBAHelper:"), nullptr), NO);
    std::string said = testing::internal::GetCapturedStderr();
    EXPECT_NE(said.find("-[Probe toggleFBAHelper:]: unrecognized selector"), std::string::npos) << said;
    EXPECT_TRUE(std::regex_search(said, std::regex(R"(^\d{4}-\d\d-\d\d \d\d:\d\d:\d\d\.\d{3} AppKitTests\[\d+\] )")))
        << said;
    probe->release();
}

TEST(AppKitObjects, StringsAreTheRuntimesStringsAndAutoreleaseWaitsForThePool)
{
    CFStringRef constant = CFSTR("Vemora");
    EXPECT_EQ(NSSTR("Vemora")->CFString(), constant);
    EXPECT_EQ(NSString::cast(constant), NSString::bridge(constant));
    EXPECT_EQ(NSString::cast(kCFBooleanTrue), nullptr);

    CFIndex before = _CFRuntimeGetLiveObjectCount();
    {
        NSAutoreleasePool pool;
        NSString* path = NSString::stringWithFormat(NSSTR("%@.app/"), nullptr);
        EXPECT_EQ(path->UTF8String(), "(null).app/");
        EXPECT_EQ(CFStringGetLength(path->CFString()), 11);
        EXPECT_EQ(_CFRuntimeGetLiveObjectCount(), before + 1) << "alive until the pool goes";
    }
    EXPECT_EQ(_CFRuntimeGetLiveObjectCount(), before);
}

TEST(AppKitObjects, NotificationsReachMatchingObserversUntilTheyAreRemoved)
{
    Probe* any = NSNew<Probe>();
    Probe* named = NSNew<Probe>();
    Probe* fromSender = NSNew<Probe>();
    NSNotificationCenter* center = NSNotificationCenter::defaultCenter();
    center->addObserverSelectorNameObject(any, SEL("hit:"), nullptr, nullptr);
    center->addObserverSelectorNameObject(named, SEL("hit:"), NSApplicationWillBecomeActiveNotification, nullptr);
    center->addObserverSelectorNameObject(fromSender, SEL("hit:"), nullptr, any);

    center->postNotificationNameObject(NSApplicationWillBecomeActiveNotification, nullptr);
    center->postNotificationNameObject(NSSTR("Other"), any);
    EXPECT_EQ(any->hits, 2);
    EXPECT_EQ(named->hits, 1);
    EXPECT_EQ(fromSender->hits, 1);

    center->removeObserver(any);
    center->postNotificationNameObject(NSApplicationWillBecomeActiveNotification, nullptr);
    EXPECT_EQ(any->hits, 2);
    EXPECT_EQ(named->hits, 2);
    for (Probe* probe : {any, named, fromSender}) {
        center->removeObserver(probe);
        probe->release();
    }
}

TEST(AppKitTimers, RepeatingTimerKeepsItsTargetUntilItIsInvalidated)
{
    NSAutoreleasePool pool;
    Probe* probe = NSNew<Probe>();
    probe->stopAfter = 3;
    NSTimer* timer = NSTimer::scheduledTimerWithTimeIntervalTargetSelectorUserInfoRepeats(0.02, probe, SEL("hit:"),
                                                                                          nullptr, YES);
    pool.drain();  // the schedule alone keeps the timer now
    EXPECT_EQ(probe->retainCount(), 2);
    EXPECT_NE(CFRunLoopGetNextTimerFireDate(CFRunLoopGetMain(), kCFRunLoopDefaultMode), 0);
    for (int i = 0; i < 50 && probe->hits < 3; ++i)
        CFRunLoopRunInMode(kCFRunLoopDefaultMode, 0.05, true);
    EXPECT_EQ(probe->hits, 3);
    EXPECT_EQ(probe->lastArgument, timer);
    EXPECT_EQ(probe->retainCount(), 1) << "an invalidated timer lets its target go";
    EXPECT_EQ(CFRunLoopGetNextTimerFireDate(CFRunLoopGetMain(), kCFRunLoopDefaultMode), 0);

    NSTimer::scheduledTimerWithTimeIntervalTargetSelectorUserInfoRepeats(0.01, probe, SEL("hit:"), nullptr, NO);
    pool.drain();
    CFRunLoopRunInMode(kCFRunLoopDefaultMode, 0.1, true);
    EXPECT_EQ(probe->hits, 4);
    EXPECT_EQ(probe->retainCount(), 1) << "a timer that does not repeat ends after it fired";
    probe->release();
}

TEST(AppKitControls, TitlesMnemonicsAndActions)
{
    Application();
    NSAutoreleasePool pool;
    auto* top = new QWidget;
    auto* label = new QLabel(top);
    auto* push = new QPushButton(top);
    push->setMinimumWidth(60);  // as an interface file would
    NSView* view = NSNew<NSView>(top, true);
    NSTextField* field = NSNew<NSTextField>(label);
    NSButton* button = NSNew<NSButton>(push);
    view->addSubview(field);
    view->addSubview(button);

    field->setTitleWithMnemonic(NSSTR("&Start && stop & more"));
    EXPECT_EQ(field->stringValue()->UTF8String(), "Start & stop & more");
    button->setTitle(NSSTR("Save & Quit"));
    EXPECT_EQ(button->title()->UTF8String(), "Save & Quit");

    // A long title widens the button past its designed width with room beside the text; a
    // short one afterwards gives that width back, down to no less than the designed one.
    button->setTitle(NSSTR("A title far longer than sixty pixels could ever hold"));
    const int textWidth = push->fontMetrics().horizontalAdvance(push->text());
    EXPECT_GT(push->minimumWidth(), textWidth + push->fontMetrics().horizontalAdvance(QLatin1Char('M')));
    const int wide = push->minimumWidth();
    button->setTitle(NSSTR("Go"));
    EXPECT_LT(push->minimumWidth(), wide);
    EXPECT_GE(push->minimumWidth(), 60);

    Probe* probe = NSNew<Probe>();
    button->setTarget(probe);
    button->setAction(SEL("hit:"));
    push->click();
    EXPECT_EQ(probe->hits, 1);
    EXPECT_EQ(probe->lastArgument, button);
    button->setEnabled(NO);
    button->performClick(nullptr);
    EXPECT_EQ(probe->hits, 1) << "a disabled button sends nothing";

    field->release();
    button->release();
    view->release();  // deletes the widgets
    probe->release();
}

TEST(AppKitControls, InformationalSheetHasOneDefaultButtonAndEndsWithIt)
{
    Application();
    NSAutoreleasePool pool;
    NSWindow* window = NSNew<NSWindow>(NSSTR("Settings"));
    NSBeginInformationalAlertSheet(NSSTR("Title"), nullptr, nullptr, nullptr, window, nullptr, SEL(), SEL(), nullptr,
                                   NSSTR("Line one. \nLine %d."), 2);
    NSAlert* sheet = window->attachedSheet();
    ASSERT_NE(sheet, nullptr);
    EXPECT_EQ(sheet->messageText()->UTF8String(), "Title");
    EXPECT_EQ(sheet->informativeText()->UTF8String(), "Line one. \nLine 2.");
    EXPECT_EQ(sheet->buttonTitles(), std::vector<std::string>{"OK"});
    sheet->endSheet();
    EXPECT_EQ(window->attachedSheet(), nullptr);
    window->release();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
}

}  // namespace
