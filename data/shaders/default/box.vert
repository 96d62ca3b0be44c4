#version 120
// A box with a border.
//
// gl_Vertex           the corners, in the box's own frame
// gl_MultiTexCoord0   the same corners: (-HalfSize.x, -HalfSize.y) to (HalfSize.x, HalfSize.y)

uniform float PixelSize; // world units per pixel

varying vec2 pos; // in pixels, from the centre

void main()
{
    // Half of each edge's fade lies outside of the box: the quad grows by half a pixel to all sides.
    vec2 outward = 0.5 * PixelSize * sign(gl_MultiTexCoord0.xy);
    pos = (gl_MultiTexCoord0.xy + outward) / PixelSize;
    gl_Position = gl_ModelViewProjectionMatrix * (gl_Vertex + vec4(outward, 0.0, 0.0));
}
