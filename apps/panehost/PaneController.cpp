#include "PaneController.h"

#include "QtBridge.h"

PaneController::PaneController(NSWindow& inWindow) : mWindow(inWindow) {}

PaneController::~PaneController()
{
    if (mPane)
        Unselect();
}

std::optional<QString> PaneController::Select(const QString& inPath)
{
    if (mPane && Unselect() == NSUnselectCancel)
        return QStringLiteral("the pane shown now declined to be left");
    NSAutoreleasePool pool;
    NSBundle* bundle = NSBundle::bundleWithPath(ToNSString(inPath));
    if (bundle == nullptr)
        return QStringLiteral("%1 is not a folder").arg(inPath);
    NSString* className = NSString::cast(bundle->objectForInfoDictionaryKey(NSSTR("NSPrincipalClass")));
    if (className == nullptr)
        return QStringLiteral("%1 names no NSPrincipalClass in its Info.plist").arg(inPath);
    if (!bundle->load())
        return QStringLiteral("the code of %1 cannot be loaded").arg(inPath);
    id object = NSCreateObjectOfClassNamed(className->UTF8String());
    auto* pane = dynamic_cast<NSPreferencePane*>(object);
    if (pane == nullptr) {
        if (object)
            object->release();
        return QStringLiteral("the code of %1 provides no pane class %2")
            .arg(inPath, QString::fromStdString(className->UTF8String()));
    }
    if (pane->initWithBundle(bundle) == nullptr || pane->loadMainView() == nullptr) {
        pane->release();
        return QStringLiteral("the pane %1 has no interface it can show").arg(inPath);
    }
    mPane = pane;
    mPane->willSelect();
    mWindow.setContentView(mPane->mainView());
    mPane->didSelect();
    return std::nullopt;
}

NSPreferencePaneUnselectReply PaneController::Unselect()
{
    if (mPane == nullptr)
        return NSUnselectNow;
    NSAutoreleasePool pool;
    NSPreferencePaneUnselectReply reply = mPane->shouldUnselect();
    if (reply == NSUnselectCancel)
        return reply;
    mPane->willUnselect();
    mWindow.setContentView(nullptr);
    mPane->didUnselect();
    std::exchange(mPane, nullptr)->release();
    return reply;
}
