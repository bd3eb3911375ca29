// The main of every test program: GoogleTest plus the leak check.
#include "LeakCheck.h"

int main(int argc, char** argv)
{
    ::testing::InitGoogleTest(&argc, argv);
    ::testing::GTEST_FLAG(death_test_style) = "threadsafe";
    auto* leakCheck = new spindeck::test::LeakCheck;
    ::testing::UnitTest::GetInstance()->listeners().Append(leakCheck);  // owned by GoogleTest
    int status = RUN_ALL_TESTS();
    return status != 0 ? status : (leakCheck->Leaked() ? 1 : 0);
}
