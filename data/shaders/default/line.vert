#version 120
// The trail of a pen.
//
// gl_Vertex           a strip
// gl_MultiTexCoord0   (0, a) on one side of it and (Width, a) on the other; a = 1: new, 0: faded

uniform float PixelSize; // world units per pixel

varying float side; // in pixels, from the one side
varying float fresh;

void main()
{
    side = gl_MultiTexCoord0.x / PixelSize;
    fresh = gl_MultiTexCoord0.y;
    gl_Position = ftransform();
}
