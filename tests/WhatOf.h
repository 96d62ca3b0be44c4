// The text of an exception.
#pragma once

#include <gtest/gtest.h>

#include <string>
#include <typeinfo>

namespace test
{
/// What the exception says that the function throws, which must be of just this kind.
template<typename E, typename F>
std::string WhatOf(const F& function)
{
    try
    {
        function();
    }
    catch (const E& e)
    {
        EXPECT_EQ(typeid(E), typeid(e));
        return e.what();
    }
    return "nothing thrown";
}
}
