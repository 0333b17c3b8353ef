#include <gtest/gtest.h>
#include "framework/geometry.h"

TEST(FrameworkGeometry, StepsApplyInTheOrderCalled)
{
    Matrix3f m;
    m.Translate(1.0f, 0.0f).Rotate(1.5707964f).Scale(2.0f, 3.0f);
    // (0,0) -> (1,0) -> (0,1) -> (0,3)
    Vector2f p = m.Apply({0.0f, 0.0f});
    EXPECT_NEAR(p.x, 0.0f, 1e-6f);
    EXPECT_NEAR(p.y, 3.0f, 1e-6f);
    Vector2f q = m.Inverted().Apply(p);
    EXPECT_NEAR(q.x, 0.0f, 1e-6f);
    EXPECT_NEAR(q.y, 0.0f, 1e-6f);
}

TEST(FrameworkGeometry, HomogeneousDivideAndSingularInverse)
{
    Matrix3f m;
    m.m[2][2] = 2.0f;
    Vector2f p = m.Apply({4.0f, 6.0f});
    EXPECT_EQ(p.x, 2.0f);
    EXPECT_EQ(p.y, 3.0f);
    Matrix3f s;
    s.Scale(0.0f, 1.0f);
    Vector2f i = s.Inverted().Apply({5.0f, 7.0f});
    EXPECT_EQ(i.x, 5.0f);  // identity
    EXPECT_EQ(i.y, 7.0f);
}
