// The platform and product services in tests: a private home, a current bundle made by the
// test whose only language is French, and the alert family's count of notices up.
#pragma once

#include "platform/Mac/utils/BundleUtils.h"
#include "platform/Mac/utils/VemoraAlerts.h"

#include "LaunchTesting.h"

#include <gmock/gmock.h>

namespace spindeck::test {

inline std::string Text(const Gx::CFString& inString)
{
    std::string text;
    inString.GetString(text, kCFStringEncodingUTF8);
    return text;
}

inline const auto kThrowsNilReference = testing::Throws<Gx::RuntimeError>(
    testing::Property(&Gx::RuntimeError::What, Gx::exceptionID_NilReference));

// Tests that end with a notice up bring the family back to none.
struct AlertFamily : vmr::FBAAlert {
    using FBAAlert::_openedCount;
};

class PrivateHome : public ::testing::Test {
protected:
    PrivateHome()
        : mHome("HOME", mFolder.Path("home")), mConfig("XDG_CONFIG_HOME", mFolder.Path("home/config")),
          mData("XDG_DATA_HOME", mFolder.Path("home/data"))
    {
        std::filesystem::create_directories(mFolder.Path("home"));
    }
    ~PrivateHome() override { kvx::GetBundle() = Gx::CFBundle(CFBundleGetMainBundle(), true); }

    // Makes inName the current bundle, with inStrings as its French "Localizable" table;
    // answers its resources folder.
    std::string UseBundle(const std::string& inName, const std::string& inStrings)
    {
        std::string bundle = mFolder.Path(inName), resources = bundle + "/Contents/Resources";
        MakeBundle(bundle, "<key>CFBundleDevelopmentRegion</key><string>fr</string>");
        std::filesystem::create_directories(resources + "/fr.lproj");
        WriteFile(resources + "/fr.lproj/Localizable.strings", inStrings);
        kvx::SetBundle(Gx::CFString(bundle));
        return resources;
    }

    TemporaryFolder mFolder;
    ScopedVariable mHome, mConfig, mData;
};

}  // namespace spindeck::test
