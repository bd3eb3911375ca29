// Deciding what opening an item runs: which program, with which arguments, and which
// application the launch reports.
#pragma once

#include <Carbon/LaunchServices.h>

#include <string>
#include <vector>

namespace carbon::ls {

// An item to open: the absolute path of a file URL, or the text of any other URL.
struct Item {
    std::string text;
    bool isFile = false;
};

struct LaunchPlan {
    std::string program;                 // the file executed
    std::vector<std::string> arguments;  // after argv[0]
    std::string application;             // what the launched URL names: bundle, program or opener
    bool applicationIsFolder = false;
    bool singleInstance = false;  // an application, which runs once unless asked otherwise
};

// paramErr for NULL or a relative URL with no base; fnfErr for a path too long to name a file.
OSStatus ItemOf(CFURLRef inURL, Item& outItem);

// The application at a path: a bundle or a program.
OSStatus PlanApplication(const std::string& inPath, LSLaunchFlags inFlags, LaunchPlan& outPlan);

// What opens an item by itself: the item when it is an application or program, else the
// desktop's opener with the item as its argument.
OSStatus PlanOpening(const Item& inItem, LSLaunchFlags inFlags, LaunchPlan& outPlan);

// Whether some process runs that very program file, by whatever path it was started.
bool IsAlreadyRunning(const std::string& inProgram);

}  // namespace carbon::ls
