#include "physics/SPH.h"

#include <gtest/gtest.h>

using physics::SPH;

TEST(SPH, HasItsSettingsUnderItsName)
{
    SPH& sph = *SPH::GetInstancePtr();
    EXPECT_EQ("SPH", sph.ToText());
    const struct
    {
        const char* name;
        float value;
    } floats[] = {{"radius", 0.05f},     {"influence", 2},      {"vaporizeTime", 5},
                  {"friction", 0.01f},   {"restitution", 0},    {"soundSpeed", 20},
                  {"density", 1},        {"viscosity", 0.5f},   {"pressMultiplier", 1},
                  {"viscMultiplier", 1}, {"surfaceTension", 0}, {"jitter", 0},
                  {"bucketSize", 2}};
    for (const auto& expected : floats)
    {
        const script::VariablePtr variable = sph.GetVariable(expected.name);
        ASSERT_TRUE(variable) << expected.name;
        const auto* attrib = dynamic_cast<script::TAttrib<float>*>(variable.get());
        ASSERT_TRUE(attrib) << expected.name;
        EXPECT_EQ(expected.value, attrib->Get()) << expected.name;
    }
    for (const char* name : {"specialPressure", "velocitySmoothing"})
    {
        const script::VariablePtr variable = sph.GetVariable(name);
        ASSERT_TRUE(variable) << name;
        const auto* attrib = dynamic_cast<script::TAttrib<bool>*>(variable.get());
        ASSERT_TRUE(attrib) << name;
        EXPECT_TRUE(attrib->Get()) << name;
    }
    EXPECT_EQ(15u, sph.GetVariables().size());
}
