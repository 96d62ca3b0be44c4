// What circles are drawn with: two pictures of a circle, one with an open wedge that shows how it is
// turned, and a fan of triangles for those that are too large for a picture.
#pragma once

#include "math/Vector.h"
#include "rendering/Image.h"
#include "rendering/TextureProxy.h"

namespace app
{
// Pixels of the pictures, each way.
const unsigned CircleTexSize = 1024;
// Half the side of the square that is drawn, in radii.
const float CircleSquareScale = 1.2f;
// Half the angle of the wedge, in parts of pi. It lies around the x axis.
const float CircleCakeSize = 0.0625f;

/// From 0 to 1, linear over the width w around x = 0.
float Smooth(float w, float x);
/// n + 1 unit vectors, from (1, 0) clockwise all around to it.
math::Vec2List CalcVecs(int n);
/// How much of each pixel the circle covers.
/// @param cake  leave the wedge open
rendering::ImageFloatPtr MakeCircleImage(bool cake);

/// All circles share the two.
const rendering::TextureProxy& GetCircleTex(bool cake);
/// The square of a circle around the origin, with the whole texture. Nothing when r is 0 or less.
void DrawCircleRect(float r);
/// The part of that square which holds the wedge and little else. Nothing when r is 0 or less.
void DrawCakeTriangle(float r);
/// A filled circle around the origin. Nothing when r is 0 or less.
/// @param cake  leave the wedge open
void DrawCircle(float r, bool cake);
/// The wedge that DrawCircle leaves open. Nothing when r is 0 or less.
void DrawCake(float r);
}
