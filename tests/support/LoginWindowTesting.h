// The login window's list as another program sees it: read and written by Python's plistlib,
// which knows nothing of our property-list code.
#pragma once

#include "LaunchTesting.h"

#include <cstdio>
#include <string>

namespace spindeck::test {

// Runs a script on the domain file (path in `file`) and, if given, a JSON list (in `items`);
// answers what it printed. Handed over in the environment, so that nothing needs quoting.
inline std::string Python(const std::string& inScript, const std::string& inFile, const std::string& inList = "")
{
    ScopedVariable script("LOGIN_ITEMS_SCRIPT", "import json, os, plistlib\nfile = os.environ['LOGIN_ITEMS_FILE']\n"
                                                "items = os.environ['LOGIN_ITEMS_LIST']\n" +
                                                    inScript);
    ScopedVariable file("LOGIN_ITEMS_FILE", inFile), list("LOGIN_ITEMS_LIST", inList);
    std::string output;
    FILE* child = popen("python3 -c \"$LOGIN_ITEMS_SCRIPT\"", "r");
    char buffer[4096];
    while (std::size_t count = child ? std::fread(buffer, 1, sizeof buffer, child) : 0)
        output.append(buffer, count);
    return child && pclose(child) == 0 ? output : output + "(python3 failed)";
}

// The domain file of the login window under a configuration folder.
inline std::string LoginWindowFile(const std::string& inConfigHome)
{
    return inConfigHome + "/preferences/loginwindow.plist";
}

// The stored list as sorted JSON, or "None" when there is none.
inline std::string StoredItems(const std::string& inConfigHome)
{
    return Python("d = plistlib.load(open(file, 'rb')) if os.path.exists(file) else {}\n"
                  "v = d.get('AutoLaunchedApplicationDictionary')\n"
                  "print(json.dumps(v, sort_keys=True, ensure_ascii=False) if v is not None else 'None')",
                  LoginWindowFile(inConfigHome));
}

// Writes the list (JSON) as the only key of the domain file.
inline std::string StoreItems(const std::string& inConfigHome, const std::string& inList)
{
    std::filesystem::create_directories(inConfigHome + "/preferences");
    return Python("plistlib.dump({'AutoLaunchedApplicationDictionary': json.loads(items)}, open(file, 'wb'))",
                  LoginWindowFile(inConfigHome), inList);
}

}  // namespace spindeck::test
