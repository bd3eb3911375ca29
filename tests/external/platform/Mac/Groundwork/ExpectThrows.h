// Checks that a call throws a Gx exception of class E with the given identifier.
#pragma once

#include <Groundwork/Core/ErrorHandling/GxExceptions.h>

#include <gtest/gtest.h>

template <class E = Gx::Exception, class Call>
void ExpectThrows(Call inCall, Gx::ExceptionIDT inID)
{
    try {
        inCall();
        ADD_FAILURE() << "nothing thrown";
    } catch (const E& e) {
        EXPECT_EQ(e.What(), inID);
    }
}
