#version 120
// A circle with a border, and a wedge that shows how it is turned.
//
// gl_Vertex           a square around the circle, in the circle's own frame
// gl_MultiTexCoord0   (0, 0) to (1, 1) over the square

uniform float PixelSize;   // world units per pixel
uniform float Radius;      // world units
uniform float SquareScale; // half the square's side, in radii
uniform float CakeSize;    // half the wedge's angle, in parts of pi; at most 0.5

varying vec2 pos;   // in pixels, from the centre
varying vec2 sides; // of the wedge: how far in pixels, plus a half, on the inner side of each

void main()
{
    // Half of the edge's fade lies outside of the circle. Around a tiny one the square leaves no room for it.
    vec2 corner = 2.0 * gl_MultiTexCoord0.xy - 1.0;
    float halfSide = SquareScale * Radius;
    float grown = max(halfSide, Radius + 0.5 * PixelSize);
    pos = corner * (grown / PixelSize);

    // The wedge lies around the x axis.
    float angle = CakeSize * 3.14159265;
    vec2 along = pos * vec2(sin(angle), cos(angle));
    sides = vec2(along.x - along.y, along.x + along.y) + 0.5;

    gl_Position =
        gl_ModelViewProjectionMatrix * (gl_Vertex + vec4(corner * (grown - halfSide), 0.0, 0.0));
}
