// A private X server for the window tests, which look at the server's windows through a
// connection of their own. Only the programs of a build with X include this.
#pragma once

#include "XvfbServer.h"

#include <PortSupport/UniqueHandle.h>

#include <xcb/xcb.h>

#include <cstdlib>
#include <memory>
#include <vector>

namespace spindeck::test {

template <class T>
using XReply = port::UniqueMemory<T>;

class XvfbDisplay : public XvfbServer {
public:
    XvfbDisplay()
    {
        if (!Name().empty())
            mConnection = xcb_connect(Name().c_str(), nullptr);
    }
    ~XvfbDisplay()
    {
        if (mConnection != nullptr)
            xcb_disconnect(mConnection);
    }

    // Why there is no server to test with; empty when there is one.
    std::string Unavailable() const
    {
        if (std::string why = XvfbServer::Unavailable(); !why.empty())
            return why;
        if (mConnection == nullptr || xcb_connection_has_error(mConnection))
            return "Xvfb accepts no connection: X11 window checks skipped";
        return {};
    }

    xcb_connection_t* Connection() const { return mConnection; }

    // The server starts with none: every one is the test's.
    std::vector<xcb_window_t> TopLevelWindows() const
    {
        xcb_window_t root = xcb_setup_roots_iterator(xcb_get_setup(mConnection)).data->root;
        XReply<xcb_query_tree_reply_t> tree(
            xcb_query_tree_reply(mConnection, xcb_query_tree(mConnection, root), nullptr));
        xcb_window_t* children = tree ? xcb_query_tree_children(tree.get()) : nullptr;
        return tree ? std::vector<xcb_window_t>(children, children + xcb_query_tree_children_length(tree.get()))
                    : std::vector<xcb_window_t>();
    }

private:
    xcb_connection_t* mConnection = nullptr;
};

}  // namespace spindeck::test
