// $DISPLAY set for the length of a scope, for tests that run the port with or without a
// display.
#pragma once

#include <cstdlib>
#include <optional>
#include <string>

namespace spindeck::test {

// Sets $DISPLAY for the length of a scope; an empty name means no display.
class DisplayVariable {
public:
    explicit DisplayVariable(const std::string& inName)
    {
        if (const char* old = std::getenv("DISPLAY"))
            mOld = old;
        ::setenv("DISPLAY", inName.c_str(), 1);
    }
    ~DisplayVariable() { mOld ? (void)::setenv("DISPLAY", mOld->c_str(), 1) : (void)::unsetenv("DISPLAY"); }
    DisplayVariable(const DisplayVariable&) = delete;
    DisplayVariable& operator=(const DisplayVariable&) = delete;

private:
    std::optional<std::string> mOld;
};

}  // namespace spindeck::test
