// Interfaces loaded from Qt Designer files (.ui): the top widget becomes a view; widgets whose
// object name is one of the owner's outlets are bound to it, and buttons with a dynamic
// property "action" (a selector name) send that action to the owner.
#pragma once

#include <AppKit/NSControl.h>
#include <AppKit/NSString.h>

#include <functional>
#include <string_view>
#include <utility>
#include <vector>

// The outlets a class has: for each name, how to store a view into the object. The view is
// checked against the outlet's class; a view of another class leaves the outlet empty.
class NSOutletTable {
public:
    using Setter = std::function<bool(NSObject&, NSView*)>;

    explicit NSOutletTable(std::vector<std::pair<std::string_view, Setter>> inOutlets) : mOutlets(std::move(inOutlets))
    {
    }

    template <class T, class V>
    static std::pair<std::string_view, Setter> Entry(std::string_view inName, V* T::*inMember)
    {
        return {inName, [inMember](NSObject& inOwner, NSView* inView) {
                    auto* view = dynamic_cast<V*>(inView);
                    static_cast<T&>(inOwner).*inMember = view;
                    return view != nullptr;
                }};
    }

    const Setter* Find(std::string_view inName) const;

private:
    std::vector<std::pair<std::string_view, Setter>> mOutlets;
};

// Loads the .ui file at inPath. Answers the top view (owned by the caller), or nil with the
// reason logged when the file cannot be read, an outlet's widget is of another kind or an
// action names a selector the owner does not answer. An outlet without a widget stays nil.
NSView* NSLoadInterface(NSString* inPath, NSObject& inOwner, const NSOutletTable& inOutlets);
